#include "zelvar/controls/CZelTabCtrl.h"

#include "zelvar/platform/ui/Text.h"

namespace zelvar {

CZelTabCtrl::CZelTabCtrl(QWidget *parent) : QTabWidget(parent) { setUsesScrollButtons(true); }

int CZelTabCtrl::InsertTab(QWidget *page, DString const &label, int index) {
    return page == nullptr ? -1 : insertTab(index, page, platform::ToQString(label));
}

bool CZelTabCtrl::RemoveTab(int index) {
    if (!HasTab(index))
        return false;
    removeTab(index);
    return true;
}

void CZelTabCtrl::RemoveAllTabs() {
    while (RemoveTab(0)) {
    }
}

DString CZelTabCtrl::GetTabLabel(int index) const { return platform::ToDString(tabText(index)); }

bool CZelTabCtrl::SetTabLabel(int index, DString const &label) {
    if (!HasTab(index))
        return false;
    setTabText(index, platform::ToQString(label));
    return true;
}

bool CZelTabCtrl::SetTabTooltip(int index, DString const &text) {
    if (!HasTab(index))
        return false;
    setTabToolTip(index, platform::ToToolTip(platform::ToQString(text)));
    return true;
}

bool CZelTabCtrl::EnableTab(int index, bool enable) {
    if (!HasTab(index))
        return false;
    setTabEnabled(index, enable);
    return true;
}

bool CZelTabCtrl::ShowTab(int index, bool show, bool, bool activate) {
    if (!HasTab(index))
        return false;
    setTabVisible(index, show);
    return !show || !activate || SetActiveTab(index);
}

bool CZelTabCtrl::IsTabVisible(int index) const { return HasTab(index) && isTabVisible(index); }

bool CZelTabCtrl::SetActiveTab(int index) {
    if (!IsTabVisible(index))
        return false;
    setCurrentIndex(index);
    return true;
}

int CZelTabCtrl::GetVisibleTabsNum() const {
    int visible = 0;
    for (int index = 0; index < count(); ++index)
        visible += isTabVisible(index) ? 1 : 0;
    return visible;
}

int CZelTabCtrl::GetTabFromWnd(QWidget const *page) const {
    for (int index = 0; index < count(); ++index)
        if (widget(index) == page)
            return index;
    return -1;
}

} // namespace zelvar
