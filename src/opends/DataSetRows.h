#pragma once

#include "zelvar/model/DataSourceItem.h"
#include "zelvar/model/datasets/DataSetFolding.h"
#include "zelvar/opends/MenuCommand.h"
#include "zelvar/opends/core/UnfoldedFolders.h"

#include <functional>
#include <list>
#include <set>
#include <vector>

namespace zelvar {

/// Which files of the open dialog's folders have one row together, and the lines of a menu in which the user chooses
/// that.
///
/// Whether numbered files are folded is kept for each folder, in the settings; files that belong to another one are
/// folded whenever a dialog begins.
class DataSetRows {
public:
    using ItemList = std::list<RefItemPtr<DataSourceItem>>;
    /// What the dialog does about a command of the menu.
    struct Actions {
        std::function<void()> listAgain;
        std::function<void(RefItemPtr<DataSourceItem>)> show; ///< its children in all panes
    };

    /// Without `foldsNumbered` numbered files are never folded.
    DataSetRows(Actions actions, bool foldsNumbered);

    [[nodiscard]] DataSetFolding FoldingOf(ItemList const &roots) const;
    /// While this lives the numbered files and side-cars of that folder have rows of their own.
    void ShowSingly(DString const &folder) { m_singly.insert(folder); }
    /// What can be done about the `selected` items of a list that shows the children of `roots`; without roots it is
    /// not about a folder. Valid while this lives.
    [[nodiscard]] std::vector<MenuCommand> CommandsFor(ItemList const &roots, ItemList const &selected);

private:
    void ToggleNumbered(ItemList const &roots);

    Actions m_actions;
    bool m_foldsNumbered;
    UnfoldedFolders m_unfolded;
    std::set<DString> m_singly; ///< folders
    bool m_showsAll = false;    ///< each file for itself
};

} // namespace zelvar
