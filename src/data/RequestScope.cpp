#include "zelvar/data/RequestScope.h"

#include <utility>

namespace zelvar {

namespace {

thread_local RequestScope *t_current = nullptr;

} // namespace

RequestScope::RequestScope(RequestKind kind, StopQuestion isStopped, std::optional<std::chrono::milliseconds> time)
    : m_outer(std::exchange(t_current, this)), m_kind(kind), m_isStopped(std::move(isStopped)), m_time(time),
      m_begin(Clock::now()) {}

RequestScope::~RequestScope() { t_current = m_outer; }

RequestScope *RequestScope::Current() { return t_current; }

bool RequestScope::IsStopped() const {
    for (RequestScope const *scope = this; scope != nullptr; scope = scope->m_outer)
        if (scope->m_isStopped && scope->m_isStopped())
            return true;
    return false;
}

RequestScope *RequestScope::Listing() {
    for (RequestScope *scope = m_outer; scope != nullptr; scope = scope->m_outer)
        if (scope->m_kind == RequestKind::List)
            return scope;
    return nullptr;
}

} // namespace zelvar
