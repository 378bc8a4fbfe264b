#include "zelvar/data/HistogramReader.h"

#include "zelvar/base/Aside.h"
#include "zelvar/data/OpenImage.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <functional>
#include <future>
#include <limits>
#include <span>
#include <type_traits>
#include <vector>

namespace zelvar {

namespace {

constexpr std::size_t kStripSamples = std::size_t{1} << 21U;

bool IsStopped(StopSignal const *stop) { return stop != nullptr && stop->load(std::memory_order_relaxed); }

/// A channel that is read from its first row to its last. What was read is used on another thread while the next part
/// is read.
template <class Sample>
class Channel {
public:
    Channel(OpenImage const &image, int channel, StopSignal const *stop)
        : m_image(image), m_channel(channel), m_stop(stop),
          m_width(image.Driver().GetChnlSizeX(image.Handle(), channel)),
          m_height(image.Driver().GetChnlSizeY(image.Handle(), channel)) {}

    /// `use` is called for one part after the other.
    [[nodiscard]] bool Read(std::function<void(std::span<Sample const>)> const &use) {
        if (m_width < 1 || m_height < 1)
            return false;
        std::future<void> used; // ends before what it works on
        // A row of a strange image may be wider than a strip: it is read in pieces. Time frames, each maybe a file of
        // its own, are read one after the other.
        RDIGeoCoo const geo = m_image.Driver().GetChnlGeoCode(m_image.Handle(), m_channel);
        int const frame = std::max(1, m_width / std::max(1, geo.numTimeFrames));
        int const columns = static_cast<int>(std::min<std::size_t>(static_cast<std::size_t>(frame), kStripSamples));
        int const rows = std::max(1, static_cast<int>(kStripSamples / static_cast<std::size_t>(columns)));
        for (int x = 0; x < m_width; x += columns)
            for (int y = 0; y < m_height; y += rows)
                if (!ReadPart(x, y, std::min(columns, m_width - x), std::min(rows, m_height - y)))
                    return false;
                else
                    UseMeanwhile(use, used);
        if (used.valid())
            used.get();
        return true;
    }

private:
    bool ReadPart(int x, int y, int width, int height) {
        m_samples.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
        return !IsStopped(m_stop) &&
               m_image.Driver().ReadBlockRsmpl(m_image.Handle(), m_channel, x, y, width, height, m_samples.data(),
                                               width, height, RDIDriver::AsStored, false, false);
    }

    void UseMeanwhile(std::function<void(std::span<Sample const>)> const &use, std::future<void> &used) {
        if (used.valid())
            used.get();
        m_samples.swap(m_used);
        used = DoAside([this, &use] { use(m_used); });
    }

    OpenImage const &m_image;
    int m_channel;
    StopSignal const *m_stop;
    int m_width;
    int m_height;
    std::vector<Sample> m_samples;
    std::vector<Sample> m_used; ///< by the other thread
};

/// How often each value of a narrow type occurs: one slot a value.
template <class Sample>
DHstg EachValue() {
    return {1 << (8 * sizeof(Sample)), static_cast<double>(std::numeric_limits<Sample>::min()),
            static_cast<double>(std::numeric_limits<Sample>::max()) + 1};
}

DHstg Gathered(DHstg const &each, int numSlots) {
    int first = 0;
    int last = each.m_numSlot - 1;
    while (first <= last && each.GetSlotVal(first) == 0)
        ++first;
    while (last > first && each.GetSlotVal(last) == 0)
        --last;
    if (first > last)
        return {};
    DHstg histogram = DHstg::ForWholeNumbers(numSlots, each.GetSlotClss(first), each.GetSlotClss(last));
    for (int slot = first; slot <= last; ++slot)
        histogram.AddValue(each.GetSlotClss(slot), static_cast<std::uint64_t>(each.GetSlotVal(slot)));
    return histogram;
}

template <class Sample>
bool ReadAs(OpenImage const &image, int channel, int numSlots, StopSignal const *stop, double const *nodata,
            DHstg &histogram) {
    Channel<Sample> samples(image, channel, stop);
    if constexpr (std::is_integral_v<Sample> && sizeof(Sample) <= 2) {
        DHstg each = EachValue<Sample>();
        if (!samples.Read([&](std::span<Sample const> strip) { each.AddSamples(strip, nodata); }))
            return false;
        histogram = Gathered(each, numSlots);
        return true;
    } else {
        double least = HUGE_VAL;
        double most = -HUGE_VAL;
        bool areWhole = true;
        auto const widen = [&](std::span<Sample const> strip) {
            double low = 0;
            double high = 0;
            if (!DHstg::FindRange(strip, nodata, low, high))
                return;
            least = std::min(least, low);
            most = std::max(most, high);
            areWhole = areWhole && DHstg::AreWhole(strip, nodata);
        };
        if (!samples.Read(widen))
            return false;
        if (least <= most)
            histogram = areWhole ? DHstg::ForWholeNumbers(numSlots, least, most) : DHstg(numSlots, least, most);
        return samples.Read([&](std::span<Sample const> strip) { histogram.AddSamples(strip, nodata); });
    }
}

bool ReadChannel(OpenImage const &image, int channel, int numSlots, StopSignal const *stop, DHstg &histogram) {
    std::optional<double> const nodata =
        NumberOf(image.Driver().GetAttrString("RDI_Drvr_NoData", image.Handle(), channel));
    double const *const none = nodata ? &*nodata : nullptr;
    switch (image.Driver().GetChnlDataType(image.Handle(), channel)) {
    case RDI_UInt8:
        return ReadAs<std::uint8_t>(image, channel, numSlots, stop, none, histogram);
    case RDI_UInt16:
        return ReadAs<std::uint16_t>(image, channel, numSlots, stop, none, histogram);
    case RDI_Int16:
        return ReadAs<std::int16_t>(image, channel, numSlots, stop, none, histogram);
    case RDI_UInt32:
        return ReadAs<std::uint32_t>(image, channel, numSlots, stop, none, histogram);
    case RDI_Int32:
        return ReadAs<std::int32_t>(image, channel, numSlots, stop, none, histogram);
    case RDI_Float32:
        return ReadAs<float>(image, channel, numSlots, stop, none, histogram);
    default:
        return false;
    }
}

} // namespace

std::optional<double> NumberOf(std::string_view text) {
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    if (text.size() > 1 && text.front() == '+' && text[1] != '-')
        text.remove_prefix(1);
    double value = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    bool const isNumber = error == std::errc{} && end == text.data() + text.size() && std::isfinite(value);
    return isNumber ? std::optional(value) : std::nullopt;
}

bool ReadHistogram(BDIMoniker const &moniker, DString const &driverId, int channel, int numSlots,
                   StopSignal const *stop, DHstg &histogram, DError *error) {
    histogram = {};
    DError own;
    OpenImage const image(moniker, driverId, stop, &own);
    if (image.IsOpen() && (channel < 0 || channel >= image.Driver().GetNumChnl(image.Handle())))
        own.Set("there is no channel " + std::to_string(channel + 1));
    else if (image.IsOpen() && !ReadChannel(image, channel, numSlots, stop, histogram))
        own = IsStopped(stop) ? DError() : image.Driver().GetReadError(image.Handle());
    else if (image.IsOpen())
        return true;
    if (!own.IsSet())
        own.Set(IsStopped(stop) ? "stopped" : "the samples cannot be read");
    histogram = {};
    if (error != nullptr)
        *error = std::move(own);
    return false;
}

bool ReadHistogram(IAttrData &table, int col, int numSlots, StopSignal const *stop, DHstg &histogram) {
    histogram = {};
    if (col < 0 || col >= table.GetNumCols())
        return false;
    std::vector<double> values;
    for (int row = 0; table.SetRow(row); ++row) {
        if (IsStopped(stop))
            return false;
        if (std::optional<double> const value = NumberOf(table.GetText(col)))
            values.push_back(*value);
    }
    if (table.HasFailed())
        return false;
    histogram = DHstg::FromSamples<double>(values, numSlots);
    return true;
}

} // namespace zelvar
