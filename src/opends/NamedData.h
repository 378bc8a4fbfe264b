#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/model/DataSourceItem.h"

#include <QtCore/QObject>

#include <functional>
#include <map>
#include <vector>

class QLineEdit;
class QMimeData;
class QWidget;

namespace zelvar {

class DSListCtrl;

/// What somebody drops or pastes as names of data, in order: the files of a file manager, or a path, an address or a
/// moniker a line.
[[nodiscard]] std::vector<DString> NamesIn(QMimeData const &data);

/// Data that is named to the open dialog: dropped on it, pasted or typed as a place to go to. It is looked for, its
/// folder is shown and its rows are selected.
class NamedData : public QObject {
public:
    struct Actions {
        std::function<void(RefItemPtr<DataSourceItem>)> show; ///< its children in all panes
        std::function<void(DString const &folder)> unfold;    ///< lists each file of the folder for itself
        std::function<void()> widen;                          ///< lists files of all names
        std::function<void(DString const &address)> goTo;     ///< looks for a place on a server behind the window
    };

    /// The windows must outlive it.
    NamedData(QWidget &dialog, QLineEdit &placeField, DSListCtrl &list, Actions actions);

    /// Selects what lies in one folder with the first of them; a single folder is shown. False, and nothing done, if
    /// the first is not there, with the reason in `*error`, which may be null, or the user ends the wait for it.
    bool Show(std::vector<DString> const &names, DError *error = nullptr);
    /// Those that a moniker of that path had; empty for none.
    [[nodiscard]] DString OptionsOf(DString const &path) const;
    /// From now on these are the options of that path.
    void Note(DString const &path, DString const &options) { m_options[path] = options; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    /// Those that are there and no rows of the list.
    [[nodiscard]] std::vector<DString> Select(std::vector<DString> const &paths);
    void Take(QMimeData const &data);

    QWidget &m_dialog;
    DSListCtrl &m_list;
    Actions m_actions;
    std::map<DString, DString> m_options; ///< by path
};

} // namespace zelvar
