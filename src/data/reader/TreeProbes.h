#pragma once

#include "zelvar/data/ProbeAhead.h"

#include <chrono>
#include <memory>
#include <vector>

namespace zelvar {

/// What readers say of which drivers read which files as trees. The answers belong to the thread that asked.
class TreeProbes {
public:
    /// Whether that driver reads the file. The drivers that may claim a file are asked one after the other, within one
    /// `RequestScope`: the first question brings the answers for all.
    [[nodiscard]] static bool Reads(DString const &driverId, DString const &path);

    /// Asks about many files in few requests, on a thread of its own. Files that ended a reader before are left out,
    /// and the rest of them after a request that was not answered: each then is asked about alone, so that the one to
    /// blame is found. What is known of files that have not changed is not asked again. On a server, where each takes
    /// its time, those behind what a listing may spend stay without an answer.
    ///
    /// All drivers that hold several are asked about the nameless ones, as far as the time of the listing goes.
    [[nodiscard]] static std::unique_ptr<ProbeAhead::Question> AskAhead(ProbeAhead::Files const &files,
                                                                        ProbeAhead::Files const &nameless);
    /// What a listing may spend on the nameless ones.
    [[nodiscard]] static std::chrono::milliseconds TimeForLooks();
};

} // namespace zelvar
