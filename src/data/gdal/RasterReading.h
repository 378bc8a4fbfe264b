#pragma once

#include "zelvar/data/RDIDriver.h"

#include <vector>

namespace zelvar::gdal {

/// GDAL's handle of a band.
using BandHandle = void *;

/// A window of a channel, pixels, and the size that it is brought to.
struct ReadRequest {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    int outWidth = 0;
    int outHeight = 0;
    RDIDriver::Resampling resampling = RDIDriver::Nearest;
    bool usePyramid = true;
    bool clip = true;
    StopSignal const *stop = nullptr; ///< not owned, may be null
};

/// The type that samples of a band are delivered in: GDAL's own where `RDIDataType` has it. Signed 8 bits, 64 bits,
/// double and complex numbers (their magnitude) are delivered as 32-bit floats.
[[nodiscard]] RDIDataType DeliveredType(BandHandle band);

/// Reads as `RDIDriver::ReadBlockRsmpl` tells, into `buffer` of `outWidth` * `outHeight` samples of `DeliveredType`.
/// NaN, infinities and nodata become zeros.
///
/// Where a pyramid serves, its level just above the wanted size is read and brought there by one step of the resampling
/// asked for. Without one, bilinear and cubic reading of a window more than twice as large goes by two steps: averages
/// to twice the wanted size first, strip by strip, so that memory stays bounded whatever the image's size.
[[nodiscard]] bool ReadWindow(BandHandle band, RDIDataType type, ReadRequest const &request, void *buffer);

/// The same through the band's palette, to red, green and blue; pixels are picked, never mixed.
[[nodiscard]] bool ReadPaletteWindow(BandHandle band, ReadRequest const &request, unsigned char *rgb);
[[nodiscard]] bool HasPalette(BandHandle band);

} // namespace zelvar::gdal
