#include "zelvar/lists/CTreeCursor.h"

#include "zelvar/lists/CZelTreeCtrlEx.h"

#include <utility>

namespace zelvar {

// The tree's operations take null handles; only a cursor without a tree must be kept from it.

DString CTreeCursor::GetText() const { return m_tree == nullptr ? DString() : m_tree->GetItemText(m_item); }

bool CTreeCursor::SetText(DString const &text) const { return m_tree != nullptr && m_tree->SetItemText(m_item, text); }

bool CTreeCursor::GetImage(int &image, int &selectedImage) const {
    return m_tree != nullptr && m_tree->GetItemImage(m_item, image, selectedImage);
}

bool CTreeCursor::SetImage(int image, int selectedImage) const {
    return m_tree != nullptr && m_tree->SetItemImage(m_item, image, selectedImage);
}

int CTreeCursor::GetImageID() const {
    int image = -1;
    int selectedImage = -1;
    GetImage(image, selectedImage);
    return image;
}

unsigned CTreeCursor::GetState(unsigned mask) const {
    return m_tree == nullptr ? 0 : m_tree->GetItemState(m_item, mask);
}

bool CTreeCursor::SetState(unsigned state, unsigned mask) const {
    return m_tree != nullptr && m_tree->SetItemState(m_item, state, mask);
}

std::uint64_t CTreeCursor::GetData() const { return m_tree == nullptr ? 0 : m_tree->GetItemData(m_item); }

bool CTreeCursor::SetData(std::uint64_t itemData) const {
    return m_tree != nullptr && m_tree->SetItemData(m_item, itemData);
}

bool CTreeCursor::GetRect(Rect &rect, bool textOnly) const {
    return m_tree != nullptr && m_tree->GetItemRect(m_item, rect, textOnly);
}

bool CTreeCursor::HasChildren() const { return m_tree != nullptr && m_tree->ItemHasChildren(m_item); }

bool CTreeCursor::Expand(unsigned code) const { return m_tree != nullptr && m_tree->Expand(m_item, code); }

bool CTreeCursor::Select() const { return m_item != nullptr && m_tree->SelectItem(m_item); }

bool CTreeCursor::SelectDropTarget() const { return m_item != nullptr && m_tree->SelectDropTarget(m_item); }

bool CTreeCursor::SelectSetFirstVisible() const { return m_item != nullptr && m_tree->SelectSetFirstVisible(m_item); }

QLineEdit *CTreeCursor::EditLabel() const { return m_tree == nullptr ? nullptr : m_tree->EditLabel(m_item); }

bool CTreeCursor::SortChildren() const { return m_item != nullptr && m_tree->SortChildren(m_item); }

bool CTreeCursor::EnsureVisible() const { return m_item != nullptr && m_tree->EnsureVisible(m_item); }

std::unique_ptr<DragImage> CTreeCursor::CreateDragImage() const {
    return m_tree == nullptr ? nullptr : m_tree->CreateDragImage(m_item);
}

bool CTreeCursor::Delete() {
    TreeNode *const item = std::exchange(m_item, nullptr);
    return item != nullptr && m_tree->DeleteItem(item);
}

CTreeCursor CTreeCursor::GetNext(unsigned code) const {
    bool const isOfTree =
        code == TVGN_ROOT || code == TVGN_FIRSTVISIBLE || code == TVGN_CARET || code == TVGN_DROPHILITE;
    bool const asks = m_tree != nullptr && (m_item != nullptr || isOfTree);
    return {asks ? m_tree->TreeView::GetNextItem(m_item, code) : nullptr, m_tree};
}

CTreeCursor CTreeCursor::InsertAfter(DString const &text, HTREEITEM after, int image) const {
    return _Insert(text, image, after);
}

CTreeCursor CTreeCursor::AddHead(DString const &text, int image) const { return _Insert(text, image, TVI_FIRST); }

CTreeCursor CTreeCursor::AddTail(DString const &text, int image) const { return _Insert(text, image, TVI_LAST); }

CTreeCursor CTreeCursor::_Insert(DString const &text, int image, HTREEITEM after) const {
    if (m_tree == nullptr)
        return {};
    unsigned const mask = TVIF_TEXT | (image < 0 ? 0U : TVIF_IMAGE | TVIF_SELECTEDIMAGE);
    return m_tree->InsertItem(mask, text.c_str(), image, image, 0, 0, 0, m_item, after);
}

} // namespace zelvar
