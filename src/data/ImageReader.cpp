#include "zelvar/data/ImageReader.h"

#include "zelvar/data/Connection.h"
#include "zelvar/data/HistogramReader.h"
#include "zelvar/data/OpenImage.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/data/SeriesCheck.h"
#include "zelvar/pixels/ScaleDataBuf.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <vector>

namespace zelvar {

namespace {

constexpr int kLongerSide = 1024;                     // pixels of a preview
constexpr std::int64_t kMostPixels = 0x2008008;       // without a pyramid
constexpr std::chrono::milliseconds kSeriesTime{250}; // to compare its members
constexpr int kAnyResolution = 1 << 30;               // pixels; the longer side of such a map
constexpr int kMostThumbnail = 1024;

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

/// What is wrong with a choice; empty for nothing.
DString FaultOf(PreviewChoice const &choice, ImageInfo const &info) {
    struct Part {
        char const *name;
        int index;
        int least;
        int count;
    };
    for (Part const &part : {Part{"channel", choice.channel, PreviewChoice::kComposition, info.channels},
                             Part{"slice", choice.slice, 0, std::max(info.slices, 1)},
                             Part{"time frame", choice.frame, 0, std::max(info.timeFrames, 1)}})
        if (part.index < part.least || part.index >= part.count)
            return Format("there is no %s %d, the image has %d", part.name, part.index + 1, part.count);
    return {};
}

/// One picture that is read, and what came of it.
class Picture {
public:
    Picture(OpenImage const &image, StopSignal const *stop, PreviewChoice const &choice)
        : m_image(image), m_stop(stop), m_choice(choice), m_info(Describe(image)) {}

    [[nodiscard]] bool Read(DCanvas &canvas, Enlarge enlarge);
    /// One of an image of any size, the longer side at most `side` pixels.
    [[nodiscard]] bool ReadSmall(DCanvas &canvas, int side);
    [[nodiscard]] bool ReadValues(PreviewValues &values);
    /// Why it was not read; of one that was read, that it is damaged.
    [[nodiscard]] DError const &Error() const { return m_error; }
    [[nodiscard]] RDIRowsRead const &RowsRead() const { return m_read; }

private:
    /// That it can be read.
    [[nodiscard]] bool IsReadable();
    /// That it takes no time that it is not worth.
    [[nodiscard]] bool IsLarge() const;
    [[nodiscard]] bool IsWithinReach() { return IsReadable() && !IsLarge(); }
    [[nodiscard]] bool HasColors() const;
    [[nodiscard]] RDIWindow Window(int outWidth, int outHeight) const;
    [[nodiscard]] int FirstChannel() const { return std::max(m_choice.channel, 0); }
    [[nodiscard]] int CountChannels() const {
        return m_choice.channel == PreviewChoice::kComposition && m_info.channels >= 3 ? 3 : 1;
    }
    void Spread(ValuePlane const &values, int type, unsigned char *samples, DCanvas const &canvas) const;
    [[nodiscard]] bool ReadChannels(DCanvas &canvas);
    [[nodiscard]] Bytes ReadPlanes(int first, int count, DCanvas const &canvas);
    [[nodiscard]] bool ReadColors(DCanvas &canvas);
    [[nodiscard]] bool Salvage(int first, int count, void *buffer, DCanvas const &canvas);

    OpenImage const &m_image;
    StopSignal const *m_stop;
    PreviewChoice m_choice;
    RDIDriver::Resampling m_resampling = RDIDriver::Cubic;
    ImageInfo m_info;
    PreviewValues m_values; ///< for a stretch of their own
    DError m_error;
    RDIRowsRead m_read;
};

/// The slice and the frame that are chosen lie as a cell in the plane of a channel.
RDIWindow Picture::Window(int outWidth, int outHeight) const {
    return {.x = static_cast<double>(m_choice.frame) * m_info.width,
            .y = static_cast<double>(m_choice.slice) * m_info.height,
            .width = static_cast<double>(m_info.width),
            .height = static_cast<double>(m_info.height),
            .outWidth = outWidth,
            .outHeight = outHeight};
}

/// After a reading that failed: takes what there is of damaged data.
bool Picture::Salvage(int first, int count, void *buffer, DCanvas const &canvas) {
    RDIDriver &driver = m_image.Driver();
    DError reason = driver.GetReadError(m_image.Handle());
    if (!reason.IsSet())
        reason.Set("the pixels cannot be read");
    RDIWindow const whole = Window(canvas.GetWidth(), canvas.GetHeight());
    RDIRowsRead read;
    if (reason.Why() != DError::Cause::Damaged || IsStopped(m_stop) ||
        !driver.SalvageRsmpl(m_image.Handle(), first, count, whole, buffer, read)) {
        m_error = reason;
        return false;
    }
    bool const isWorse = read.rows < read.all && (m_read.all == 0 || read.rows < m_read.rows);
    if (isWorse) { // else all came this time, or channels before told of more
        m_read = read;
        m_error.Set(Format("damaged: %d of %d rows read", read.rows, read.all), reason.Why(), reason.Detail());
    }
    return true;
}

/// `count` channels from `first` on, which have one type, as planes of bytes, `canvas` pixels in size; empty if they
/// cannot be read. Channels are read at once: many a file keeps them side by side.
Bytes Picture::ReadPlanes(int first, int count, DCanvas const &canvas) {
    RDIDriver &driver = m_image.Driver();
    int const type = driver.GetChnlDataType(m_image.Handle(), first);
    auto const pixels = static_cast<std::size_t>(canvas.GetWidth()) * static_cast<std::size_t>(canvas.GetHeight());
    std::size_t const samples = pixels * static_cast<std::size_t>(count);
    std::size_t const planeSize = pixels * static_cast<std::size_t>(RDIGetDTSize(type));
    Bytes planes(planeSize * static_cast<std::size_t>(count));
    RDIWindow const cell = Window(canvas.GetWidth(), canvas.GetHeight());
    if (planes.empty() ||
        (!driver.ReadChannelsRsmpl(m_image.Handle(), first, count, cell.x, cell.y, cell.width, cell.height,
                                   planes.data(), cell.outWidth, cell.outHeight, m_resampling, true, true) &&
         !Salvage(first, count, planes.data(), canvas)))
        return {};
    auto const values = static_cast<std::size_t>(first - FirstChannel()); // of the first plane
    for (std::size_t plane = 0; plane < static_cast<std::size_t>(count); ++plane) {
        if (!m_values.planes.empty())
            Spread(m_values.planes[values + plane], type, planes.data() + plane * planeSize, canvas);
        else if (type == RDI_UInt8)
            break;
        else
            ScaleDataBuf(type, planes.data() + plane * planeSize, canvas.GetWidth(), canvas.GetHeight());
        std::copy_n(planes.data() + plane * planeSize, pixels, planes.data() + plane * pixels);
    }
    planes.resize(samples);
    return planes;
}

/// Brings the range that is to be seen to bytes, in place. What is no value was brought to zeros, and those may lie
/// anywhere in the range: it becomes black.
void Picture::Spread(ValuePlane const &values, int type, unsigned char *samples, DCanvas const &canvas) const {
    int const width = canvas.GetWidth();
    int const height = canvas.GetHeight();
    ScaleDataBufTo(type, samples, width, height, values.Shown().min, values.Shown().max);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x, ++samples)
            if (auto const at = m_values.IndexAt((x + 0.5) / width, (y + 0.5) / height); at && !values.At(*at))
                *samples = 0;
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

bool Picture::ReadChannels(DCanvas &canvas) {
    int const first = FirstChannel();
    int const count = CountChannels();
    if (m_choice.stretch != PreviewChoice::Stretch::Usual && !ReadValues(m_values) && IsStopped(m_stop))
        return false; // of damaged data the picture is the usual one
    bool areAlike = true;
    for (int channel = 1; channel < count; ++channel)
        areAlike = areAlike && m_image.Driver().GetChnlDataType(m_image.Handle(), channel) == m_info.dataType;
    Bytes planes;
    for (int channel = first; channel < first + count; channel += areAlike ? count : 1) {
        Bytes const read = ReadPlanes(channel, areAlike ? count : 1, canvas);
        if (read.empty() || IsStopped(m_stop))
            return false;
        planes.insert(planes.end(), read.begin(), read.end());
    }
    Interleave(planes, canvas);
    return true;
}

/// Of a channel that is shown through a palette.
bool Picture::ReadColors(DCanvas &canvas) {
    constexpr int throughPalette = 0;
    RDIWindow const cell = Window(canvas.GetWidth(), canvas.GetHeight());
    return (m_image.Driver().ReadPaletteRsmpl(m_image.Handle(), cell.x, cell.y, cell.width, cell.height, canvas.Row(0),
                                              cell.outWidth, cell.outHeight) ||
            Salvage(0, throughPalette, canvas.Row(0), canvas)) &&
           !IsStopped(m_stop);
}

bool Picture::IsReadable() {
    if (DString const fault = FaultOf(m_choice, m_info); !fault.empty() && m_info.channels > 0) {
        m_error.Set(fault);
        return false;
    }
    return std::min(m_info.height, m_info.width) >= 1 && m_info.channels >= 1 && !IsStopped(m_stop);
}

bool Picture::IsLarge() const {
    return std::int64_t{m_info.width} * m_info.height >= kMostPixels &&
           m_image.Driver().GetAttrInt("RDI_Drvr_Sppt_Intrnl_RslPrmd", m_image.Handle(), 0) != 1;
}

bool Picture::HasColors() const {
    return m_info.channels == 1 && m_choice.channel == PreviewChoice::kComposition &&
           m_image.Driver().GetAttrInt("RDI_Drvr_Palette", m_image.Handle(), 0) == 1;
}

bool Picture::Read(DCanvas &canvas, Enlarge enlarge) {
    if (!IsWithinReach())
        return false;
    int const longer = std::max(m_info.height, m_info.width);
    double const scale =
        enlarge == Enlarge::No && longer < kLongerSide ? 1.0 : static_cast<double>(kLongerSide) / longer;
    canvas.SetSize(static_cast<int>(m_info.width * scale), static_cast<int>(m_info.height * scale));
    if (!canvas.HasData())
        return false; // a side shorter than a pixel
    return HasColors() ? ReadColors(canvas) : ReadChannels(canvas);
}

bool Picture::ReadSmall(DCanvas &canvas, int side) {
    if (!IsReadable())
        return false;
    double const scale = std::min(1.0, static_cast<double>(side) / std::max(m_info.height, m_info.width));
    auto const scaled = [scale](int length) { return std::max(1, static_cast<int>(std::lround(length * scale))); };
    canvas.SetSize(scaled(m_info.width), scaled(m_info.height));
    m_resampling = IsLarge() ? RDIDriver::Nearest : RDIDriver::Cubic;
    return HasColors() ? ReadColors(canvas) : ReadChannels(canvas);
}

bool Picture::ReadValues(PreviewValues &values) {
    if (!IsWithinReach())
        return false;
    RDIDriver &driver = m_image.Driver();
    std::size_t bytesOfPixel = 0;
    for (int channel = FirstChannel(); channel < FirstChannel() + CountChannels(); ++channel)
        bytesOfPixel += static_cast<std::size_t>(RDIGetDTSize(driver.GetChnlDataType(m_image.Handle(), channel)));
    if (bytesOfPixel == 0)
        return false;
    double const most = static_cast<double>(PreviewValues::kMostBytes) / static_cast<double>(bytesOfPixel);
    double const scale = std::min({1.0, static_cast<double>(kLongerSide) / std::max(m_info.height, m_info.width),
                                   std::sqrt(most / m_info.width / m_info.height)});
    PreviewValues read{.width = std::max(1, static_cast<int>(m_info.width * scale)),
                       .height = std::max(1, static_cast<int>(m_info.height * scale)),
                       .isPalette = HasColors(),
                       .planes = {}};
    RDIWindow const cell = Window(read.width, read.height);
    auto const pixels = static_cast<std::size_t>(read.width) * static_cast<std::size_t>(read.height);
    for (int channel = FirstChannel(); channel < FirstChannel() + CountChannels(); ++channel) {
        int const type = driver.GetChnlDataType(m_image.Handle(), channel);
        Bytes samples(pixels * static_cast<std::size_t>(RDIGetDTSize(type)));
        if (samples.empty() || IsStopped(m_stop) ||
            !driver.ReadBlockRsmpl(m_image.Handle(), channel, cell.x, cell.y, cell.width, cell.height, samples.data(),
                                   cell.outWidth, cell.outHeight, RDIDriver::AsStored, true, true))
            return false;
        read.planes.emplace_back(channel, type, std::move(samples),
                                 NumberOf(driver.GetAttrString("RDI_Drvr_NoData", m_image.Handle(), channel)),
                                 m_choice.stretch);
    }
    values = std::move(read);
    return true;
}

} // namespace

bool ReadImageInfo(BDIMoniker const &moniker, DString const &driverId, StopSignal const *stop, ImageInfo &info,
                   DError *error) {
    RequestScope const scope(RequestKind::Properties);
    OpenImage const image(moniker, driverId, stop, error);
    if (!image.IsOpen())
        return false;
    info = Describe(image);
    if (IsMapServiceAddress(moniker.GetText())) {
        info.extent = image.Driver().GetAttrString("RDI_Drvr_Extent", image.Handle(), 0);
        info.isOfAnyResolution = std::max(info.width, info.height) == kAnyResolution;
    }
    if (image.Driver().GetId() == kSeriesDriver) {
        info.members = image.Driver().GetAttrString(kSeriesMembers, image.Handle(), 0);
        if (auto const place = SeriesOf(moniker)) {
            SeriesCheck const check = CheckSeries(image, kSeriesTime, stop);
            info.differences = DifferencesOf(*place, check);
            info.differs = check.groups.size() > 1;
        }
    }
    return true;
}

namespace {

/// `read` reads the picture of what is open.
template <class Read>
bool ReadPicture(BDIMoniker const &moniker, DString const &driverId, StopSignal const *stop,
                 PreviewChoice const &choice, DCanvas &picture, DError *error, RDIRowsRead *read, Read const &take) {
    DCanvas canvas;
    bool isRead = false;
    DError reason;
    RDIRowsRead rows;
    try {
        OpenImage const image(moniker, driverId, stop, &reason);
        if (image.IsOpen()) {
            Picture reading(image, stop, choice);
            isRead = take(reading, canvas);
            reason = reading.Error();
            rows = reading.RowsRead();
        }
    } catch (std::bad_alloc const &) {
        reason.Set("no memory for the preview of \"" + moniker.GetText() + "\"", DError::Cause::TooLarge);
        Report::TraceMessage(Report::kTraceDriver, "%s", reason.Text().c_str());
    }
    if (!isRead)
        canvas.Clear();
    picture = std::move(canvas);
    if (error != nullptr)
        *error = std::move(reason);
    if (read != nullptr)
        *read = rows;
    return isRead;
}

} // namespace

bool ReadPreview(BDIMoniker const &moniker, DString const &driverId, StopSignal const *stop, DCanvas &picture,
                 Enlarge enlarge, DError *error, RDIRowsRead *read, PreviewChoice const &choice) {
    RequestScope const scope(RequestKind::Preview);
    return ReadPicture(moniker, driverId, stop, choice, picture, error, read,
                       [enlarge](Picture &reading, DCanvas &canvas) { return reading.Read(canvas, enlarge); });
}

bool ReadThumbnail(BDIMoniker const &moniker, DString const &driverId, StopSignal const *stop, int side,
                   DCanvas &picture, DError *error) {
    RequestScope const scope(RequestKind::Thumbnail);
    int const most = std::clamp(side, 1, kMostThumbnail);
    return ReadPicture(moniker, driverId, stop, {}, picture, error, nullptr,
                       [most](Picture &reading, DCanvas &canvas) { return reading.ReadSmall(canvas, most); });
}

bool ReadPreviewValues(BDIMoniker const &moniker, DString const &driverId, StopSignal const *stop,
                       PreviewChoice const &choice, PreviewValues &values) {
    RequestScope const scope(RequestKind::Preview);
    values = {};
    try {
        OpenImage const image(moniker, driverId, stop, nullptr);
        return image.IsOpen() && Picture(image, stop, choice).ReadValues(values);
    } catch (std::bad_alloc const &) {
        return false;
    }
}

} // namespace zelvar
