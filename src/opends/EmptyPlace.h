#pragma once

#include "zelvar/base/DString.h"

#include <chrono>
#include <vector>

namespace zelvar {

class DSListCtrl;

/// Notices that a server has listed a place in which nothing can be picked here, and says so: an empty list alone looks
/// like one that is still to be filled. User-interface thread.
class EmptyPlace {
public:
    /// To be called a few times a second. `folders` are the lists that may show folders of the place.
    void Look(DSListCtrl const &items, std::vector<DSListCtrl const *> const &folders, bool isWaiting);
    /// What is to be said; empty for a place with rows, and for a moment after all rows have gone: lists of one place
    /// are filled one after the other.
    [[nodiscard]] DString Words() const;

private:
    using Clock = std::chrono::steady_clock;
    DString m_words;
    Clock::time_point m_since; ///< that these are the words
};

} // namespace zelvar
