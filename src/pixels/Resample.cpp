#include "zelvar/pixels/Resample.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace zelvar {

namespace {

/// What sums are made in: 32-bit integers need more digits than a float has.
template <class Sample>
using Sum = std::conditional_t<std::is_integral_v<Sample> && sizeof(Sample) == 4, double, float>;

double KernelAt(MixingKernel kernel, double distance) {
    double const d = std::abs(distance);
    if (kernel == MixingKernel::Bilinear)
        return d < 1 ? 1 - d : 0;
    if (d < 1)
        return (1.5 * d - 2.5) * d * d + 1;
    return d < 2 ? ((-0.5 * d + 2.5) * d - 4) * d + 2 : 0;
}

/// The samples of one axis that a result is mixed from.
template <class Real>
struct Taps {
    int first = 0;
    int nearest = 0;
    std::vector<Real> weights; ///< they add up to 1
};

template <class Real>
std::vector<Taps<Real>> MakeTaps(MixingKernel kernel, int size, double offset, double extent, int outSize) {
    double const step = extent / outSize;
    double const widening = std::max(step, 1.0);
    double const radius = (kernel == MixingKernel::Cubic ? 2 : 1) * widening;
    std::vector<Taps<Real>> all(static_cast<std::size_t>(outSize));
    for (int i = 0; i < outSize; ++i) {
        Taps<Real> &taps = all[static_cast<std::size_t>(i)];
        double const centre = offset + (i + 0.5) * step;
        taps.nearest = std::clamp(static_cast<int>(std::floor(centre)), 0, size - 1);
        taps.first = std::clamp(static_cast<int>(std::floor(centre - radius + 0.5)), 0, taps.nearest);
        int const last = std::clamp(static_cast<int>(std::ceil(centre + radius - 0.5)), taps.nearest + 1, size);
        double total = 0;
        for (int j = taps.first; j < last; ++j)
            total += KernelAt(kernel, (j + 0.5 - centre) / widening);
        for (int j = taps.first; j < last; ++j) {
            double const weight = total > 1e-6 ? KernelAt(kernel, (j + 0.5 - centre) / widening) / total
                                               : static_cast<double>(j == taps.nearest);
            taps.weights.push_back(static_cast<Real>(weight));
        }
    }
    return all;
}

template <class Sample>
class Validity {
public:
    explicit Validity(double nodata) : m_nodata(nodata) {
        if constexpr (std::is_integral_v<Sample>)
            m_none = nodata >= static_cast<double>(std::numeric_limits<Sample>::min()) &&
                     nodata <= static_cast<double>(std::numeric_limits<Sample>::max()) && nodata == std::floor(nodata);
    }
    [[nodiscard]] bool IsValid(Sample sample) const {
        if constexpr (std::is_integral_v<Sample>)
            return !m_none || sample != static_cast<Sample>(m_nodata);
        else
            return std::isfinite(sample) && sample != static_cast<Sample>(m_nodata);
    }
    [[nodiscard]] bool AllValid(std::vector<Sample> const &samples) const {
        if (std::is_integral_v<Sample> && !m_none)
            return true;
        return std::all_of(samples.begin(), samples.end(), [this](Sample sample) { return IsValid(sample); });
    }

private:
    double m_nodata;
    bool m_none = false; ///< an integer sample can be the nodata value
};

template <class Sample, class Real>
Sample ToSample(Real value) {
    if constexpr (std::is_floating_point_v<Sample>) {
        return static_cast<Sample>(value);
    } else {
        constexpr auto kMin = static_cast<Real>(std::numeric_limits<Sample>::min());
        constexpr auto kMax = static_cast<Real>(std::numeric_limits<Sample>::max());
        Real const rounded = value < 0 ? value - Real(0.5) : value + Real(0.5);
        return rounded <= kMin   ? std::numeric_limits<Sample>::min()
               : rounded >= kMax ? std::numeric_limits<Sample>::max()
                                 : static_cast<Sample>(rounded);
    }
}

/// Adds a row of the plane, weighted; the compiler makes vectors of it.
template <class Sample, class Real>
void AddRow(Real *__restrict sums, Sample const *__restrict row, Real weight, std::size_t count) {
    for (std::size_t x = 0; x < count; ++x)
        sums[x] += weight * static_cast<Real>(row[x]);
}

template <class Sample, class Real>
void ResampleValid(Plane<Sample> const &plane, std::vector<Taps<Real>> const &columns,
                   std::vector<Taps<Real>> const &rows, Sample *out) {
    auto const width = static_cast<std::size_t>(plane.width);
    std::vector<Real> sums(width);
    for (Taps<Real> const &row : rows) {
        std::fill(sums.begin(), sums.end(), Real{0});
        Sample const *source = plane.samples.data() + static_cast<std::size_t>(row.first) * width;
        for (Real const weight : row.weights) {
            AddRow(sums.data(), source, weight, width);
            source += width;
        }
        for (Taps<Real> const &column : columns) {
            Real const *from = sums.data() + column.first;
            Real sum = 0;
            for (Real const weight : column.weights)
                sum += weight * *from++;
            *out++ = ToSample<Sample>(sum);
        }
    }
}

/// The same where some samples do not count: each result is divided by the weight of those that do.
template <class Sample, class Real>
void ResampleSome(Plane<Sample> const &plane, Validity<Sample> const &validity, std::vector<Taps<Real>> const &columns,
                  std::vector<Taps<Real>> const &rows, Sample *out) {
    auto const width = static_cast<std::size_t>(plane.width);
    std::vector<Real> sums(width);
    std::vector<Real> weights(width);
    for (Taps<Real> const &row : rows) {
        std::fill(sums.begin(), sums.end(), Real{0});
        std::fill(weights.begin(), weights.end(), Real{0});
        Sample const *source = plane.samples.data() + static_cast<std::size_t>(row.first) * width;
        for (Real const weight : row.weights)
            for (std::size_t x = 0; x < width; ++x, ++source)
                if (validity.IsValid(*source)) {
                    sums[x] += weight * static_cast<Real>(*source);
                    weights[x] += weight;
                }
        Sample const *const nearestRow = plane.samples.data() + static_cast<std::size_t>(row.nearest) * width;
        for (Taps<Real> const &column : columns) {
            Real sum = 0;
            Real total = 0;
            for (std::size_t i = 0; i < column.weights.size(); ++i) {
                std::size_t const x = static_cast<std::size_t>(column.first) + i;
                sum += column.weights[i] * sums[x];
                total += column.weights[i] * weights[x];
            }
            Sample const nearest = nearestRow[column.nearest];
            // With little weight left, the lobes below zero would blow the result up.
            constexpr auto kLeast = static_cast<Real>(0.3F);
            *out++ = !validity.IsValid(nearest) ? Sample{0} : total < kLeast ? nearest : ToSample<Sample>(sum / total);
        }
    }
}

} // namespace

template <class Sample>
void Resample(Plane<Sample> const &plane, MixingKernel kernel, double nodata, Sample *out, int outWidth,
              int outHeight) {
    using Real = Sum<Sample>;
    auto const columns = MakeTaps<Real>(kernel, plane.width, plane.windowX, plane.windowWidth, outWidth);
    auto const rows = MakeTaps<Real>(kernel, plane.height, plane.windowY, plane.windowHeight, outHeight);
    Validity<Sample> const validity(nodata);
    if (validity.AllValid(plane.samples))
        ResampleValid(plane, columns, rows, out);
    else
        ResampleSome(plane, validity, columns, rows, out);
}

template ZELVAR_API void Resample(Plane<std::uint8_t> const &, MixingKernel, double, std::uint8_t *, int, int);
template ZELVAR_API void Resample(Plane<std::uint16_t> const &, MixingKernel, double, std::uint16_t *, int, int);
template ZELVAR_API void Resample(Plane<std::int16_t> const &, MixingKernel, double, std::int16_t *, int, int);
template ZELVAR_API void Resample(Plane<std::uint32_t> const &, MixingKernel, double, std::uint32_t *, int, int);
template ZELVAR_API void Resample(Plane<std::int32_t> const &, MixingKernel, double, std::int32_t *, int, int);
template ZELVAR_API void Resample(Plane<float> const &, MixingKernel, double, float *, int, int);

} // namespace zelvar
