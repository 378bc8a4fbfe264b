#include "zelvar/layout/cdxCDynamicDialog.h"

#include "zelvar/platform/ui/ModalLoop.h"

#include <QtGui/QKeyEvent>
#include <QtWidgets/QPushButton>

#include <algorithm>

namespace zelvar {

namespace {
constexpr int kOkId = 1;
constexpr int kCancelId = 2;

bool IsReturn(QKeyEvent const &event) { return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter; }

/// One that stays down is no such button.
QPushButton *FocusedButton(QWidget const &dialog) {
    auto *const button = qobject_cast<QPushButton *>(dialog.focusWidget());
    return button == nullptr || button->isCheckable() ? nullptr : button;
}
} // namespace

cdxCDynamicDialog::cdxCDynamicDialog(unsigned templateId, QWidget *parent, Freedom freedom, unsigned flags)
    : DynamicHost(freedom, flags, parent) {
    if (templateId != 0)
        ActivateAutoPos(templateId);
}

cdxCDynamicDialog::cdxCDynamicDialog(char const *templateName, QWidget *parent, Freedom freedom, unsigned flags)
    : DynamicHost(freedom, flags, parent) {
    if (templateName != nullptr)
        ActivateAutoPos(DString(templateName));
}

cdxCDynamicDialog::cdxCDynamicDialog(platform::DialogTemplate const &dialogTemplate, QWidget *parent, Freedom freedom,
                                     unsigned flags)
    : cdxCDynamicDialog(static_cast<unsigned>(dialogTemplate.id), parent, freedom, flags) {
    SetTemplate(dialogTemplate);
}

cdxCDynamicDialog::~cdxCDynamicDialog() { DoOnDestroy(); }

int cdxCDynamicDialog::DoModal() {
    QPointer<cdxCDynamicDialog> const self(this);
    int const result = platform::RunModal(*this);
    if (!self.isNull())
        DestroyWindow();
    return result;
}

bool cdxCDynamicDialog::OnInitDialog() {
    // A derived class that makes its controls itself connects them, too.
    auto const connectButton = [this](int id, void (cdxCDynamicDialog::*pressed)()) {
        if (auto *const button = HasTemplate() ? platform::GetDlgItem<QAbstractButton>(*this, id) : nullptr)
            QObject::connect(button, &QAbstractButton::clicked, this, pressed);
    };
    connectButton(kOkId, &cdxCDynamicDialog::OnOK);
    connectButton(kCancelId, &cdxCDynamicDialog::OnCancel);
    return DynamicHost::OnInitDialog();
}

void cdxCDynamicDialog::keyPressEvent(QKeyEvent *event) {
    QPushButton *const button = IsReturn(*event) ? FocusedButton(*this) : nullptr;
    if (button != nullptr)
        button->click();
    else
        DynamicHost::keyPressEvent(event);
}

cdxCDynamicChildDlg::cdxCDynamicChildDlg(unsigned templateId, QWidget *parent, Freedom freedom, unsigned flags)
    : cdxCDynamicDialog(templateId, parent, freedom, flags) {
    BecomeChild();
}

cdxCDynamicChildDlg::cdxCDynamicChildDlg(char const *templateName, QWidget *parent, Freedom freedom, unsigned flags)
    : cdxCDynamicDialog(templateName, parent, freedom, flags) {
    BecomeChild();
}

cdxCDynamicChildDlg::cdxCDynamicChildDlg(platform::DialogTemplate const &dialogTemplate, QWidget *parent,
                                         Freedom freedom, unsigned flags)
    : cdxCDynamicDialog(dialogTemplate, parent, freedom, flags) {
    BecomeChild();
}

void cdxCDynamicChildDlg::BecomeChild() {
    NoAutoPos();
    m_bUseScrollPos = true;
    if (parentWidget() != nullptr)
        setWindowFlags(Qt::Widget); // a part of its parent, no window of its own
}

void cdxCDynamicChildDlg::done(int result) {
    if (isWindow())
        return QDialog::done(result);
    setResult(result);
    if (result == Accepted)
        Q_EMIT accepted();
    else if (result == Rejected)
        Q_EMIT rejected();
    Q_EMIT finished(result);
}

void cdxCDynamicChildDlg::keyPressEvent(QKeyEvent *event) {
    QList<QPushButton *> const buttons = IsReturn(*event) ? findChildren<QPushButton *>() : QList<QPushButton *>();
    bool const isOwn = isWindow() || FocusedButton(*this) != nullptr ||
                       std::ranges::any_of(buttons, [](QPushButton const *b) { return b->isDefault(); });
    if (isOwn)
        cdxCDynamicDialog::keyPressEvent(event);
    else
        QWidget::keyPressEvent(event); // goes on to the window around
}

} // namespace zelvar
