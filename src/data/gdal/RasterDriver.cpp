#include "zelvar/data/gdal/RasterDriver.h"

#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/data/gdal/Causes.h"
#include "zelvar/data/gdal/MapService.h"
#include "zelvar/data/gdal/RasterReading.h"
#include "zelvar/data/gdal/SliceGrid.h"
#include "zelvar/data/gdal/Source.h"
#include "zelvar/data/gdal/database/PostgresRaster.h"

#include <cpl_conv.h>
#include <cpl_multiproc.h>
#include <gdal.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <vector>

namespace zelvar::gdal {

namespace {

constexpr int kMostChannels = 65536;
constexpr int kMostThreads = 8;
constexpr double kLargeWindow = 1e6; // pixels
constexpr char const *kPastTheCache = "GTIFF_DIRECT_IO";

/// How the format reads large windows faster than block by block through its cache. Small ones are read as usual, as
/// are blocks that are decoded in no time.
enum class Bulk { None, OnThreads, PastTheCache };

/// What a handle of this family points to. It stays on the thread that opened it.
struct Image {
    DatasetPtr dataset;
    Source source;
    std::optional<Bulk> bulk; ///< once it was asked for
    DatasetPtr bulkDataset;   ///< the same as `dataset`; null where another way of reading is of no use
    Format const *format = nullptr;
    Reach reach = Reach::Local;
    StopSignal const *stop = nullptr; ///< not owned, may be null
    SliceGrid grid{1};
    DError readError;         ///< of the last reading
    bool isOnThreads = false; ///< the last reading was
    double endsAt = HUGE_VAL; ///< a row, pixels: the data were found to end behind it, and before all was there

    /// The band of a channel's first slice at the first time; null for a channel that is not there.
    [[nodiscard]] GDALRasterBandH Band(int channel) const {
        if (channel < 0 || channel >= grid.Channels())
            return nullptr;
        return Band(channel, 0, 0);
    }
    [[nodiscard]] GDALRasterBandH Band(int channel, int slice, int frame) const {
        return GDALGetRasterBand(Raw(dataset), grid.BandOf(channel, slice, frame));
    }
    /// The bands of channels at the first slice and time; none unless all are there and of one type.
    [[nodiscard]] std::vector<BandHandle> Bands(int channel, int count) const;
    /// The end of a reading of that window: notes why it failed. A library that fills up what is not there has failed.
    [[nodiscard]] bool Conclude(bool isRead, double y, double height, GdalScope const &scope);
    /// The data set to read large windows of, at full size.
    [[nodiscard]] DatasetPtr const &ForBulk(bool inWholeBlocks);
};

/// Bytes of a channel's result; none for a size that is refused anyway.
std::size_t PlaneSize(RDIDataType type, Window const &window) {
    return static_cast<std::size_t>(std::max(window.outWidth, 0)) *
           static_cast<std::size_t>(std::max(window.outHeight, 0)) * static_cast<std::size_t>(RDIGetDTSize(type));
}

Bulk BulkOf(Image const &image) {
    if (image.format->id != "GTiff" || image.reach != Reach::Local)
        return Bulk::None;
    constexpr std::int64_t kLeast = 64'000; // bytes; a thread is told of each block
    GDALRasterBandH band = GDALGetRasterBand(Raw(image.dataset), 1);
    int width = 0;
    int height = 0;
    GDALGetBlockSize(band, &width, &height);
    if (GDALGetMetadataItem(Raw(image.dataset), "COMPRESSION", "IMAGE_STRUCTURE") == nullptr)
        return width == GDALGetRasterBandXSize(band) ? Bulk::PastTheCache : Bulk::None;
    bool const isSlow = std::int64_t{width} * height * GDALGetDataTypeSizeBytes(GDALGetRasterDataType(band)) >= kLeast;
    return isSlow && CPLGetNumCPUs() > 1 ? Bulk::OnThreads : Bulk::None;
}

/// The same data set, opened anew; null if it is not the same any more.
DatasetPtr OpenAgain(Image const &image, Source const &source) {
    DatasetPtr opened = Open(source, GDAL_OF_RASTER, image.format, nullptr).dataset;
    bool const isSame = opened != nullptr &&
                        GDALGetRasterXSize(Raw(opened)) == GDALGetRasterXSize(Raw(image.dataset)) &&
                        GDALGetRasterYSize(Raw(opened)) == GDALGetRasterYSize(Raw(image.dataset)) &&
                        GDALGetRasterCount(Raw(opened)) == GDALGetRasterCount(Raw(image.dataset));
    return isSame ? std::move(opened) : nullptr;
}

/// The same data set, opened for that; null for `Bulk::None`.
DatasetPtr OpenForBulk(Image const &image, Bulk bulk) {
    if (bulk == Bulk::None)
        return nullptr;
    Source source = image.source;
    if (bulk == Bulk::OnThreads)
        source.options.emplace_back("NUM_THREADS", std::to_string(std::min(CPLGetNumCPUs(), kMostThreads)));
    else
        CPLSetThreadLocalConfigOption(kPastTheCache, "YES");
    DatasetPtr opened = OpenAgain(image, source);
    CPLSetThreadLocalConfigOption(kPastTheCache, nullptr);
    return opened;
}

DatasetPtr const &Image::ForBulk(bool inWholeBlocks) {
    if (!bulk) {
        bulk = BulkOf(*this);
        bulkDataset = OpenForBulk(*this, *bulk);
    }
    // A block that is read in parts is decoded once from the cache, and again and again past it.
    bool const isOfUse = bulkDataset != nullptr && (inWholeBlocks || *bulk == Bulk::PastTheCache);
    isOnThreads = isOfUse && *bulk == Bulk::OnThreads;
    return isOfUse ? bulkDataset : dataset;
}

std::vector<BandHandle> Image::Bands(int channel, int count) const {
    std::vector<BandHandle> bands;
    for (int i = channel; i < channel + count; ++i) {
        bands.push_back(Band(i));
        if (bands.back() == nullptr || DeliveredType(bands.back()) != DeliveredType(bands.front()))
            return {};
    }
    return bands;
}

bool Image::Conclude(bool isRead, double y, double height, GdalScope const &scope) {
    readError.Clear();
    if (scope.HasEndedTooSoon())
        endsAt = std::min(endsAt, y);
    if (isRead && y + height <= endsAt)
        return true;
    if (isRead)
        readError.Set("the data end before the picture does", DError::Cause::Damaged);
    else if (!IsStopped(stop))
        readError = ErrorOf(scope, source);
    // Threads of the format's own say nothing that this one would hear.
    if (!isRead && !readError.IsSet() && isOnThreads && !IsStopped(stop))
        readError.Set("a block cannot be read", DError::Cause::Damaged);
    return false;
}

Image &Of(void *handle) { return *static_cast<Image *>(handle); }

std::unique_ptr<Image> OpenImage(BDIMoniker const &moniker, Format const *only, StopSignal const *stop, DError *error) {
    auto const source = HasPostgresRasters() ? ResolvePostgresRaster(moniker, stop, error) : Resolve(moniker, error);
    if (!source)
        return nullptr;
    if (!source->layer.empty()) {
        if (error != nullptr)
            error->Set("\"" + moniker.GetText() + "\" is a layer, no image", DError::Cause::NotSupported);
        return nullptr;
    }
    OpenedSource opened = Open(*source, GDAL_OF_RASTER, only, error);
    if (!opened)
        return nullptr;
    GdalScope const scope(source->reach);
    SliceGrid const grid = opened.format->id == "netCDF" ? SliceGrid::OfNetCdf(Raw(opened.dataset))
                                                         : SliceGrid(GDALGetRasterCount(Raw(opened.dataset)));
    int const channels = grid.Channels();
    if (channels < 1 || channels > kMostChannels) {
        if (error != nullptr)
            error->Set(zelvar::Format("\"%s\" has %d channels", moniker.GetText().c_str(), channels),
                       DError::Cause::NotSupported);
        return nullptr;
    }
    // As of tiles in a database that claim to lie further apart than can be counted.
    if (GDALGetRasterXSize(Raw(opened.dataset)) < 1 || GDALGetRasterYSize(Raw(opened.dataset)) < 1) {
        if (error != nullptr)
            error->Set("\"" + moniker.GetText() + "\" has no size that an image can have", DError::Cause::Damaged);
        return nullptr;
    }
    auto image = std::make_unique<Image>();
    image->dataset = std::move(opened.dataset);
    image->source = *source;
    image->format = opened.format;
    image->reach = source->reach;
    image->stop = stop;
    image->grid = grid;
    return image;
}

} // namespace

DString RasterDriver::GetFamily() const { return "GDAL"; }

int RasterDriver::IsMyFile(char const *path) const {
    auto const source = Resolve({path == nullptr ? "" : path, nullptr}, nullptr);
    // An address would cost a request each.
    if (!source || source->reach == Reach::Network || !source->layer.empty())
        return 0;
    return Identify(*source, GDAL_OF_RASTER, &m_format) != nullptr ? 1 : 0;
}

std::vector<DString> RasterDriver::FindInFamily(char const *path) const {
    std::vector<DString> ids;
    auto const source = Resolve({path == nullptr ? "" : path, nullptr}, nullptr);
    if (!source || source->reach == Reach::Network || !source->layer.empty())
        return ids;
    for (Format const *format : IdentifyAll(*source, GDAL_OF_RASTER))
        ids.push_back(format->id);
    return ids;
}

void *RasterDriver::OpenFile(BDIMoniker const &moniker, StopSignal const *stop, DError *error) {
    return OpenImage(moniker, &m_format, stop, error).release();
}

void *RasterDriver::OpenFileInFamily(BDIMoniker const &moniker, RDIDriver **opener, StopSignal const *stop,
                                     DError *error) {
    std::unique_ptr<Image> image = OpenImage(moniker, nullptr, stop, error);
    if (image == nullptr)
        return nullptr;
    RDIDriver *named = RDIDriverMngr::Instance()->GetDriver(image->format->id.c_str());
    *opener = named != nullptr && named->GetFamily() == GetFamily() ? named : this;
    return image.release();
}

void RasterDriver::CloseFile(void *handle, bool) { delete static_cast<Image *>(handle); }

int RasterDriver::GetNumChnl(void *handle) const { return Of(handle).grid.Channels(); }

int RasterDriver::GetChnlSizeX(void *handle, int channel) const {
    Image const &image = Of(handle);
    GDALRasterBandH band = image.Band(channel);
    return band == nullptr ? 0 : GDALGetRasterBandXSize(band) * image.grid.Frames();
}

int RasterDriver::GetChnlSizeY(void *handle, int channel) const {
    Image const &image = Of(handle);
    GDALRasterBandH band = image.Band(channel);
    return band == nullptr ? 0 : GDALGetRasterBandYSize(band) * image.grid.Slices();
}

int RasterDriver::GetChnlDataType(void *handle, int channel) const {
    GdalScope const scope(Of(handle).reach);
    GDALRasterBandH band = Of(handle).Band(channel);
    return band == nullptr ? RDI_None : DeliveredType(band);
}

RDIGeoCoo RasterDriver::GetChnlGeoCode(void *handle, int) const {
    SliceGrid const &grid = Of(handle).grid;
    return {.numSlices = grid.Slices(), .numTimeFrames = grid.Frames()};
}

DString RasterDriver::GetAttrString(char const *name, void *handle, int channel) const {
    if (std::strcmp(name, "RDI_Drvr_NoData") == 0) {
        GdalScope const scope(Of(handle).reach);
        GDALRasterBandH band = Of(handle).Band(channel);
        double const nodata = band == nullptr ? std::nan("") : NodataOf(band);
        return std::isnan(nodata) ? DString() : zelvar::Format("%.17g", nodata);
    }
    Image const &image = Of(handle);
    GdalScope const scope(image.reach);
    if (std::strcmp(name, "RDI_Drvr_Extent") == 0)
        return ExtentInWords(image.dataset);
    if (std::strcmp(name, "RDI_Drvr_Info") != 0)
        return {};
    char const *compression = GDALGetMetadataItem(Raw(image.dataset), "COMPRESSION", "IMAGE_STRUCTURE");
    bool const told = compression == nullptr || image.format->name.find(compression) != DString::npos;
    return told ? image.format->name : image.format->name + ", " + compression;
}

int RasterDriver::GetAttrInt(char const *name, void *handle, int channel) const {
    Image const &image = Of(handle);
    GdalScope const scope(image.reach);
    GDALRasterBandH band = image.Band(channel);
    if (band == nullptr)
        return 0;
    if (std::strcmp(name, "RDI_Drvr_Sppt_Intrnl_RslPrmd") == 0)
        return GDALGetOverviewCount(band) > 0 ? 1 : 0;
    if (std::strcmp(name, "RDI_Drvr_Palette") == 0)
        return GDALGetRasterCount(Raw(image.dataset)) == 1 && HasPalette(band) ? 1 : 0;
    return 0;
}

bool RasterDriver::ReadBlockRsmpl(void *handle, int channel, double x, double y, double width, double height,
                                  void *buffer, int outWidth, int outHeight, int resampling, bool usePyramid,
                                  bool clip) {
    return ReadChannelsRsmpl(handle, channel, 1, x, y, width, height, buffer, outWidth, outHeight, resampling,
                             usePyramid, clip);
}

namespace {

/// Reads channels of one type, `bands` their first ones.
bool ReadChannels(Image &image, int channel, std::vector<BandHandle> bands, ReadRequest const &request, void *buffer) {
    RDIDataType const type = DeliveredType(bands.front());
    Window const &window = request.window;
    bool const isMixed = request.resampling == RDIDriver::Bilinear || request.resampling == RDIDriver::Cubic;
    bool const isWhole = window.width == window.outWidth && window.height == window.outHeight &&
                         window.x == std::floor(window.x) && window.y == std::floor(window.y);
    double const ratio = std::min(window.width / window.outWidth, window.height / window.outHeight);
    bool const isReduced = request.usePyramid && LevelFor(bands.front(), ratio) != bands.front();
    if (window.width * window.height >= kLargeWindow && (isMixed || isWhole) && !isReduced)
        for (BandHandle &band : bands)
            band = GDALGetRasterBand(Raw(image.ForBulk(isMixed)), GDALGetBandNumber(band));
    if (image.grid.Frames() == 1 && image.grid.Slices() == 1)
        return ReadWindows(bands, type, request, buffer);
    auto *plane = static_cast<unsigned char *>(buffer);
    for (std::size_t i = 0; i < bands.size(); ++i, plane += PlaneSize(type, window)) {
        BandGrid const grid{
            .columns = image.grid.Frames(), .rows = image.grid.Slices(), .at = [&](int frame, int slice) {
                return image.Band(channel + static_cast<int>(i), slice, frame);
            }};
        if (!ReadWindow(grid, type, request, plane))
            return false;
    }
    return true;
}

/// What `read` says; no where there is no memory for it.
template <class Read>
bool WithinMemory(Image &image, Read const &read) {
    try {
        return read();
    } catch (std::bad_alloc const &) {
        image.readError.Set("no memory for the pixels", DError::Cause::TooLarge);
        return false;
    }
}

} // namespace

bool RasterDriver::ReadChannelsRsmpl(void *handle, int channel, int count, double x, double y, double width,
                                     double height, void *buffer, int outWidth, int outHeight, int resampling,
                                     bool usePyramid, bool clip) {
    Image &image = Of(handle);
    GdalScope const scope(image.reach);
    image.readError.Clear();
    image.isOnThreads = false;
    std::vector<BandHandle> const bands = image.Bands(channel, count);
    if (bands.empty() || buffer == nullptr || resampling < Nearest || resampling > AsStored)
        return false;
    ReadRequest const request{.window = {x, y, width, height, outWidth, outHeight},
                              .resampling = static_cast<Resampling>(resampling),
                              .usePyramid = usePyramid,
                              .clip = clip,
                              .stop = image.stop};
    return WithinMemory(
        image, [&] { return image.Conclude(ReadChannels(image, channel, bands, request, buffer), y, height, scope); });
}

bool RasterDriver::ReadPaletteRsmpl(void *handle, double x, double y, double width, double height, void *rgb,
                                    int outWidth, int outHeight) {
    Image &image = Of(handle);
    GdalScope const scope(image.reach);
    image.readError.Clear();
    GDALRasterBandH band = image.Band(0);
    if (band == nullptr || rgb == nullptr)
        return false;
    ReadRequest const request{.window = {x, y, width, height, outWidth, outHeight}, .stop = image.stop};
    return WithinMemory(image, [&] {
        return image.Conclude(ReadPaletteWindow(band, request, static_cast<unsigned char *>(rgb)), y, height, scope);
    });
}

DError RasterDriver::GetReadError(void *handle) const { return Of(handle).readError; }

bool RasterDriver::SalvageRsmpl(void *handle, int channel, int count, RDIWindow const &window, void *buffer,
                                RDIRowsRead &read) {
    Image &image = Of(handle);
    GdalScope const scope(image.reach);
    if (buffer == nullptr || count < 0)
        return false;
    // Blocks that were read before do not tell any more how that went.
    DatasetPtr const again = OpenAgain(image, image.source);
    std::vector<BandHandle> bands = image.Bands(count == 0 ? 0 : channel, std::max(count, 1));
    if (again == nullptr || bands.empty())
        return false;
    for (BandHandle &band : bands)
        band = GDALGetRasterBand(Raw(again), GDALGetBandNumber(band));
    Salvage salvage(scope);
    ReadRequest const request{
        .window = {window.x, window.y, window.width, window.height, window.outWidth, window.outHeight},
        .resampling = Cubic,
        .clip = false,
        .stop = image.stop,
        .salvage = &salvage};
    return WithinMemory(image, [&] {
        if (!(count == 0 ? ReadPaletteWindow(bands.front(), request, static_cast<unsigned char *>(buffer))
                         : ReadWindows(bands, DeliveredType(bands.front()), request, buffer)) ||
            !salvage.HasAny())
            return false;
        read = salvage.Result(static_cast<int>(window.height));
        return true;
    });
}

} // namespace zelvar::gdal
