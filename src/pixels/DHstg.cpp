#include "zelvar/pixels/DHstg.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <type_traits>

namespace zelvar {

namespace {

constexpr int kLargest = std::numeric_limits<int>::max();
template <class Sample>
constexpr bool kIsNarrow = std::is_integral_v<Sample> && sizeof(Sample) <= 2;

int Saturated(std::uint64_t count) { return static_cast<int>(std::min(count, static_cast<std::uint64_t>(kLargest))); }

/// How often each value of a narrow type occurs; the first entry is that of its lowest value.
template <class Sample>
std::vector<std::uint64_t> CountEach(std::span<Sample const> samples) {
    constexpr std::size_t values = std::size_t{1} << (8 * sizeof(Sample));
    constexpr int lowest = std::numeric_limits<Sample>::min();
    // Equal neighbours go to different tables, so that no sum waits for the last one; more tables of wide samples would
    // not stay near the processor.
    constexpr std::size_t lanes = sizeof(Sample) == 1 ? 4 : 2;
    std::vector<std::uint64_t> total(values);
    std::vector<std::uint32_t> tables(values * lanes);
    auto const entry = [&](Sample sample, std::size_t lane) -> std::uint32_t & {
        return tables[lane * values + static_cast<std::size_t>(static_cast<int>(sample) - lowest)];
    };
    // A table's entry holds 32 bits, so a block is shorter than that.
    constexpr std::size_t block = std::size_t{1} << 31U;
    for (std::size_t begin = 0; begin < samples.size(); begin += block) {
        std::size_t const end = std::min(samples.size(), begin + block);
        std::size_t i = begin;
        for (; i + lanes <= end; i += lanes)
            for (std::size_t lane = 0; lane < lanes; ++lane)
                ++entry(samples[i + lane], lane);
        for (; i < end; ++i)
            ++entry(samples[i], 0);
        for (std::size_t lane = 0; lane < lanes; ++lane)
            for (std::size_t value = 0; value < values; ++value)
                total[value] += tables[lane * values + value];
        if (end < samples.size())
            std::fill(tables.begin(), tables.end(), 0);
    }
    return total;
}

/// A nodata value in the sample's own type; nothing if no sample can have it.
template <class Sample>
std::optional<Sample> NoneOf(double const *nodata) {
    if (nodata == nullptr || std::isnan(*nodata))
        return std::nullopt; // NaN is not counted anyway
    if constexpr (std::is_integral_v<Sample>) {
        if (*nodata < static_cast<double>(std::numeric_limits<Sample>::min()) ||
            *nodata > static_cast<double>(std::numeric_limits<Sample>::max()) || *nodata != std::floor(*nodata))
            return std::nullopt;
    } else if constexpr (std::is_same_v<Sample, float>) {
        if (std::abs(*nodata) > static_cast<double>(std::numeric_limits<float>::max()))
            return std::nullopt;
    }
    return static_cast<Sample>(*nodata);
}

template <class Sample>
bool IsFinite(Sample sample) {
    if constexpr (std::is_floating_point_v<Sample>)
        return std::isfinite(sample);
    else
        return true;
}

} // namespace

DHstg::DHstg(int numSlots, double minimum, double maximum) {
    if (numSlots < 1 || !std::isfinite(minimum) || !std::isfinite(maximum) || maximum < minimum)
        return;
    m_numSlot = numSlots;
    m_minimum = minimum;
    m_maximum = maximum;
    auto const slots = static_cast<std::size_t>(numSlots);
    m_counts.resize(slots);
    m_edges.resize(slots + 1);
    double const width = maximum - minimum;
    for (std::size_t i = 0; i < slots; ++i) {
        double const share = static_cast<double>(i) / numSlots;
        // The width of a range over nearly all numbers is not a number itself.
        m_edges[i] = std::isfinite(width) ? minimum + width * static_cast<double>(i) / numSlots
                                          : minimum * (1 - share) + maximum * share;
        if (!std::isfinite(m_edges[i]))
            m_edges[i] = minimum + width * share;
    }
    m_edges[slots] = maximum;
    m_slotsPerUnit = width > 0 && std::isfinite(width) ? numSlots / width : 0;
}

int DHstg::GetSlotVal(int slot) const {
    return slot < 0 || slot >= m_numSlot ? 0 : Saturated(m_counts[static_cast<std::size_t>(slot)]);
}

double DHstg::GetSlotClss(int slot) const {
    return m_edges.empty() ? 0 : m_edges[static_cast<std::size_t>(std::clamp(slot, 0, m_numSlot))];
}

int DHstg::SlotOf(double value) const {
    double const guess = std::clamp((value - m_minimum) * m_slotsPerUnit, 0.0, static_cast<double>(m_numSlot - 1));
    auto slot = static_cast<std::size_t>(guess);
    if (m_edges[slot] <= value && (slot + 1 == m_counts.size() || value < m_edges[slot + 1]))
        return static_cast<int>(slot);
    // The guess is one slot off at most, but where slots are narrower than what a double tells apart.
    auto const behind = std::upper_bound(m_edges.begin(), m_edges.end() - 1, value);
    return static_cast<int>(behind - m_edges.begin()) - 1;
}

int DHstg::GetSlotIndx(double value) const {
    return m_numSlot > 0 && value >= m_minimum && value <= m_maximum ? SlotOf(value) : -1;
}

int DHstg::GetMaxVal() const {
    return m_counts.empty() ? 0 : Saturated(*std::max_element(m_counts.begin(), m_counts.end()));
}

int DHstg::GetHstgSum() const {
    std::uint64_t sum = 0;
    for (std::uint64_t const count : m_counts)
        sum += count;
    return Saturated(sum);
}

void DHstg::AddValue(double value, std::uint64_t times) {
    if (int const slot = GetSlotIndx(value); slot >= 0)
        m_counts[static_cast<std::size_t>(slot)] += times;
}

void DHstg::AddCounts(std::uint64_t const *counts, int lowest, int howMany, double const *nodata) {
    for (int i = 0; i < howMany; ++i) {
        double const value = lowest + i;
        if (counts[i] != 0 && (nodata == nullptr || value != *nodata))
            AddValue(value, counts[i]);
    }
}

template <class Sample>
void DHstg::AddSamples(std::span<Sample const> samples, double const *nodata) {
    if constexpr (kIsNarrow<Sample>) {
        std::vector<std::uint64_t> const counts = CountEach(samples);
        AddCounts(counts.data(), std::numeric_limits<Sample>::min(), static_cast<int>(counts.size()), nodata);
    } else {
        std::optional<Sample> const none = NoneOf<Sample>(nodata);
        for (Sample const sample : samples)
            if (!none || sample != *none)
                AddValue(static_cast<double>(sample));
    }
}

template <class Sample>
bool DHstg::FindRange(std::span<Sample const> samples, double const *nodata, double &minimum, double &maximum) {
    std::optional<Sample> const none = NoneOf<Sample>(nodata);
    bool found = false;
    Sample least{};
    Sample most{};
    for (Sample const sample : samples) {
        if (!IsFinite(sample) || (none && sample == *none))
            continue;
        least = found ? std::min(least, sample) : sample;
        most = found ? std::max(most, sample) : sample;
        found = true;
    }
    if (found) {
        minimum = static_cast<double>(least);
        maximum = static_cast<double>(most);
    }
    return found;
}

template <class Sample>
bool DHstg::AreWhole(std::span<Sample const> samples, double const *nodata) {
    if constexpr (std::is_floating_point_v<Sample>) {
        constexpr double most = 9007199254740992; // 2 to the power of 53
        std::optional<Sample> const none = NoneOf<Sample>(nodata);
        return std::all_of(samples.begin(), samples.end(), [&](Sample sample) {
            return !IsFinite(sample) || (none && sample == *none) ||
                   (std::trunc(sample) == sample && std::abs(static_cast<double>(sample)) <= most);
        });
    }
    return true;
}

DHstg DHstg::ForWholeNumbers(int numSlots, double minimum, double maximum) {
    if (numSlots < 1 || !(maximum >= minimum))
        return {};
    double const values = maximum - minimum + 1;
    double const width = std::ceil(values / numSlots);
    double const slots = std::ceil(values / width);
    return {static_cast<int>(slots), minimum, minimum + slots * width};
}

template <class Sample>
DHstg DHstg::FromSamples(std::span<Sample const> samples, int numSlots, double const *nodata) {
    if constexpr (kIsNarrow<Sample>) {
        // One pass: the range is told by the counts.
        std::vector<std::uint64_t> counts = CountEach(samples);
        constexpr int lowest = std::numeric_limits<Sample>::min();
        if (std::optional<Sample> const none = NoneOf<Sample>(nodata))
            counts[static_cast<std::size_t>(static_cast<int>(*none) - lowest)] = 0;
        auto const occurs = [](std::uint64_t count) { return count != 0; };
        auto const first = std::find_if(counts.begin(), counts.end(), occurs);
        if (first == counts.end())
            return {};
        auto const last = std::find_if(counts.rbegin(), counts.rend(), occurs).base() - 1;
        DHstg histogram = ForWholeNumbers(numSlots, lowest + static_cast<int>(first - counts.begin()),
                                          lowest + static_cast<int>(last - counts.begin()));
        histogram.AddCounts(counts.data(), lowest, static_cast<int>(counts.size()), nullptr);
        return histogram;
    } else {
        double minimum = 0;
        double maximum = 0;
        if (!FindRange(samples, nodata, minimum, maximum))
            return {};
        DHstg histogram =
            AreWhole(samples, nodata) ? ForWholeNumbers(numSlots, minimum, maximum) : DHstg(numSlots, minimum, maximum);
        histogram.AddSamples(samples, nodata);
        return histogram;
    }
}

ZELVAR_HISTOGRAM_SAMPLES(, std::uint8_t);
ZELVAR_HISTOGRAM_SAMPLES(, std::int8_t);
ZELVAR_HISTOGRAM_SAMPLES(, std::uint16_t);
ZELVAR_HISTOGRAM_SAMPLES(, std::int16_t);
ZELVAR_HISTOGRAM_SAMPLES(, std::uint32_t);
ZELVAR_HISTOGRAM_SAMPLES(, std::int32_t);
ZELVAR_HISTOGRAM_SAMPLES(, float);
ZELVAR_HISTOGRAM_SAMPLES(, double);

} // namespace zelvar
