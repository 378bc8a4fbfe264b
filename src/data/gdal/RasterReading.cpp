#include "zelvar/data/gdal/RasterReading.h"

#include "zelvar/base/DString.h"

#include <gdal.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>

namespace zelvar::gdal {

namespace {

constexpr int kLargestSide = 1 << 20; // of a result, pixels

GDALRIOResampleAlg AlgorithmOf(RDIDriver::Resampling resampling) {
    switch (resampling) {
    case RDIDriver::Average:
        return GRIORA_Average;
    case RDIDriver::Bilinear:
        return GRIORA_Bilinear;
    case RDIDriver::Cubic:
        return GRIORA_Cubic;
    case RDIDriver::Nearest:
        break;
    }
    return GRIORA_NearestNeighbour;
}

GDALDataType GdalTypeOf(RDIDataType type) {
    switch (type) {
    case RDI_UInt8:
        return GDT_Byte;
    case RDI_UInt16:
        return GDT_UInt16;
    case RDI_Int16:
        return GDT_Int16;
    case RDI_UInt32:
        return GDT_UInt32;
    case RDI_Int32:
        return GDT_Int32;
    default:
        return GDT_Float32;
    }
}

bool IsSignedByte(GDALRasterBandH band) {
    char const *type = GDALGetMetadataItem(band, "PIXELTYPE", "IMAGE_STRUCTURE");
    return GDALGetRasterDataType(band) == GDT_Byte && type != nullptr && EqualNoCase(type, "SIGNEDBYTE");
}

int GoOn(double, char const *, void *stop) {
    auto const *signal = static_cast<StopSignal const *>(stop);
    return signal == nullptr || !signal->load(std::memory_order_relaxed) ? TRUE : FALSE;
}

/// Part of a band in its own pixels, brought to a size.
struct Window {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    int outWidth = 0;
    int outHeight = 0;
};

/// One call of GDAL, polling `stop`. The window must lie inside the band.
bool Transfer(GDALRasterBandH band, Window const &window, GDALRIOResampleAlg algorithm, GDALDataType type, void *buffer,
              StopSignal const *stop) {
    GDALRasterIOExtraArg extra;
    INIT_RASTERIO_EXTRA_ARG(extra);
    extra.eResampleAlg = algorithm;
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

/// The band, or the overview of it just fine enough for `ratio` pixels of the band a pixel of the result.
GDALRasterBandH LevelFor(GDALRasterBandH band, double ratio) {
    GDALRasterBandH best = band;
    double bestRatio = 1;
    for (int i = 0; i < GDALGetOverviewCount(band); ++i) {
        GDALRasterBandH overview = GDALGetOverview(band, i);
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

/// A picture in memory as a data set of GDAL's.
class MemoryBand {
public:
    MemoryBand(int width, int height, GDALDataType type, GDALRasterBandH like) {
        GDALDriverH driver = GDALGetDriverByName("MEM");
        if (driver != nullptr)
            m_dataset.reset(GDALCreate(driver, "", width, height, 1, type, nullptr));
        int hasNodata = FALSE;
        double const nodata = GDALGetRasterNoDataValue(like, &hasNodata);
        if (m_dataset != nullptr && hasNodata != FALSE)
            GDALSetRasterNoDataValue(Band(), nodata);
    }
    [[nodiscard]] bool IsValid() const { return m_dataset != nullptr; }
    [[nodiscard]] GDALRasterBandH Band() const { return GDALGetRasterBand(m_dataset.get(), 1); }

private:
    struct Close {
        void operator()(void *dataset) const { GDALClose(dataset); }
    };
    std::unique_ptr<void, Close> m_dataset;
};

/// Averages the window to twice the wanted size, then resamples that.
bool TransferInTwoSteps(GDALRasterBandH band, Window const &window, GDALRIOResampleAlg algorithm, GDALDataType type,
                        void *buffer, StopSignal const *stop) {
    int const width = std::min(2 * window.outWidth, static_cast<int>(window.width));
    int const height = std::min(2 * window.outHeight, static_cast<int>(window.height));
    MemoryBand const half(width, height, type, band);
    if (!half.IsValid())
        return false;
    // Strips end between two calls, where a stop is seen at once.
    constexpr int kStrip = 64;
    std::vector<unsigned char> rows(static_cast<std::size_t>(width) * kStrip *
                                    static_cast<std::size_t>(GDALGetDataTypeSizeBytes(type)));
    double const step = window.height / height;
    for (int top = 0; top < height; top += kStrip) {
        int const count = std::min(kStrip, height - top);
        Window const strip{window.x, window.y + top * step, window.width, count * step, width, count};
        if (!Transfer(band, strip, GRIORA_Average, type, rows.data(), stop) ||
            GoOn(0, nullptr, const_cast<StopSignal *>(stop)) == FALSE)
            return false;
        if (GDALRasterIO(half.Band(), GF_Write, 0, top, width, count, rows.data(), width, count, type, 0, 0) != CE_None)
            return false;
    }
    Window const all{0, 0, static_cast<double>(width), static_cast<double>(height), window.outWidth, window.outHeight};
    return Transfer(half.Band(), all, algorithm, type, buffer, stop);
}

bool TransferResampled(GDALRasterBandH band, Window const &window, ReadRequest const &request, GDALDataType type,
                       void *buffer) {
    GDALRIOResampleAlg const algorithm = AlgorithmOf(request.resampling);
    double const ratio = std::min(window.width / window.outWidth, window.height / window.outHeight);
    GDALRasterBandH level = request.usePyramid ? LevelFor(band, ratio) : band;
    Window scaled = window;
    if (level != band) {
        double const factorX = static_cast<double>(GDALGetRasterBandXSize(level)) / GDALGetRasterBandXSize(band);
        double const factorY = static_cast<double>(GDALGetRasterBandYSize(level)) / GDALGetRasterBandYSize(band);
        scaled.x *= factorX;
        scaled.width *= factorX;
        scaled.y *= factorY;
        scaled.height *= factorY;
    }
    bool const mixes = algorithm == GRIORA_Bilinear || algorithm == GRIORA_Cubic;
    double const left = std::max(scaled.width / scaled.outWidth, scaled.height / scaled.outHeight);
    if (mixes && left > 2)
        return TransferInTwoSteps(level, scaled, algorithm, type, buffer, request.stop);
    return Transfer(level, scaled, algorithm, type, buffer, request.stop);
}

/// What the samples of a band mean by "no data"; NaN for nothing.
double NodataOf(GDALRasterBandH band) {
    int has = FALSE;
    double const value = GDALGetRasterNoDataValue(band, &has);
    return has != FALSE ? value : std::numeric_limits<double>::quiet_NaN();
}

template <class Sample>
void ZeroNodata(Sample *samples, std::size_t count, double nodata) {
    if constexpr (std::is_floating_point_v<Sample>) {
        auto const none = static_cast<Sample>(nodata);
        for (std::size_t i = 0; i < count; ++i)
            if (!std::isfinite(samples[i]) || samples[i] == none)
                samples[i] = 0;
    } else {
        if (!(nodata >= std::numeric_limits<Sample>::min() && nodata <= std::numeric_limits<Sample>::max()) ||
            nodata == 0)
            return;
        std::replace(samples, samples + count, static_cast<Sample>(nodata), Sample{0});
    }
}

void ZeroNodata(void *samples, RDIDataType type, std::size_t count, double nodata) {
    switch (type) {
    case RDI_UInt8:
        ZeroNodata(static_cast<std::uint8_t *>(samples), count, nodata);
        break;
    case RDI_UInt16:
        ZeroNodata(static_cast<std::uint16_t *>(samples), count, nodata);
        break;
    case RDI_Int16:
        ZeroNodata(static_cast<std::int16_t *>(samples), count, nodata);
        break;
    case RDI_UInt32:
        ZeroNodata(static_cast<std::uint32_t *>(samples), count, nodata);
        break;
    case RDI_Int32:
        ZeroNodata(static_cast<std::int32_t *>(samples), count, nodata);
        break;
    default:
        ZeroNodata(static_cast<float *>(samples), count, nodata);
        break;
    }
}

/// Reads a window that lies inside the band.
bool ReadInside(GDALRasterBandH band, RDIDataType type, Window const &window, ReadRequest const &request,
                void *buffer) {
    std::size_t const count = static_cast<std::size_t>(window.outWidth) * static_cast<std::size_t>(window.outHeight);
    double const nodata = NodataOf(band);
    if (GDALDataTypeIsComplex(GDALGetRasterDataType(band)) != FALSE) {
        std::vector<float> pairs(2 * count);
        if (!TransferResampled(band, window, request, GDT_CFloat32, pairs.data()))
            return false;
        auto *samples = static_cast<float *>(buffer);
        for (std::size_t i = 0; i < count; ++i)
            samples[i] = std::hypot(pairs[2 * i], pairs[2 * i + 1]);
    } else if (IsSignedByte(band)) {
        // GDAL hands such samples out as unsigned, so that mixing would mix the wrong values.
        ReadRequest nearest = request;
        nearest.resampling = RDIDriver::Nearest;
        std::vector<signed char> bytes(count);
        if (!TransferResampled(band, window, nearest, GDT_Byte, bytes.data()))
            return false;
        std::copy(bytes.begin(), bytes.end(), static_cast<float *>(buffer));
    } else if (!TransferResampled(band, window, request, GdalTypeOf(type), buffer)) {
        return false;
    }
    ZeroNodata(buffer, type, count, nodata);
    return true;
}

/// How many pixels of the result lie before `position` of the window, and how many in all up to `end`.
struct Span {
    int begin = 0;
    int end = 0;
};
/// The pixels of the result whose centres lie inside the band.
Span InsideOf(double offset, double size, int outSize, int bandSize) {
    double const step = size / outSize;
    auto const pixelAt = [&](double position) { return std::ceil((position - offset) / step - 0.5); };
    return {static_cast<int>(std::clamp(pixelAt(0), 0.0, static_cast<double>(outSize))),
            static_cast<int>(std::clamp(pixelAt(bandSize), 0.0, static_cast<double>(outSize)))};
}

bool IsInside(ReadRequest const &request, GDALRasterBandH band) {
    return request.x >= 0 && request.y >= 0 && request.x + request.width <= GDALGetRasterBandXSize(band) &&
           request.y + request.height <= GDALGetRasterBandYSize(band);
}

/// Reads what there is of a window that leaves the band, and leaves zeros around it.
bool ReadClipped(GDALRasterBandH band, RDIDataType type, ReadRequest const &request, unsigned char *buffer) {
    auto const sampleSize = static_cast<std::size_t>(RDIGetDTSize(type));
    auto const rowSize = static_cast<std::size_t>(request.outWidth) * sampleSize;
    std::fill_n(buffer, rowSize * static_cast<std::size_t>(request.outHeight), std::uint8_t{0});
    Span const columns = InsideOf(request.x, request.width, request.outWidth, GDALGetRasterBandXSize(band));
    Span const rows = InsideOf(request.y, request.height, request.outHeight, GDALGetRasterBandYSize(band));
    int const width = columns.end - columns.begin;
    int const height = rows.end - rows.begin;
    if (width < 1 || height < 1)
        return true;
    double const stepX = request.width / request.outWidth;
    double const stepY = request.height / request.outHeight;
    double const left = std::max(request.x + columns.begin * stepX, 0.0);
    double const top = std::max(request.y + rows.begin * stepY, 0.0);
    double const right = std::min(request.x + columns.end * stepX, static_cast<double>(GDALGetRasterBandXSize(band)));
    double const bottom = std::min(request.y + rows.end * stepY, static_cast<double>(GDALGetRasterBandYSize(band)));
    std::vector<unsigned char> part(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * sampleSize);
    if (!ReadInside(band, type, {left, top, right - left, bottom - top, width, height}, request, part.data()))
        return false;
    for (int y = 0; y < height; ++y)
        std::memcpy(buffer + static_cast<std::size_t>(rows.begin + y) * rowSize +
                        static_cast<std::size_t>(columns.begin) * sampleSize,
                    part.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width) * sampleSize,
                    static_cast<std::size_t>(width) * sampleSize);
    return true;
}

bool IsSensible(ReadRequest const &request) {
    return request.outWidth >= 1 && request.outHeight >= 1 && request.outWidth <= kLargestSide &&
           request.outHeight <= kLargestSide && request.width > 0 && request.height > 0 && std::abs(request.x) < 1e10 &&
           std::abs(request.y) < 1e10 && request.width < 1e10 && request.height < 1e10;
}

} // namespace

RDIDataType DeliveredType(BandHandle band) {
    if (IsSignedByte(band))
        return RDI_Float32;
    switch (GDALGetRasterDataType(band)) {
    case GDT_Byte:
        return RDI_UInt8;
    case GDT_UInt16:
        return RDI_UInt16;
    case GDT_Int16:
        return RDI_Int16;
    case GDT_UInt32:
        return RDI_UInt32;
    case GDT_Int32:
        return RDI_Int32;
    case GDT_Unknown:
        return RDI_None;
    default:
        return RDI_Float32;
    }
}

bool ReadWindow(BandHandle band, RDIDataType type, ReadRequest const &request, void *buffer) {
    if (type == RDI_None || !IsSensible(request))
        return false;
    if (IsInside(request, band))
        return ReadInside(band, type,
                          {request.x, request.y, request.width, request.height, request.outWidth, request.outHeight},
                          request, buffer);
    return request.clip && ReadClipped(band, type, request, static_cast<unsigned char *>(buffer));
}

bool HasPalette(BandHandle band) {
    GDALDataType const type = GDALGetRasterDataType(band);
    return (type == GDT_Byte || type == GDT_UInt16) && GDALGetRasterColorInterpretation(band) == GCI_PaletteIndex &&
           GDALGetRasterColorTable(band) != nullptr;
}

bool ReadPaletteWindow(BandHandle band, ReadRequest const &request, unsigned char *rgb) {
    if (!HasPalette(band) || !IsSensible(request) || !IsInside(request, band))
        return false;
    std::size_t const count = static_cast<std::size_t>(request.outWidth) * static_cast<std::size_t>(request.outHeight);
    std::vector<std::uint16_t> indexes(count);
    ReadRequest picked = request;
    picked.resampling = RDIDriver::Nearest;
    if (!TransferResampled(band,
                           {request.x, request.y, request.width, request.height, request.outWidth, request.outHeight},
                           picked, GDT_UInt16, indexes.data()))
        return false;
    GDALColorTableH table = GDALGetRasterColorTable(band);
    std::vector<std::array<unsigned char, 3>> colors(
        static_cast<std::size_t>(std::clamp(GDALGetColorEntryCount(table), 0, 65536)));
    for (std::size_t i = 0; i < colors.size(); ++i) {
        GDALColorEntry entry{};
        GDALGetColorEntryAsRGB(table, static_cast<int>(i), &entry);
        auto const byte = [](short part) { return static_cast<unsigned char>(std::clamp<int>(part, 0, 255)); };
        colors[i] = {byte(entry.c1), byte(entry.c2), byte(entry.c3)};
    }
    for (std::size_t i = 0; i < count; ++i) {
        std::array<unsigned char, 3> const color =
            indexes[i] < colors.size() ? colors[indexes[i]] : std::array<unsigned char, 3>{};
        std::copy(color.begin(), color.end(), rgb + 3 * i);
    }
    return true;
}

} // namespace zelvar::gdal
