#include "zelvar/data/PreviewValues.h"

#include "zelvar/data/RDIDriver.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace zelvar {

namespace {

using Range = ValuePlane::Range;

template <class Sample>
struct Typed {
    using Type = Sample;
};

/// Calls `use` with the type of samples, or not at all for a number that is none.
template <class Use>
void WithType(int type, Use const &use) {
    switch (type) {
    case RDI_UInt8:
        return use(Typed<std::uint8_t>());
    case RDI_UInt16:
        return use(Typed<std::uint16_t>());
    case RDI_Int16:
        return use(Typed<std::int16_t>());
    case RDI_UInt32:
        return use(Typed<std::uint32_t>());
    case RDI_Int32:
        return use(Typed<std::int32_t>());
    case RDI_Float32:
        return use(Typed<float>());
    default:
        return;
    }
}

/// What stands for no data, as a float holds it.
std::optional<double> AsSample(std::optional<double> nodata, int type) {
    if (!nodata || type != RDI_Float32 || std::isnan(*nodata))
        return nodata;
    constexpr auto kMost = static_cast<double>(std::numeric_limits<float>::max());
    return static_cast<double>(static_cast<float>(std::clamp(*nodata, -kMost, kMost)));
}

template <class Sample>
bool IsValue(Sample sample, std::optional<double> const &nodata) {
    if constexpr (std::is_floating_point_v<Sample>)
        if (!std::isfinite(sample))
            return false;
    return !nodata || static_cast<double>(sample) != *nodata;
}

/// Three standard deviations around the mean, as `ScaleDataBuf`.
template <class Sample>
Range UsualRange(std::vector<Sample> const &values, Range const &all) {
    if (std::is_same_v<Sample, std::uint8_t>)
        return {0, 255};
    double count = 0;
    double sum = 0;
    double squares = 0;
    for (Sample const value : values) {
        if (value == Sample{0} && all.min == 0)
            continue;
        auto const wide = static_cast<double>(value);
        ++count;
        sum += wide;
        squares += wide * wide;
    }
    if (count == 0)
        return all;
    double const mean = sum / count;
    double const spread = 3 * std::sqrt(std::max(0.0, squares / count - mean * mean));
    return {std::max(all.min, mean - spread), std::min(all.max, mean + spread)};
}

/// All but the 2 % at either end; the values come into another order.
template <class Sample>
Range MostOf(std::vector<Sample> &values) {
    auto const cut = static_cast<std::ptrdiff_t>(static_cast<double>(values.size() - 1) * 0.02);
    auto const low = values.begin() + cut;
    auto const high = values.end() - 1 - cut;
    std::nth_element(values.begin(), low, values.end());
    auto const least = static_cast<double>(*low);
    std::nth_element(low, high, values.end());
    return {least, static_cast<double>(*high)};
}

} // namespace

ValuePlane::ValuePlane(int channel, int type, std::vector<unsigned char> samples, std::optional<double> nodata,
                       PreviewChoice::Stretch stretch)
    : m_channel(channel), m_type(type), m_samples(std::move(samples)), m_nodata(AsSample(nodata, type)) {
    WithType(type, [&]<class Sample>(Typed<Sample>) {
        auto const *const first = reinterpret_cast<Sample const *>(m_samples.data());
        std::vector<Sample> values;
        values.reserve(m_samples.size() / sizeof(Sample));
        std::copy_if(first, first + m_samples.size() / sizeof(Sample), std::back_inserter(values),
                     [this](Sample sample) { return IsValue(sample, m_nodata); });
        if (values.empty())
            return;
        auto const [least, most] = std::minmax_element(values.begin(), values.end());
        m_values = {static_cast<double>(*least), static_cast<double>(*most)};
        m_shown = stretch == PreviewChoice::Stretch::Full    ? *m_values
                  : stretch == PreviewChoice::Stretch::Usual ? UsualRange(values, *m_values)
                                                             : MostOf(values);
    });
}

std::optional<double> ValuePlane::At(std::size_t index) const {
    std::optional<double> value;
    WithType(m_type, [&]<class Sample>(Typed<Sample>) {
        if (index >= m_samples.size() / sizeof(Sample))
            return;
        Sample sample{};
        std::memcpy(&sample, m_samples.data() + index * sizeof(Sample), sizeof(Sample));
        if (IsValue(sample, m_nodata))
            value = static_cast<double>(sample);
    });
    return value;
}

std::optional<std::size_t> PreviewValues::IndexAt(double x, double y) const {
    if (!(x >= 0 && x < 1 && y >= 0 && y < 1) || width < 1 || height < 1)
        return std::nullopt;
    auto const column = static_cast<std::size_t>(x * width);
    auto const row = static_cast<std::size_t>(y * height);
    return row * static_cast<std::size_t>(width) + column;
}

} // namespace zelvar
