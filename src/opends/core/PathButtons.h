#pragma once

#include "zelvar/base/DString.h"

#include <functional>
#include <vector>

namespace zelvar {

/// One button of the row that shows the way from the outermost folder to the present one.
struct PathButton {
    std::size_t entry = 0;  ///< index in the chain of items, outermost 0
    bool cutBefore = false; ///< entries were left out before it: its text begins with "../"
    bool cutBehind = false; ///< entries were left out behind it: its text ends in "/.."
    int width = 0;          ///< pixels
    int left = 0;           ///< pixels from the left end of the row

    friend bool operator==(PathButton const &, PathButton const &) = default;
};

/// Width in pixels of the button of an entry with these marks.
using MeasurePathButton = std::function<int(std::size_t entry, bool cutBefore, bool cutBehind)>;

/// Which buttons stand where, one pixel apart, in a row `available` pixels wide. Entries behind the outermost are left
/// out until the row fits or two are left; room that this leaves, 5 pixels at most, goes behind the outermost.
[[nodiscard]] ZELVAR_API std::vector<PathButton> ArrangePathButtons(std::size_t count, int available,
                                                                    MeasurePathButton const &measure);

/// The name as it stands on a button: more than 13 characters are cut to the first 10 and "...".
[[nodiscard]] ZELVAR_API DString PathButtonText(DString const &name, bool cutBefore, bool cutBehind);

} // namespace zelvar
