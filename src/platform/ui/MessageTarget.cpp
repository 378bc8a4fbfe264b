#include "zelvar/platform/ui/MessageTarget.h"

#include <mutex>

namespace zelvar::platform {

struct MessageTarget::State {
    std::mutex mutex;
    QObject *receiver = nullptr; ///< not owned
};

MessageTarget::MessageTarget(QObject *receiver) : m_state(std::make_shared<State>()) { m_state->receiver = receiver; }

void MessageTarget::Post(MessageId message, MessageParam first, MessageParam second) const {
    if (!m_state)
        return;
    std::lock_guard const lock(m_state->mutex);
    PostMessage(m_state->receiver, message, first, second);
}

void MessageTarget::Detach() {
    if (!m_state)
        return;
    std::lock_guard const lock(m_state->mutex);
    m_state->receiver = nullptr;
}

} // namespace zelvar::platform
