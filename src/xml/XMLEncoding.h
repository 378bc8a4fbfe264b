#pragma once

#include "zelvar/base/DString.h"

#include <optional>

namespace zelvar {

/// What an XML document is written in, of what `RecodedXml` reads: by its first bytes, else as it declares. Empty for
/// UTF-8, which also stands for an encoding that is not known.
[[nodiscard]] DString EncodingOfXml(std::string_view xml);

/// The document as UTF-8; nothing, and `reason` set, if its bytes are not what `encoding` allows or make more than
/// `limit` bytes.
[[nodiscard]] std::optional<DString> RecodedXml(std::string_view xml, DString const &encoding, std::size_t limit,
                                                DString &reason);

/// Valid UTF-8 without the characters that no XML may hold, not even by their numbers.
[[nodiscard]] bool IsXmlText(std::string_view text);

} // namespace zelvar
