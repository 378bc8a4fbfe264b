#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/layout/DSplitterWnd.h"
#include "zelvar/model/DLGTemplate.h"

#include <QtCore/QRect>

#include <functional>

namespace zelvar {

class DSDataSourceWnd;
class DSListCtrl;
class DSPropertyWnd;
class DataSourceList;
class HierarchyList;

/// The panes of the open dialog: how they are made, how they share the room, and which of them talks to whom by which
/// number. They are children of the dialog, which hears of what they tell. User-interface thread.
class OpenPanes {
public:
    struct Setup {
        QWidget &dialog;                ///< outlives this
        DSplitterWnd::PaneOwner &owner; ///< hands on to `CreateView` what the splitters ask
        DLGTemplate dlgTemplate = DT_DATA;
        bool picksSeveral = true; ///< items
    };
    explicit OpenPanes(Setup const &setup) : m_setup(setup) {}

    /// Makes them in that place of the dialog, once, before anything else is asked of them.
    void Create(QRect const &place);
    /// Makes the pane a window and says whom it talks to; 0 for one of a class that is none of these.
    int CreateView(QWidget *pane, Rect const &rect, QWidget *parent, unsigned id);
    /// Gives each its usual share of the room; the first column is as wide as the tabs of the properties with
    /// `showsTabs`, if there is room for them.
    void InitializeLayout(bool showsTabs);
    /// Does what changes their height; the properties and what stands above them take the same shares of it as before.
    void ChangeHeight(std::function<void()> const &change);
    /// How the lists are sorted: as every dialog begins, and to the settings under that key.
    void RestoreSorting() const;
    void KeepSorting(DString const &key) const;
    /// Lists the folders and the items anew, though their roots stay.
    void ListAgain() const;

    [[nodiscard]] DSplitterWnd *Splitter() const { return m_splitter; } ///< that holds all of them
    [[nodiscard]] DSDataSourceWnd *SourceWnd() const { return m_sourceWnd; }
    [[nodiscard]] DataSourceList *Sources() const { return m_sources; }
    [[nodiscard]] DSListCtrl *Folders() const { return m_folders; } ///< that stand in place of the sources
    [[nodiscard]] DSPropertyWnd *Properties() const { return m_properties; }
    [[nodiscard]] HierarchyList *Hierarchy() const { return m_hierarchy; }
    [[nodiscard]] DSListCtrl *Items() const { return m_items; }

private:
    void Name() const;

    Setup m_setup;
    DSplitterWnd *m_splitter = nullptr; ///< all owned by the window tree
    DSplitterWnd *m_leftSplitter = nullptr;
    DSDataSourceWnd *m_sourceWnd = nullptr;
    DataSourceList *m_sources = nullptr;
    DSListCtrl *m_folders = nullptr;
    DSPropertyWnd *m_properties = nullptr;
    HierarchyList *m_hierarchy = nullptr;
    DSListCtrl *m_items = nullptr;
};

} // namespace zelvar
