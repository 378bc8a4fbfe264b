#pragma once

#include "zelvar/model/ItemListing.h"

namespace zelvar::tool {

/// What "ls" and "find" print of an item: kind, size, time, name and path, between tabs, behind them what a series has
/// and what is missing of it. With the end of the line.
[[nodiscard]] DString LineOf(ListedItem const &item);
/// The same as a JSON object, behind an end of line.
[[nodiscard]] DString JsonOf(ListedItem const &item);
/// A JSON string: control bytes as JSON has them, bytes that are not UTF-8 as the text \xHH, which a command takes
/// back.
[[nodiscard]] DString JsonText(DString const &bytes);
/// To stdout, as it is.
void Print(DString const &text);

} // namespace zelvar::tool
