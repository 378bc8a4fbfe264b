#pragma once

#include "zelvar/base/DString.h"

#include <vector>

namespace zelvar {

/// Files that a listing is about to ask `BDIDrvr::CanReadPath` about: drivers that are far away answer for many at
/// once. What they said is kept, for this thread, until the end of this object's life; a file that they said nothing of
/// is asked about as ever.
class ProbeAhead {
public:
    using Ask = void (*)(std::vector<DString> const &paths);
    using Forget = void (*)();

    explicit ProbeAhead(std::vector<DString> const &paths);
    ~ProbeAhead();
    ProbeAhead(ProbeAhead const &) = delete;
    ProbeAhead &operator=(ProbeAhead const &) = delete;

    /// Whether there are such drivers: without them nobody needs to gather files.
    [[nodiscard]] static bool IsWorthwhile();
    /// What does it; null for nobody. At the start of a program, and for tests.
    static void SetHandlers(Ask ask, Forget forget);
};

} // namespace zelvar
