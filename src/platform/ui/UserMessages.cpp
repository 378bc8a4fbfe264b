#include "zelvar/platform/ui/UserMessages.h"

#include "zelvar/base/DThread.h"
#include "zelvar/platform/ui/ModalLoop.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/platform/ui/WindowMessage.h"

#include <QtCore/QThread>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMessageBox>

#include <cstdio>
#include <memory>
#include <utility>
#include <vector>

namespace zelvar::platform {

namespace {

UserMessageHook &Hook() {
    static UserMessageHook hook;
    return hook;
}

void ShowBox(Report::Severity severity, DString const &text) {
    if (Hook() && Hook()(severity, text))
        return;
    if (qApp == nullptr) {
        std::fprintf(stderr, "%s\n", text.c_str());
        return;
    }
    bool const warns = severity == Report::Severity::Warning;
    QMessageBox box(warns ? QMessageBox::Warning : QMessageBox::Information, QApplication::applicationDisplayName(),
                    ToQString(text), QMessageBox::Ok, QApplication::activeWindow());
    box.setTextFormat(Qt::PlainText);
    RunModal(box);
}

/// Takes messages from any thread to the windows' one.
class MessageShower final : public QObject {
public:
    MessageShower() { m_messages.On(m_arrived, this, &MessageShower::ShowAll); }

    void Show(Report::Severity severity, DString const &text) {
        if (QThread::currentThread() == thread()) {
            ShowBox(severity, text);
            return;
        }
        DSingleLock const lock(m_lock);
        m_waiting.emplace_back(severity, text);
        PostMessage(this, m_arrived);
    }
    bool event(QEvent *event) override { return m_messages.Dispatch(*event) || QObject::event(event); }

private:
    void ShowAll(MessageParam, MessageParam) {
        std::vector<std::pair<Report::Severity, DString>> arrived;
        {
            DSingleLock const lock(m_lock);
            arrived.swap(m_waiting);
        }
        for (auto const &[severity, text] : arrived)
            ShowBox(severity, text);
    }

    MessageId const m_arrived = RegisterMessage();
    MessageMap m_messages;
    DMutex m_lock;
    std::vector<std::pair<Report::Severity, DString>> m_waiting; ///< guarded by `m_lock`
};

} // namespace

void InstallUserMessages() {
    // Kept by the handler: a worker may be about to call it when it is replaced.
    auto const shower = std::make_shared<MessageShower>();
    Report::SetUserHandler([shower](Report::Severity severity, DString const &text) { shower->Show(severity, text); });
}

void RemoveUserMessages() { Report::SetUserHandler(nullptr); }

void SetUserMessageHook(UserMessageHook hook) { Hook() = std::move(hook); }

} // namespace zelvar::platform
