#include "zelvar/data/ImageReader.h"

#include "zelvar/data/OpenImage.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/pixels/ScaleDataBuf.h"

#include <algorithm>
#include <array>
#include <new>
#include <vector>

namespace zelvar {

namespace {

constexpr int kLongerSide = 1024;               // pixels of a preview
constexpr std::int64_t kMostPixels = 0x2008008; // without a pyramid
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

using Band = std::vector<unsigned char>;

/// One channel as bytes, `canvas` pixels in size; empty if it cannot be read.
Band ReadBand(OpenImage const &image, int channel, ImageInfo const &info, DCanvas const &canvas) {
    RDIDriver &driver = image.Driver();
    int const type = driver.GetChnlDataType(image.Handle(), channel);
    auto const pixels = static_cast<std::size_t>(canvas.GetWidth()) * static_cast<std::size_t>(canvas.GetHeight());
    Band band(pixels * static_cast<std::size_t>(RDIGetDTSize(type)));
    if (band.empty() || !driver.ReadBlockRsmpl(image.Handle(), channel, 0.0, 0.0, info.width, info.height, band.data(),
                                               canvas.GetWidth(), canvas.GetHeight(), kCubic, true, true))
        return {};
    if (type != RDI_UInt8)
        ScaleDataBuf(type, band.data(), canvas.GetWidth(), canvas.GetHeight());
    band.resize(pixels);
    return band;
}

bool IsStopped(StopSignal const *stop) { return stop != nullptr && stop->load(std::memory_order_relaxed); }

bool ReadChannels(OpenImage const &image, ImageInfo const &info, StopSignal const *stop, DCanvas &canvas) {
    std::size_t const count = info.channels >= 3 ? 3 : 1;
    std::array<Band, 3> bands;
    for (std::size_t i = 0; i < count; ++i) {
        bands[i] = ReadBand(image, static_cast<int>(i), info, canvas);
        if (bands[i].empty() || IsStopped(stop))
            return false;
    }
    std::size_t at = 0;
    for (int y = 0; y < canvas.GetHeight(); ++y) {
        std::uint8_t *out = canvas.Row(y);
        for (int x = 0; x < canvas.GetWidth(); ++x, ++at)
            for (std::size_t i = 0; i < 3; ++i)
                *out++ = bands[count == 3 ? i : 0][at];
    }
    return true;
}

bool ReadPicture(OpenImage const &image, StopSignal const *stop, DCanvas &canvas, Enlarge enlarge) {
    ImageInfo const info = Describe(image);
    if (info.width < 1 || info.height < 1 || info.channels < 1 || IsStopped(stop))
        return false;
    int const longer = std::max(info.height, info.width);
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
