#pragma once

#include "zelvar/base/DString.h"

#include <optional>
#include <vector>

namespace zelvar::platform {

/// An address "smb://[user[:password]@]host[:port]/share/folder/file" taken apart. The password is not part of it: see
/// `TakeSecrets`.
struct SmbAddress {
    DString authority;          ///< host, with user and port where they are given, as written
    std::vector<DString> parts; ///< share, folders, file; plain bytes

    friend bool operator==(SmbAddress const &, SmbAddress const &) = default;
};

[[nodiscard]] ZELVAR_API bool IsSmbAddress(std::string_view text);
/// Nothing for another scheme and for "smb://" alone, which would ask the whole network. "." and ".." elements and
/// broken escapes are refused.
[[nodiscard]] ZELVAR_API std::optional<SmbAddress> ParseSmbAddress(std::string_view text);
/// `part` as an element of an address: what has a meaning there is written as %HH.
[[nodiscard]] ZELVAR_API DString EscapedSmbPart(std::string_view part);

} // namespace zelvar::platform
