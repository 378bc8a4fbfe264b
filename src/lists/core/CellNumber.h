#pragma once

#include <optional>
#include <string_view>

namespace zelvar {

/// The number that a cell's text begins with, whatever the locale: blanks, a sign, decimal or hexadecimal digits, "inf"
/// or "nan". Nothing if it begins with none.
[[nodiscard]] std::optional<double> ParseCellNumber(std::string_view text);

} // namespace zelvar
