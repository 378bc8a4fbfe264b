#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/platform/ui/WindowMessage.h"

#include <memory>

namespace zelvar::platform {

/// Where a worker posts its messages: a window that may die before the worker does.
///
/// Copies share one target. The window detaches it in its destructor; from then on every copy drops what it is given.
/// Any thread may post.
class ZELVAR_API MessageTarget {
public:
    /// Drops everything.
    MessageTarget() = default;
    explicit MessageTarget(QObject *receiver);

    void Post(MessageId message, MessageParam first = 0, MessageParam second = 0) const;
    /// When this returns no copy posts any more.
    void Detach();

private:
    struct State;
    std::shared_ptr<State> m_state;
};

} // namespace zelvar::platform
