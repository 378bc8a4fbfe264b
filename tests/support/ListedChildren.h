#pragma once

#include "support/Test.h"
#include "zelvar/model/DataSourceItem.h"

namespace zelvar::test {

/// Lets a listing ask so often before it is stopped.
class CountingCancel : public DataSourceItem::ICancel {
public:
    explicit CountingCancel(int allowed) : m_allowed(allowed) {}
    bool IsCanceled() override { return m_allowed-- <= 0; }

private:
    int m_allowed;
};

/// What the iterator of a folder gives.
inline std::vector<RefItemPtr<DataSourceItem>> Children(DataSourceItem &folder, char const *filter = nullptr,
                                                        int mask = 0, DataSourceItem::ICancel *cancel = nullptr) {
    std::vector<RefItemPtr<DataSourceItem>> children;
    ForEachChild(folder, cancel, filter, nullptr, mask, DT_DATA,
                 [&](auto const &child) { return children.push_back(child), true; });
    return children;
}
inline std::vector<DString> Names(DataSourceItem &folder, char const *filter = nullptr, int mask = 0,
                                  DataSourceItem::ICancel *cancel = nullptr) {
    std::vector<DString> names;
    for (auto const &child : Children(folder, filter, mask, cancel))
        names.push_back(child->GetName());
    return names;
}

} // namespace zelvar::test
