#pragma once

#include "zelvar/base/DString.h"

#include <set>
#include <vector>

namespace zelvar {

/// Files that a listing is about to ask `BDIDrvr::CanReadPath` about: drivers that are far away answer for many at
/// once. What they said is kept, for this thread, until the end of this object's life; a file that they said nothing of
/// is asked about as ever.
///
/// Files whose names say nothing about them, the nameless ones, are looked into as far as the time of the listing
/// around goes; outside of a listing none is.
class ProbeAhead {
public:
    using Ask = void (*)(std::vector<DString> const &paths, std::vector<DString> const &nameless);
    /// Whether a look into the file has shown a tree of several.
    using Find = bool (*)(DString const &path);
    using Forget = void (*)();

    ProbeAhead(std::vector<DString> const &paths, std::vector<DString> const &nameless);
    ~ProbeAhead();
    ProbeAhead(ProbeAhead const &) = delete;
    ProbeAhead &operator=(ProbeAhead const &) = delete;

    /// Whether one of the nameless has turned out to be a tree of several.
    [[nodiscard]] bool IsFound(DString const &path) const;

    /// Whether there are such drivers: without them nobody needs to gather files that are told by their names.
    [[nodiscard]] static bool IsWorthwhile();
    /// What does it; null for nobody. At the start of a program, and for tests.
    static void SetHandlers(Ask ask, Find find, Forget forget);

private:
    std::set<DString> m_found; ///< by the drivers of this process
};

} // namespace zelvar
