#include "zelvar/data/RequestScope.h"

#include <algorithm>
#include <utility>

namespace zelvar {

namespace {

thread_local RequestScope *t_current = nullptr;

} // namespace

RequestScope::RequestScope(RequestKind kind, StopQuestion isStopped, std::optional<std::chrono::milliseconds> time,
                           Nesting nesting)
    : m_former(std::exchange(t_current, this)), m_outer(nesting == Nesting::Inside ? m_former : nullptr), m_kind(kind),
      m_isStopped(std::move(isStopped)), m_time(time), m_begin(Clock::now()) {}

RequestScope::~RequestScope() { t_current = m_former; }

RequestScope *RequestScope::Current() { return t_current; }

bool RequestScope::IsStopped() const {
    for (RequestScope const *scope = this; scope != nullptr; scope = scope->m_outer)
        if (scope->m_isStopped && scope->m_isStopped())
            return true;
    return false;
}

std::optional<std::chrono::milliseconds> RequestScope::TimeLeft() const {
    std::optional<std::chrono::milliseconds> left;
    for (RequestScope const *scope = this; scope != nullptr; scope = scope->m_outer)
        if (scope->m_time) {
            auto const own =
                *scope->m_time - std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - scope->m_begin);
            left = left ? std::min(*left, own) : own;
        }
    return left;
}

void RequestScope::SetUnanswered() {
    for (RequestScope *scope = this; scope != nullptr; scope = scope->m_outer)
        scope->m_unanswered = true;
}

RequestScope *RequestScope::Listing() {
    for (RequestScope *scope = m_outer; scope != nullptr; scope = scope->m_outer)
        if (scope->m_kind == RequestKind::List)
            return scope;
    return nullptr;
}

} // namespace zelvar
