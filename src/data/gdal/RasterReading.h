#pragma once

#include "zelvar/data/RDIDriver.h"
#include "zelvar/data/gdal/BandReading.h"
#include "zelvar/data/gdal/Salvage.h"

#include <functional>

namespace zelvar::gdal {

/// A window of a channel, pixels, and how it is brought to a size.
struct ReadRequest {
    Window window{};
    RDIDriver::Resampling resampling = RDIDriver::Nearest;
    bool usePyramid = true; ///< GDAL may take a level by itself even without it, where pixels are picked or averaged
    bool clip = true;
    StopSignal const *stop = nullptr; ///< not owned, may be null
    Salvage *salvage = nullptr;       ///< where samples are mixed, or picked through a palette; not owned
};

/// The type that samples of a band are delivered in: GDAL's own where `RDIDataType` has it. Signed 8 bits, 64 bits,
/// double and complex numbers (their magnitude) are delivered as 32-bit floats.
[[nodiscard]] RDIDataType DeliveredType(BandHandle band);

/// Reads as `RDIDriver::ReadBlockRsmpl` tells, into `buffer` of `outWidth` * `outHeight` samples of `type`, the band's
/// `DeliveredType`. NaN, infinities and nodata become zeros, but for `RDIDriver::AsStored`.
///
/// Where a pyramid serves, its level just above the wanted size is read and brought there by one step of the resampling
/// asked for. Bilinear and cubic reading goes strip by strip, see `ReadMixed`.
[[nodiscard]] bool ReadWindow(BandHandle band, RDIDataType type, ReadRequest const &request, void *buffer);
/// The same of bands whose `DeliveredType` is one: one plane a band. What a file keeps side by side is read once.
[[nodiscard]] bool ReadWindows(std::vector<BandHandle> const &bands, RDIDataType type, ReadRequest const &request,
                               void *buffer);

/// Bands of one size and type as one picture: rows of them, one under the other.
struct BandGrid {
    int columns = 1;
    int rows = 1;
    std::function<BandHandle(int column, int row)> at; ///< asked only for bands that are read; null fails the read
};
/// The same over all of the picture. Samples of different bands are never mixed: each sample of the result is made of
/// the one band that its centre lies in.
[[nodiscard]] bool ReadWindow(BandGrid const &grid, RDIDataType type, ReadRequest const &request, void *buffer);

/// Reads a band through its palette, to red, green and blue; pixels are picked, never mixed.
[[nodiscard]] bool ReadPaletteWindow(BandHandle band, ReadRequest const &request, unsigned char *rgb);
[[nodiscard]] bool HasPalette(BandHandle band);

} // namespace zelvar::gdal
