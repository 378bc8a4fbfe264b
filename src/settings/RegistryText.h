#pragma once

#include "zelvar/settings/RegistryValue.h"

#include <optional>

namespace zelvar {

/// Largest value that is made of a text, bytes: a size is a claim of whoever wrote it.
constexpr std::size_t kMostRegistryBytes = std::size_t{64} << 20U;

/// The text that stands for a value in a snapshot: a text as it is, a number in signed decimal, everything else in
/// hexadecimal. Zero bytes at the end of a text are left out: reading fills them in. A number of an unusual size has
/// "0x" in front and stands in hexadecimal.
[[nodiscard]] DString RegistryTextOf(RegistryValue const &value);

/// The value of `size` bytes that a text stands for. Nothing for a size that is negative or too large and for broken
/// hexadecimal. A text that is too long is cut, a number that is none counts as 0; with `strict` they are nothing.
[[nodiscard]] std::optional<RegistryValue> RegistryValueOf(std::uint32_t type, long long size, DString const &text,
                                                           bool strict);

} // namespace zelvar
