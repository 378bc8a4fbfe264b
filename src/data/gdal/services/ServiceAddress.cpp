#include "zelvar/data/gdal/services/ServiceAddress.h"

#include "zelvar/base/Percent.h"

#include <algorithm>
#include <array>

namespace zelvar::services {

namespace {

constexpr std::size_t kNone = std::string_view::npos;
constexpr std::array<std::pair<Service, char const *>, 5> kNames{{{Service::Any, "OGC"},
                                                                  {Service::Wms, "WMS"},
                                                                  {Service::Wmts, "WMTS"},
                                                                  {Service::Wcs, "WCS"},
                                                                  {Service::Wfs, "WFS"}}};

/// "wms+https://": the service, and where "https" begins; nothing for another scheme.
std::optional<std::pair<Service, std::size_t>> TakeScheme(std::string_view text) {
    std::size_t const colon = text.find("://");
    std::size_t const plus = text.substr(0, std::min(colon, text.size())).find('+');
    if (colon == kNone || plus == kNone)
        return std::nullopt;
    std::string_view const way = text.substr(plus + 1, colon - plus - 1);
    auto const *const known = std::find_if(
        kNames.begin(), kNames.end(), [&](auto const &row) { return EqualNoCase(row.second, text.substr(0, plus)); });
    if (known == kNames.end() || (!EqualNoCase(way, "http") && !EqualNoCase(way, "https")))
        return std::nullopt;
    return std::pair(known->first, plus + 1);
}

/// The parts of "https://user@host:port/path?query".
struct Web {
    std::string_view scheme;
    std::string_view login;
    std::string_view host; ///< with brackets
    std::string_view port;
    std::string_view rest; ///< from the path on
};
Web TakeApart(std::string_view url) {
    Web web;
    std::size_t const colon = std::min(url.find("://"), url.size());
    web.scheme = url.substr(0, colon);
    std::string_view authority = url.substr(std::min(colon + 3, url.size()));
    std::size_t const end = std::min(authority.find_first_of("/?#"), authority.size());
    web.rest = authority.substr(end);
    authority = authority.substr(0, end);
    if (std::size_t const at = authority.rfind('@'); at != kNone) {
        web.login = authority.substr(0, at);
        authority.remove_prefix(at + 1);
    }
    std::size_t const bracket = authority.starts_with('[') ? std::min(authority.find(']'), authority.size()) : 0;
    std::size_t const mark = std::min(authority.find(':', bracket), authority.size());
    web.host = authority.substr(0, mark);
    web.port = authority.substr(std::min(mark + 1, authority.size()));
    return web;
}

constexpr char const *kServicePart = "SERVICE";
/// In the order in which monikers have them.
constexpr std::pair<char const *, DString ServiceAddress::*> kParts[] = {
    {"GROUP", &ServiceAddress::group},         {"LAYER", &ServiceAddress::layer},
    {"MATRIXSET", &ServiceAddress::matrixSet}, {"STYLE", &ServiceAddress::style},
    {"COVERAGE", &ServiceAddress::coverage},   {"TYPENAME", &ServiceAddress::type}};

/// What a piece of a query says of the thing that is meant; false for a piece that is the server's own.
bool TakePart(ServiceAddress &address, std::string_view key, std::string_view written) {
    for (auto const &[name, member] : kParts)
        if (key == name) {
            address.*member = PercentDecoded(written);
            return true;
        }
    auto const named = key == kServicePart && address.isAny ? ServiceOf(written) : std::nullopt;
    if (named)
        address.service = *named;
    return named.has_value();
}

/// What asks for one answer of the service, and is asked for anew each time.
bool IsOfOneRequest(std::string_view key) {
    static constexpr std::array<std::string_view, 4> keys{"service", "request", "version", "acceptversions"};
    return std::any_of(keys.begin(), keys.end(), [&](std::string_view known) { return EqualNoCase(known, key); });
}

/// The service that has such things, where the address does not say.
Service ServiceByThing(ServiceAddress const &address) {
    return !address.type.empty()                              ? Service::Wfs
           : !address.coverage.empty()                        ? Service::Wcs
           : !address.matrixSet.empty()                       ? Service::Wmts
           : !address.layer.empty() || !address.group.empty() ? Service::Wms
                                                              : Service::Any;
}

} // namespace

char const *NameOf(Service service) {
    return service == Service::Any ? "" : kNames[static_cast<std::size_t>(service)].second;
}

std::optional<Service> ServiceOf(std::string_view name) {
    auto const *const known =
        std::find_if(kNames.begin() + 1, kNames.end(), [&](auto const &row) { return EqualNoCase(row.second, name); });
    return known == kNames.end() ? std::nullopt : std::optional(known->first);
}

DString WithQuery(DString url, ServiceAddress::Parts const &parts) {
    bool isFirst = url.find('?') == DString::npos;
    for (auto const &[key, value] : parts) {
        if (isFirst || !(url.ends_with('?') || url.ends_with('&')))
            url += isFirst ? '?' : '&';
        isFirst = false;
        url.append(key).append("=").append(PercentEncoded(value));
    }
    return url;
}

DString ServiceAddress::Inside(ServiceAddress const &thing) const {
    Parts parts;
    // Layers of tiles are told from others.
    if (isAny && (thing.isFolder || (thing.service == Service::Wmts && thing.HasThing())))
        parts.emplace_back(kServicePart, NameOf(thing.service));
    for (auto const &[name, member] : kParts)
        if (DString const &value = thing.*member; !value.empty())
            parts.emplace_back(name, value);
    return WithQuery(connection, parts);
}

DString ServiceAddress::Request(Parts const &parts) const { return WithQuery(url, parts); }

bool IsServiceAddress(std::string_view text) { return TakeScheme(text).has_value(); }

std::optional<ServiceAddress> ParseServiceAddress(std::string_view text) {
    auto const scheme = TakeScheme(text);
    if (!scheme)
        return std::nullopt;
    text = text.substr(0, text.find('#'));
    Web const web = TakeApart(text.substr(scheme->second));
    if (web.host.empty())
        return std::nullopt;
    ServiceAddress address{
        .login = DString(web.login), .service = scheme->first, .isAny = scheme->first == Service::Any};
    std::size_t const question = std::min(web.rest.find('?'), web.rest.size());
    DString const server = DString(web.scheme) + "://" + DString(web.host) + (web.port.empty() ? "" : ":") +
                           DString(web.port) + DString(web.rest.substr(0, question));
    DString own;  // of the query, as requests need it
    DString kept; // the same, as the connection has it
    if (question < web.rest.size())
        for (DString const &piece : Split(web.rest.substr(question + 1), '&')) {
            std::size_t const equals = std::min(piece.find('='), piece.size());
            std::string_view const key = std::string_view(piece).substr(0, equals);
            std::string_view const value = std::string_view(piece).substr(std::min(equals + 1, piece.size()));
            if (piece.empty() || TakePart(address, key, value))
                continue;
            kept += (kept.empty() ? "?" : "&") + piece;
            if (EqualNoCase(key, "version"))
                address.version = PercentDecoded(value);
            if (!IsOfOneRequest(key))
                own += (own.empty() ? "?" : "&") + piece;
        }
    std::size_t const authority = text.find("://") + 3;
    std::size_t const end = std::min(text.find('?'), text.size());
    DString head(text.substr(0, end));
    if (std::size_t const colon = web.login.find(':'); colon != kNone) // a password is no part of a name
        head.erase(authority + colon, web.login.size() - colon);
    address.connection = head + kept;
    address.url = server + own;
    address.isFolder = address.isAny && address.service != Service::Any && address.group.empty() && !address.HasThing();
    if (address.service == Service::Any)
        address.service = ServiceByThing(address);
    return address;
}

DString PlaceToAsk(DString const &asked, DString const &told) {
    Web const ours = TakeApart(asked);
    Web const theirs = TakeApart(told);
    bool const isOfWeb = EqualNoCase(theirs.scheme, "http") || EqualNoCase(theirs.scheme, "https");
    if (!isOfWeb || theirs.host.empty())
        return asked;
    bool const isSameHost = EqualNoCase(ours.host, theirs.host);
    bool const isLessSafe = EqualNoCase(ours.scheme, "https") && !EqualNoCase(theirs.scheme, "https");
    if (!isSameHost || !isLessSafe)
        return DString(theirs.scheme) + "://" + DString(theirs.host) + (theirs.port.empty() ? "" : ":") +
               DString(theirs.port) + DString(theirs.rest);
    return DString(ours.scheme) + "://" + DString(ours.host) + (ours.port.empty() ? "" : ":") + DString(ours.port) +
           DString(theirs.rest);
}

bool AreOfOneServer(DString const &a, DString const &b) {
    auto const port = [](Web const &web) {
        return !web.port.empty() ? web.port : EqualNoCase(web.scheme, "https") ? std::string_view("443") : "80";
    };
    Web const one = TakeApart(a);
    Web const other = TakeApart(b);
    return EqualNoCase(one.scheme, other.scheme) && EqualNoCase(one.host, other.host) && port(one) == port(other);
}

} // namespace zelvar::services
