#pragma once

#include "zelvar/base/Export.h"

#include <cstddef>
#include <vector>

namespace zelvar {

/// A rectangle of samples, rows packed, and the window in it that is to be brought to another size.
template <class Sample>
struct Plane {
    std::vector<Sample> samples;
    int width = 0;
    int height = 0;
    double windowX = 0;
    double windowY = 0;
    double windowWidth = 0;
    double windowHeight = 0;
};

enum class MixingKernel { Bilinear, Cubic };

/// Resamples the window to `outWidth` * `outHeight` samples. Each result mixes the samples around its centre, weighted
/// by the kernel, which is widened when the window is reduced; what lies outside the plane does not count.
///
/// Samples equal to `nodata` (NaN for none), NaN and infinities do not count either: where the nearest one is such, the
/// result is 0.
template <class Sample>
void Resample(Plane<Sample> const &plane, MixingKernel kernel, double nodata, Sample *out, int outWidth, int outHeight);

} // namespace zelvar
