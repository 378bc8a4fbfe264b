#include "zelvar/data/gdal/MapService.h"

#include "zelvar/base/TypedSecrets.h"
#include "zelvar/data/ReaderDuty.h"
#include "zelvar/data/gdal/Causes.h"
#include "zelvar/data/gdal/services/ServiceDescription.h"

#include <cpl_conv.h>
#include <cpl_http.h>
#include <cpl_string.h>
#include <cpl_vsi.h>
#include <gdal.h>
#include <ogr_srs_api.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <chrono>
#include <cmath>
#include <list>
#include <mutex>

namespace zelvar::gdal {

namespace {

using Cause = DError::Cause;
using services::Service;
using services::ServiceAddress;

constexpr std::size_t kMostBytes = std::size_t{48} << 20U; // of capabilities
constexpr char const *kTiles = "/vsimem/zelvar-tiles";
constexpr char const *kCoverages = "/vsimem/zelvar-coverages"; // what GDAL notes of them

/// What services have said lately. For the process.
class Memory {
public:
    static Memory &Instance() {
        static auto &memory = *new Memory;
        return memory;
    }
    /// Null if it was not asked since then.
    [[nodiscard]] std::shared_ptr<KnownService const> Find(DString const &request, Freshness freshness) {
        std::lock_guard const lock(m_mutex);
        auto const at = std::ranges::find(m_kept, request, &Kept::request);
        std::chrono::seconds const holds = freshness == Freshness::Lately ? kHolds : kNewHolds;
        return at != m_kept.end() && Clock::now() - at->since < holds ? at->service : nullptr;
    }
    void Keep(DString const &request, std::shared_ptr<KnownService const> service, std::chrono::seconds age) {
        std::lock_guard const lock(m_mutex);
        m_kept.remove_if([&](Kept const &kept) { return kept.request == request; });
        m_kept.push_front({request, std::move(service), Clock::now() - age});
        if (m_kept.size() > kMost)
            m_kept.pop_back();
    }

private:
    using Clock = std::chrono::steady_clock;
    struct Kept {
        DString request;
        std::shared_ptr<KnownService const> service;
        Clock::time_point since;
    };
    static constexpr std::size_t kMost = 4; // a connection has one of each kind
    static constexpr std::chrono::minutes kHolds{5};
    static constexpr std::chrono::seconds kNewHolds{5};
    std::mutex m_mutex;
    std::list<Kept> m_kept;
};

/// Takes an answer up to a size.
struct Body {
    DString text;
    bool isTooLong = false;
    static size_t Write(void *bytes, size_t size, size_t count, void *body) {
        auto &self = *static_cast<Body *>(body);
        self.isTooLong = self.text.size() + size * count > kMostBytes;
        if (self.isTooLong)
            return 0;
        self.text.append(static_cast<char const *>(bytes), size * count);
        return size * count;
    }
};

/// The password that was typed with an address goes to GDAL beside it. This process serves that account alone.
void TellLogin(ServiceAddress const &address) {
    auto const full = services::ParseServiceAddress(WithSecrets(address.connection));
    if (!full || full->login.find(':') == DString::npos)
        return;
    CPLSetConfigOption("GDAL_HTTP_USERPWD", PercentDecoded(full->login).c_str());
}

std::shared_ptr<KnownService const> Known(services::Capabilities capabilities, std::string_view answer) {
    return std::shared_ptr<KnownService const>(new KnownService{std::move(capabilities), MemoryFile(answer)});
}

/// What the other reader of this connection was told; nobody is asked for that. Null for nothing of use.
std::shared_ptr<KnownService const> TakeNote(Service service, DString const &request) {
    ReaderDuty const *const duty = OwnDuty();
    auto const note = duty == nullptr || !duty->findNote ? std::nullopt : duty->findNote(request);
    DError unread;
    auto capabilities = note ? services::ReadCapabilities(service, note->content, unread) : std::nullopt;
    if (!capabilities)
        return nullptr;
    auto known = Known(std::move(*capabilities), note->content);
    Memory::Instance().Keep(request, known, note->age);
    return known;
}

/// The version that the address asks for, or the definition of the connection, which speaks of one service.
DString VersionOf(ServiceAddress const &address) {
    ReaderDuty const *const duty = OwnDuty();
    if (!address.version.empty() || address.isAny || duty == nullptr || !duty->connection)
        return address.version;
    auto const told = duty->connection->options.find("version");
    return told == duty->connection->options.end() ? DString() : told->second;
}

DString RequestFor(ServiceAddress const &address, Service service) {
    bool const isDocument = service == Service::Wmts && address.url.ends_with(".xml");
    if (isDocument)
        return address.url;
    ServiceAddress::Parts parts{{"SERVICE", services::NameOf(service)}, {"REQUEST", "GetCapabilities"}};
    if (DString version = VersionOf(address); !version.empty())
        parts.emplace_back("VERSION", std::move(version));
    return address.Request(parts);
}

DString Ask(DString const &subject, DString const &request, DError &error) {
    Body body;
    CPLHTTPResult *const result = CPLHTTPFetchEx(request.c_str(), nullptr, nullptr, nullptr, &Body::Write, &body);
    DString const said = result == nullptr || result->pszErrBuf == nullptr ? "" : result->pszErrBuf;
    bool const isAnswer = result != nullptr && result->nStatus == 0 && said.empty();
    CPLHTTPDestroyResult(result);
    if (body.isTooLong)
        error.Set(zelvar::Format("the capabilities at \"%s\" are longer than %d MB", subject.c_str(),
                                 static_cast<int>(kMostBytes >> 20U)),
                  Cause::TooLarge, static_cast<std::int64_t>(kMostBytes));
    else if (!isAnswer)
        error = ErrorOfServer(subject, said);
    return std::move(body.text);
}

/// Of EPSG's systems, which all are in a file of this computer.
std::optional<bool> IsNorthFirst(DString const &system) {
    constexpr std::string_view prefix = "EPSG:";
    int code = 0;
    if (!system.starts_with(prefix) ||
        std::from_chars(system.data() + prefix.size(), system.data() + system.size(), code).ec != std::errc{})
        return std::nullopt;
    OGRSpatialReferenceH reference = OSRNewSpatialReference(nullptr);
    std::optional<bool> isNorth;
    if (OSRImportFromEPSGA(reference, code) == OGRERR_NONE)
        isNorth = OSREPSGTreatsAsLatLong(reference) != 0 || OSREPSGTreatsAsNorthingEasting(reference) != 0;
    OSRDestroySpatialReference(reference);
    return isNorth;
}

/// What GDAL is to open, and how.
struct Order {
    DString name;
    CPLStringList options;
    std::unique_ptr<MemoryFile> file; ///< that the name is of; may be null

    void NameFile(std::string_view content) {
        file = std::make_unique<MemoryFile>(content);
        name = file->Name();
    }
};

/// The service and its capabilities in one document of GDAL's, which then asks for neither. An address alone where they
/// cannot be copied as they are.
void NameFeatures(ServiceAddress const &address, KnownService const &known, Order &order) {
    vsi_l_offset size = 0;
    auto const *const bytes =
        reinterpret_cast<char const *>(VSIGetMemFileBuffer(known.document.Name().c_str(), &size, FALSE));
    std::string_view const document(bytes == nullptr ? "" : bytes, static_cast<std::size_t>(size));
    std::size_t const root = document.rfind('<', document.find("WFS_Capabilities"));
    std::string_view const head = document.substr(0, root);
    bool const isUtf8 =
        head.find("encoding") == DString::npos || FoldCase(head).find(FoldCase("utf-8")) != DString::npos;
    if (root == std::string_view::npos || !isUtf8 || head.find("<!--") != std::string_view::npos)
        order.name = "WFS:" + address.url;
    else
        order.NameFile(services::DescribeFeatures(address, document.substr(root)));
}

bool IsMissing(DString const &kind, DString const &name, DError &error) {
    error.Set("the service has no " + kind + " \"" + name + "\"", Cause::Missing);
    return false;
}

bool Describe(ServiceAddress address, KnownService const &known, Order &order, DError &error) {
    services::Capabilities const &capabilities = known.capabilities;
    DString const &name = address.service == Service::Wcs   ? address.coverage
                          : address.service == Service::Wfs ? address.type
                                                            : address.layer;
    char const *const kind = address.service == Service::Wcs   ? "coverage"
                             : address.service == Service::Wfs ? "type"
                                                               : "layer";
    services::Offer const *const offer = capabilities.Find(name);
    if (offer == nullptr)
        return IsMissing(kind, name, error);
    auto const styles = capabilities.StylesOf(*offer);
    bool const hasStyle =
        address.style.empty() || std::ranges::find(styles, address.style, &services::Style::name) != styles.end();
    if (!hasStyle && offer->countStyles <= styles.size())
        return IsMissing("style", address.style, error);
    switch (address.service) {
    case Service::Wms: {
        auto const map = DescribeMap(address, capabilities, *offer, &IsNorthFirst, kTiles, error);
        order.name = map.value_or("");
        return map.has_value();
    }
    case Service::Wmts:
        if (address.matrixSet.empty() && !offer->matrixSets.empty())
            address.matrixSet = offer->matrixSets.front();
        if (std::ranges::find(offer->matrixSets, address.matrixSet) == offer->matrixSets.end())
            return IsMissing("matrix set", address.matrixSet, error);
        order.name = DescribeTiles(address, capabilities, *offer, known.document.Name(), kTiles);
        return true;
    case Service::Wcs:
        order.NameFile(DescribeCoverage(address, capabilities));
        order.options.SetNameValue("CACHE", kCoverages); // its usual one is a folder of the user's
        return true;
    case Service::Wfs:
        NameFeatures(address, known, order);
        return true;
    case Service::Any:
        break;
    }
    return false;
}

} // namespace

MemoryFile::MemoryFile(std::string_view content) {
    static std::atomic<unsigned long long> number{0};
    m_name = zelvar::Format("/vsimem/zelvar-services/%llu.xml", ++number);
    VSILFILE *const file = VSIFOpenL(m_name.c_str(), "wb");
    if (file == nullptr || VSIFWriteL(content.data(), 1, content.size(), file) != content.size())
        Report::TraceMessage(Report::kTraceDriver, "no memory for what a service says");
    if (file != nullptr)
        VSIFCloseL(file);
}

MemoryFile::~MemoryFile() {
    VSIUnlink(m_name.c_str());
    // What GDAL has noted beside it.
    VSIUnlink((m_name.substr(0, m_name.rfind('.')) + ".DC.xml").c_str());
}

std::shared_ptr<KnownService const> AskService(ServiceAddress const &address, Service service, Freshness freshness,
                                               DError &error) {
    DString const request = RequestFor(address, service);
    auto &memory = Memory::Instance();
    if (auto known = memory.Find(request, freshness))
        return known;
    if (auto known = freshness == Freshness::Lately ? TakeNote(service, request) : nullptr)
        return known;
    TellLogin(address);
    DError unanswered;
    DString answer = Ask(address.connection, request, unanswered);
    // A refusal in the service's own words says more than its number.
    bool const isRefused = unanswered.Why() == Cause::Server || unanswered.Why() == Cause::NeedsPassword;
    bool const isRead = !unanswered.IsSet() || (isRefused && !answer.empty());
    DError unread;
    auto capabilities = isRead ? services::ReadCapabilities(service, answer, unread) : std::nullopt;
    if (unanswered.IsSet() || !capabilities) {
        error = unanswered.IsSet() && unread.Why() != Cause::Server ? unanswered : unread;
        return nullptr;
    }
    auto known = Known(std::move(*capabilities), answer);
    memory.Keep(request, known, {});
    if (ReaderDuty const *const duty = OwnDuty(); duty != nullptr && duty->keepNote)
        duty->keepNote(request, answer);
    return known;
}

Format const *FormatOfService(ServiceAddress const &address, unsigned flags) {
    unsigned const has = address.service == Service::Wfs ? GDAL_OF_VECTOR : GDAL_OF_RASTER;
    return address.HasThing() && (flags & has) != 0 ? Formats::Instance().Find(services::NameOf(address.service))
                                                    : nullptr;
}

OpenedSource OpenInService(Source const &source, unsigned flags, Format const *only, DError *error) {
    ServiceAddress const &address = *source.service;
    OpenedSource opened;
    DError reason;
    opened.format = FormatOfService(address, flags);
    if (opened.format == nullptr || (only != nullptr && only != opened.format)) {
        // Their formats are taken out of all processes but the readers of such a connection.
        bool const isKnown = Formats::Instance().Find(services::NameOf(address.service)) != nullptr;
        reason.Set("\"" + source.text + "\" " +
                       (!address.HasThing() ? "names a service, not one thing in it"
                        : isKnown           ? "names data of another kind"
                                            : "is read by a reader of its own alone"),
                   Cause::NotSupported);
    } else {
        GdalScope const scope(Reach::Network);
        auto const known = AskService(address, address.service, Freshness::Lately, reason);
        Order order;
        if (known != nullptr && Describe(address, *known, order, reason)) {
            char const *const chosen[] = {opened.format->id.c_str(), nullptr};
            opened.dataset = Own(GDALOpenEx(order.name.c_str(), flags | GDAL_OF_READONLY | GDAL_OF_VERBOSE_ERROR,
                                            chosen, order.options.List(), nullptr));
            if (!opened)
                reason = ErrorOf(scope, source);
            if (!opened && !reason.IsSet())
                reason.Set("\"" + source.text + "\" cannot be opened", Cause::Server);
        }
    }
    if (error != nullptr)
        *error = opened ? DError() : reason;
    return opened;
}

DString ExtentInWords(DatasetPtr const &dataset) {
    std::array<double, 6> transform{};
    if (GDALGetGeoTransform(Raw(dataset), transform.data()) != CE_None || transform[2] != 0 || transform[4] != 0)
        return {};
    double const right = transform[0] + transform[1] * GDALGetRasterXSize(Raw(dataset));
    double const bottom = transform[3] + transform[5] * GDALGetRasterYSize(Raw(dataset));
    DString words = zelvar::Format("%.10g, %.10g - %.10g, %.10g", transform[0], bottom, right, transform[3]);
    OGRSpatialReferenceH reference = GDALGetSpatialRef(Raw(dataset)); // the data set's
    char const *const code = reference == nullptr ? nullptr : OSRGetAuthorityCode(reference, nullptr);
    char const *const authority = reference == nullptr ? nullptr : OSRGetAuthorityName(reference, nullptr);
    if (code != nullptr && authority != nullptr)
        words += DString(" (") + authority + ":" + code + ")";
    return words;
}

} // namespace zelvar::gdal
