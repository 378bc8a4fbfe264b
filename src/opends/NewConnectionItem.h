#pragma once

#include "zelvar/model/DataSourceItem.h"

namespace zelvar {

/// The row that makes a connection: it holds nothing and cannot be picked.
class NewConnectionItem final : public DataSourceItem {
public:
    void SetName(DString const &) override {}
    [[nodiscard]] DString GetName() const override;
    [[nodiscard]] DString GetPath() const override { return {}; }
    DataSourceItemItr *CreateIterator(ICancel *, char const *, char const *, int, DLGTemplate) override {
        return nullptr;
    }
    void DeleteIterator(DataSourceItemItr *itr) override { delete itr; }
    RefItemPtr<DataSourceItem> GetParent() override { return nullptr; }
    RefItemPtr<DataSourceItem> Clone() override;
    [[nodiscard]] bool IsFolder() const override { return false; }
    [[nodiscard]] bool IsFile(int) const override { return false; }
    [[nodiscard]] DataSourceType GetDataSourceType() const override { return DST_UNKNOWN; }
};

/// Whether the item is that row; null is not.
[[nodiscard]] bool IsNewConnection(DataSourceItem const *item);

} // namespace zelvar
