#pragma once

#include "zelvar/search/Search.h"

namespace zelvar {

/// What a line says of a search, in the user's language.
enum class SearchPhase { Searching, Done, Stopped };
/// `shown` results are in the list.
[[nodiscard]] DString SearchInWords(SearchPhase phase, SearchProgress const &progress, std::int64_t shown);

/// The folder of an item that was found below `root`, as a list beside it says it: "sub/deeper", "." for the root
/// itself, and the whole path for what lies elsewhere.
[[nodiscard]] DString FolderBelow(std::string_view folder, std::string_view root);

} // namespace zelvar
