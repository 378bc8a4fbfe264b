#pragma once

#include <cstddef>
#include <vector>

namespace zelvar::gdal {

/// Tells how the bands of a data set make up channels: which of them are slices and time frames of the same channel.
class SliceGrid {
public:
    /// Each band is a channel of its own.
    explicit SliceGrid(int bands) : m_channels{{bands, 1}} {}
    /// What a netCDF file says of the dimensions behind its bands. Time dimensions are told by their axis "T", by the
    /// name "time" or "t", or by a unit "... since ...", in this order of trust: the most trusted one, of several alike
    /// the outermost, runs over frames. Dimensions named like spectral bands ("band", "channel", "wavelength" and so
    /// on) run over channels, all others over slices, the last one fastest.
    ///
    /// Every band is a channel of its own if the metadata contradict the bands, or a channel would have more pixels on
    /// a side than an `int` holds.
    [[nodiscard]] static SliceGrid OfNetCdf(void *dataset);

    [[nodiscard]] int Channels() const { return Count(m_channels); }
    [[nodiscard]] int Slices() const { return Count(m_slices); }
    [[nodiscard]] int Frames() const { return Count(m_frames); }
    /// GDAL's number of a band, from 1 on. All three must be there.
    [[nodiscard]] int BandOf(int channel, int slice, int frame) const;

private:
    /// One dimension: how long it is, and how many bands lie between two of its steps.
    struct Axis {
        int length = 1;
        int stride = 1;
    };
    using Axes = std::vector<Axis>; ///< outermost first

    SliceGrid() = default;
    static int Count(Axes const &axes);
    static int Offset(Axes const &axes, int index);

    Axes m_channels;
    Axes m_slices;
    Axes m_frames;
};

} // namespace zelvar::gdal
