#pragma once

#include "zelvar/base/PathStyle.h"

#include <optional>

namespace zelvar {

/// How the lists of the open data source dialog are sorted, as it is written to the settings.
struct DialogSorting {
    bool foldersAscending = true;
    bool hierarchyAscending = true;
    int column = 0; ///< of the main list, 0 to 2
    bool mainAscending = true;

    friend bool operator==(DialogSorting const &, DialogSorting const &) = default;
};

/// "F:H:C:M" with "ASC" or "DSC" for F, H and M and a digit for C.
[[nodiscard]] ZELVAR_API DString SortingToText(DialogSorting const &sorting);
/// Nothing unless the text has that shape; any three letters but "DSC" mean ascending.
[[nodiscard]] ZELVAR_API std::optional<DialogSorting> SortingFromText(std::string_view text);

/// A typed path made ready for the system: blanks cut at both ends, and each "/" up to the first ":" or "?" turned into
/// the separator of `style`, two at the start as well.
[[nodiscard]] ZELVAR_API DString FixTypedPath(std::string_view path, PathStyle style = PathStyle::Native());

} // namespace zelvar
