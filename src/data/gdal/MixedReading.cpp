#include "zelvar/data/gdal/MixedReading.h"

#include "zelvar/base/Aside.h"

#include <gdal.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <future>
#include <type_traits>

namespace zelvar::gdal {

namespace {

constexpr std::size_t kStripBytes = std::size_t{4} << 20U;
constexpr std::size_t kMostStripBytes = std::size_t{128} << 20U; // where a single row of blocks takes more than a strip

bool HasMask(BandHandle band) { return (GDALGetMaskFlags(band) & (GMF_ALL_VALID | GMF_NODATA)) == 0; }

bool AreSame(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

/// The window with what lies around it within the kernel's reach.
struct Part {
    int left = 0;
    int top = 0;
    ResampleArea area;
};

Part PartOf(BandHandle band, Window const &window, std::size_t channels) {
    double const reach = 2 * std::max({window.width / window.outWidth, window.height / window.outHeight, 1.0}) + 1;
    auto const low = [&](double position) { return static_cast<int>(std::max(std::floor(position - reach), 0.0)); };
    auto const high = [&](double position, int size) {
        return static_cast<int>(std::min(std::ceil(position + reach), static_cast<double>(size)));
    };
    Part part{.left = low(window.x), .top = low(window.y), .area = {}};
    part.area = {.width = high(window.x + window.width, GDALGetRasterBandXSize(band)) - part.left,
                 .height = high(window.y + window.height, GDALGetRasterBandYSize(band)) - part.top,
                 .channels = static_cast<int>(channels),
                 .windowX = window.x - part.left,
                 .windowY = window.y - part.top,
                 .windowWidth = window.width,
                 .windowHeight = window.height,
                 .outWidth = window.outWidth,
                 .outHeight = window.outHeight};
    return part;
}

/// How many rows a strip has: whole rows of blocks, or less than one where that is too much.
int StripRows(BandHandle band, std::size_t rowBytes) {
    int blockWidth = 1;
    int blockHeight = 1;
    GDALGetBlockSize(band, &blockWidth, &blockHeight);
    auto const blockRows = static_cast<std::size_t>(std::max(blockHeight, 1));
    std::size_t const rows = std::max<std::size_t>(kStripBytes / rowBytes, 1);
    if (rows >= blockRows)
        return static_cast<int>(rows / blockRows * blockRows);
    return static_cast<int>(blockRows * rowBytes <= kMostStripBytes ? blockRows : rows);
}

/// A strip of rows as it was read, and the thread that mixes it.
template <class Sample>
struct Strip {
    std::vector<Sample> samples;
    std::vector<std::uint8_t> mask; ///< empty for none
    std::future<void> mixed;

    /// Waits until the strip may be filled anew. Throws what the thread has thrown.
    void Wait() {
        if (mixed.valid())
            mixed.get();
    }
};

template <class Sample>
void Mix(RowResampler<Sample> &resampler, Strip<Sample> &strip, int rows, ResampleArea const &area) {
    auto const width = static_cast<std::size_t>(area.width);
    for (std::size_t row = 0; row < static_cast<std::size_t>(rows); ++row)
        resampler.AddRow(strip.samples.data() + row * width * static_cast<std::size_t>(area.channels),
                         strip.mask.empty() ? nullptr : strip.mask.data() + row * width);
}

} // namespace

bool CanBeReadTogether(std::vector<BandHandle> const &bands) {
    BandHandle first = bands.front();
    return bands.size() == 1 || std::all_of(bands.begin(), bands.end(), [&](BandHandle band) {
               GDALDatasetH dataset = GDALGetBandDataset(band);
               // Levels of some formats say that they are bands of the whole image.
               return !IsConverted(band) && dataset != nullptr && dataset == GDALGetBandDataset(first) &&
                      GDALGetRasterBand(dataset, GDALGetBandNumber(band)) == band &&
                      GDALGetRasterDataType(band) == GDALGetRasterDataType(first) &&
                      GDALGetRasterBandXSize(band) == GDALGetRasterBandXSize(first) &&
                      GDALGetRasterBandYSize(band) == GDALGetRasterBandYSize(first) &&
                      AreSame(NodataOf(band), NodataOf(first)) && HasMask(band) == HasMask(first) &&
                      (!HasMask(band) || (GDALGetMaskFlags(band) & GMF_PER_DATASET) != 0);
           });
}

template <class Sample>
bool ReadMixed(std::vector<BandHandle> const &bands, Window const &window, Mixing const &mixing, Sample *out,
               StopSignal const *stop) {
    BandHandle band = bands.front();
    Part const part = PartOf(band, window, bands.size());
    ResampleArea const &area = part.area;
    std::size_t const rowLength = static_cast<std::size_t>(area.width) * bands.size();
    int const stripRows = std::min(StripRows(band, rowLength * sizeof(Sample)), area.height);
    // What is under a mask counts where samples are picked or hardly reduced, as everywhere in this interface.
    bool const isMasked =
        HasMask(band) && std::max(window.width / window.outWidth, window.height / window.outHeight) > 2;
    RowResampler<Sample> resampler(area, mixing.kernel, mixing.nodata, out);
    Salvage *const salvage = mixing.salvage;
    if (salvage != nullptr)
        salvage->Begin(area.height);
    std::array<Strip<Sample>, 2> strips;
    int rows = 0;
    for (int top = 0, turn = 0; top < area.height; top += rows, turn = 1 - turn) {
        // The first strip ends where a block does.
        rows = std::min(stripRows - (part.top + top) % stripRows, area.height - top);
        auto &strip = strips[static_cast<std::size_t>(turn)];
        auto &former = strips[static_cast<std::size_t>(1 - turn)];
        strip.samples.resize(rowLength * static_cast<std::size_t>(stripRows));
        if (isMasked)
            strip.mask.resize(static_cast<std::size_t>(area.width) * static_cast<std::size_t>(stripRows));
        Rows const wanted{part.left, part.top + top, area.width, rows};
        bool const isRead = salvage == nullptr ? ReadRows(bands, wanted, strip.samples.data(), stop)
                                               : salvage->Read(bands, wanted, strip.samples.data(), stop);
        if (IsStopped(stop) || !isRead)
            return false;
        if (isMasked && !ReadRows({GDALGetMaskBand(band)}, wanted, strip.mask.data(), stop)) {
            if (salvage == nullptr)
                return false;
            std::fill(strip.mask.begin(), strip.mask.end(), std::uint8_t{0});
        }
        former.Wait();
        strip.mixed = DoAside([&resampler, &strip, &area, rows] { Mix(resampler, strip, rows, area); });
    }
    strips[0].Wait();
    strips[1].Wait();
    return !IsStopped(stop);
}

template bool ReadMixed(std::vector<BandHandle> const &, Window const &, Mixing const &, std::uint8_t *,
                        StopSignal const *);
template bool ReadMixed(std::vector<BandHandle> const &, Window const &, Mixing const &, std::uint16_t *,
                        StopSignal const *);
template bool ReadMixed(std::vector<BandHandle> const &, Window const &, Mixing const &, std::int16_t *,
                        StopSignal const *);
template bool ReadMixed(std::vector<BandHandle> const &, Window const &, Mixing const &, std::uint32_t *,
                        StopSignal const *);
template bool ReadMixed(std::vector<BandHandle> const &, Window const &, Mixing const &, std::int32_t *,
                        StopSignal const *);
template bool ReadMixed(std::vector<BandHandle> const &, Window const &, Mixing const &, float *, StopSignal const *);

} // namespace zelvar::gdal
