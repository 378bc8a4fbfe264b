#pragma once

#include "zelvar/data/RDIDriver.h"

#include <cstdint>

namespace zelvar::gdal {

/// GDAL's handle of a band.
using BandHandle = void *;

/// Part of a band, pixels, and the size that it is brought to.
struct Window {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    int outWidth = 0;
    int outHeight = 0;
};

/// How GDAL itself brings a window to another size.
enum class Reduction { Pick, Average };

/// Reads a window that lies inside the band, by one call of GDAL that polls `stop`: complex numbers as their magnitude,
/// signed bytes with their sign. False if it fails or was stopped.
template <class Sample>
[[nodiscard]] bool ReadSamples(BandHandle band, Window const &window, Reduction reduction, Sample *out,
                               StopSignal const *stop);

/// The band, or the overview of it that is just fine enough to read `ratio` pixels of the band as one.
[[nodiscard]] BandHandle LevelFor(BandHandle band, double ratio);
/// The same part of a level of the band's pyramid.
[[nodiscard]] Window OnLevel(Window const &window, BandHandle band, BandHandle level);

[[nodiscard]] bool IsSignedByte(BandHandle band);
/// What the samples of a band mean by "no data"; NaN for nothing.
[[nodiscard]] double NodataOf(BandHandle band);
[[nodiscard]] bool IsStopped(StopSignal const *stop);

} // namespace zelvar::gdal
