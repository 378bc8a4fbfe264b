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

/// One picture that is read, and what came of it.
class Picture {
public:
    Picture(OpenImage const &image, StopSignal const *stop) : m_image(image), m_stop(stop), m_info(Describe(image)) {}

    [[nodiscard]] bool Read(DCanvas &canvas, Enlarge enlarge);
    /// Why it was not read; of one that was read, that it is damaged.
    [[nodiscard]] DError const &Error() const { return m_error; }
    [[nodiscard]] RDIRowsRead const &RowsRead() const { return m_read; }

private:
    [[nodiscard]] bool ReadChannels(DCanvas &canvas);
    [[nodiscard]] Bytes ReadPlanes(int first, int count, DCanvas const &canvas);
    [[nodiscard]] bool ReadColors(DCanvas &canvas);
    [[nodiscard]] bool Salvage(int first, int count, void *buffer, DCanvas const &canvas);

    OpenImage const &m_image;
    StopSignal const *m_stop;
    ImageInfo m_info;
    DError m_error;
    RDIRowsRead m_read;
};

/// After a reading that failed: takes what there is of damaged data.
bool Picture::Salvage(int first, int count, void *buffer, DCanvas const &canvas) {
    RDIDriver &driver = m_image.Driver();
    DError reason = driver.GetReadError(m_image.Handle());
    if (!reason.IsSet())
        reason.Set("the pixels cannot be read");
    RDIWindow const whole{0.0, 0.0, double(m_info.width), double(m_info.height), canvas.GetWidth(), canvas.GetHeight()};
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
    if (planes.empty() ||
        (!driver.ReadChannelsRsmpl(m_image.Handle(), first, count, 0.0, 0.0, m_info.width, m_info.height, planes.data(),
                                   canvas.GetWidth(), canvas.GetHeight(), kCubic, true, true) &&
         !Salvage(first, count, planes.data(), canvas)))
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

bool Picture::ReadChannels(DCanvas &canvas) {
    int const count = m_info.channels >= 3 ? 3 : 1;
    bool areAlike = true;
    for (int channel = 1; channel < count; ++channel)
        areAlike = areAlike && m_image.Driver().GetChnlDataType(m_image.Handle(), channel) == m_info.dataType;
    Bytes planes;
    for (int channel = 0; channel < count; channel += areAlike ? count : 1) {
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
    return (m_image.Driver().ReadPaletteRsmpl(m_image.Handle(), 0.0, 0.0, m_info.width, m_info.height, canvas.Row(0),
                                              canvas.GetWidth(), canvas.GetHeight()) ||
            Salvage(0, throughPalette, canvas.Row(0), canvas)) &&
           !IsStopped(m_stop);
}

bool Picture::Read(DCanvas &canvas, Enlarge enlarge) {
    int const longer = std::max(m_info.height, m_info.width);
    if (longer < 1 || m_info.channels < 1 || IsStopped(m_stop))
        return false;
    double const scale =
        enlarge == Enlarge::No && longer < kLongerSide ? 1.0 : static_cast<double>(kLongerSide) / longer;
    canvas.SetSize(static_cast<int>(m_info.width * scale), static_cast<int>(m_info.height * scale));
    if (!canvas.HasData())
        return false; // a side shorter than a pixel
    RDIDriver &driver = m_image.Driver();
    if (std::int64_t{m_info.width} * m_info.height >= kMostPixels &&
        driver.GetAttrInt("RDI_Drvr_Sppt_Intrnl_RslPrmd", m_image.Handle(), 0) != 1)
        return false;
    bool const hasPalette = m_info.channels == 1 && driver.GetAttrInt("RDI_Drvr_Palette", m_image.Handle(), 0) == 1;
    return hasPalette ? ReadColors(canvas) : ReadChannels(canvas);
}

} // namespace

bool ReadImageInfo(BDIMoniker const &moniker, DString const &driverId, StopSignal const *stop, ImageInfo &info,
                   DError *error) {
    RequestScope const scope(RequestKind::Properties);
    OpenImage const image(moniker, driverId, stop, error);
    if (!image.IsOpen())
        return false;
    info = Describe(image);
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

bool ReadPreview(BDIMoniker const &moniker, DString const &driverId, StopSignal const *stop, DCanvas &picture,
                 Enlarge enlarge, DError *error, RDIRowsRead *read) {
    RequestScope const scope(RequestKind::Preview);
    DCanvas canvas;
    bool isRead = false;
    DError reason;
    RDIRowsRead rows;
    try {
        OpenImage const image(moniker, driverId, stop, &reason);
        if (image.IsOpen()) {
            Picture reading(image, stop);
            isRead = reading.Read(canvas, enlarge);
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

} // namespace zelvar
