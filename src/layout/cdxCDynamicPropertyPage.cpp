#include "zelvar/layout/cdxCDynamicPropertyPage.h"

#include "zelvar/layout/DynamicHost.h"

#include <QtCore/QEvent>

namespace zelvar {

cdxCDynamicPropertyPage::cdxCDynamicPropertyPage(unsigned, Freedom freedom, unsigned flags)
    : cdxCDynamicWndEx(freedom, flags) {
    SetUseScrollPos(true);
}

cdxCDynamicPropertyPage::cdxCDynamicPropertyPage(char const *, Freedom freedom, unsigned flags)
    : cdxCDynamicPropertyPage(0U, freedom, flags) {}

cdxCDynamicPropertyPage::~cdxCDynamicPropertyPage() { DoOnDestroy(); }

void cdxCDynamicPropertyPage::setVisible(bool visible) {
    if (visible && !m_initialized) {
        m_initialized = true;
        OnInitDialog();
    }
    QWidget::setVisible(visible);
}

bool cdxCDynamicPropertyPage::OnInitDialog() {
    DoInitWindow(*this);
    return true;
}

bool cdxCDynamicPropertyPage::event(QEvent *event) {
    if (event->type() == QEvent::Resize)
        m_bNewDlg = false;
    bool const handled = QWidget::event(event);
    ForwardToEngine(*this, *this, *event);
    return handled;
}

} // namespace zelvar
