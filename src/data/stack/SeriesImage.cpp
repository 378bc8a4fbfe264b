#include "zelvar/data/stack/SeriesImage.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/data/RequestScope.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <span>

namespace zelvar {

namespace {

constexpr std::size_t kMostOpen = 8;
constexpr std::size_t kMostTries = 16; // members that do not open before one does
constexpr int kMostChannels = 65536;
constexpr std::uint64_t kMissingAlways = 64; // so many may be missing, and as many as there are
constexpr std::chrono::milliseconds kCheckTime{100};
constexpr char kOption[] = "SERIES";

SeriesMemberFacts FactsOf(OpenImage const &image) {
    RDIDriver const &driver = image.Driver();
    return {.channels = driver.GetNumChnl(image.Handle()),
            .width = driver.GetChnlSizeX(image.Handle(), 0),
            .height = driver.GetChnlSizeY(image.Handle(), 0),
            .dataType = driver.GetChnlDataType(image.Handle(), 0)};
}

bool Fail(DError &error, DString const &reason) {
    error.Set(reason);
    return false;
}

/// What the one number runs over, and the options that are the members'; nothing for an unknown wish.
std::optional<SeriesLayout::Axis> AxisOf(BDIMoniker const &moniker, DString &options) {
    SeriesLayout::Axis axis = SeriesLayout::Slices;
    for (auto const &[name, value] : moniker.GetOptions())
        if (name != kOption)
            options.append(options.empty() ? "" : "&").append(name).append("=").append(value);
        else if (value != "slices" && value != "frames")
            return std::nullopt;
        else
            axis = value == "frames" ? SeriesLayout::Frames : SeriesLayout::Slices;
    return axis;
}

} // namespace

std::unique_ptr<SeriesImage> SeriesImage::Open(BDIMoniker const &moniker, StopSignal const *stop, DError &error) {
    auto place = SeriesOf(moniker);
    DString options;
    auto const axis = AxisOf(moniker, options);
    if (!place)
        error.Set("\"" + moniker.GetText() + "\" is no series of files");
    else if (!axis)
        error.Set(R"(the option SERIES is "slices" or "frames")");
    else {
        SeriesLayout layout(place->name, *axis);
        std::unique_ptr<SeriesImage> image(new SeriesImage(*std::move(place), std::move(layout), stop));
        if (image->Begin(options, error))
            return image;
    }
    return nullptr;
}

bool SeriesImage::Begin(DString const &options, DError &error) {
    m_options = options;
    SeriesListing listing = ListSeries(m_place, Weigh::No, [this] { return IsStopped(); });
    DString const path = "\"" + m_place.Path() + "\"";
    if (listing.error)
        return Fail(error, path + ": " + listing.error.message());
    if (listing.slots.empty())
        return Fail(error, path + ": none of its files is there");
    m_slots = std::move(listing.slots);
    std::uint64_t const missing = m_place.name.Slots() - m_slots.size();
    if (missing > m_slots.size() + kMissingAlways)
        return Fail(error, path + ": too few of its files are there, " + std::to_string(m_slots.size()) + " of " +
                               std::to_string(m_place.name.Slots()));
    m_check.members = m_slots.size();
    // A step that is no multiple of anything comes to all of them, and soon everywhere.
    m_checkStep = m_slots.size() * 5 / 8;
    while (std::gcd(m_checkStep, m_slots.size()) != 1)
        ++m_checkStep;
    return FindFirst(error) && TakeSizes(error);
}

bool SeriesImage::FindFirst(DError &error) {
    for (std::size_t i = 0; i < std::min(kMostTries, m_slots.size()) && !IsStopped(); ++i) {
        DError reason;
        std::unique_ptr<OpenImage> image = OpenMember(m_slots[i], reason);
        if (image == nullptr) {
            if (!error.IsSet())
                error = reason;
            continue;
        }
        error = {};
        m_first = m_slots[i];
        m_facts = FactsOf(*image);
        m_geo = image->Driver().GetChnlGeoCode(image->Handle(), 0);
        for (int channel = 0; channel < std::min(m_facts.channels, kMostChannels); ++channel)
            m_types.push_back(image->Driver().GetChnlDataType(image->Handle(), channel));
        m_open.push_front({m_first, std::move(image)});
        return true;
    }
    return error.IsSet() ? false : Fail(error, "stopped");
}

bool SeriesImage::TakeSizes(DError &error) {
    constexpr std::uint64_t most = std::numeric_limits<int>::max();
    std::uint64_t const slices = m_layout.Count(SeriesLayout::Slices);
    std::uint64_t const frames = m_layout.Count(SeriesLayout::Frames);
    std::uint64_t const channels = m_layout.Count(SeriesLayout::Channels);
    if (m_facts.channels < 1 || m_facts.width < 1 || m_facts.height < 1)
        return Fail(error, "\"" + m_place.MemberPath(m_first) + "\" is empty");
    if (slices > most / static_cast<std::uint64_t>(m_facts.height) ||
        frames > most / static_cast<std::uint64_t>(m_facts.width) ||
        channels > kMostChannels / static_cast<std::uint64_t>(m_facts.channels))
        return Fail(error, "\"" + m_place.Path() + "\" is too large for one image");
    m_slices = static_cast<int>(slices);
    m_frames = static_cast<int>(frames);
    return true;
}

std::unique_ptr<OpenImage> SeriesImage::OpenMember(std::uint64_t slot, DError &error) const {
    DString const path = m_place.MemberPath(slot);
    BDIMoniker const moniker =
        IsUrl(path) ? BDIMoniker(path, nullptr).WithOptions(m_options) : BDIMoniker::OfPath(path, m_options, nullptr);
    auto image = std::make_unique<OpenImage>(moniker, "", m_stop, &error);
    return image->IsOpen() ? std::move(image) : nullptr;
}

OpenImage *SeriesImage::MemberAt(std::uint64_t slot) {
    auto const at = std::find_if(m_open.begin(), m_open.end(), [&](Member const &m) { return m.slot == slot; });
    if (at != m_open.end()) {
        m_open.splice(m_open.begin(), m_open, at);
        return m_open.front().image.get();
    }
    DError error;
    std::unique_ptr<OpenImage> image = OpenMember(slot, error);
    if (image == nullptr) {
        m_lastError.Set("\"" + m_place.MemberPath(slot) + "\": " + error.Text(), error.Why(), error.Detail());
        return nullptr;
    }
    bool areAlike = FactsOf(*image) == m_facts;
    for (int channel = 0; channel < m_facts.channels && areAlike; ++channel)
        areAlike = image->Driver().GetChnlDataType(image->Handle(), channel) == m_types[static_cast<unsigned>(channel)];
    RDIGeoCoo const geo = image->Driver().GetChnlGeoCode(image->Handle(), 0);
    if (!areAlike || geo.numSlices != m_geo.numSlices || geo.numTimeFrames != m_geo.numTimeFrames) {
        m_lastError.Set("\"" + m_place.MemberPath(slot) + "\" is not like the other files of its series",
                        DError::Cause::NotSupported);
        return nullptr;
    }
    m_open.push_front({slot, std::move(image)});
    if (m_open.size() > kMostOpen)
        m_open.pop_back();
    return m_open.front().image.get();
}

int SeriesImage::Channels() const {
    return m_facts.channels * static_cast<int>(m_layout.Count(SeriesLayout::Channels));
}

int SeriesImage::DataType(int channel) const {
    return channel < 0 || channel >= Channels() ? RDI_None : m_types[static_cast<unsigned>(channel % m_facts.channels)];
}

RDIGeoCoo SeriesImage::GeoCode() const {
    return {.numSlices = m_slices * std::max(m_geo.numSlices, 1),
            .numTimeFrames = m_frames * std::max(m_geo.numTimeFrames, 1)};
}

DString SeriesImage::TextOf(char const *attribute, int channel) {
    OpenImage *const first = channel < 0 ? nullptr : MemberAt(m_first);
    return first == nullptr ? DString()
                            : first->Driver().GetAttrString(attribute, first->Handle(), channel % m_facts.channels);
}

int SeriesImage::NumberOf(char const *attribute, int channel) {
    OpenImage *const first = channel < 0 ? nullptr : MemberAt(m_first);
    return first == nullptr ? 0 : first->Driver().GetAttrInt(attribute, first->Handle(), channel % m_facts.channels);
}

SeriesImage::Found SeriesImage::Find(Cell cell, int channel, OpenImage *&member) {
    std::uint64_t const slot =
        m_layout.SlotAt({static_cast<std::uint64_t>(cell.row), static_cast<std::uint64_t>(cell.column),
                         static_cast<std::uint64_t>(channel / m_facts.channels)});
    if (!std::binary_search(m_slots.begin(), m_slots.end(), slot))
        return Found::Nothing;
    member = MemberAt(slot);
    return member == nullptr ? Found::Failure : Found::Member;
}

bool SeriesImage::ReadCell(Cell cell, int channel, int count, SeriesWindow const &window, unsigned char *planes) {
    double const left = static_cast<double>(cell.column) * m_facts.width;
    double const top = static_cast<double>(cell.row) * m_facts.height;
    RDISpan const columns = RDISamplesInside(window.x, window.width, window.outWidth, left, left + m_facts.width);
    RDISpan const rows = RDISamplesInside(window.y, window.height, window.outHeight, top, top + m_facts.height);
    if (columns.Length() < 1 || rows.Length() < 1)
        return true;
    OpenImage *member = nullptr;
    Found const found = Find(cell, channel, member);
    if (found != Found::Member)
        return found == Found::Nothing;
    double const stepX = window.width / window.outWidth;
    double const stepY = window.height / window.outHeight;
    double const x = std::max(window.x + columns.begin * stepX - left, 0.0);
    double const y = std::max(window.y + rows.begin * stepY - top, 0.0);
    double const width = std::min(window.x + columns.end * stepX - left, static_cast<double>(m_facts.width)) - x;
    double const height = std::min(window.y + rows.end * stepY - top, static_cast<double>(m_facts.height)) - y;
    bool const isWhole = columns.Length() == window.outWidth && rows.Length() == window.outHeight;
    auto const sample = static_cast<std::size_t>(RDIGetDTSize(DataType(channel)));
    std::size_t const part = static_cast<std::size_t>(columns.Length()) * sample;
    std::size_t const samples = part * static_cast<std::size_t>(rows.Length()) * static_cast<std::size_t>(count);
    std::vector<unsigned char> own(isWhole ? 0 : samples);
    if (!member->Driver().ReadChannelsRsmpl(member->Handle(), channel % m_facts.channels, count, x, y, width, height,
                                            isWhole ? planes : own.data(), columns.Length(), rows.Length(),
                                            window.resampling, window.usePyramid, window.clip)) {
        DError const reason = member->Driver().GetReadError(member->Handle());
        m_lastError.Set("\"" + m_place.Path() + "\": the samples of one file cannot be read: " +
                            DString(FileNameOf(m_place.MemberPath(m_open.front().slot))),
                        reason.Why(), reason.Detail());
        return false;
    }
    std::size_t const outRow = static_cast<std::size_t>(window.outWidth) * sample;
    unsigned char const *from = own.data();
    for (int plane = 0; plane < count && !isWhole;
         ++plane, planes += outRow * static_cast<std::size_t>(window.outHeight))
        for (int row = rows.begin; row < rows.end; ++row, from += part)
            std::memcpy(planes + static_cast<std::size_t>(row) * outRow +
                            static_cast<std::size_t>(columns.begin) * sample,
                        from, part);
    return true;
}

bool SeriesImage::Read(int channel, int count, SeriesWindow const &window, unsigned char *planes) {
    if (channel < 0 || count < 1 || count > Channels() - channel || !window.IsSensible() ||
        (!window.clip &&
         (window.x < 0 || window.y < 0 || window.x + window.width > SizeX() || window.y + window.height > SizeY())))
        return false;
    for (int i = channel; i < channel + count; ++i)
        if (DataType(i) != DataType(channel))
            return false;
    std::size_t const plane = static_cast<std::size_t>(window.outWidth) * static_cast<std::size_t>(window.outHeight) *
                              static_cast<std::size_t>(RDIGetDTSize(DataType(channel)));
    std::fill_n(planes, plane * static_cast<std::size_t>(count), std::uint8_t{0});
    RDISpan const columns = RDICellsOf(window.x, window.width, m_facts.width, m_frames);
    RDISpan const rows = RDICellsOf(window.y, window.height, m_facts.height, m_slices);
    for (int end = channel + count; channel < end;) {
        // Channels of one member are read at once.
        int const together = std::min(m_facts.channels - channel % m_facts.channels, end - channel);
        for (int row = rows.begin; row < rows.end; ++row)
            for (int column = columns.begin; column < columns.end; ++column)
                if (IsStopped() || !ReadCell({column, row}, channel, together, window, planes)) {
                    if (!IsStopped())
                        Report::TraceMessage(Report::kTraceDriver, "%s", m_lastError.Text().c_str());
                    return false;
                }
        planes += plane * static_cast<std::size_t>(together);
        channel += together;
    }
    return true;
}

bool SeriesImage::ReadPalette(SeriesWindow const &window, unsigned char *rgb) {
    if (!window.IsSensible())
        return false;
    RDISpan const columns = RDICellsOf(window.x, window.width, m_facts.width, m_frames);
    RDISpan const rows = RDICellsOf(window.y, window.height, m_facts.height, m_slices);
    if (columns.Length() != 1 || rows.Length() != 1)
        return false;
    OpenImage *member = nullptr;
    Found const found = Find({columns.begin, rows.begin}, 0, member);
    if (found == Found::Nothing)
        std::fill_n(rgb, static_cast<std::size_t>(window.outWidth) * static_cast<std::size_t>(window.outHeight) * 3,
                    std::uint8_t{0});
    if (found != Found::Member)
        return found == Found::Nothing;
    bool const isRead =
        member->Driver().ReadPaletteRsmpl(member->Handle(), window.x - columns.begin * double{1} * m_facts.width,
                                          window.y - rows.begin * double{1} * m_facts.height, window.width,
                                          window.height, rgb, window.outWidth, window.outHeight);
    if (!isRead)
        m_lastError = member->Driver().GetReadError(member->Handle());
    return isRead;
}

bool SeriesImage::Salvage(int channel, int count, RDIWindow const &window, void *buffer, RDIRowsRead &read) {
    if (channel < 0 || count < 0 || count > Channels() - channel || !(window.width > 0) || !(window.height > 0))
        return false;
    RDISpan const columns = RDICellsOf(window.x, window.width, m_facts.width, m_frames);
    RDISpan const rows = RDICellsOf(window.y, window.height, m_facts.height, m_slices);
    int const own = channel % m_facts.channels;
    OpenImage *member = nullptr;
    if (columns.Length() != 1 || rows.Length() != 1 || own + count > m_facts.channels ||
        Find({columns.begin, rows.begin}, channel, member) != Found::Member)
        return false;
    RDIWindow inside = window;
    inside.x -= columns.begin * double{1} * m_facts.width;
    inside.y -= rows.begin * double{1} * m_facts.height;
    return member->Driver().SalvageRsmpl(member->Handle(), own, count, inside, buffer, read);
}

SeriesCheck const &SeriesImage::TakeOnCheck() {
    auto const begin = RequestScope::Clock::now();
    while (m_check.looked < m_check.members && !IsStopped()) {
        // Below 2^63: a folder does not hold as many names.
        std::uint64_t const slot = m_slots[m_check.looked * m_checkStep % m_slots.size()];
        DError error;
        std::unique_ptr<OpenImage> const image = OpenMember(slot, error);
        m_check.Add(slot, image == nullptr ? SeriesMemberFacts() : FactsOf(*image));
        if (RequestScope::Clock::now() - begin >= kCheckTime)
            break;
    }
    return m_check;
}

} // namespace zelvar
