#pragma once

#include "zelvar/base/DString.h"

#include <vector>

namespace zelvar::gdal {

/// What the text of a virtual data set, a mosaic or layers over other sources, says of where its data lies.
struct VirtualText {
    std::vector<DString> names; ///< of files and of parts of files, as they are written
    DString fault;              ///< why GDAL must not get the text, in words; empty if it may
};

/// Reads the text as GDAL does: by its own parser, so that nothing is seen there that was not seen here. No document
/// types, and so no entities; no programs; no statements that open something. To be called inside a `GdalScope`.
[[nodiscard]] VirtualText ReadVirtualText(DString const &text);

/// Whether a text names something on the network: "http://...", "/vsicurl/...", anywhere in it.
[[nodiscard]] bool HoldsAddress(std::string_view text);

} // namespace zelvar::gdal
