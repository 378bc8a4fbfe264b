#pragma once

#include "zelvar/base/DString.h"

#include <vector>

namespace zelvar {

/// The names in what a user typed into a file dialog's name field: one, blanks around it dropped, or several in double
/// quotes. A quote that is not closed belongs to the name.
[[nodiscard]] ZELVAR_API std::vector<DString> SplitTypedNames(std::string_view text);

/// `path` with ".extension" behind it, unless its name has that extension, or one that `masks`, those of all filters,
/// ask for, or ends in a dot. "Run 1.2" has none.
[[nodiscard]] ZELVAR_API DString WithExtension(DString path, std::string_view extension, std::string_view masks);

/// The name with the extension that another filter asks for, if the present one is just what `masks`, the former
/// filter's, ask for; otherwise the user meant what stands there.
[[nodiscard]] ZELVAR_API DString ForOtherFilter(DString name, std::string_view masks, std::string_view extension);

/// `text` as an absolute path: below `folder`, or from the root where it begins with a separator. Without ".", ".." and
/// doubled separators, as far as the text alone tells.
[[nodiscard]] ZELVAR_API DString AbsolutePath(std::string_view folder, std::string_view text);

/// Whether the text asks for files by a mask, as "*.tif".
[[nodiscard]] ZELVAR_API bool IsMask(std::string_view text);

} // namespace zelvar
