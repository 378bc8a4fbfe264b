#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/layout/DSplitterWnd.h"
#include "zelvar/model/DataSourceItem.h"
#include "zelvar/model/datasets/DataSetFolding.h"
#include "zelvar/platform/ui/WindowMessage.h"

#include <functional>
#include <list>

namespace zelvar {

class DSListCtrl;

/// Hierarchy list: panes of folder lists side by side, in which the selection of one pane supplies the content of the
/// next.
///
/// It starts with one pane; everything is written for up to five. User-interface thread.
class ZELVAR_API HierarchyList : public QWidget, public DSplitterWnd::PaneOwner {
    Q_OBJECT

public:
    using ItemList = std::list<RefItemPtr<DataSourceItem>>;
    using FoldingRule = std::function<DataSetFolding(ItemList const &roots)>;

    explicit HierarchyList(QWidget *parent = nullptr);
    ~HierarchyList() override;

    /// Not owned; without one nothing is told.
    void SetCoordinator(QObject *coordinator) { m_coordinator = coordinator; }
    /// 0 for none.
    void SetRootChangeMessage(platform::MessageId message) { m_rootChangeMessage = message; }

    // For all panes, see `DSListCtrl`.
    void SetFoldingRule(FoldingRule const &rule);
    void ShowKinds();
    [[nodiscard]] DSListCtrl *GetPane(int pane);
    [[nodiscard]] DSListCtrl const *GetPane(int pane) const;
    [[nodiscard]] int GetPaneCount() const { return m_splitter->GetColumnCount(); }
    [[nodiscard]] DSplitterWnd *GetSplitter() const { return m_splitter; }
    /// Moves the focus from that pane to the next one; false if it is the last or does not have the focus.
    bool FocusPaneBehind(QObject const *pane);
    /// The same to the one before it; false if it is the first.
    bool FocusPaneBefore(QObject const *pane);
    /// Gives every pane the same width.
    void InitializeLayout();
    /// Pane 0 lists the children of `items`, the others are emptied.
    void ResetDataSources(ItemList const &items);
    /// Each pane shows a level of the way to `item`, the next level selected; null empties all.
    void ShowDir(RefItemPtr<DataSourceItem> item);
    void ApplyFileFilter(char const *mask, char const *formatId);
    void Refresh();
    /// Of what is on a server, as `DSListCtrl`.
    [[nodiscard]] bool IsListing() const;
    void StopListing();
    /// Appends the selected items of that pane; a pane that does not exist leaves the list alone.
    void GetSelectedItems(unsigned pane, ItemList &items) const;
    bool SortPane(int pane, int col, bool ascending);
    bool GetPaneSorting(int pane, int &col, bool &ascending) const;
    void GetRootItems(ItemList &items) const;
    /// Kept for callers; does nothing and yields true.
    static bool AddNewList(unsigned count);

    QWidget *CreateViewObj(DSplitterWnd *splitter, int row, int col, PaneClass const *paneClass, Size size) override;
    int CreateViewWnd(DSplitterWnd *splitter, QWidget *pane, int row, int col, Rect const &rect, QWidget *parent,
                      unsigned id) override;
    void DeleteView(DSplitterWnd *splitter, int row, int col) override;
    bool RecalcLayout(DSplitterWnd *splitter) override;

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;

private:
    void OnDataItemSelected(platform::MessageParam windowId);
    void OnDataItemDblClick(platform::MessageParam windowId);
    [[nodiscard]] int PaneOfId(platform::MessageParam windowId) const;
    [[nodiscard]] ItemList Selection(int pane) const;

    platform::MessageMap m_messages;
    DSplitterWnd *m_splitter; ///< a child
    QPointer<QObject> m_coordinator;
    platform::MessageId m_rootChangeMessage = 0;
    FoldingRule m_foldingRule;
    bool m_showsKinds = false;
};

} // namespace zelvar
