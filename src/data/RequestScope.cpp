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

bool RequestScope::IsInBackground() const {
    for (RequestScope const *scope = this; scope != nullptr; scope = scope->m_outer)
        if (scope->m_kind == RequestKind::Thumbnail)
            return true;
    return false;
}

std::optional<std::chrono::milliseconds> RequestScope::OwnTimeLeft() const {
    if (!m_time)
        return std::nullopt;
    return *m_time - std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - m_begin);
}

std::optional<std::chrono::milliseconds> RequestScope::OuterTimeLeft() const {
    return m_outer == nullptr ? std::nullopt : m_outer->TimeLeft();
}

std::optional<std::chrono::milliseconds> RequestScope::TimeLeft() const {
    std::optional<std::chrono::milliseconds> left;
    for (RequestScope const *scope = this; scope != nullptr; scope = scope->m_outer)
        if (auto const own = scope->OwnTimeLeft())
            left = left ? std::min(*left, *own) : own;
    return left;
}

void RequestScope::SetUnanswered() {
    for (RequestScope *scope = this; scope != nullptr; scope = scope->m_outer)
        scope->m_unanswered = true;
}

void RequestScope::NoteProgress(double done, double all) {
    if (t_current == nullptr || all <= 0)
        return;
    int const progress = static_cast<int>(kWhole * std::clamp(done / all, 0.0, 1.0));
    for (RequestScope *scope = t_current; scope != nullptr; scope = scope->m_outer)
        scope->m_progress = progress;
}

std::uint64_t RequestScope::Together() {
    for (RequestScope const *scope = t_current; scope != nullptr; scope = scope->m_outer)
        if (scope->together != 0)
            return scope->together;
    return 0;
}

RequestScope *RequestScope::Listing() {
    for (RequestScope *scope = m_outer; scope != nullptr; scope = scope->m_outer)
        if (scope->m_kind == RequestKind::List)
            return scope;
    return nullptr;
}

} // namespace zelvar
