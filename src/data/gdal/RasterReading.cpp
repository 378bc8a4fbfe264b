#include "zelvar/data/gdal/RasterReading.h"

#include "zelvar/data/gdal/MixedReading.h"

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

constexpr int kLargestSide = 1 << 20;      // of a result, pixels
constexpr std::uint16_t kNoColor = 0xFFFF; // no palette is as long

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

/// The levels of the bands' pyramids that are fine enough for the window.
std::vector<BandHandle> LevelsFor(std::vector<BandHandle> const &bands, Window const &window) {
    double const ratio = std::min(window.width / window.outWidth, window.height / window.outHeight);
    std::vector<BandHandle> levels;
    levels.reserve(bands.size());
    for (BandHandle band : bands)
        levels.push_back(LevelFor(band, ratio));
    return levels;
}

/// Reads a window that lies inside the bands.
template <class Sample>
bool ReadInside(std::vector<BandHandle> const &bands, Window const &window, ReadRequest const &request, Sample *out) {
    std::vector<BandHandle> const levels = request.usePyramid ? LevelsFor(bands, window) : bands;
    Window const scaled = OnLevel(window, bands.front(), levels.front());
    std::size_t const size = static_cast<std::size_t>(window.outWidth) * static_cast<std::size_t>(window.outHeight);
    bool const together = Mixes(request.resampling) && CanBeReadTogether(bands) && CanBeReadTogether(levels);
    if (bands.size() > 1 && !together) {
        for (std::size_t i = 0; i < bands.size(); ++i)
            if (IsStopped(request.stop) || !ReadInside({bands[i]}, window, request, out + i * size))
                return false;
        return true;
    }
    double const nodata = NodataOf(bands.front());
    if (Mixes(request.resampling))
        return ReadMixed(
            levels, scaled,
            {.kernel = request.resampling == RDIDriver::Cubic ? MixingKernel::Cubic : MixingKernel::Bilinear,
             .nodata = nodata,
             .salvage = request.salvage},
            out, request.stop);
    Reduction const reduction = request.resampling == RDIDriver::Average ? Reduction::Average : Reduction::Pick;
    if (!ReadSamples(levels.front(), scaled, reduction, out, request.stop))
        return false;
    if (request.resampling != RDIDriver::AsStored)
        ZeroNodata(out, size, nodata);
    return true;
}

bool ReadInsideAs(std::vector<BandHandle> const &bands, RDIDataType type, Window const &window,
                  ReadRequest const &request, void *out) {
    switch (type) {
    case RDI_UInt8:
        return ReadInside(bands, window, request, static_cast<std::uint8_t *>(out));
    case RDI_UInt16:
        return ReadInside(bands, window, request, static_cast<std::uint16_t *>(out));
    case RDI_Int16:
        return ReadInside(bands, window, request, static_cast<std::int16_t *>(out));
    case RDI_UInt32:
        return ReadInside(bands, window, request, static_cast<std::uint32_t *>(out));
    case RDI_Int32:
        return ReadInside(bands, window, request, static_cast<std::int32_t *>(out));
    case RDI_Float32:
        return ReadInside(bands, window, request, static_cast<float *>(out));
    case RDI_None:
        break;
    }
    return false;
}

/// The pixels of the result whose centres lie inside the band.
RDISpan InsideOf(double offset, double size, int outSize, int bandSize) {
    return RDISamplesInside(offset, size, outSize, 0, bandSize);
}

bool AreOfOneSize(BandHandle a, BandHandle b) {
    return GDALGetRasterBandXSize(a) == GDALGetRasterBandXSize(b) &&
           GDALGetRasterBandYSize(a) == GDALGetRasterBandYSize(b);
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
    RDISpan const columns = InsideOf(window.x, window.width, window.outWidth, GDALGetRasterBandXSize(band));
    RDISpan const rows = InsideOf(window.y, window.height, window.outHeight, GDALGetRasterBandYSize(band));
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
    if (!ReadInsideAs({band}, type, part, request, samples.data()))
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

bool IsSensible(Window const &window) {
    return window.IsSensible() && window.outWidth <= kLargestSide && window.outHeight <= kLargestSide;
}

using Rgb24 = std::array<unsigned char, 3>;

std::vector<Rgb24> PaletteOf(BandHandle band) {
    GDALColorTableH table = GDALGetRasterColorTable(band);
    std::vector<Rgb24> colors(static_cast<std::size_t>(std::clamp<int>(GDALGetColorEntryCount(table), 0, kNoColor)));
    for (std::size_t i = 0; i < colors.size(); ++i) {
        GDALColorEntry entry{};
        GDALGetColorEntryAsRGB(table, static_cast<int>(i), &entry);
        auto const byte = [](short part) { return static_cast<unsigned char>(std::clamp<int>(part, 0, 255)); };
        colors[i] = {byte(entry.c1), byte(entry.c2), byte(entry.c3)};
    }
    return colors;
}

/// The picked samples of a damaged band, row by row of the result.
bool SalvagePicks(BandHandle band, Window const &window, ReadRequest const &request, std::uint16_t *out) {
    request.salvage->Begin(window.outHeight);
    Window row = window;
    row.height = window.height / window.outHeight;
    row.outHeight = 1;
    for (int y = 0; y < window.outHeight; ++y, out += window.outWidth) {
        row.y = window.y + y * row.height;
        if (IsStopped(request.stop))
            return false;
        if (!request.salvage->ReadOne([&] { return ReadSamples(band, row, Reduction::Pick, out, request.stop); }))
            std::fill_n(out, window.outWidth, kNoColor);
    }
    return !IsStopped(request.stop);
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
    return ReadWindows({band}, type, request, buffer);
}

bool ReadWindows(std::vector<BandHandle> const &bands, RDIDataType type, ReadRequest const &request, void *buffer) {
    Window const &window = request.window;
    if (bands.empty() || !IsSensible(window))
        return false;
    auto const isInside = [&](BandHandle band) { return IsInside(window, band) && AreOfOneSize(band, bands.front()); };
    if (std::all_of(bands.begin(), bands.end(), isInside))
        return ReadInsideAs(bands, type, window, request, buffer);
    if (!request.clip || type == RDI_None)
        return false;
    auto *plane = static_cast<unsigned char *>(buffer);
    for (BandHandle band : bands) {
        FillWithZeros(plane, type, window);
        if (!ReadPart(band, type, request, plane))
            return false;
        plane += RowSize(type, window) * static_cast<std::size_t>(window.outHeight);
    }
    return true;
}

bool ReadWindow(BandGrid const &grid, RDIDataType type, ReadRequest const &request, void *buffer) {
    BandHandle first = grid.at(0, 0);
    if (first == nullptr || type == RDI_None || !IsSensible(request.window))
        return false;
    int const width = GDALGetRasterBandXSize(first);
    int const height = GDALGetRasterBandYSize(first);
    Window const &window = request.window;
    RDISpan const columns = RDICellsOf(window.x, window.width, width, grid.columns);
    RDISpan const rows = RDICellsOf(window.y, window.height, height, grid.rows);
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
    Window const scaled = OnLevel(window, band, level);
    if (!(request.salvage == nullptr ? ReadSamples(level, scaled, Reduction::Pick, indexes.data(), request.stop)
                                     : SalvagePicks(level, scaled, request, indexes.data())))
        return false;
    std::vector<Rgb24> const colors = PaletteOf(band);
    for (std::uint16_t const index : indexes) {
        Rgb24 const color = index < colors.size() ? colors[index] : Rgb24{};
        rgb = std::copy(color.begin(), color.end(), rgb);
    }
    return true;
}

} // namespace zelvar::gdal
