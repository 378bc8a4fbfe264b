#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Export.h"
#include "zelvar/pixels/DCanvas.h"

#include <functional>
#include <map>
#include <optional>

namespace zelvar {

/// What stands in a PNG file beside its picture: texts by their keys.
using PngTexts = std::map<DString, DString>;

/// The bytes of a PNG file, quickly made and small enough; empty for an empty picture. Keys have 1 to 79 bytes.
[[nodiscard]] ZELVAR_API DString EncodePng(DCanvas const &picture, PngTexts const &texts);

/// The picture in the bytes of a PNG file, whatever its kind: what can be seen through stands before white. Nothing for
/// damaged bytes, sides above 2048, or if `accept` does not want one with these texts, which stand before the pixels.
[[nodiscard]] ZELVAR_API std::optional<DCanvas> DecodePng(std::string_view bytes,
                                                          std::function<bool(PngTexts const &)> const &accept);

} // namespace zelvar
