#include "zelvar/tool/WorkNote.h"

#include "zelvar/data/RequestScope.h"

#include <cstdio>

#include <unistd.h>

namespace zelvar::tool {

namespace {

constexpr std::chrono::milliseconds kMoment{500};
constexpr std::chrono::milliseconds kInterval{100};

} // namespace

WorkNote::WorkNote() : m_hasTerminal(isatty(STDERR_FILENO) != 0), m_next(Clock::now() + kMoment) {}

WorkNote::~WorkNote() {
    if (m_shown >= 0)
        std::fputs("\r\x1B[K", stderr);
}

bool WorkNote::Show() {
    RequestScope const *const scope = RequestScope::Current();
    if (!m_hasTerminal || scope == nullptr || scope->Progress() < 0 || Clock::now() < m_next)
        return false;
    m_next = Clock::now() + kInterval;
    int const percent = scope->Progress() * 100 / RequestScope::kWhole;
    if (percent != m_shown)
        std::fprintf(stderr, "\r%3d %%", percent);
    m_shown = percent;
    return false;
}

} // namespace zelvar::tool
