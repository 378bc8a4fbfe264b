#include "zelvar/data/ReaderDuty.h"

#include <utility>

namespace zelvar {

namespace {

ReaderDuty const *g_duty = nullptr; ///< written while there is one thread

} // namespace

void TakeDuty(ReaderDuty duty) { g_duty = new ReaderDuty(std::move(duty)); }

ReaderDuty const *OwnDuty() { return g_duty; }

} // namespace zelvar
