#include "zelvar/opends/WindowWorker.h"

namespace zelvar {

void WindowWorker::Begin() {
    Finish(); // the former body has ended; its thread is about to
    if (!Start()) {
        std::lock_guard const lock(m_mutex);
        m_running = false;
        m_self.reset();
    }
}

void WindowWorker::Run() {
    // The last owner may be this thread.
    std::shared_ptr<WindowWorker> const self = shared_from_this();
    while (WorkOnNext()) {
    }
}

} // namespace zelvar
