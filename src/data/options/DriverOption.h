#pragma once

#include "zelvar/base/DString.h"

#include <optional>
#include <vector>

namespace zelvar {

/// What a driver says of one of its options.
struct DriverOption {
    enum class Kind { Switch, WholeNumber, Number, Choice, Text };

    DString name{};
    Kind kind = Kind::Text;
    DString usual{}; ///< the value that it has by itself; empty where the driver does not tell
    std::optional<double> least{};
    std::optional<double> most{};
    int longest = 0; ///< bytes of a text; 0 for no limit
    DString description{};
    std::vector<DString> choices{};
    bool forRasters = true;
    bool forLayers = true;
    bool isBarred = false; ///< not taken here: it would run statements, write, or lead to other places
    bool isSecret = false; ///< a password or the like: not shown, nor kept

    friend bool operator==(DriverOption const &, DriverOption const &) = default;
};

/// The options of a driver, in its order.
struct DriverOptionLists {
    std::vector<DriverOption> open{};   ///< for reading
    std::vector<DriverOption> create{}; ///< for writing
};

/// "switch", "whole number", "number", "choice" or "text": for scripts.
[[nodiscard]] ZELVAR_API char const *ToText(DriverOption::Kind kind);

} // namespace zelvar
