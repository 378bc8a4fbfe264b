#include "zelvar/pixels/RowResampler.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <type_traits>

namespace zelvar {

namespace {

constexpr std::size_t kColumnsTogether = 64; // results of a row that are made of one block

double KernelAt(MixingKernel kernel, double distance) {
    double const d = std::abs(distance);
    if (kernel == MixingKernel::Bilinear)
        return d < 1 ? 1 - d : 0;
    if (d < 1)
        return (1.5 * d - 2.5) * d * d + 1;
    return d < 2 ? ((-0.5 * d + 2.5) * d - 4) * d + 2 : 0;
}

template <class Sample>
bool CanBe(double nodata) {
    if constexpr (std::is_integral_v<Sample>)
        return nodata >= static_cast<double>(std::numeric_limits<Sample>::min()) &&
               nodata <= static_cast<double>(std::numeric_limits<Sample>::max()) && nodata == std::floor(nodata);
    return !std::isnan(nodata);
}

template <class Sample, class Real>
Sample ToSample(Real value) {
    if constexpr (std::is_floating_point_v<Sample>) {
        return static_cast<Sample>(value);
    } else {
        constexpr auto kMin = static_cast<Real>(std::numeric_limits<Sample>::min());
        constexpr auto kMax = static_cast<Real>(std::numeric_limits<Sample>::max());
        Real const rounded = value + (value < 0 ? Real(-0.5) : Real(0.5));
        Real const low = rounded < kMin ? kMin : rounded;
        Real const inside = low > kMax ? kMax : low;
        using Wide = std::conditional_t<sizeof(Sample) == 4, std::int64_t, std::int32_t>;
        return static_cast<Sample>(static_cast<Wide>(inside));
    }
}

/// How many samples are averaged to one, so that `left` times as many remain as there are results, or a few more.
int ReductionOf(double ratio, double left) { return std::max(1, static_cast<int>(std::floor(ratio / left))); }

} // namespace

template <class Sample>
auto RowResampler<Sample>::MakeAxis(MixingKernel kernel, int size, double offset, double extent, int outSize,
                                    int reduction) -> Axis {
    Axis axis{.reduction = reduction, .taps = {}, .nearest = {}};
    size = (size + reduction - 1) / reduction;
    double const step = extent / reduction / outSize;
    double const widening = std::max(step, 1.0);
    double const radius = (kernel == MixingKernel::Cubic ? 2 : 1) * widening;
    for (int i = 0; i < outSize; ++i) {
        double const centre = offset / reduction + (i + 0.5) * step;
        int const nearest = std::clamp(static_cast<int>(std::floor(centre)), 0, size - 1);
        int const first = std::clamp(static_cast<int>(std::floor(centre - radius + 0.5)), 0, nearest);
        int const last = std::clamp(static_cast<int>(std::ceil(centre + radius - 0.5)), nearest + 1, size);
        double total = 0;
        for (int j = first; j < last; ++j)
            total += KernelAt(kernel, (j + 0.5 - centre) / widening);
        for (int j = first; j < last; ++j) {
            double const weight = total > 1e-6 ? KernelAt(kernel, (j + 0.5 - centre) / widening) / total
                                               : static_cast<double>(j == nearest);
            axis.taps.weights.push_back(static_cast<Real>(weight));
        }
        axis.taps.first.push_back(first);
        axis.taps.begin.push_back(axis.taps.weights.size());
        axis.nearest.push_back(nearest);
    }
    return axis;
}

template <class Sample>
RowResampler<Sample>::RowResampler(ResampleArea const &area, MixingKernel kernel, double nodata, Sample *out)
    : m_area(area), m_kernels(mix::Fastest<mix::Kernels<Real>>()),
      m_rowKernels(mix::Fastest<mix::RowKernels<Sample>>()), m_nodata(nodata), m_hasNodata(CanBe<Sample>(nodata)),
      m_out(out),
      // Averaging a row is cheap beside mixing it; averaging columns is not, and keeps the rows short.
      m_columns(MakeAxis(kernel, area.width, area.windowX, area.windowWidth, area.outWidth,
                         area.windowWidth / area.outWidth < 8 ? 1 : ReductionOf(area.windowWidth / area.outWidth, 4))),
      m_rows(MakeAxis(kernel, area.height, area.windowY, area.windowHeight, area.outHeight,
                      ReductionOf(area.windowHeight / area.outHeight, 2))) {
    auto const channels = static_cast<std::size_t>(area.channels);
    auto const width = static_cast<std::size_t>(area.width);
    m_rowLength = width * channels;
    if (m_columns.reduction > 1)
        m_sums.resize(m_rowLength);
    m_length = (width + static_cast<std::size_t>(m_columns.reduction) - 1) /
               static_cast<std::size_t>(m_columns.reduction) * channels;
    m_depth = std::max<std::size_t>(m_rows.taps.Longest(), 1);
    m_averages = Rows(m_depth, m_length);
    m_isRowValid.resize(m_depth, true);
    m_blockRows = Rows(mix::kRows, m_length);
    m_narrowRows = Rows(mix::kRows, kColumnsTogether * channels);
    m_narrowBlock.resize(kColumnsTogether * channels * mix::kRows);
    m_isPlain.resize(mix::kRows, true);
}

template <class Sample>
bool RowResampler<Sample>::IsValid(Sample sample) const {
    if constexpr (std::is_integral_v<Sample>)
        return !m_hasNodata || sample != static_cast<Sample>(m_nodata);
    else
        return std::isfinite(sample) && sample != static_cast<Sample>(m_nodata);
}

template <class Sample>
bool RowResampler<Sample>::AreValid(Sample const *samples, std::uint8_t const *mask) const {
    if (mask != nullptr && std::find(mask, mask + m_area.width, std::uint8_t{0}) != mask + m_area.width)
        return false;
    if (std::is_integral_v<Sample> && !m_hasNodata)
        return true;
    unsigned invalid = 0; // without a way out the compiler makes vectors of it
    for (std::size_t i = 0; i < m_rowLength; ++i)
        invalid |= static_cast<unsigned>(!IsValid(samples[i]));
    return invalid == 0;
}

template <class Sample>
void RowResampler<Sample>::AddRow(Sample const *samples, std::uint8_t const *mask) {
    if (m_mixed == static_cast<std::size_t>(m_area.outHeight))
        return;
    int const place = m_added++ % m_rows.reduction;
    if (place == 0)
        m_isValid = true;
    m_hasMask = m_hasMask || mask != nullptr;
    Real *const sums = Sums();
    bool const isValid = AreValid(samples, mask);
    if (!isValid && m_isValid) {
        m_isValid = false;
        m_counts.assign(m_rowLength, static_cast<Real>(place));
    }
    if (!isValid) {
        if (place == 0)
            std::fill_n(sums, m_rowLength, Real{0});
        AddInvalid(samples, mask, sums);
    } else {
        (place == 0 ? m_rowKernels.set : m_rowKernels.add)(samples, m_rowLength, sums);
        if (!m_isValid)
            for (Real &count : m_counts)
                count += 1;
    }
    if (place + 1 == m_rows.reduction || m_added == m_area.height)
        EndAverage();
}

template <class Sample>
void RowResampler<Sample>::AddInvalid(Sample const *samples, std::uint8_t const *mask, Real *sums) {
    auto const channels = static_cast<std::size_t>(m_area.channels);
    for (std::size_t i = 0; i < m_rowLength; ++i) {
        bool const counts = IsValid(samples[i]) && (mask == nullptr || mask[i / channels] != 0);
        sums[i] += counts ? static_cast<Real>(samples[i]) : Real{0};
        m_counts[i] += counts ? Real{1} : Real{0};
    }
}

template <class Sample>
auto RowResampler<Sample>::Sums() -> Real * {
    return m_columns.reduction > 1 ? m_sums.data() : m_averages.Row(static_cast<std::size_t>(m_averaged) % m_depth);
}

/// Adds up samples that lie side by side.
template <class Sample>
void RowResampler<Sample>::NarrowAverage(Row const &sums, Real *to) const {
    auto const channels = static_cast<std::size_t>(m_area.channels);
    std::size_t const run = static_cast<std::size_t>(m_columns.reduction) * channels;
    for (std::size_t channel = 0; channel < channels; ++channel)
        for (std::size_t i = channel, from = channel; i < m_length; i += channels, from += run) {
            Real sum = 0;
            for (std::size_t at = from; at < std::min(from + run, sums.size()); at += channels)
                sum += sums[at];
            to[i] = sum;
        }
}

template <class Sample>
void RowResampler<Sample>::EndAverage() {
    std::size_t const row = static_cast<std::size_t>(m_averaged) % m_depth;
    Real *const values = m_averages.Row(row);
    if (m_columns.reduction > 1)
        NarrowAverage(m_sums, values);
    m_isRowValid[row] = m_isValid;
    if (m_isValid) {
        int const averaged = ((m_added - 1) % m_rows.reduction + 1) * m_columns.reduction;
        for (std::size_t i = 0; averaged > 1 && i < m_length; ++i)
            values[i] *= Real{1} / static_cast<Real>(averaged);
        int const inLast = (m_area.width - 1) % m_columns.reduction + 1;
        for (std::size_t i = m_length - static_cast<std::size_t>(m_area.channels); i < m_length; ++i)
            values[i] *= static_cast<Real>(m_columns.reduction) / static_cast<Real>(inLast);
    } else {
        EndInvalidAverage(row, values);
    }
    ++m_averaged;
    while (m_mixed < m_rows.taps.Size() && m_rows.taps.End(m_mixed) <= m_averaged)
        MixRow();
}

template <class Sample>
void RowResampler<Sample>::EndInvalidAverage(std::size_t row, Real *values) {
    if (m_validity.IsEmpty()) {
        m_validity = Rows(m_depth, m_length);
        m_ones.assign(m_length, Real{1});
    }
    Real *const validity = m_validity.Row(row);
    if (m_columns.reduction > 1)
        NarrowAverage(m_counts, validity);
    else
        std::copy(m_counts.begin(), m_counts.end(), validity);
    for (std::size_t i = 0; i < m_length; ++i) {
        bool const counts = validity[i] > 0;
        values[i] /= counts ? validity[i] : Real{1};
        validity[i] = counts ? Real{1} : Real{0};
    }
    m_isRowValid[row] = m_hasMask; // what is left out is 0 then, and counts
}

template <class Sample>
void RowResampler<Sample>::MixRow() {
    std::size_t const count = m_rows.taps.Count(m_mixed);
    auto const first = static_cast<std::size_t>(m_rows.taps.first[m_mixed]);
    Real const *const weights = m_rows.taps.WeightsOf(m_mixed);
    std::vector<Real const *> from(count);
    bool isPlain = true;
    for (std::size_t i = 0; i < count; ++i) {
        from[i] = m_averages.Row((first + i) % m_depth);
        isPlain = isPlain && m_isRowValid[(first + i) % m_depth];
    }
    std::size_t const row = m_inBlock++;
    m_kernels.mixRows(from.data(), weights, count, m_blockRows.Row(row), m_length);
    m_isPlain[row] = isPlain;
    if (!isPlain) {
        if (m_weightRows.IsEmpty()) {
            m_weightRows = Rows(mix::kRows, m_length);
            m_narrowWeights = Rows(mix::kRows, kColumnsTogether * static_cast<std::size_t>(m_area.channels));
            m_nearest = Rows(mix::kRows, m_columns.taps.Size() * static_cast<std::size_t>(m_area.channels));
        }
        for (std::size_t i = 0; i < count; ++i)
            from[i] = m_isRowValid[(first + i) % m_depth] ? m_ones.data() : m_validity.Row((first + i) % m_depth);
        m_kernels.mixRows(from.data(), weights, count, m_weightRows.Row(row), m_length);
        PickNearest(m_nearest.Row(row));
    }
    ++m_mixed;
    if (m_inBlock == mix::kRows || m_mixed == m_rows.taps.Size())
        EndBlock();
}

template <class Sample>
void RowResampler<Sample>::PickNearest(Real *to) const {
    std::size_t const row = static_cast<std::size_t>(m_rows.nearest[m_mixed]) % m_depth;
    auto const channels = static_cast<std::size_t>(m_area.channels);
    Real const *const validity = m_isRowValid[row] ? m_ones.data() : m_validity.Row(row);
    for (int const column : m_columns.nearest)
        for (std::size_t channel = 0; channel < channels; ++channel) {
            std::size_t const at = static_cast<std::size_t>(column) * channels + channel;
            *to++ = validity[at] > 0 ? m_averages.Row(row)[at] : std::numeric_limits<Real>::quiet_NaN();
        }
}

template <class Sample>
void RowResampler<Sample>::EndBlock() {
    for (std::size_t begin = 0; begin < m_columns.taps.Size(); begin += kColumnsTogether)
        EndColumns(begin, std::min(begin + kColumnsTogether, m_columns.taps.Size()));
    m_inBlock = 0;
}

template <class Sample>
void RowResampler<Sample>::EndColumns(std::size_t begin, std::size_t end) {
    auto const channels = static_cast<std::size_t>(m_area.channels);
    int const first = m_columns.taps.first[begin];
    std::size_t const offset = static_cast<std::size_t>(first) * channels;
    std::size_t const length = static_cast<std::size_t>(m_columns.taps.End(end - 1)) * channels - offset;
    m_block.resize(std::max(m_block.size(), length * mix::kRows));
    auto const narrow = [&](Rows const &rows, Rows &results) {
        std::array<Real const *, mix::kRows> from{};
        std::array<Real *, mix::kRows> to{};
        for (std::size_t row = 0; row < mix::kRows; ++row) {
            from[row] = rows.Row(row) + offset;
            to[row] = results.Row(row);
        }
        m_kernels.toBlock(from.data(), length, m_block.data());
        m_kernels.mixColumns(m_block.data(), first, m_columns.taps, begin, end, channels, m_narrowBlock.data());
        m_kernels.fromBlock(m_narrowBlock.data(), (end - begin) * channels, to.data());
    };
    narrow(m_blockRows, m_narrowRows);
    bool const arePlain = std::all_of(m_isPlain.begin(), m_isPlain.begin() + static_cast<std::ptrdiff_t>(m_inBlock),
                                      [](bool isPlain) { return isPlain; });
    if (!arePlain)
        narrow(m_weightRows, m_narrowWeights);
    for (std::size_t row = 0; row < m_inBlock; ++row)
        PutRow(row, begin, end);
}

template <class Sample>
void RowResampler<Sample>::PutRow(std::size_t row, std::size_t begin, std::size_t end) {
    auto const channels = static_cast<std::size_t>(m_area.channels);
    auto const width = static_cast<std::size_t>(m_area.outWidth);
    std::size_t const planeSize = width * static_cast<std::size_t>(m_area.outHeight);
    Sample *out = m_out + (m_mixed - m_inBlock + row) * width;
    for (std::size_t channel = 0; channel < channels; ++channel, out += planeSize) {
        Real const *const sums = m_narrowRows.Row(row) + channel;
        if (m_isPlain[row]) {
            for (std::size_t i = 0; i < end - begin; ++i)
                out[begin + i] = ToSample<Sample>(sums[i * channels]);
            continue;
        }
        for (std::size_t i = 0; i < end - begin; ++i) {
            Real const nearest = m_nearest.Row(row)[(begin + i) * channels + channel];
            Real const total = m_narrowWeights.Row(row)[i * channels + channel];
            // With little weight left, the lobes below zero would blow the result up.
            constexpr auto kLeast = static_cast<Real>(0.3F);
            out[begin + i] = std::isnan(nearest)
                                 ? Sample{0}
                                 : ToSample<Sample>(total < kLeast ? nearest : sums[i * channels] / total);
        }
    }
}

template class ZELVAR_API RowResampler<std::uint8_t>;
template class ZELVAR_API RowResampler<std::uint16_t>;
template class ZELVAR_API RowResampler<std::int16_t>;
template class ZELVAR_API RowResampler<std::uint32_t>;
template class ZELVAR_API RowResampler<std::int32_t>;
template class ZELVAR_API RowResampler<float>;

} // namespace zelvar
