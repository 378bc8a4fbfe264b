#pragma once

#include "zelvar/base/DString.h"

namespace zelvar {

/// What a path looks like on a platform. Every rule that speaks of separators takes one, native by default.
struct PathStyle {
    char separator = '/';
    bool driveLetters = false; ///< "C:" begins a path
    bool unc = false;          ///< two separators begin a server name

    [[nodiscard]] static constexpr PathStyle Native() { return {}; }
    [[nodiscard]] static constexpr PathStyle Windows() { return {'\\', true, true}; }

    /// The separator; with `Windows` a slash as well.
    [[nodiscard]] constexpr bool IsSeparator(char c) const { return c == separator || (separator == '\\' && c == '/'); }
    friend bool operator==(PathStyle const &, PathStyle const &) = default;
};

/// `directory` and `name` with exactly one separator between them; an empty part gives the other one.
[[nodiscard]] ZELVAR_API DString AppendPath(std::string_view directory, std::string_view name,
                                            PathStyle style = PathStyle::Native());
/// What follows the last separator.
[[nodiscard]] ZELVAR_API std::string_view FileNameOf(std::string_view path, PathStyle style = PathStyle::Native());
/// What follows the last dot of the file name, without it; a dot at the start of the name begins no extension.
[[nodiscard]] ZELVAR_API std::string_view ExtensionOf(std::string_view path, PathStyle style = PathStyle::Native());
/// The path without its last element and separator; "/" stays. Empty when there is no separator.
[[nodiscard]] ZELVAR_API std::string_view ParentPathOf(std::string_view path, PathStyle style = PathStyle::Native());
/// True for "scheme://..." with a scheme of at least two letters.
[[nodiscard]] ZELVAR_API bool IsUrl(std::string_view path);

/// True if `name` matches one of the masks in `masks`, separated by ";". "*" and "?" stand for any characters and for
/// one character, "[tT]", "[0-9]" and "[!a-c]" for one of a set; a "[" stands for itself, too, so that the name
/// "a[1].tif" matches itself. Case is not regarded, blanks before a mask are passed over, "*.*" matches every name.
[[nodiscard]] ZELVAR_API bool PathMatchSpec(std::string_view name, std::string_view masks);

} // namespace zelvar
