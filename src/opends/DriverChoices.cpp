#include "zelvar/opends/DriverChoices.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/store/DCnfg.h"

namespace zelvar {

namespace {

constexpr char kSection[] = "DlgOpenDSDrivers";

DString KeyOf(DString const &path) { return FoldCase(ExtensionOf(FileNameOf(path))); }

} // namespace

DString const &DriverChoices::Remembered(DString const &extension) const {
    auto at = m_byExtension.find(extension);
    if (at == m_byExtension.end())
        at = m_byExtension.emplace(extension, DUserCnfg(kSection).ReadString(extension, "")).first;
    return at->second;
}

DString DriverChoices::Of(DString const &path) const {
    if (auto const chosen = m_byPath.find(path); chosen != m_byPath.end())
        return chosen->second;
    DString const key = KeyOf(path);
    return key.empty() || m_without.contains(path) ? DString() : Remembered(key);
}

DString DriverChoices::AddedTo(DString options, DString const &path) const {
    DString const id = Of(path);
    if (id.empty() || ("&" + options).find(DString("&") + kDriverOption + "=") != DString::npos)
        return options;
    options.append(options.empty() ? "" : "&").append(kDriverOption).append("=").append(PercentEncoded(id));
    return options;
}

void DriverChoices::Choose(DString const &path, DString const &id) {
    m_byPath[path] = id;
    DString const key = KeyOf(path);
    if (key.empty())
        return;
    m_byExtension[key] = id;
    if (id.empty())
        DUserCnfg(kSection).RemoveKey(key);
    else
        DUserCnfg(kSection).WriteString(key, id);
}

bool DriverChoices::GiveUp(DString const &path) {
    if (m_byPath.contains(path) || Of(path).empty())
        return false;
    m_without.insert(path);
    return true;
}

} // namespace zelvar
