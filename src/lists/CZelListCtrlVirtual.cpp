#include "zelvar/lists/CZelListCtrlVirtual.h"

#include <algorithm>

namespace zelvar {

CZelListCtrlVirtual::CZelListCtrlVirtual(QWidget *parent) : CZelListCtrl(parent) { ModifyStyle(0, LVS_OWNERDATA); }

CZelListCtrlVirtual::~CZelListCtrlVirtual() = default;

// The style given to `Create` replaces the constructor's.
void CZelListCtrlVirtual::PreCreateWindow(unsigned &style, Rect &place) {
    style |= LVS_OWNERDATA;
    CZelListCtrl::PreCreateWindow(style, place);
}

void CZelListCtrlVirtual::SetNumRow(int rows, unsigned long flags) {
    SetNumRowMember(rows);
    SetItemCountEx(rows, static_cast<unsigned>(flags));
}

void CZelListCtrlVirtual::Sort(int, bool) {}

int CZelListCtrlVirtual::OnGetItemImg(int, int) { return -1; }

void CZelListCtrlVirtual::OnGetDispInfo(DispInfo &info) const {
    // Derived classes may read ahead and keep what they have read while they are asked.
    auto &self = const_cast<CZelListCtrlVirtual &>(*this);
    if (info.wantsText) {
        m_lastText = self.OnGetItemText(info.iItem, info.iSubItem);
        if (m_lastText.empty()) {
            info.pszText = nullptr;
        } else if (info.pszText != nullptr && info.cchTextMax > 0) {
            std::size_t const room = static_cast<std::size_t>(info.cchTextMax) - 1;
            info.pszText[m_lastText.copy(info.pszText, room)] = '\0';
            info.pszText[room] = '\0';
        }
    }
    if (info.wantsImage)
        info.iImage = self.OnGetItemImg(info.iItem, info.iSubItem);
}

} // namespace zelvar
