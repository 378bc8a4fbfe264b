#include "zelvar/controls/IconTabCtrl.h"

#include "zelvar/controls/ControlIcons.h"
#include "zelvar/platform/ui/Text.h"

#include <QtWidgets/QTabBar>

namespace zelvar {

namespace {

// A tab's own list of two, label and picture: it stays with the tab wherever the user moves it.
QVariantList ContentOf(QTabBar const &bar, int index) {
    QVariantList const content = bar.tabData(index).toList();
    return content.size() == 2 ? content : QVariantList{bar.tabText(index), -1};
}

} // namespace

IconTabCtrl::IconTabCtrl(QWidget *parent) : CZelTabCtrl(parent) {}

void IconTabCtrl::SetImageList(HIMAGELIST list, int side) {
    m_list = list;
    setIconSize(QSize(side, side));
    UpdateTabs();
}

int IconTabCtrl::InsertTab(QWidget *page, DString const &label, int index, int image) {
    int const at = CZelTabCtrl::InsertTab(page, label, index);
    SetTabImage(at, image);
    return at;
}

bool IconTabCtrl::SetTabImage(int index, int image) {
    if (!HasTab(index))
        return false;
    tabBar()->setTabData(index, QVariantList{ContentOf(*tabBar(), index)[0], image});
    UpdateTab(index);
    return true;
}

int IconTabCtrl::GetTabImage(int index) const { return HasTab(index) ? ContentOf(*tabBar(), index)[1].toInt() : -1; }

DString IconTabCtrl::GetTabLabel(int index) const {
    return HasTab(index) ? platform::ToDString(ContentOf(*tabBar(), index)[0].toString()) : DString();
}

bool IconTabCtrl::SetTabLabel(int index, DString const &label) {
    if (!HasTab(index))
        return false;
    tabBar()->setTabData(index, QVariantList{platform::ToQString(label), GetTabImage(index)});
    UpdateTab(index);
    return true;
}

void IconTabCtrl::ShowLabels(bool show) {
    m_labels = show;
    UpdateTabs();
}

void IconTabCtrl::UpdateTab(int index) {
    QString const label = ContentOf(*tabBar(), index)[0].toString();
    int const image = GetTabImage(index);
    bool const pictured = m_list != nullptr && image >= 0 && image < m_list->GetCount();
    bool const labelled = m_labels || !pictured;
    QString plain = label;
    plain.remove(u'&');
    setTabIcon(index, pictured ? ListIcon(m_list, image, image) : QIcon());
    setTabText(index, labelled ? label : QString());
    if (!labelled)
        setTabToolTip(index, platform::ToToolTip(plain));
    else if (tabToolTip(index) == platform::ToToolTip(plain))
        setTabToolTip(index, QString());
    tabBar()->setAccessibleTabName(index, labelled ? QString() : plain);
}

void IconTabCtrl::UpdateTabs() {
    for (int index = 0; index < count(); ++index) {
        tabBar()->setTabData(index, ContentOf(*tabBar(), index));
        UpdateTab(index);
    }
}

} // namespace zelvar
