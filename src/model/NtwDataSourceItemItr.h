#pragma once

#include "zelvar/model/DataSourceItem.h"
#include "zelvar/model/datasets/DataSetFolding.h"
#include "zelvar/platform/os/ShellId.h"

namespace zelvar {

/// Network data source item iterator: the children of a folder of the shell namespace.
class NtwDataSourceItemItr : public DataSourceItemItr {
public:
    /// Lists the folder once. Shortcuts, files that do not match `filter` and the product's own cache folders are left
    /// out. `cancel` is asked before each child; a listing that was stopped is shorter and valid.
    void Fill(platform::ShellId const &folder, DataSourceItem::ICancel *cancel,
              RefItemPtr<DataSourceItem> const &parent, char const *filter, char const *driverId);
    /// Whether a plain file of that name is a child: no shortcut, and one that the filter lets through.
    [[nodiscard]] static bool IsListed(std::string_view name, std::string_view filter);
    /// The same, or whether it may belong to a child where such files are folded.
    [[nodiscard]] static bool IsVisited(std::string_view name, std::string_view filter, DataSetFolding folding);

private:
    class Children;
};

} // namespace zelvar
