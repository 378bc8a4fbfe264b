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

ProbeAhead::ProbeAhead(std::vector<DString> const &paths, std::vector<DString> const &nameless) {
    RequestScope *const listing = Listing();
    static std::vector<DString> const &none = *new std::vector<DString>;
    std::vector<DString> const &looked = listing == nullptr ? none : nameless;
    if (paths.empty() && looked.empty())
        return;
    if (Handlers const *const there = g_handlers; there != nullptr) {
        there->ask(paths, looked);
        return;
    }
    for (DString const &path : looked) {
        if (listing->looked >= kLooks || listing->IsStopped())
            return;
        auto const begin = RequestScope::Clock::now();
        RequestScope const scope(RequestKind::Probe);
        if (BDIDrvrMngr::Instance()->FindContainerDriver(path) != nullptr)
            m_found.insert(path);
        listing->looked += std::chrono::ceil<std::chrono::microseconds>(RequestScope::Clock::now() - begin);
    }
}

ProbeAhead::~ProbeAhead() {
    if (Handlers const *const there = g_handlers; there != nullptr)
        there->forget();
}

bool ProbeAhead::IsFound(DString const &path) const {
    Handlers const *const there = g_handlers;
    return there != nullptr ? there->find(path) : m_found.contains(path);
}

bool ProbeAhead::IsWorthwhile() { return g_handlers != nullptr; }

bool ProbeAhead::HasTimeForLooks() {
    RequestScope const *const listing = Listing();
    Handlers const *const there = g_handlers;
    return listing != nullptr && listing->looked < (there != nullptr ? there->timeForLooks() : kLooks);
}

void ProbeAhead::SetHandlers(Handlers const *handlers) { g_handlers = handlers; }

} // namespace zelvar
