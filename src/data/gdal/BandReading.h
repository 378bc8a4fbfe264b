#pragma once

#include "zelvar/data/RDIDriver.h"

#include <cstdint>
#include <vector>

namespace zelvar::gdal {

/// GDAL's handle of a band.
using BandHandle = void *;

/// Part of a band.
using Window = RDIWindow;

/// How GDAL itself brings a window to another size.
enum class Reduction { Pick, Average };

/// Reads a window that lies inside the band, by one call of GDAL that polls `stop`: complex numbers as their magnitude,
/// signed bytes with their sign. False if it fails or was stopped.
template <class Sample>
[[nodiscard]] bool ReadSamples(BandHandle band, Window const &window, Reduction reduction, Sample *out,
                               StopSignal const *stop);

/// Whole rows of bands, or a part of each, at full size; pixels.
struct Rows {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
};
/// Reads rows of bands that are `CanBeReadTogether`, the samples of a pixel side by side, by one call of GDAL that
/// polls `stop`. False if it fails or was stopped.
template <class Sample>
[[nodiscard]] bool ReadRows(std::vector<BandHandle> const &bands, Rows const &rows, Sample *out,
                            StopSignal const *stop);

/// The band, or the overview of it that is just fine enough to read `ratio` pixels of the band as one.
[[nodiscard]] BandHandle LevelFor(BandHandle band, double ratio);
/// The same part of a level of the band's pyramid.
[[nodiscard]] Window OnLevel(Window const &window, BandHandle band, BandHandle level);

[[nodiscard]] bool IsSignedByte(BandHandle band);
/// Whether samples are delivered as something that GDAL does not make of them.
[[nodiscard]] bool IsConverted(BandHandle band);
/// What the samples of a band mean by "no data"; NaN for nothing.
[[nodiscard]] double NodataOf(BandHandle band);
[[nodiscard]] bool IsStopped(StopSignal const *stop);

} // namespace zelvar::gdal
