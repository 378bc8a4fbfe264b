#include "zelvar/platform/ui/UserMessages.h"

#include "zelvar/platform/ui/ModalLoop.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QThread>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMessageBox>

namespace zelvar::platform {

namespace {

UserMessageHook &Hook() {
    static UserMessageHook hook;
    return hook;
}

void ShowBox(Report::Severity severity, DString const &text) {
    if (Hook() && Hook()(severity, text))
        return;
    bool const warns = severity == Report::Severity::Warning;
    QMessageBox box(warns ? QMessageBox::Warning : QMessageBox::Information, QApplication::applicationDisplayName(),
                    ToQString(text), QMessageBox::Ok, QApplication::activeWindow());
    box.setTextFormat(Qt::PlainText);
    RunModal(box);
}

void ShowFromAnyThread(Report::Severity severity, DString const &text) {
    if (qApp == nullptr || QThread::currentThread() == qApp->thread())
        ShowBox(severity, text);
    else
        QMetaObject::invokeMethod(
            qApp, [severity, text] { ShowBox(severity, text); }, Qt::QueuedConnection);
}

} // namespace

void InstallUserMessages() { Report::SetUserHandler(ShowFromAnyThread); }

void RemoveUserMessages() { Report::SetUserHandler(nullptr); }

void SetUserMessageHook(UserMessageHook hook) { Hook() = std::move(hook); }

} // namespace zelvar::platform
