#include "zelvar/data/reader/RemoteRasterDriver.h"

#include "zelvar/base/TypedSecrets.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/data/reader/AnswerReading.h"
#include "zelvar/data/reader/Places.h"
#include "zelvar/data/reader/Readers.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <map>
#include <optional>
#include <utility>

namespace zelvar {

namespace {

struct Image {
    wire::ImageSpecT spec;
    StopSignal const *stop = nullptr;
    int reader = 0; ///< that has it open, as far as we know
    wire::ImageOpenedT facts;
    std::map<int, ChannelFacts> moreChannels; ///< behind those that came with the opening
    DError readError;
};

constexpr std::size_t kFilesTogether = 256;
constexpr int kColorBytes = 3;
constexpr std::chrono::milliseconds kFindTime{500};

/// Of an address; empty for a file.
DString ServerOf(DString const &path) { return BDIMoniker(path, nullptr).IsUrl() ? PlaceOfMoniker(path) : DString(); }

Image &Of(void *handle) { return *static_cast<Image *>(handle); }

template <class Body>
Readers::Answer AskAbout(Image &image, char const *what, RequestKind kind, Body body, std::size_t pixelBytes = 0) {
    body.image = std::make_unique<wire::ImageSpecT>(image.spec);
    body.image->moniker = WithSecrets(std::move(body.image->moniker)); // for the reader, which connects
    Readers::Call const call{.kind = kind,
                             .what = what,
                             .subject = image.spec.moniker,
                             .stop = image.stop,
                             .preferred = image.reader,
                             .pixelBytes = pixelBytes};
    Readers::Answer answer = Readers::Instance().Ask(call, std::move(body));
    if (answer.message != nullptr)
        image.reader = answer.reader;
    return answer;
}

ChannelFacts ChannelOf(void *handle, int channel) {
    Image &image = Of(handle);
    if (channel < 0 || channel >= image.facts.numChannels)
        return {};
    auto const index = static_cast<std::size_t>(channel);
    if (index < image.facts.channels.size())
        return ChannelFrom(image.facts.channels[index].get());
    if (auto const known = image.moreChannels.find(channel); known != image.moreChannels.end())
        return known->second;
    wire::DescribeChannelT body;
    body.channel = channel;
    Readers::Answer const answer = AskAbout(image, "channel", RequestKind::Properties, std::move(body));
    auto const *described = BodyOf<wire::ChannelDescribedT>(answer.message.get());
    if (described == nullptr)
        return {};
    return image.moreChannels[channel] = ChannelFrom(described->channel.get());
}

/// A product of sizes that are told from outside; nothing if it is none.
std::optional<std::size_t> BytesOf(int width, int height, int sample) {
    constexpr std::uint64_t kMost = std::uint64_t{4} << 30U;
    if (width < 1 || height < 1 || sample < 1)
        return std::nullopt;
    std::uint64_t const pixels = static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);
    if (pixels > kMost / static_cast<std::uint64_t>(sample))
        return std::nullopt;
    return static_cast<std::size_t>(pixels * static_cast<std::uint64_t>(sample));
}

wire::ReadPixelsT WindowRequest(RDIWindow const &window) {
    wire::ReadPixelsT body;
    body.x = window.x;
    body.y = window.y;
    body.width = window.width;
    body.height = window.height;
    body.outWidth = window.outWidth;
    body.outHeight = window.outHeight;
    return body;
}

bool Read(Image &image, wire::ReadPixelsT body, std::optional<std::size_t> bytes, void *buffer,
          RDIRowsRead *read = nullptr) {
    image.readError.Clear();
    if (!bytes || buffer == nullptr)
        return false;
    body.bytes = *bytes;
    Readers::Answer const answer = AskAbout(image, "pixels", RequestKind::Preview, std::move(body), *bytes);
    auto const *const pixels = BodyOf<wire::PixelsReadT>(answer.message.get());
    if (pixels == nullptr) {
        image.readError = FailureOf(answer.message.get(), answer.error);
        return false;
    }
    std::memcpy(buffer, answer.pixels->Data(), *bytes);
    if (read != nullptr)
        *read = {.rows = std::clamp(pixels->rows, 0, std::max(pixels->wanted, 0)), .all = std::max(pixels->wanted, 0)};
    return true;
}

} // namespace

std::vector<DString> RemoteRasterDriver::Probe(char const *path, bool family) const {
    wire::ProbeImageT body;
    DString const asked = path == nullptr ? "" : path;
    body.path = WithSecrets(asked);
    body.driver = m_facts.id;
    body.family = family;
    Readers::Call const call{.kind = RequestKind::Probe, .what = "probe", .subject = asked};
    Readers::Answer const answer = Readers::Instance().Ask(call, std::move(body));
    wire::ProbedT const *const probed = BodyOf<wire::ProbedT>(answer.message.get());
    return probed == nullptr ? std::vector<DString>() : probed->drivers;
}

int RemoteRasterDriver::IsMyFile(char const *path) const { return Probe(path, false).empty() ? 0 : 1; }

std::vector<DString> RemoteRasterDriver::FindInFamily(char const *path) const { return Probe(path, true); }

std::optional<std::size_t> RemoteRasterDriver::FindMyFile(std::vector<DString> const &paths,
                                                          StopSignal const &stop) const {
    for (std::size_t first = 0; first < paths.size() && !stop;) {
        wire::FindOwnedT body;
        body.driver = m_facts.id;
        std::size_t end = first;
        DString const server = ServerOf(paths[first]);
        for (; end < paths.size() && end - first < kFilesTogether; ++end) {
            if (Readers::Instance().Verdicts().Has(paths[end]) || ServerOf(paths[end]) != server)
                break;
            body.paths.push_back(WithSecrets(paths[end]));
        }
        Readers::Answer answer;
        if (end > first) {
            RequestScope const scope(RequestKind::Probe, {}, kFindTime);
            Readers::Call const call{
                .kind = RequestKind::Probe, .what = "owner", .stop = &stop, .address = paths[first]};
            answer = Readers::Instance().Ask(call, std::move(body));
        }
        auto const *const found = BodyOf<wire::OwnedFoundT>(answer.message.get());
        auto const looked = found == nullptr ? 0 : std::min<std::size_t>(found->looked, end - first);
        if (looked > 0 && found->index >= 0 && static_cast<std::size_t>(found->index) < looked)
            return first + static_cast<std::size_t>(found->index);
        first += looked;
        // The one that holds the others up is asked about alone, and they go on behind it.
        if (looked == 0 && !stop && IsMyFile(paths[first++].c_str()) == 1)
            return first - 1;
    }
    return std::nullopt;
}

void *RemoteRasterDriver::Open(BDIMoniker const &moniker, RDIDriver **opener, StopSignal const *stop, DError *error,
                               bool family) {
    auto image = std::make_unique<Image>();
    image->spec.id = Readers::Instance().NextId();
    image->spec.driver = m_facts.id;
    image->spec.family = family;
    image->spec.moniker = moniker.GetText();
    image->stop = stop;
    Readers::Answer const answer = AskAbout(*image, "image", RequestKind::Properties, wire::OpenImageT());
    if (auto *const opened = BodyOf<wire::ImageOpenedT>(answer.message.get())) {
        image->facts = std::move(*opened);
        RDIDriver *const named = RDIDriverMngr::Instance()->GetDriver(image->facts.driver.c_str());
        *opener = dynamic_cast<RemoteRasterDriver *>(named) != nullptr ? named : this;
        return image.release();
    }
    Readers::Instance().SayNotOpened(moniker.GetText(), answer, error);
    return nullptr;
}

void *RemoteRasterDriver::OpenFile(BDIMoniker const &moniker, StopSignal const *stop, DError *error) {
    RDIDriver *opener = nullptr;
    return Open(moniker, &opener, stop, error, false);
}

void *RemoteRasterDriver::OpenFileInFamily(BDIMoniker const &moniker, RDIDriver **opener, StopSignal const *stop,
                                           DError *error) {
    return Open(moniker, opener, stop, error, true);
}

void RemoteRasterDriver::CloseFile(void *handle, bool) {
    if (handle == nullptr)
        return;
    wire::CloseImageT body;
    body.id = Of(handle).spec.id;
    Readers::Instance().Tell(Of(handle).reader, body);
    delete &Of(handle);
}

int RemoteRasterDriver::GetNumChnl(void *handle) const { return Of(handle).facts.numChannels; }

int RemoteRasterDriver::GetChnlSizeX(void *handle, int channel) const { return ChannelOf(handle, channel).sizeX; }

int RemoteRasterDriver::GetChnlSizeY(void *handle, int channel) const { return ChannelOf(handle, channel).sizeY; }

int RemoteRasterDriver::GetChnlDataType(void *handle, int channel) const { return ChannelOf(handle, channel).dataType; }

RDIGeoCoo RemoteRasterDriver::GetChnlGeoCode(void *handle, int channel) const { return ChannelOf(handle, channel).geo; }

DString RemoteRasterDriver::GetAttrString(char const *name, void *handle, int channel) const {
    if (channel == 0 && std::strcmp(name, "RDI_Drvr_Info") == 0)
        return Of(handle).facts.info;
    wire::GetAttributeT body;
    body.name = name;
    body.channel = channel;
    body.isText = true;
    Readers::Answer const answer = AskAbout(Of(handle), "attribute", RequestKind::Properties, std::move(body));
    wire::AttributeT const *const got = BodyOf<wire::AttributeT>(answer.message.get());
    return got == nullptr ? DString() : got->text;
}

int RemoteRasterDriver::GetAttrInt(char const *name, void *handle, int channel) const {
    if (channel == 0 && std::strcmp(name, "RDI_Drvr_Sppt_Intrnl_RslPrmd") == 0)
        return Of(handle).facts.pyramid;
    if (channel == 0 && std::strcmp(name, "RDI_Drvr_Palette") == 0)
        return Of(handle).facts.palette;
    wire::GetAttributeT body;
    body.name = name;
    body.channel = channel;
    Readers::Answer const answer = AskAbout(Of(handle), "attribute", RequestKind::Properties, std::move(body));
    wire::AttributeT const *const got = BodyOf<wire::AttributeT>(answer.message.get());
    return got == nullptr ? 0 : got->number;
}

bool RemoteRasterDriver::ReadBlockRsmpl(void *handle, int channel, double x, double y, double width, double height,
                                        void *buffer, int outWidth, int outHeight, int resampling, bool usePyramid,
                                        bool clip) {
    return ReadChannelsRsmpl(handle, channel, 1, x, y, width, height, buffer, outWidth, outHeight, resampling,
                             usePyramid, clip);
}

/// Bytes of a sample of so many channels together; 0 if they are not there, or not of one type.
int RemoteRasterDriver::SampleBytes(void *handle, int channel, int count) const {
    if (channel < 0 || count < 1 || count > GetNumChnl(handle) - channel)
        return 0;
    int const type = GetChnlDataType(handle, channel);
    for (int i = channel + 1; i < channel + count; ++i)
        if (GetChnlDataType(handle, i) != type)
            return 0;
    return count * RDIGetDTSize(type);
}

bool RemoteRasterDriver::ReadChannelsRsmpl(void *handle, int channel, int count, double x, double y, double width,
                                           double height, void *buffer, int outWidth, int outHeight, int resampling,
                                           bool usePyramid, bool clip) {
    wire::ReadPixelsT body = WindowRequest({x, y, width, height, outWidth, outHeight});
    body.channel = channel;
    body.channels = count;
    body.resampling = resampling;
    body.usePyramid = usePyramid;
    body.clip = clip;
    int const sample = SampleBytes(handle, channel, count);
    return Read(Of(handle), std::move(body), BytesOf(outWidth, outHeight, sample), buffer);
}

bool RemoteRasterDriver::ReadPaletteRsmpl(void *handle, double x, double y, double width, double height, void *rgb,
                                          int outWidth, int outHeight) {
    wire::ReadPixelsT body = WindowRequest({x, y, width, height, outWidth, outHeight});
    body.palette = true;
    return Read(Of(handle), std::move(body), BytesOf(outWidth, outHeight, kColorBytes), rgb);
}

DError RemoteRasterDriver::GetReadError(void *handle) const { return Of(handle).readError; }

bool RemoteRasterDriver::SalvageRsmpl(void *handle, int channel, int count, RDIWindow const &window, void *buffer,
                                      RDIRowsRead &read) {
    wire::ReadPixelsT body = WindowRequest(window);
    body.salvage = true;
    body.palette = count == 0;
    body.channel = channel;
    body.channels = std::max(count, 1);
    int const sample = body.palette ? kColorBytes : SampleBytes(handle, channel, count);
    return Read(Of(handle), std::move(body), BytesOf(window.outWidth, window.outHeight, sample), buffer, &read);
}

} // namespace zelvar
