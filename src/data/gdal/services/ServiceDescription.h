#pragma once

#include "zelvar/data/gdal/services/Capabilities.h"

#include <functional>

namespace zelvar::services {

/// Whether the first axis of a system points north, as with latitudes before longitudes; nothing for a system that is
/// not known.
using AxisQuestion = std::function<std::optional<bool>(DString const &system)>;

/// The longer side of a map of any resolution, pixels: 2^30 = 1024 << 20, so that its coarsest level is one tile.
inline constexpr int kAnyResolution = 1 << 30;

// What GDAL opens as an image: its own XML, without a secret. Maps and tiles are kept for a while below `cache`, a
// folder of GDAL's.

/// Of a WMS layer with the style that the address names. Its coarsest level comes with one request, in the first system
/// of the layer that is known. Nothing, with the reason in `error`, for one that is nowhere on the earth.
[[nodiscard]] std::optional<DString> DescribeMap(ServiceAddress const &address, Capabilities const &capabilities,
                                                 Offer const &layer, AxisQuestion const &isNorthFirst,
                                                 DString const &cache, DError &error);
/// Of a WMTS layer; `document` is a file of GDAL's with the capabilities.
[[nodiscard]] DString DescribeTiles(ServiceAddress const &address, Capabilities const &capabilities, Offer const &layer,
                                    DString const &document, DString const &cache);
/// Of a coverage of a WCS.
[[nodiscard]] DString DescribeCoverage(ServiceAddress const &address, Capabilities const &capabilities);

/// Of the type of a WFS that the address names. Its capabilities are `document`, from the root on; of the types in them
/// GDAL gets that one alone, where it can be cut out, as it asks the server about its neighbours, too.
[[nodiscard]] DString DescribeFeatures(ServiceAddress const &address, std::string_view document);

} // namespace zelvar::services
