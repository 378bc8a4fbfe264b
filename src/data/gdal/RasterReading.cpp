#include "zelvar/data/gdal/RasterReading.h"

#include "zelvar/pixels/Resample.h"

#include <gdal.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>
#include <vector>

namespace zelvar::gdal {

namespace {

constexpr int kLargestSide = 1 << 20; // of a result, pixels

bool Mixes(RDIDriver::Resampling resampling) {
    return resampling == RDIDriver::Bilinear || resampling == RDIDriver::Cubic;
}

template <class Sample>
void ZeroNodata(Sample *samples, std::size_t count, double nodata) {
    if constexpr (std::is_floating_point_v<Sample>) {
        constexpr auto kMost = static_cast<double>(std::numeric_limits<Sample>::max());
        auto const none = static_cast<Sample>(std::isnan(nodata) ? nodata : std::clamp(nodata, -kMost, kMost));
        std::replace_if(
            samples, samples + count, [none](Sample sample) { return !std::isfinite(sample) || sample == none; },
            Sample{0});
    } else {
        bool const possible = nodata >= static_cast<double>(std::numeric_limits<Sample>::min()) &&
                              nodata <= static_cast<double>(std::numeric_limits<Sample>::max()) &&
                              nodata == std::floor(nodata);
        if (possible && nodata != 0)
            std::replace(samples, samples + count, static_cast<Sample>(nodata), Sample{0});
    }
}

/// The window as it stands, with what lies around it within the kernel's reach.
template <class Sample>
bool ReadPlane(BandHandle band, Window const &window, StopSignal const *stop, Plane<Sample> &plane) {
    double const reach = 2 * std::max({window.width / window.outWidth, window.height / window.outHeight, 1.0}) + 1;
    auto const low = [&](double position) { return static_cast<int>(std::max(std::floor(position - reach), 0.0)); };
    auto const high = [&](double position, int size) {
        return static_cast<int>(std::min(std::ceil(position + reach), static_cast<double>(size)));
    };
    int const left = low(window.x);
    int const top = low(window.y);
    plane.width = high(window.x + window.width, GDALGetRasterBandXSize(band)) - left;
    plane.height = high(window.y + window.height, GDALGetRasterBandYSize(band)) - top;
    plane.windowX = window.x - left;
    plane.windowY = window.y - top;
    plane.windowWidth = window.width;
    plane.windowHeight = window.height;
    plane.samples.resize(static_cast<std::size_t>(plane.width) * static_cast<std::size_t>(plane.height));
    Window const all{static_cast<double>(left),
                     static_cast<double>(top),
                     static_cast<double>(plane.width),
                     static_cast<double>(plane.height),
                     plane.width,
                     plane.height};
    return ReadSamples(band, all, Reduction::Pick, plane.samples.data(), stop);
}

/// The window averaged to about twice the wanted size.
template <class Sample>
bool ReadReducedPlane(BandHandle band, Window const &window, StopSignal const *stop, Plane<Sample> &plane) {
    plane.width = std::min(2 * window.outWidth, static_cast<int>(std::ceil(window.width)));
    plane.height = std::min(2 * window.outHeight, static_cast<int>(std::ceil(window.height)));
    plane.windowWidth = plane.width;
    plane.windowHeight = plane.height;
    auto const rowSize = static_cast<std::size_t>(plane.width);
    plane.samples.resize(rowSize * static_cast<std::size_t>(plane.height));
    constexpr int kStrip = 64; // a stop is seen between two strips, whatever the format
    double const step = window.height / plane.height;
    for (int top = 0; top < plane.height && !IsStopped(stop); top += kStrip) {
        int const count = std::min(kStrip, plane.height - top);
        Window const strip{window.x, window.y + top * step, window.width, count * step, plane.width, count};
        if (!ReadSamples(band, strip, Reduction::Average,
                         plane.samples.data() + static_cast<std::size_t>(top) * rowSize, stop))
            return false;
    }
    return !IsStopped(stop);
}

/// Reads a window that lies inside the band.
template <class Sample>
bool ReadInside(BandHandle band, Window const &window, ReadRequest const &request, Sample *out) {
    double const ratio = std::min(window.width / window.outWidth, window.height / window.outHeight);
    BandHandle level = request.usePyramid ? LevelFor(band, ratio) : band;
    Window const scaled = OnLevel(window, band, level);
    double const nodata = NodataOf(band);
    if (!Mixes(request.resampling)) {
        Reduction const reduction = request.resampling == RDIDriver::Average ? Reduction::Average : Reduction::Pick;
        if (!ReadSamples(level, scaled, reduction, out, request.stop))
            return false;
        if (request.resampling == RDIDriver::AsStored)
            return true;
        ZeroNodata(out, static_cast<std::size_t>(window.outWidth) * static_cast<std::size_t>(window.outHeight), nodata);
        return true;
    }
    Plane<Sample> plane;
    bool const large = std::max(scaled.width / scaled.outWidth, scaled.height / scaled.outHeight) > 2;
    if (!(large ? ReadReducedPlane(level, scaled, request.stop, plane) : ReadPlane(level, scaled, request.stop, plane)))
        return false;
    Resample(plane, request.resampling == RDIDriver::Cubic ? MixingKernel::Cubic : MixingKernel::Bilinear, nodata, out,
             window.outWidth, window.outHeight);
    return true;
}

bool ReadInsideAs(BandHandle band, RDIDataType type, Window const &window, ReadRequest const &request, void *out) {
    switch (type) {
    case RDI_UInt8:
        return ReadInside(band, window, request, static_cast<std::uint8_t *>(out));
    case RDI_UInt16:
        return ReadInside(band, window, request, static_cast<std::uint16_t *>(out));
    case RDI_Int16:
        return ReadInside(band, window, request, static_cast<std::int16_t *>(out));
    case RDI_UInt32:
        return ReadInside(band, window, request, static_cast<std::uint32_t *>(out));
    case RDI_Int32:
        return ReadInside(band, window, request, static_cast<std::int32_t *>(out));
    case RDI_Float32:
        return ReadInside(band, window, request, static_cast<float *>(out));
    case RDI_None:
        break;
    }
    return false;
}

struct Span {
    int begin = 0;
    int end = 0;
    [[nodiscard]] int Length() const { return end - begin; }
};
/// The pixels of the result whose centres lie inside the band.
Span InsideOf(double offset, double size, int outSize, int bandSize) {
    double const step = size / outSize;
    auto const pixelAt = [&](double position) {
        return static_cast<int>(
            std::clamp(std::ceil((position - offset) / step - 0.5), 0.0, static_cast<double>(outSize)));
    };
    return {pixelAt(0), pixelAt(bandSize)};
}

bool IsInside(Window const &window, BandHandle band) {
    return window.x >= 0 && window.y >= 0 && window.x + window.width <= GDALGetRasterBandXSize(band) &&
           window.y + window.height <= GDALGetRasterBandYSize(band);
}

/// Bytes of a row of the result.
std::size_t RowSize(RDIDataType type, Window const &window) {
    return static_cast<std::size_t>(window.outWidth) * static_cast<std::size_t>(RDIGetDTSize(type));
}

/// Reads what there is of a window that leaves the band, and leaves the buffer around it as it is.
bool ReadPart(BandHandle band, RDIDataType type, ReadRequest const &request, unsigned char *buffer) {
    Window const &window = request.window;
    auto const sampleSize = static_cast<std::size_t>(RDIGetDTSize(type));
    std::size_t const rowSize = RowSize(type, window);
    Span const columns = InsideOf(window.x, window.width, window.outWidth, GDALGetRasterBandXSize(band));
    Span const rows = InsideOf(window.y, window.height, window.outHeight, GDALGetRasterBandYSize(band));
    if (columns.Length() < 1 || rows.Length() < 1)
        return true;
    double const stepX = window.width / window.outWidth;
    double const stepY = window.height / window.outHeight;
    Window part;
    part.x = std::max(window.x + columns.begin * stepX, 0.0);
    part.y = std::max(window.y + rows.begin * stepY, 0.0);
    part.width = std::min(window.x + columns.end * stepX, static_cast<double>(GDALGetRasterBandXSize(band))) - part.x;
    part.height = std::min(window.y + rows.end * stepY, static_cast<double>(GDALGetRasterBandYSize(band))) - part.y;
    part.outWidth = columns.Length();
    part.outHeight = rows.Length();
    std::size_t const partRow = RowSize(type, part);
    std::vector<unsigned char> samples(partRow * static_cast<std::size_t>(part.outHeight));
    if (!ReadInsideAs(band, type, part, request, samples.data()))
        return false;
    for (int y = 0; y < part.outHeight; ++y)
        std::memcpy(buffer + static_cast<std::size_t>(rows.begin + y) * rowSize +
                        static_cast<std::size_t>(columns.begin) * sampleSize,
                    samples.data() + static_cast<std::size_t>(y) * partRow, partRow);
    return true;
}

void FillWithZeros(unsigned char *buffer, RDIDataType type, Window const &window) {
    std::fill_n(buffer, RowSize(type, window) * static_cast<std::size_t>(window.outHeight), std::uint8_t{0});
}

/// Those of `count` cells of `size` pixels that a stretch of the axis touches.
Span CellsOf(double offset, double length, int size, int count) {
    auto const clamped = [count](double cell) {
        return static_cast<int>(std::clamp(cell, 0.0, static_cast<double>(count)));
    };
    return {clamped(std::floor(offset / size)), clamped(std::ceil((offset + length) / size))};
}

bool IsSensible(Window const &window) {
    constexpr double kFarthest = 1e10;
    return window.outWidth >= 1 && window.outHeight >= 1 && window.outWidth <= kLargestSide &&
           window.outHeight <= kLargestSide && window.width > 0 && window.height > 0 &&
           std::abs(window.x) < kFarthest && std::abs(window.y) < kFarthest && window.width < kFarthest &&
           window.height < kFarthest;
}

using Rgb24 = std::array<unsigned char, 3>;

std::vector<Rgb24> PaletteOf(BandHandle band) {
    GDALColorTableH table = GDALGetRasterColorTable(band);
    std::vector<Rgb24> colors(static_cast<std::size_t>(std::clamp(GDALGetColorEntryCount(table), 0, 65536)));
    for (std::size_t i = 0; i < colors.size(); ++i) {
        GDALColorEntry entry{};
        GDALGetColorEntryAsRGB(table, static_cast<int>(i), &entry);
        auto const byte = [](short part) { return static_cast<unsigned char>(std::clamp<int>(part, 0, 255)); };
        colors[i] = {byte(entry.c1), byte(entry.c2), byte(entry.c3)};
    }
    return colors;
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
    if (!IsSensible(request.window))
        return false;
    if (IsInside(request.window, band))
        return ReadInsideAs(band, type, request.window, request, buffer);
    if (!request.clip || type == RDI_None)
        return false;
    FillWithZeros(static_cast<unsigned char *>(buffer), type, request.window);
    return ReadPart(band, type, request, static_cast<unsigned char *>(buffer));
}

bool ReadWindow(BandGrid const &grid, RDIDataType type, ReadRequest const &request, void *buffer) {
    BandHandle first = grid.at(0, 0);
    if (first == nullptr || type == RDI_None || !IsSensible(request.window))
        return false;
    int const width = GDALGetRasterBandXSize(first);
    int const height = GDALGetRasterBandYSize(first);
    Window const &window = request.window;
    Span const columns = CellsOf(window.x, window.width, width, grid.columns);
    Span const rows = CellsOf(window.y, window.height, height, grid.rows);
    auto const within = [&](int column, int row) {
        ReadRequest shifted = request;
        shifted.window.x -= static_cast<double>(column) * width;
        shifted.window.y -= static_cast<double>(row) * height;
        return shifted;
    };
    if (columns.Length() <= 1 && rows.Length() <= 1) {
        // A window outside of all is one outside of the cell in the corner as well.
        int const column = std::min(columns.begin, grid.columns - 1);
        int const row = std::min(rows.begin, grid.rows - 1);
        BandHandle band = grid.at(column, row);
        return band != nullptr && ReadWindow(band, type, within(column, row), buffer);
    }
    double const right = static_cast<double>(width) * grid.columns;
    double const bottom = static_cast<double>(height) * grid.rows;
    if (!request.clip &&
        (window.x < 0 || window.y < 0 || window.x + window.width > right || window.y + window.height > bottom))
        return false;
    FillWithZeros(static_cast<unsigned char *>(buffer), type, window);
    for (int row = rows.begin; row < rows.end; ++row)
        for (int column = columns.begin; column < columns.end; ++column) {
            ReadRequest const part = within(column, row);
            bool const seen = InsideOf(part.window.x, window.width, window.outWidth, width).Length() > 0 &&
                              InsideOf(part.window.y, window.height, window.outHeight, height).Length() > 0;
            if (!seen)
                continue;
            BandHandle band = IsStopped(request.stop) ? nullptr : grid.at(column, row);
            if (band == nullptr || !ReadPart(band, type, part, static_cast<unsigned char *>(buffer)))
                return false;
        }
    return true;
}

bool HasPalette(BandHandle band) {
    GDALDataType const type = GDALGetRasterDataType(band);
    return (type == GDT_Byte || type == GDT_UInt16) && GDALGetRasterColorInterpretation(band) == GCI_PaletteIndex &&
           GDALGetRasterColorTable(band) != nullptr;
}

bool ReadPaletteWindow(BandHandle band, ReadRequest const &request, unsigned char *rgb) {
    Window const &window = request.window;
    if (!HasPalette(band) || !IsSensible(window) || !IsInside(window, band))
        return false;
    std::vector<std::uint16_t> indexes(static_cast<std::size_t>(window.outWidth) *
                                       static_cast<std::size_t>(window.outHeight));
    BandHandle level = LevelFor(band, std::min(window.width / window.outWidth, window.height / window.outHeight));
    if (!ReadSamples(level, OnLevel(window, band, level), Reduction::Pick, indexes.data(), request.stop))
        return false;
    std::vector<Rgb24> const colors = PaletteOf(band);
    for (std::uint16_t const index : indexes) {
        Rgb24 const color = index < colors.size() ? colors[index] : Rgb24{};
        rgb = std::copy(color.begin(), color.end(), rgb);
    }
    return true;
}

} // namespace zelvar::gdal
