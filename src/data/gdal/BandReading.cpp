#include "zelvar/data/gdal/BandReading.h"

#include "zelvar/base/DString.h"

#include <gdal.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

namespace zelvar::gdal {

namespace {

template <class Sample>
constexpr GDALDataType kGdalType = GDT_Unknown;
template <>
constexpr GDALDataType kGdalType<std::uint8_t> = GDT_Byte;
template <>
constexpr GDALDataType kGdalType<std::uint16_t> = GDT_UInt16;
template <>
constexpr GDALDataType kGdalType<std::int16_t> = GDT_Int16;
template <>
constexpr GDALDataType kGdalType<std::uint32_t> = GDT_UInt32;
template <>
constexpr GDALDataType kGdalType<std::int32_t> = GDT_Int32;
template <>
constexpr GDALDataType kGdalType<float> = GDT_Float32;

int GoOn(double, char const *, void *stop) { return IsStopped(static_cast<StopSignal const *>(stop)) ? FALSE : TRUE; }

bool TransferAtOnce(GDALRasterBandH band, Window const &window, Reduction reduction, GDALDataType type, void *buffer,
                    StopSignal const *stop) {
    GDALRasterIOExtraArg extra;
    INIT_RASTERIO_EXTRA_ARG(extra);
    extra.eResampleAlg = reduction == Reduction::Average ? GRIORA_Average : GRIORA_NearestNeighbour;
    extra.pfnProgress = &GoOn;
    extra.pProgressData = const_cast<StopSignal *>(stop);
    extra.bFloatingPointWindowValidity = TRUE;
    extra.dfXOff = window.x;
    extra.dfYOff = window.y;
    extra.dfXSize = window.width;
    extra.dfYSize = window.height;
    int const left = static_cast<int>(std::floor(window.x));
    int const top = static_cast<int>(std::floor(window.y));
    int const right = std::min(static_cast<int>(std::ceil(window.x + window.width)), GDALGetRasterBandXSize(band));
    int const bottom = std::min(static_cast<int>(std::ceil(window.y + window.height)), GDALGetRasterBandYSize(band));
    return GDALRasterIOEx(band, GF_Read, left, top, std::max(right - left, 1), std::max(bottom - top, 1), buffer,
                          window.outWidth, window.outHeight, type, 0, 0, &extra) == CE_None;
}

/// How many rows are read by one call: not every format polls while it reads at full size. All of them where a row of
/// blocks is higher, which might be decoded anew by each call.
int RowsAtOnce(GDALRasterBandH band, Window const &window, GDALDataType type) {
    constexpr std::int64_t kBytesAtOnce = std::int64_t{16} << 20U;
    if (window.outWidth != window.width || window.outHeight != window.height)
        return window.outHeight;
    int blockWidth = 0;
    int blockHeight = 0;
    GDALGetBlockSize(band, &blockWidth, &blockHeight);
    std::int64_t const rows = kBytesAtOnce / (std::int64_t{window.outWidth} * GDALGetDataTypeSizeBytes(type));
    return rows < std::max(blockHeight, 1) ? window.outHeight
                                           : static_cast<int>(std::min<std::int64_t>(rows, window.outHeight));
}

bool Transfer(GDALRasterBandH band, Window const &window, Reduction reduction, GDALDataType type, void *buffer,
              StopSignal const *stop) {
    int const rows = RowsAtOnce(band, window, type);
    if (rows == window.outHeight)
        return TransferAtOnce(band, window, reduction, type, buffer, stop);
    std::size_t const rowBytes =
        static_cast<std::size_t>(window.outWidth) * static_cast<std::size_t>(GDALGetDataTypeSizeBytes(type));
    auto *out = static_cast<unsigned char *>(buffer);
    for (int top = 0; top < window.outHeight; top += rows) {
        Window part = window;
        part.y += top;
        part.outHeight = std::min(rows, window.outHeight - top);
        part.height = part.outHeight;
        if (IsStopped(stop) ||
            !TransferAtOnce(band, part, reduction, type, out + static_cast<std::size_t>(top) * rowBytes, stop))
            return false;
    }
    return true;
}

/// The samples of one result of `Transfer`, made of those of another.
template <class From, class Convert>
bool TransferAs(GDALRasterBandH band, Window const &window, Reduction reduction, GDALDataType type, int parts,
                float *out, StopSignal const *stop, Convert const &convert) {
    std::size_t const count = static_cast<std::size_t>(window.outWidth) * static_cast<std::size_t>(window.outHeight);
    std::vector<From> raw(count * static_cast<std::size_t>(parts));
    if (!Transfer(band, window, reduction, type, raw.data(), stop))
        return false;
    for (std::size_t i = 0; i < count; ++i)
        out[i] = convert(raw.data() + i * static_cast<std::size_t>(parts));
    return true;
}

} // namespace

bool IsStopped(StopSignal const *stop) { return stop != nullptr && stop->load(std::memory_order_relaxed); }

bool IsSignedByte(BandHandle band) {
    char const *type = GDALGetMetadataItem(band, "PIXELTYPE", "IMAGE_STRUCTURE");
    return GDALGetRasterDataType(band) == GDT_Byte && type != nullptr && EqualNoCase(type, "SIGNEDBYTE");
}

bool IsConverted(BandHandle band) {
    return IsSignedByte(band) || GDALDataTypeIsComplex(GDALGetRasterDataType(band)) != FALSE;
}

double NodataOf(BandHandle band) {
    int has = FALSE;
    double const value = GDALGetRasterNoDataValue(band, &has);
    return has != FALSE ? value : std::numeric_limits<double>::quiet_NaN();
}

BandHandle LevelFor(BandHandle band, double ratio) {
    BandHandle best = band;
    double bestRatio = 1;
    for (int i = 0; i < GDALGetOverviewCount(band); ++i) {
        BandHandle overview = GDALGetOverview(band, i);
        if (overview == nullptr || GDALGetRasterBandXSize(overview) < 1 || GDALGetRasterBandYSize(overview) < 1)
            continue;
        double const reduced =
            std::min(static_cast<double>(GDALGetRasterBandXSize(band)) / GDALGetRasterBandXSize(overview),
                     static_cast<double>(GDALGetRasterBandYSize(band)) / GDALGetRasterBandYSize(overview));
        // A level a little coarser than the result serves as well: nobody sees the difference.
        if (reduced > bestRatio && reduced <= ratio * 1.2) {
            best = overview;
            bestRatio = reduced;
        }
    }
    return best;
}

Window OnLevel(Window const &window, BandHandle band, BandHandle level) {
    double const x = static_cast<double>(GDALGetRasterBandXSize(level)) / GDALGetRasterBandXSize(band);
    double const y = static_cast<double>(GDALGetRasterBandYSize(level)) / GDALGetRasterBandYSize(band);
    return {window.x * x, window.y * y, window.width * x, window.height * y, window.outWidth, window.outHeight};
}

template <class Sample>
bool ReadSamples(BandHandle band, Window const &window, Reduction reduction, Sample *out, StopSignal const *stop) {
    if constexpr (std::is_same_v<Sample, float>) {
        if (GDALDataTypeIsComplex(GDALGetRasterDataType(band)) != FALSE)
            return TransferAs<float>(band, window, reduction, GDT_CFloat32, 2, out, stop,
                                     [](float const *pair) { return std::hypot(pair[0], pair[1]); });
        // GDAL takes such samples for unsigned ones: their mean would be one of other values.
        if (IsSignedByte(band))
            return TransferAs<signed char>(band, window, Reduction::Pick, GDT_Byte, 1, out, stop,
                                           [](signed char const *byte) { return static_cast<float>(*byte); });
    }
    return Transfer(band, window, reduction, kGdalType<Sample>, out, stop);
}

template <class Sample>
bool ReadRows(std::vector<BandHandle> const &bands, Rows const &rows, Sample *out, StopSignal const *stop) {
    BandHandle first = bands.front();
    if (bands.size() == 1)
        return ReadSamples(first,
                           {static_cast<double>(rows.left), static_cast<double>(rows.top),
                            static_cast<double>(rows.width), static_cast<double>(rows.height), rows.width, rows.height},
                           Reduction::Pick, out, stop);
    GDALRasterIOExtraArg extra;
    INIT_RASTERIO_EXTRA_ARG(extra);
    extra.pfnProgress = &GoOn;
    extra.pProgressData = const_cast<StopSignal *>(stop);
    std::vector<int> numbers;
    numbers.reserve(bands.size());
    for (BandHandle band : bands)
        numbers.push_back(GDALGetBandNumber(band));
    auto const pixel = static_cast<GSpacing>(bands.size() * sizeof(Sample));
    return GDALDatasetRasterIOEx(GDALGetBandDataset(first), GF_Read, rows.left, rows.top, rows.width, rows.height, out,
                                 rows.width, rows.height, kGdalType<Sample>, static_cast<int>(numbers.size()),
                                 numbers.data(), pixel, pixel * rows.width, sizeof(Sample), &extra) == CE_None;
}

template bool ReadRows(std::vector<BandHandle> const &, Rows const &, std::uint8_t *, StopSignal const *);
template bool ReadRows(std::vector<BandHandle> const &, Rows const &, std::uint16_t *, StopSignal const *);
template bool ReadRows(std::vector<BandHandle> const &, Rows const &, std::int16_t *, StopSignal const *);
template bool ReadRows(std::vector<BandHandle> const &, Rows const &, std::uint32_t *, StopSignal const *);
template bool ReadRows(std::vector<BandHandle> const &, Rows const &, std::int32_t *, StopSignal const *);
template bool ReadRows(std::vector<BandHandle> const &, Rows const &, float *, StopSignal const *);
template bool ReadSamples(BandHandle, Window const &, Reduction, std::uint8_t *, StopSignal const *);
template bool ReadSamples(BandHandle, Window const &, Reduction, std::uint16_t *, StopSignal const *);
template bool ReadSamples(BandHandle, Window const &, Reduction, std::int16_t *, StopSignal const *);
template bool ReadSamples(BandHandle, Window const &, Reduction, std::uint32_t *, StopSignal const *);
template bool ReadSamples(BandHandle, Window const &, Reduction, std::int32_t *, StopSignal const *);
template bool ReadSamples(BandHandle, Window const &, Reduction, float *, StopSignal const *);

} // namespace zelvar::gdal
