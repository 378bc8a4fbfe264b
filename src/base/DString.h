#pragma once

#include "zelvar/base/Export.h"

#include <cstdarg>
#include <string>
#include <string_view>
#include <vector>

namespace zelvar {

/// Text: UTF-8. File names are bytes and may hold anything but NUL; they are carried through unchanged.
using DString = std::string;

/// printf-style formatting.
[[nodiscard]] ZELVAR_API DString Format(char const *format, ...) __attribute__((format(printf, 1, 2)));
/// The same with the arguments of the caller's own "...".
[[nodiscard]] ZELVAR_API DString FormatV(char const *format, std::va_list arguments)
    __attribute__((format(printf, 1, 0)));

/// Equal when letter case is not regarded. ASCII letters and the simple case pairs of Latin, Greek and Cyrillic.
[[nodiscard]] ZELVAR_API bool EqualNoCase(std::string_view a, std::string_view b);
[[nodiscard]] ZELVAR_API bool StartsWithNoCase(std::string_view text, std::string_view start);
/// The text in the form that `EqualNoCase` compares: for keys of look-ups.
[[nodiscard]] ZELVAR_API DString FoldCase(std::string_view text);

/// Blanks, tabs and line ends cut from both ends.
[[nodiscard]] ZELVAR_API std::string_view Trimmed(std::string_view text);

/// The pieces between separators, empty ones included: "a;;b" gives three.
[[nodiscard]] ZELVAR_API std::vector<DString> Split(std::string_view text, char separator);

/// "a", "b" with ";" give "a;b"; empty pieces are left out.
[[nodiscard]] ZELVAR_API DString JoinNotEmpty(std::vector<DString> const &pieces, char separator);

/// `value` with `decimals` digits behind the point, in the C locale.
[[nodiscard]] ZELVAR_API DString FormatDouble(double value, int decimals);

/// The bytes as valid UTF-8: each invalid byte becomes U+FFFD. For showing, never for opening.
[[nodiscard]] ZELVAR_API DString ToValidUtf8(std::string_view bytes);

/// Control bytes (below 0x20 and 0x7F) written as \xHH and a backslash that would read as such an escape kept as it is:
/// for lines that scripts read.
[[nodiscard]] ZELVAR_API DString EscapeControlBytes(std::string_view text);

} // namespace zelvar
