#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/pixels/MixKernels.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zelvar {

/// Rows of a picture, the window in them that is brought to another size, and that size.
struct ResampleArea {
    int width = 0;    ///< of a row, pixels
    int height = 0;   ///< rows
    int channels = 1; ///< samples of a pixel, side by side in a row
    double windowX = 0;
    double windowY = 0;
    double windowWidth = 0;
    double windowHeight = 0;
    int outWidth = 0;
    int outHeight = 0;
};

enum class MixingKernel { Bilinear, Cubic };

/// Brings a picture to another size while its rows come, from the top to the bottom: what it keeps is a few rows,
/// whatever the picture's height. Each result mixes the samples around its centre, weighted by the kernel, which is
/// widened when the window is reduced; what lies outside the picture does not count. Where the window is reduced to
/// less than half, whole rows, and beyond that columns, are averaged first.
///
/// Samples equal to `nodata` (NaN for none), NaN and infinities do not count either: where the nearest one is such, the
/// result is 0. Where there are masks, averages are made of what counts and are 0 where nothing does, so that edges
/// stay soft.
template <class Sample>
class RowResampler {
public:
    /// The results go to `out`, one plane of `outWidth` * `outHeight` samples a channel, as they get ready: all are
    /// there with the last row.
    RowResampler(ResampleArea const &area, MixingKernel kernel, double nodata, Sample *out);
    /// The next row. `mask` has a byte a pixel, 0 for one that is left out; null for none.
    void AddRow(Sample const *samples, std::uint8_t const *mask = nullptr);

private:
    using Real = mix::MixedAs<Sample>;
    using Row = std::vector<Real>;
    using Rows = mix::RowBuffer<Real>;
    struct Axis {
        int reduction = 1; ///< so many samples are averaged to one
        mix::Taps<Real> taps;
        std::vector<int> nearest; ///< of each result, the sample that its centre lies in
    };
    static Axis MakeAxis(MixingKernel kernel, int size, double offset, double extent, int outSize, int reduction);
    [[nodiscard]] bool IsValid(Sample sample) const;
    [[nodiscard]] bool AreValid(Sample const *samples, std::uint8_t const *mask) const;
    void AddInvalid(Sample const *samples, std::uint8_t const *mask, Real *sums);
    [[nodiscard]] Real *Sums();
    void EndAverage();
    void EndInvalidAverage(std::size_t row, Real *values);
    void NarrowAverage(Row const &sums, Real *to) const;
    void MixRow();
    void PickNearest(Real *to) const;
    void EndBlock();
    void EndColumns(std::size_t begin, std::size_t end);
    void PutRow(std::size_t row, std::size_t begin, std::size_t end);

    ResampleArea m_area;
    mix::Kernels<Real> const &m_kernels;
    mix::RowKernels<Sample> const &m_rowKernels;
    double m_nodata;
    bool m_hasNodata; ///< a sample can have that value
    Sample *m_out;    ///< not owned
    Axis m_columns;
    Axis m_rows;
    std::size_t m_rowLength = 0; ///< of a row, samples
    std::size_t m_length = 0;    ///< of an averaged row, samples

    int m_added = 0;    ///< rows of the picture
    int m_averaged = 0; ///< rows of averages
    bool m_isValid = true;
    bool m_hasMask = false;
    Row m_sums;                     ///< of the rows that are averaged now; empty where these go to `m_averages` at once
    Row m_counts;                   ///< of the samples in them that count, where some do not
    std::size_t m_depth = 0;        ///< rows of averages that are kept, the last ones
    Rows m_averages;                ///< 0 for what does not count
    Rows m_validity;                ///< 1 for a sample that counts, else 0; empty while all do
    std::vector<bool> m_isRowValid; ///< all samples of it count, and its `m_validity` is not filled
    Row m_ones;

    std::size_t m_mixed = 0;     ///< rows of the result
    std::size_t m_inBlock = 0;   ///< the last ones of these, which are narrowed together
    Rows m_blockRows;            ///< `mix::kRows`
    Rows m_weightRows;           ///< the weights behind them; empty while all samples count
    Rows m_nearest;              ///< of each result, the nearest sample; NaN where that does not count
    std::vector<bool> m_isPlain; ///< all samples behind the row count
    Row m_block;
    Row m_narrowBlock;
    Rows m_narrowRows;
    Rows m_narrowWeights;
};

} // namespace zelvar
