#include "zelvar/opends/connections/Errand.h"

namespace zelvar {

std::shared_ptr<Errand> Errand::Start(Work work, platform::MessageTarget target, platform::MessageId message) {
    std::shared_ptr<Errand> errand(new Errand(std::move(work), std::move(target), message));
    errand->m_self = errand;
    if (errand->DThread::Start())
        return errand;
    errand->m_self.reset();
    return nullptr;
}

void Errand::Release() {
    m_stop = true;
    Abandon(); // the thread holds this object until it has ended
}

void Errand::Run() {
    // The last owner may be this thread.
    std::shared_ptr<Errand> const self = std::move(m_self);
    struct Ending {
        Errand &errand;
        ~Ending() {
            errand.m_work = {}; // a password in it is wiped now
            errand.m_isAtWork = false;
            errand.m_target.Post(errand.m_message);
        }
    } const ending{*this}; // whatever is thrown
    m_work(m_stop);
}

} // namespace zelvar
