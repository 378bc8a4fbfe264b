#pragma once

#include "zelvar/base/DString.h"

#include <chrono>
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
    /// What drivers that are far away offer.
    struct Handlers {
        void (*ask)(std::vector<DString> const &paths, std::vector<DString> const &nameless) = nullptr;
        /// Whether a look into the file has shown a tree of several.
        bool (*find)(DString const &path) = nullptr;
        void (*forget)() = nullptr;
        /// What a listing may spend on nameless files.
        std::chrono::milliseconds (*timeForLooks)() = nullptr;
    };

    ProbeAhead(std::vector<DString> const &paths, std::vector<DString> const &nameless);
    ~ProbeAhead();
    ProbeAhead(ProbeAhead const &) = delete;
    ProbeAhead &operator=(ProbeAhead const &) = delete;

    /// Whether one of the nameless has turned out to be a tree of several.
    [[nodiscard]] bool IsFound(DString const &path) const;

    /// Whether there are such drivers: without them nobody needs to gather files that are told by their names.
    [[nodiscard]] static bool IsWorthwhile();
    /// Whether a nameless file would be looked into: there is a listing around, which has time left for that.
    [[nodiscard]] static bool HasTimeForLooks();
    /// Where they are; null for nowhere. At the start of a program, and for tests; the object lives as long as they do.
    static void SetHandlers(Handlers const *handlers);

private:
    std::set<DString> m_found; ///< by the drivers of this process
};

} // namespace zelvar
