#include "zelvar/data/ProbeAhead.h"

#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/RequestScope.h"

#include <atomic>

namespace zelvar {

namespace {

std::atomic<ProbeAhead::Handlers const *> g_handlers{nullptr};

constexpr std::chrono::milliseconds kLooks{250}; // of one listing, where drivers work in this process

/// The listing that this thread is at, or null.
RequestScope *Listing() {
    RequestScope *const scope = RequestScope::Current();
    return scope == nullptr || scope->Kind() == RequestKind::List ? scope : scope->Listing();
}

} // namespace

ProbeAhead::ProbeAhead(Files const &files, Files nameless) {
    if (Listing() != nullptr)
        m_nameless = std::move(nameless);
    if (Handlers const *const there = g_handlers; there != nullptr && !(files.empty() && m_nameless.empty()))
        m_question = there->ask(files, m_nameless);
}

ProbeAhead::~ProbeAhead() = default;
ProbeAhead::ProbeAhead(ProbeAhead &&other) noexcept = default;

void ProbeAhead::Wait() {
    if (m_question != nullptr) {
        m_question->Wait();
        return;
    }
    RequestScope *const listing = Listing();
    for (auto const &[path, state] : m_nameless) {
        if (IsWorthwhile() || listing->looked >= kLooks || listing->IsStopped())
            return;
        auto const begin = RequestScope::Clock::now();
        RequestScope const scope(RequestKind::Probe);
        if (BDIDrvrMngr::Instance()->FindContainerDriver(path) != nullptr)
            m_found.insert(path);
        listing->looked += std::chrono::ceil<std::chrono::microseconds>(RequestScope::Clock::now() - begin);
    }
}

bool ProbeAhead::IsFound(DString const &path) const {
    return m_question != nullptr ? m_question->IsFound(path) : m_found.contains(path);
}

bool ProbeAhead::IsWorthwhile() { return g_handlers != nullptr; }

bool ProbeAhead::HasTimeForLooks() {
    RequestScope const *const listing = Listing();
    Handlers const *const there = g_handlers;
    return listing != nullptr && listing->looked < (there != nullptr ? there->timeForLooks() : kLooks);
}

void ProbeAhead::SetHandlers(Handlers const *handlers) { g_handlers = handlers; }

} // namespace zelvar
