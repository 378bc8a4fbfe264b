#include "zelvar/data/PlaceCheck.h"

#include <atomic>

namespace zelvar {

namespace {

std::atomic<bool (*)(DString const &)> g_check{nullptr};

} // namespace

bool DoesPlaceAnswer(DString const &path) {
    auto *const check = g_check.load();
    return check == nullptr || check(path);
}

void SetPlaceCheck(bool (*check)(DString const &path)) { g_check = check; }

} // namespace zelvar
