#include "zelvar/layout/cdxCDynamicDialog.h"

#include "zelvar/layout/DynamicHost.h"
#include "zelvar/platform/ui/ModalLoop.h"

#include <QtGui/QResizeEvent>

namespace zelvar {

cdxCDynamicDialog::cdxCDynamicDialog(unsigned templateId, QWidget *parent, Freedom freedom, unsigned flags)
    : QDialog(parent), cdxCDynamicWndEx(freedom, flags) {
    if (templateId != 0)
        ActivateAutoPos(templateId);
}

cdxCDynamicDialog::cdxCDynamicDialog(char const *templateName, QWidget *parent, Freedom freedom, unsigned flags)
    : QDialog(parent), cdxCDynamicWndEx(freedom, flags) {
    if (templateName != nullptr)
        ActivateAutoPos(DString(templateName));
}

cdxCDynamicDialog::~cdxCDynamicDialog() { DoOnDestroy(); }

int cdxCDynamicDialog::DoModal() {
    int const answer = platform::RunModal(*this);
    DoOnDestroy();
    return answer;
}

void cdxCDynamicDialog::setVisible(bool visible) {
    if (visible && !m_initialized) {
        m_initialized = true;
        if (OnInitDialog() && focusWidget() == nullptr)
            focusNextChild();
    }
    QDialog::setVisible(visible);
}

bool cdxCDynamicDialog::OnInitDialog() {
    DoInitWindow(*this);
    ApplyTrackSizes(*this, *this);
    return true;
}

void cdxCDynamicDialog::DoShowWindow(bool) {} // it is on its way to be shown, modal or not

bool cdxCDynamicDialog::event(QEvent *event) {
    if (event->type() == QEvent::Resize)
        m_bNewDlg = false;
    bool const handled = QDialog::event(event);
    ForwardToEngine(*this, *this, *event);
    return handled;
}

cdxCDynamicChildDlg::cdxCDynamicChildDlg(unsigned templateId, QWidget *parent, Freedom freedom, unsigned flags)
    : cdxCDynamicDialog(templateId, parent, freedom, flags) {
    setWindowFlags(Qt::Widget);
    NoAutoPos();
    SetUseScrollPos(true);
}

cdxCDynamicChildDlg::cdxCDynamicChildDlg(char const *templateName, QWidget *parent, Freedom freedom, unsigned flags)
    : cdxCDynamicDialog(templateName, parent, freedom, flags) {
    setWindowFlags(Qt::Widget);
    NoAutoPos();
    SetUseScrollPos(true);
}

} // namespace zelvar
