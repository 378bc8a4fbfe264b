#pragma once

#include "zelvar/base/DString.h"

#include <vector>

namespace zelvar {

/// An entry of a file dialog's type box.
struct FileFilter {
    DString description{};
    DString masks{}; ///< separated by ";", as "*.tif;*.tiff"

    friend bool operator==(FileFilter const &, FileFilter const &) = default;
};

/// Reads "description|pattern|description|pattern||". Ends at a pair of two empty fields or with the text; a
/// description without a pattern at the end counts.
[[nodiscard]] ZELVAR_API std::vector<FileFilter> ParseFilterText(std::string_view text);

/// What the type box shows: the description, and its masks behind it unless it names them itself.
[[nodiscard]] ZELVAR_API DString ShownFilter(FileFilter const &filter);

/// The masks one by one, without blanks around them. Empty for masks that let every name pass.
[[nodiscard]] ZELVAR_API std::vector<DString> SingleMasks(std::string_view masks);

/// The extension that the first mask asks for that asks for just one: "tif" of "*.t?f;*.tif". Empty if none does.
[[nodiscard]] ZELVAR_API DString ConcreteExtension(std::string_view masks);

/// The extension that a name without one gets: that of the chosen filter, else the given one, which may be written as
/// "txt", ".txt" or "*.txt". None under a filter that lets every name pass.
[[nodiscard]] ZELVAR_API DString DefaultExtension(std::string_view masks, std::string_view given);

} // namespace zelvar
