#include "zelvar/controls/CZelTabCtrl.h"

#include "zelvar/platform/ui/Text.h"

namespace zelvar {

CZelTabCtrl::CZelTabCtrl(QWidget *parent) : QTabWidget(parent) { setUsesScrollButtons(true); }

int CZelTabCtrl::InsertTab(QWidget *page, DString const &label, int index) {
    return page == nullptr ? -1 : insertTab(index, page, platform::ToQString(label));
}

bool CZelTabCtrl::RemoveTab(int index) {
    if (index < 0 || index >= count())
        return false;
    removeTab(index);
    return true;
}

DString CZelTabCtrl::GetTabLabel(int index) const { return platform::ToDString(tabText(index)); }

bool CZelTabCtrl::ShowTab(int index, bool show, bool, bool activate) {
    if (index < 0 || index >= count())
        return false;
    setTabVisible(index, show);
    return !show || !activate || SetActiveTab(index);
}

bool CZelTabCtrl::IsTabVisible(int index) const { return index >= 0 && index < count() && isTabVisible(index); }

bool CZelTabCtrl::SetActiveTab(int index) {
    if (!IsTabVisible(index))
        return false;
    setCurrentIndex(index);
    return true;
}

} // namespace zelvar
