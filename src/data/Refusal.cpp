#include "zelvar/data/Refusal.h"

#include <utility>

namespace zelvar {

namespace {

thread_local bool t_isRefused = false;

} // namespace

void NoteRefusal() { t_isRefused = true; }

bool TakeRefusal() { return std::exchange(t_isRefused, false); }

} // namespace zelvar
