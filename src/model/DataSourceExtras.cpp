#include "zelvar/model/DataSourceExtras.h"

#include "zelvar/base/DFileFind.h"
#include "zelvar/base/Directories.h"
#include "zelvar/data/RDIDriverMngr.h"

#include <boost/make_shared.hpp>

namespace zelvar {

bool DataSourceExtras::Load() {
    DString const directory = GetDataSourceTemplatesDir();
    if (directory.empty())
        return true;
    DFileFind const found(directory, "*.xml", true, false, false, false, 0);
    for (DFile const &file : found.GetFiles()) {
        XMLNode root;
        if (!root.Load(file) || root.GetName() != "DataSourceExtras")
            continue;
        for (XMLNode const *node = root.GetFirstChild(); node != nullptr; node = node->GetNext()) {
            if (node->GetName() != "DataSourceOptions")
                continue;
            auto item = boost::make_shared<Item>();
            item->ItemDataSource = node->GetAttrStr("datasource");
            item->ItemDriver = node->GetAttrStr("driver");
            if (item->ItemDataSource.empty() && item->ItemDriver.empty())
                continue;
            item->ItemTemplatePath = AppendPath(directory, node->GetAttrStr("template"));
            item->ItemOptions.reset(node->Copy().release());
            m_items.push_back(item);
        }
    }
    return true;
}

DataSourceExtras::Item *DataSourceExtras::GetDSOptions(RefItemPtr<DataSourceItem> const &item) {
    if (!item)
        return nullptr;
    DString const path = item->GetPath();
    for (boost::shared_ptr<Item> const &entry : m_items) {
        if (entry->ItemDriver.empty())
            continue;
        RDIDriver const *const driver = RDIDriverMngr::Instance()->GetDriver(entry->ItemDriver.c_str());
        if (driver != nullptr && driver->IsMyFile(path.c_str()) == 1)
            return entry.get();
    }
    return nullptr;
}

boost::shared_ptr<DataSourceExtras::Item>
DataSourceExtras::FindFirstOptions(std::list<RefItemPtr<DataSourceItem>> const &items, StopSignal const &stop) const {
    constexpr std::size_t kTogether = 256;
    boost::shared_ptr<Item> found;
    for (auto item = items.begin(); item != items.end() && found == nullptr && !stop;) {
        std::vector<DString> paths;
        for (; item != items.end() && paths.size() < kTogether; ++item)
            if (*item)
                paths.push_back((*item)->GetPath());
        // The earliest item counts and, among the entries for it, the earliest.
        for (boost::shared_ptr<Item> const &entry : m_items) {
            RDIDriver const *const driver =
                entry->ItemDriver.empty() ? nullptr : RDIDriverMngr::Instance()->GetDriver(entry->ItemDriver.c_str());
            std::optional<std::size_t> const at = driver == nullptr ? std::nullopt : driver->FindMyFile(paths, stop);
            if (!at)
                continue;
            paths.resize(*at);
            found = entry;
        }
    }
    return stop ? nullptr : found;
}

} // namespace zelvar
