#include "zelvar/data/ImageReader.h"

#include "zelvar/data/OpenImage.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/data/SeriesCheck.h"
#include "zelvar/pixels/ScaleDataBuf.h"

#include <algorithm>
#include <new>
#include <vector>

namespace zelvar {

namespace {

constexpr int kLongerSide = 1024;                     // pixels of a preview
constexpr std::int64_t kMostPixels = 0x2008008;       // without a pyramid
constexpr std::chrono::milliseconds kSeriesTime{250}; // to compare its members
constexpr int kCubic = RDIDriver::Cubic;

/// Slices lie one under the other and time frames side by side.
ImageInfo Describe(OpenImage const &image) {
    RDIDriver const &driver = image.Driver();
    ImageInfo info;
    RDIGeoCoo const geo = driver.GetChnlGeoCode(image.Handle(), 0);
    info.width = driver.GetChnlSizeX(image.Handle(), 0) / std::max(geo.numTimeFrames, 1);
    info.height = driver.GetChnlSizeY(image.Handle(), 0) / std::max(geo.numSlices, 1);
    info.channels = driver.GetNumChnl(image.Handle());
    info.slices = geo.numSlices;
    info.timeFrames = geo.numTimeFrames;
    info.dataType = driver.GetChnlDataType(image.Handle(), 0);
    info.driver = driver.GetAttrString("RDI_Drvr_Info", image.Handle(), 0);
    if (info.driver.empty())
        info.driver = driver.GetId();
    return info;
}

using Bytes = std::vector<unsigned char>;

bool IsStopped(StopSignal const *stop) { return stop != nullptr && stop->load(std::memory_order_relaxed); }

/// `count` channels from `first` on, which have one type, as planes of bytes, `canvas` pixels in size; empty if they
/// cannot be read. Channels are read at once: many a file keeps them side by side.
Bytes ReadPlanes(OpenImage const &image, int first, int count, ImageInfo const &info, DCanvas const &canvas) {
    RDIDriver &driver = image.Driver();
    int const type = driver.GetChnlDataType(image.Handle(), first);
    auto const pixels = static_cast<std::size_t>(canvas.GetWidth()) * static_cast<std::size_t>(canvas.GetHeight());
    std::size_t const samples = pixels * static_cast<std::size_t>(count);
    std::size_t const planeSize = pixels * static_cast<std::size_t>(RDIGetDTSize(type));
    Bytes planes(planeSize * static_cast<std::size_t>(count));
    if (planes.empty() ||
        !driver.ReadChannelsRsmpl(image.Handle(), first, count, 0.0, 0.0, info.width, info.height, planes.data(),
                                  canvas.GetWidth(), canvas.GetHeight(), kCubic, true, true))
        return {};
    for (std::size_t plane = 0; type != RDI_UInt8 && plane < static_cast<std::size_t>(count); ++plane) {
        ScaleDataBuf(type, planes.data() + plane * planeSize, canvas.GetWidth(), canvas.GetHeight());
        std::copy_n(planes.data() + plane * planeSize, pixels, planes.data() + plane * pixels);
    }
    planes.resize(samples);
    return planes;
}

/// Three planes, or one for all three colours.
void Interleave(Bytes const &planes, DCanvas &canvas) {
    auto const pixels = static_cast<std::size_t>(canvas.GetWidth()) * static_cast<std::size_t>(canvas.GetHeight());
    std::size_t const step = planes.size() == pixels ? 0 : pixels;
    unsigned char const *from = planes.data();
    std::uint8_t *out = canvas.Row(0);
    for (unsigned char const *const end = from + pixels; from != end; ++from)
        for (std::size_t plane = 0; plane < 3; ++plane)
            *out++ = from[plane * step];
}

bool ReadChannels(OpenImage const &image, ImageInfo const &info, StopSignal const *stop, DCanvas &canvas) {
    int const count = info.channels >= 3 ? 3 : 1;
    bool areAlike = true;
    for (int channel = 1; channel < count; ++channel)
        areAlike = areAlike && image.Driver().GetChnlDataType(image.Handle(), channel) == info.dataType;
    Bytes planes;
    for (int channel = 0; channel < count; channel += areAlike ? count : 1) {
        Bytes const read = ReadPlanes(image, channel, areAlike ? count : 1, info, canvas);
        if (read.empty() || IsStopped(stop))
            return false;
        planes.insert(planes.end(), read.begin(), read.end());
    }
    Interleave(planes, canvas);
    return true;
}

bool ReadPicture(OpenImage const &image, StopSignal const *stop, DCanvas &canvas, Enlarge enlarge) {
    ImageInfo const info = Describe(image);
    int const longer = std::max(info.height, info.width);
    if (longer < 1 || info.channels < 1 || IsStopped(stop))
        return false;
    double const scale =
        enlarge == Enlarge::No && longer < kLongerSide ? 1.0 : static_cast<double>(kLongerSide) / longer;
    canvas.SetSize(static_cast<int>(info.width * scale), static_cast<int>(info.height * scale));
    if (!canvas.HasData())
        return false; // a side shorter than a pixel
    RDIDriver &driver = image.Driver();
    if (std::int64_t{info.width} * info.height >= kMostPixels &&
        driver.GetAttrInt("RDI_Drvr_Sppt_Intrnl_RslPrmd", image.Handle(), 0) != 1)
        return false;
    if (info.channels == 1 && driver.GetAttrInt("RDI_Drvr_Palette", image.Handle(), 0) == 1)
        return driver.ReadPaletteRsmpl(image.Handle(), 0.0, 0.0, info.width, info.height, canvas.Row(0),
                                       canvas.GetWidth(), canvas.GetHeight()) &&
               !IsStopped(stop);
    return ReadChannels(image, info, stop, canvas);
}

} // namespace

bool ReadImageInfo(BDIMoniker const &moniker, DString const &driverId, StopSignal const *stop, ImageInfo &info) {
    RequestScope const scope(RequestKind::Properties);
    OpenImage const image(moniker, driverId, stop);
    if (!image.IsOpen())
        return false;
    info = Describe(image);
    if (image.Driver().GetId() == kSeriesDriver) {
        info.members = image.Driver().GetAttrString(kSeriesMembers, image.Handle(), 0);
        if (auto const place = SeriesOf(moniker))
            info.differences = DifferencesOf(*place, CheckSeries(image, kSeriesTime, stop));
    }
    return true;
}

bool ReadPreview(BDIMoniker const &moniker, DString const &driverId, StopSignal const *stop, DCanvas &picture,
                 Enlarge enlarge) {
    RequestScope const scope(RequestKind::Preview);
    DCanvas canvas;
    bool read = false;
    try {
        OpenImage const image(moniker, driverId, stop);
        read = image.IsOpen() && ReadPicture(image, stop, canvas, enlarge);
    } catch (std::bad_alloc const &) {
        Report::TraceMessage(Report::kTraceDriver, "no memory for the preview of \"%s\"", moniker.GetText().c_str());
    }
    if (!read)
        canvas.Clear();
    picture = std::move(canvas);
    return read;
}

} // namespace zelvar
