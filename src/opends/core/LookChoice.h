#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Export.h"

namespace zelvar {

/// How a list of items is looked at, as it is written to the settings.
struct LookChoice {
    static constexpr int kLeast = 96; ///< sides of thumbnails, pixels before scaling
    static constexpr int kMost = 256;
    static constexpr int kStep = 16; ///< of the wheel

    bool thumbnails = false; ///< else rows
    int side = 128;
    bool remote = false; ///< thumbnails of places on a network, too

    /// The thumbnails so many steps larger, or smaller.
    [[nodiscard]] ZELVAR_API LookChoice Resized(int steps) const;
    friend bool operator==(LookChoice const &, LookChoice const &) = default;
};

/// "thumbnails 160 remote".
[[nodiscard]] ZELVAR_API DString LookToText(LookChoice const &look);
/// What is missing or no such word is as usual; a side is brought into its bounds.
[[nodiscard]] ZELVAR_API LookChoice LookFromText(std::string_view text);

} // namespace zelvar
