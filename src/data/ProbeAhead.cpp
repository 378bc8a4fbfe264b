#include "zelvar/data/ProbeAhead.h"

#include <atomic>

namespace zelvar {

namespace {

std::atomic<ProbeAhead::Ask> g_ask{nullptr};
std::atomic<ProbeAhead::Forget> g_forget{nullptr};

} // namespace

ProbeAhead::ProbeAhead(std::vector<DString> const &paths) {
    if (Ask const ask = g_ask; ask != nullptr && !paths.empty())
        ask(paths);
}

ProbeAhead::~ProbeAhead() {
    if (Forget const forget = g_forget)
        forget();
}

bool ProbeAhead::IsWorthwhile() { return g_ask != nullptr; }

void ProbeAhead::SetHandlers(Ask ask, Forget forget) {
    g_ask = ask;
    g_forget = forget;
}

} // namespace zelvar
