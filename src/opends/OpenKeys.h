#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/opends/DlgOpenDS.h"

#include <functional>

class QKeyEvent;
class QWidget;

namespace zelvar {

class OpenFields;
class OpenPanes;
class OpenParts;
class SelectionOptions;

/// The keys of the open dialog, by what has the keyboard. User-interface thread.
class OpenKeys {
public:
    struct Actions {
        std::function<void()> accept;         ///< what OK does
        std::function<void()> optionsChanged; ///< on the page of a driver
    };
    /// All of these outlive it.
    OpenKeys(DlgOpenDS &dialog, OpenPanes const &panes, OpenFields const &fields, OpenParts &parts,
             SelectionOptions const &options, Actions actions);

    /// Does what the key is for; false for one that is nobody's here. `focus` is the widget that would get it.
    [[nodiscard]] bool Take(QKeyEvent const &key, QWidget &focus) const;
    /// Goes to what is typed as a place.
    void GoToTyped() const;

private:
    [[nodiscard]] bool ProcessKey(int key, QWidget &focus) const;
    [[nodiscard]] bool ProcessReturnKey(QWidget &focus) const;
    [[nodiscard]] bool ProcessInsertKey(QWidget const &focus) const;
    [[nodiscard]] bool ProcessTabKey(QWidget &focus) const;
    [[nodiscard]] bool ProcessBacktabKey(QWidget const &focus) const;
    [[nodiscard]] QWidget *FirstPane() const;
    void ProcessRefreshKey(QWidget const &focus) const;

    DlgOpenDS &m_dialog;
    OpenPanes const &m_panes;
    OpenFields const &m_fields;
    OpenParts &m_parts;
    SelectionOptions const &m_options;
    Actions m_actions;
};

} // namespace zelvar
