#pragma once

#include "zelvar/model/DataSourceItem.h"
#include "zelvar/model/datasets/DataSetFolding.h"
#include "zelvar/opends/core/UnfoldedFolders.h"

#include <QtCore/QPoint>

#include <functional>
#include <list>
#include <set>
#include <vector>

class QAction;
class QMenu;
class QWidget;

namespace zelvar {

/// Which files of the open dialog's folders have one row together, and the menu in which the user chooses that.
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
        std::function<DString(DataSourceItem const &)> moniker;
    };

    /// A further line of the menu.
    struct Command {
        DString words; ///< in the user's language
        std::function<void()> run;
    };

    /// Without `foldsNumbered` numbered files are never folded.
    DataSetRows(Actions actions, bool foldsNumbered);

    [[nodiscard]] DataSetFolding FoldingOf(ItemList const &roots) const;
    /// While this lives the numbered files and side-cars of that folder have rows of their own.
    void ShowSingly(DString const &folder) { m_singly.insert(folder); }
    /// Runs the menu about the `selected` items of a list that shows the children of `roots`; without roots it is not
    /// about a folder. `first` stand above what is in it anyway.
    void RunMenu(QWidget &list, QPoint screenPoint, ItemList const &roots, ItemList const &selected,
                 std::vector<Command> const &first = {});

private:
    QAction *AddFoldingTo(QMenu &menu, ItemList const &roots) const;
    void ToggleNumbered(ItemList const &roots);
    void CopyMonikers(ItemList const &items) const;

    Actions m_actions;
    bool m_foldsNumbered;
    UnfoldedFolders m_unfolded;
    std::set<DString> m_singly; ///< folders
    bool m_showsAll = false;    ///< each file for itself
};

} // namespace zelvar
