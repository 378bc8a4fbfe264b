#include "zelvar/views/TreeView.h"

#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/EscapeWatch.h"
#include "zelvar/views/TreeInput.h"
#include "zelvar/views/TreeItemDelegate.h"
#include "zelvar/views/TreeLabelEdit.h"
#include "zelvar/views/TreeModel.h"

#include <QtWidgets/QHeaderView>

#include <utility>

namespace zelvar {

TreeView::TreeView(QWidget *parent)
    : QTreeView(parent), m_model(std::make_unique<TreeModel>()), m_delegate(new TreeItemDelegate(*this)),
      m_input(std::make_unique<TreeInput>(*this)) {
    setModel(m_model.get());
    setItemDelegate(m_delegate);
    setHeaderHidden(true);
    setUniformRowHeights(true);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    setExpandsOnDoubleClick(false);
    setVerticalScrollMode(ScrollPerItem);
    setHorizontalScrollMode(ScrollPerPixel);
    // As wide as the widest item, at least as wide as the window: so labels are scrolled to and not cut.
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    connect(this, &QTreeView::expanded, this, [this](QModelIndex const &index) { NoteExpanded(index, true); });
    connect(this, &QTreeView::collapsed, this, [this](QModelIndex const &index) { NoteExpanded(index, false); });
}

TreeView::~TreeView() {
    blockSignals(true); // nobody hears that the selection goes
    if (!m_edit.isNull())
        m_edit->Discard();
    setModel(nullptr); // it dies before the views' base does
}

TreeNode *TreeView::ParentFor(HTREEITEM parent) const {
    return parent == nullptr || parent == TVI_ROOT ? m_model->Nodes().Root() : parent;
}

TreeNode *TreeView::SiblingFor(TreeNode &parent, HTREEITEM after, std::string_view text) {
    if (after == TVI_FIRST)
        return nullptr;
    if (after == TVI_SORT)
        return TreeNodes::SortedPlace(parent, text);
    bool const isSibling = after != nullptr && after != TVI_LAST && after != TVI_ROOT && after->parent == &parent;
    return isSibling ? after : parent.LastChild();
}

HTREEITEM TreeView::Insert(HTREEITEM parent, HTREEITEM after, TVITEM const &item, std::string_view text) {
    TreeNode &above = *ParentFor(parent);
    TreeNode *const inserted = m_model->Insert(above, SiblingFor(above, after, text), item, text);
    if ((item.mask & TVIF_STATE) != 0)
        SetItemState(inserted, item.state, item.stateMask);
    return inserted;
}

HTREEITEM TreeView::InsertItem(TVINSERTSTRUCT const *insert) {
    TVITEM const &item = insert->item;
    return Insert(insert->hParent, insert->hInsertAfter, item, item.pszText == nullptr ? "" : item.pszText);
}

HTREEITEM TreeView::InsertItem(unsigned mask, char const *text, int image, int selectedImage, unsigned state,
                               unsigned stateMask, long long itemData, HTREEITEM parent, HTREEITEM after) {
    TVINSERTSTRUCT const insert{.hParent = parent,
                                .hInsertAfter = after,
                                .item = {.mask = mask,
                                         .state = state,
                                         .stateMask = stateMask,
                                         .pszText = text,
                                         .iImage = image,
                                         .iSelectedImage = selectedImage,
                                         .lParam = itemData}};
    return InsertItem(&insert);
}

HTREEITEM TreeView::InsertItem(DString const &text, HTREEITEM parent, HTREEITEM after) {
    return Insert(parent, after, {.mask = TVIF_TEXT}, text);
}

HTREEITEM TreeView::InsertItem(DString const &text, int image, int selectedImage, HTREEITEM parent, HTREEITEM after) {
    return Insert(
        parent, after,
        {.mask = TVIF_TEXT | TVIF_IMAGE | TVIF_SELECTEDIMAGE, .iImage = image, .iSelectedImage = selectedImage}, text);
}

void TreeView::ForgetExpandedBelow(TreeNode &item) {
    if (item.FirstChild() == nullptr)
        return;
    // For each expanded item that goes the toolkit climbs up to the one that is removed. What is laid out later
    // anyway is collapsed at no cost.
    scheduleDelayedItemsLayout();
    for (TreeNode *node = &item; node != nullptr; node = TreeNodes::NextWithin(*node, item)) {
        if (node->IsExpanded())
            QTreeView::setExpanded(m_model->IndexOf(node), false);
    }
}

bool TreeView::DeleteItem(HTREEITEM item) {
    if (item == TVI_ROOT)
        return DeleteAllItems();
    if (item == nullptr)
        return false;
    QPersistentModelIndex const index(m_model->IndexOf(item));
    for (TreeNode *node = item; node != nullptr; node = TreeNodes::NextWithin(*node, *item)) {
        OnDeleteItem(node);
        if (m_dropTarget == node)
            m_dropTarget = nullptr;
        m_input->Forget(node);
        if (!m_edit.isNull() && m_edit->Item() == node)
            m_edit->Discard();
    }
    if (m_selected != nullptr && TreeNodes::IsWithin(*m_selected, *item))
        SelectItem(m_model->Nodes().HeirOf(*item));
    if (!index.isValid())
        return false; // a handler was faster
    ForgetExpandedBelow(*item);
    TreeNode *const parent = item->parent;
    m_model->Delete(*item);
    if (parent->FirstChild() == nullptr && parent->IsExpanded() && !parent->markedAsParent)
        SetExpanded(*parent, false);
    return true;
}

bool TreeView::DeleteAllItems() {
    EndEditLabelNow(true);
    SelectItem(nullptr);
    TreeNode *const root = m_model->Nodes().Root();
    for (TreeNode *node = root->FirstChild(); node != nullptr; node = TreeNodes::NextWithin(*node, *root))
        OnDeleteItem(node);
    m_dropTarget = m_selected = nullptr;
    m_input->ForgetAll();
    m_model->DeleteAll();
    return true;
}

unsigned TreeView::GetCount() const { return static_cast<unsigned>(m_model->Nodes().Count()); }

void TreeView::Refresh(TreeNode const *item) {
    if (item != nullptr)
        m_model->Changed(*item);
}

// Operations of the tree, though some look at the item alone.
// NOLINTBEGIN(readability-convert-member-functions-to-static)

DString TreeView::GetItemText(HTREEITEM item) const { return item == nullptr ? DString() : item->text; }

bool TreeView::SetItemText(HTREEITEM item, DString const &text) {
    if (item == nullptr)
        return false;
    item->text = text;
    Refresh(item);
    return true;
}

std::uint64_t TreeView::GetItemData(HTREEITEM item) const { return item == nullptr ? 0 : item->data; }

bool TreeView::SetItemData(HTREEITEM item, std::uint64_t itemData) {
    if (item == nullptr)
        return false;
    item->data = itemData;
    return true;
}

bool TreeView::GetItemImage(HTREEITEM item, int &image, int &selectedImage) const {
    if (item == nullptr)
        return false;
    image = item->image;
    selectedImage = item->selectedImage;
    return true;
}

bool TreeView::SetItemImage(HTREEITEM item, int image, int selectedImage) {
    if (item == nullptr)
        return false;
    if (item->image == image && item->selectedImage == selectedImage)
        return true;
    item->image = image;
    item->selectedImage = selectedImage;
    Refresh(item);
    return true;
}

unsigned TreeView::GetItemState(HTREEITEM item, unsigned mask) const {
    if (item == nullptr)
        return 0;
    unsigned const state =
        item->state | (item == m_selected ? TVIS_SELECTED : 0U) | (item == m_dropTarget ? TVIS_DROPHILITED : 0U);
    return state & mask;
}

bool TreeView::SetItemState(HTREEITEM item, unsigned state, unsigned mask) {
    constexpr unsigned stored = TVIS_CUT | TVIS_BOLD | TVIS_EXPANDEDONCE;
    if (item == nullptr)
        return false;
    item->state = (item->state & ~(mask & stored)) | (state & mask & stored);
    Refresh(item);
    if ((mask & TVIS_DROPHILITED) != 0 && ((state & TVIS_DROPHILITED) != 0 || m_dropTarget == item))
        SelectDropTarget((state & TVIS_DROPHILITED) != 0 ? item : nullptr);
    if ((mask & TVIS_EXPANDED) != 0)
        SetExpanded(*item, (state & TVIS_EXPANDED) != 0); // nobody is told
    if ((mask & TVIS_SELECTED) != 0 && ((state & TVIS_SELECTED) != 0 || m_selected == item))
        SelectItem((state & TVIS_SELECTED) != 0 ? item : nullptr);
    return true;
}

bool TreeView::SetItemChildren(HTREEITEM item, bool mark) {
    if (item == nullptr)
        return false;
    if (item->markedAsParent != mark) {
        item->markedAsParent = mark;
        if (item->FirstChild() == nullptr)
            scheduleDelayedItemsLayout(); // the expander comes or goes
    }
    return true;
}

bool TreeView::ItemHasChildren(HTREEITEM item) const {
    return item != nullptr && (item->markedAsParent || item->FirstChild() != nullptr);
}

// NOLINTEND(readability-convert-member-functions-to-static)

void TreeView::SetExpanded(TreeNode &item, bool expanded) {
    item.state = (item.state & ~TVIS_EXPANDED) | (expanded ? TVIS_EXPANDED | TVIS_EXPANDEDONCE : 0U);
    QTreeView::setExpanded(m_model->IndexOf(&item), expanded);
}

void TreeView::NoteExpanded(QModelIndex const &index, bool expanded) {
    TreeNode &item = *m_model->NodeOf(index);
    item.state = (item.state & ~TVIS_EXPANDED) | (expanded ? TVIS_EXPANDED | TVIS_EXPANDEDONCE : 0U);
}

bool TreeView::Expand(HTREEITEM item, unsigned code) {
    if (!ItemHasChildren(item))
        return false;
    unsigned const wanted = code & TVE_TOGGLE;
    bool const expand = wanted == TVE_TOGGLE ? !item->IsExpanded() : wanted == TVE_EXPAND;
    if (expand == item->IsExpanded() && (code & TVE_COLLAPSERESET) == 0)
        return true;
    QPointer<TreeView> const self(this);
    QPersistentModelIndex const index(m_model->IndexOf(item));
    TreeExpanding expanding{.item = item, .action = expand ? TVE_EXPAND : TVE_COLLAPSE};
    if (!OnItemExpanding(expanding))
        Q_EMIT ItemExpanding(&expanding);
    if (self.isNull() || expanding.veto || !index.isValid())
        return false;
    if (expand && item->FirstChild() == nullptr)
        return false; // marked, but nobody has put anything in
    if (!expand && m_selected != nullptr && m_selected != item && TreeNodes::IsWithin(*m_selected, *item))
        SelectItem(item); // a selection is never out of sight
    if (self.isNull() || !index.isValid())
        return false;
    SetExpanded(*item, expand);
    if ((code & TVE_COLLAPSERESET) != 0) {
        while (item->LastChild() != nullptr)
            DeleteItem(item->LastChild());
        item->state &= ~TVIS_EXPANDEDONCE;
    }
    Q_EMIT ItemExpanded(item, expanding.action);
    return true;
}

void TreeView::ExpandAbove(TreeNode const &item) {
    // From the top down, so that each is told while it can be seen.
    std::vector<TreeNode *> above;
    for (TreeNode *at = item.parent; at != nullptr && at->parent != nullptr; at = at->parent)
        above.push_back(at);
    QPersistentModelIndex const index(m_model->IndexOf(&item));
    for (auto at = above.rbegin(); at != above.rend() && index.isValid(); ++at) {
        if (!(*at)->IsExpanded())
            Expand(*at, TVE_EXPAND);
    }
}

void TreeView::ExpandAll(HTREEITEM item) {
    // What is put in on the way is expanded as well; it may take long, and may be much.
    platform::EscapeWatch watch;
    QPointer<TreeView> const self(this);
    QPersistentModelIndex const top(m_model->IndexOf(item));
    HTREEITEM next = item;
    while (next != nullptr && !watch.IsPressed()) {
        QPersistentModelIndex const index(m_model->IndexOf(next));
        if (!next->IsExpanded())
            Expand(next, TVE_EXPAND);
        if (self.isNull() || !top.isValid() || !index.isValid())
            return;
        next = TreeNodes::NextWithin(*next, *item);
    }
}

bool TreeView::SelectItem(HTREEITEM item) {
    if (item == nullptr) {
        selectionModel()->clear();
        return true;
    }
    QPersistentModelIndex const index(m_model->IndexOf(item));
    ExpandAbove(*item);
    if (!index.isValid())
        return false;
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    return m_selected == item;
}

void TreeView::selectionChanged(QItemSelection const &selected, QItemSelection const &deselected) {
    QTreeView::selectionChanged(selected, deselected);
    QItemSelection const now = selectionModel()->selection();
    TreeNode *const chosen = now.isEmpty() ? nullptr : m_model->NodeOf(now.first().topLeft());
    TreeNode *const former = std::exchange(m_selected, chosen);
    if (former != chosen && !OnSelchanged(former, chosen))
        Q_EMIT SelChanged(former, chosen);
}

bool TreeView::SelectDropTarget(HTREEITEM item) {
    TreeNode *const former = std::exchange(m_dropTarget, item);
    if (former != item) {
        Refresh(former);
        Refresh(item);
    }
    return true;
}

bool TreeView::SelectSetFirstVisible(HTREEITEM item) {
    if (item == nullptr)
        return false;
    ExpandAbove(*item);
    scrollTo(m_model->IndexOf(item), PositionAtTop);
    return true;
}

bool TreeView::EnsureVisible(HTREEITEM item) {
    if (item == nullptr)
        return false;
    ExpandAbove(*item);
    scrollTo(m_model->IndexOf(item));
    return true;
}

bool TreeView::SortChildren(HTREEITEM item) {
    m_model->SortChildren(*ParentFor(item));
    return true;
}

HTREEITEM TreeView::GetNextItem(HTREEITEM item, unsigned code) const {
    TreeNodes const &nodes = m_model->Nodes();
    switch (code) {
    case TVGN_ROOT:
        return nodes.Root()->FirstChild();
    case TVGN_FIRSTVISIBLE: {
        QModelIndex const index = indexAt(QPoint(0, 0));
        return index.isValid() ? m_model->NodeOf(index) : nullptr;
    }
    case TVGN_DROPHILITE:
        return m_dropTarget;
    case TVGN_CARET:
        return m_selected;
    case TVGN_CHILD:
        return ParentFor(item)->FirstChild();
    default:
        return item == nullptr || item == TVI_ROOT ? nullptr : nodes.Neighbour(*item, code);
    }
}

HIMAGELIST TreeView::SetImageList(HIMAGELIST images, int which, int side) {
    if (which != TVSIL_NORMAL)
        return nullptr;
    HIMAGELIST const former = std::exchange(m_images, images);
    m_pictureSide = side;
    scheduleDelayedItemsLayout(); // rows may change their height
    return former;
}

QLineEdit *TreeView::GetEditControl() const { return m_edit.isNull() || m_edit->HasEnded() ? nullptr : m_edit.data(); }

QLineEdit *TreeView::EditLabel(HTREEITEM item) {
    EndEditLabelNow(false);
    if (item == nullptr)
        return nullptr;
    QPersistentModelIndex const index(m_model->IndexOf(item));
    QPointer<TreeView> const self(this);
    NMTVDISPINFO info{.hdr = {this, platform::GetDlgCtrlID(*this), TVN_BEGINLABELEDIT},
                      .item = {.mask = TVIF_HANDLE | TVIF_TEXT, .hItem = item, .pszText = item->text.c_str()}};
    long long result = 0;
    if (!OnBeginLabelEdit(info, &result))
        Q_EMIT BeginLabelEdit(&info, &result);
    if (self.isNull() || result != 0 || !index.isValid())
        return nullptr;
    EnsureVisible(item);
    Rect label;
    if (!GetItemRect(item, label, true))
        return nullptr;
    auto *const edit = new TreeLabelEdit(*this, item);
    m_edit = edit;
    edit->OpenOver(label);
    return GetEditControl();
}

void TreeView::EndEditLabelNow(bool cancel) {
    if (!m_edit.isNull())
        m_edit->End(cancel);
}

void TreeView::TellEndOfEdit(TreeLabelEdit &edit, DString const *text) {
    TreeNode *const item = edit.Item();
    QPointer<TreeView> const self(this);
    QPersistentModelIndex const index(m_model->IndexOf(item));
    NMTVDISPINFO info{
        .hdr = {this, platform::GetDlgCtrlID(*this), TVN_ENDLABELEDIT},
        .item = {.mask = TVIF_HANDLE | TVIF_TEXT, .hItem = item, .pszText = text == nullptr ? nullptr : text->c_str()}};
    long long result = 0;
    if (!OnEndLabelEdit(info, &result) && !self.isNull())
        Q_EMIT EndLabelEdit(&info, &result);
    if (!self.isNull() && result != 0 && text != nullptr && index.isValid())
        SetItemText(item, *text);
}

bool TreeView::PreTranslateMessage(QEvent & /*message*/) { return false; }

} // namespace zelvar
