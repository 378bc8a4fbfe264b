#pragma once

#include "zelvar/data/gdal/BandReading.h"
#include "zelvar/data/gdal/Salvage.h"
#include "zelvar/pixels/RowResampler.h"

#include <vector>

namespace zelvar::gdal {

/// Whether a file's bands can be read side by side: of one size and type that need no conversion, with one mask and one
/// value for no data. A single band always can.
[[nodiscard]] bool CanBeReadTogether(std::vector<BandHandle> const &bands);

struct Mixing {
    MixingKernel kernel = MixingKernel::Cubic;
    double nodata = 0;          ///< of all the bands; NaN for none
    Salvage *salvage = nullptr; ///< of damaged bands: then nothing fails but by a stop; not owned
};
/// Brings a window that lies inside the bands, which `CanBeReadTogether`, to another size by mixing samples: one plane
/// a band. The rows are read in strips of whole blocks, all bands at once, so that each block is decoded once, and a
/// strip is mixed on a thread of its own while the next one is read. Memory stays bounded whatever the image's size,
/// unless a single block is larger. False if it fails or was stopped.
template <class Sample>
[[nodiscard]] bool ReadMixed(std::vector<BandHandle> const &bands, Window const &window, Mixing const &mixing,
                             Sample *out, StopSignal const *stop);

} // namespace zelvar::gdal
