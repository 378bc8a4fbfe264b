#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/base/FileDescriptor.h"

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <vector>

namespace zelvar::wire {

/// Puts bytes, part by part, into memory without a name that nobody changes any more, to be handed to another process.
/// Not open if there is no memory.
[[nodiscard]] ZELVAR_API FileDescriptor SealBytes(std::initializer_list<std::span<std::uint8_t const>> parts);
/// How many bytes such memory holds; nothing for what is none, or may still be changed.
[[nodiscard]] ZELVAR_API std::optional<std::size_t> SealedSize(int file);
/// What it holds; nothing for what is none, and for more than `most` bytes.
[[nodiscard]] ZELVAR_API std::optional<std::vector<std::uint8_t>> UnsealBytes(int file, std::size_t most);

} // namespace zelvar::wire
