#include "zelvar/data/ProbeAhead.h"

#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/RequestScope.h"

#include <atomic>

namespace zelvar {

namespace {

std::atomic<ProbeAhead::Ask> g_ask{nullptr};
std::atomic<ProbeAhead::Find> g_find{nullptr};
std::atomic<ProbeAhead::Forget> g_forget{nullptr};

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
    if (Ask const ask = g_ask; ask != nullptr) {
        ask(paths, looked);
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
    if (Forget const forget = g_forget)
        forget();
}

bool ProbeAhead::IsFound(DString const &path) const {
    Find const find = g_find;
    return find != nullptr ? find(path) : m_found.contains(path);
}

bool ProbeAhead::IsWorthwhile() { return g_ask != nullptr; }

void ProbeAhead::SetHandlers(Ask ask, Find find, Forget forget) {
    g_ask = ask;
    g_find = find;
    g_forget = forget;
}

} // namespace zelvar
