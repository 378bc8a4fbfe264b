#include "zelvar/data/Connection.h"

#include "zelvar/base/CaseFolding.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/base/Percent.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <utility>

namespace zelvar {

namespace {

constexpr std::size_t kNone = std::string_view::npos;
constexpr std::string_view kSendsOn = "the server sends on to ";
constexpr std::string_view kNoHostOf = ", which is no host of its connection";
constexpr std::string_view kUntrusted = ", whose certificate is not trusted";
constexpr std::uint16_t kHttp = 80;
constexpr std::uint16_t kHttps = 443;

/// How addresses of a scheme are reached.
struct Scheme {
    std::string_view name;
    ConnectionKind kind;
    std::uint16_t port; ///< where an address names none
};
using enum ConnectionKind;
constexpr Scheme kSchemes[] = {
    {"http", Address, kHttp},
    {"https", Address, kHttps},
    {"ftp", Address, 0}, // data come over a port that the server chooses
    {"s3", ObjectStore, 0},
    {"gs", ObjectStore, 0},
    {"az", ObjectStore, 0},
    {"postgresql", PostgreSql, 5432},
    {"wms+http", MapService, kHttp},
    {"wms+https", MapService, kHttps},
    {"wmts+http", MapService, kHttp},
    {"wmts+https", MapService, kHttps},
    {"wcs+http", MapService, kHttp},
    {"wcs+https", MapService, kHttps},
    {"wfs+http", MapService, kHttp},
    {"wfs+https", MapService, kHttps},
    {"ogc+http", MapService, kHttp},
    {"ogc+https", MapService, kHttps},
    {"odbc", Odbc, 0},
};

/// A store whose addresses name a bucket and no server.
struct Store {
    std::string_view scheme;
    char const *endpoint; ///< the variable that names another server
    std::vector<HostAndPort> hosts;
};
std::vector<Store> const &Stores() {
    static auto const &stores = *new std::vector<Store>{
        {"s3", "AWS_S3_ENDPOINT", {{"s3.amazonaws.com", kHttps}, {"*.amazonaws.com", kHttps}}},
        {"gs",
         "CPL_GS_ENDPOINT",
         {{"storage.googleapis.com", kHttps}, {"oauth2.googleapis.com", kHttps}, {"accounts.google.com", kHttps}}},
        {"az", "CPL_AZURE_ENDPOINT", {{"*.blob.core.windows.net", kHttps}}}};
    return stores;
}

DString LowerCase(std::string_view text) {
    DString lower(text);
    std::ranges::transform(lower, lower.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}

/// "scheme://rest" out of a text that may be the name of a node, whose file system stands for the scheme.
DString AddressIn(std::string_view text) {
    if (IsUrl(text))
        return DString(text);
    constexpr std::pair<std::string_view, std::string_view> kFileSystems[] = {
        {"/vsicurl/", ""}, {"/vsis3/", "s3://"}, {"/vsigs/", "gs://"}, {"/vsiaz/", "az://"}};
    for (auto const &[fileSystem, scheme] : kFileSystems)
        if (std::size_t const at = text.find(fileSystem); at != kNone)
            return DString(scheme).append(text.substr(at + fileSystem.size()));
    return {};
}

/// The port in `text`, or `fallback` if it is empty; nothing if it is none.
std::optional<std::uint16_t> PortIn(std::string_view text, std::uint16_t fallback) {
    std::uint16_t port = fallback;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    bool const isPort = error == std::errc{} && end == text.data() + text.size();
    return isPort || text.empty() ? std::optional(port) : std::nullopt;
}

/// The servers of a store: those of its maker, or the one that the environment names.
std::vector<HostAndPort> HostsOf(Store const &store) {
    char const *const named = std::getenv(store.endpoint);
    if (named == nullptr || *named == '\0')
        return store.hosts;
    std::string_view endpoint(named);
    bool const isPlain = endpoint.starts_with("http://");
    if (std::size_t const scheme = endpoint.find("://"); scheme != kNone)
        endpoint.remove_prefix(scheme + 3);
    // Whether TLS is spoken stands in another variable: without a port in the name both are allowed.
    auto const place = PlaceIn(endpoint.substr(0, endpoint.find('/')), isPlain ? kHttp : 0);
    if (!place)
        return {};
    return {*place, {"*." + place->host, place->port}}; // a bucket's name may come before the server's
}

class Finder {
public:
    void Set(ConnectionFinder finder) {
        std::lock_guard const lock(m_mutex);
        m_finder = finder ? std::make_shared<ConnectionFinder const>(std::move(finder)) : nullptr;
    }
    [[nodiscard]] std::optional<ConnectionTerms> Find(std::string_view address) const {
        std::shared_ptr<ConnectionFinder const> finder; // asked outside the lock: it may take its time
        {
            std::lock_guard const lock(m_mutex);
            finder = m_finder;
        }
        return finder == nullptr ? std::nullopt : (*finder)(address);
    }
    static Finder &Instance() {
        static auto &finder = *new Finder;
        return finder;
    }

private:
    mutable std::mutex m_mutex;
    std::shared_ptr<ConnectionFinder const> m_finder;
};

/// That of an address; null for none that is known.
Scheme const *SchemeOf(std::string_view address) {
    std::size_t const colon = address.find("://");
    auto const *const scheme = std::ranges::find_if(
        kSchemes, [&](Scheme const &known) { return EqualNoCase(known.name, address.substr(0, colon)); });
    return colon == kNone || scheme == std::end(kSchemes) ? nullptr : scheme;
}

ConnectionTerms TermsOfItself(std::string_view address) {
    std::size_t const colon = address.find("://");
    Scheme const *const scheme = SchemeOf(address);
    if (scheme == nullptr)
        return {};
    std::string_view authority = address.substr(colon + 3);
    authority = authority.substr(0, authority.find_first_of("/?#"));
    DString user;
    if (std::size_t const at = authority.rfind('@'); at != kNone) {
        user = DString(authority.substr(0, std::min(at, authority.find(':')))) + "@"; // the rest is a secret
        authority.remove_prefix(at + 1);
    }
    ConnectionTerms terms{.kind = scheme->kind};
    DString const prefix = DString(scheme->name) + "://" + user;
    auto const &stores = Stores();
    auto const store = std::ranges::find(stores, scheme->name, &Store::scheme);
    if (store != stores.end()) {
        terms.id = prefix + DString(authority);
        terms.hosts = HostsOf(*store);
        if (!user.empty() && store->scheme == "s3")
            terms.options["profile"] = PercentDecoded(std::string_view(user).substr(0, user.size() - 1));
    } else if (auto const place = PlaceIn(authority, scheme->port)) {
        terms.id = prefix + TextOf(*place);
        terms.hosts = {*place};
    }
    return terms;
}

bool Matches(HostAndPort const &allowed, std::string_view host, std::uint16_t port) {
    if (allowed.port != 0 && port != 0 && allowed.port != port)
        return false;
    if (!allowed.host.starts_with("*."))
        return LowerCase(allowed.host) == host;
    DString const end = LowerCase(std::string_view(allowed.host).substr(1));
    return host.size() > end.size() && host.ends_with(end);
}

/// The host between the words that it is sent on to and these.
std::optional<HostAndPort> HostBefore(std::string_view words, std::string_view text) {
    std::size_t const at = text.find(kSendsOn);
    std::size_t const end = at == kNone ? kNone : text.find(words, at);
    std::optional<HostAndPort> place =
        end == kNone ? std::nullopt : PlaceIn(text.substr(at + kSendsOn.size(), end - at - kSendsOn.size()), 0);
    constexpr std::string_view kOfHosts = "abcdefghijklmnopqrstuvwxyz0123456789.-_:";
    return place && place->host.find_first_not_of(kOfHosts) == DString::npos ? place : std::nullopt;
}

} // namespace

DString TextOf(HostAndPort const &place) {
    DString const host = place.host.find(':') == DString::npos ? place.host : "[" + place.host + "]";
    return place.port == 0 ? host : host + ":" + std::to_string(place.port);
}

std::optional<HostAndPort> PlaceIn(std::string_view text, std::uint16_t port) {
    bool const isBracketed = text.starts_with('[');
    std::size_t const close = isBracketed ? text.find(']') : 0;
    if (close == kNone)
        return std::nullopt;
    std::size_t const colon = std::min(text.find(':', close), text.size());
    std::string_view host = text.substr(0, colon);
    if (isBracketed)
        host = host.substr(1, close - 1);
    auto const named = PortIn(text.substr(std::min(colon + 1, text.size())), port);
    if (host.empty() || !named)
        return std::nullopt;
    return HostAndPort{LowerCase(host), *named};
}

bool MayReach(ConnectionTerms const &terms, std::string_view host, std::uint16_t port) {
    DString const name = LowerCase(host);
    return std::ranges::any_of(terms.hosts, [&](HostAndPort const &allowed) { return Matches(allowed, name, port); });
}

DString SendsOnText(HostAndPort const &place) { return DString(kSendsOn).append(TextOf(place)).append(kNoHostOf); }

std::optional<HostAndPort> HostSentOnTo(std::string_view text) { return HostBefore(kNoHostOf, text); }

DString UntrustedElsewhereText(HostAndPort const &place) {
    return DString(kSendsOn).append(TextOf(place)).append(kUntrusted);
}

std::optional<HostAndPort> HostUntrustedElsewhere(std::string_view text) { return HostBefore(kUntrusted, text); }

bool IsMapServiceAddress(std::string_view address) {
    Scheme const *const scheme = SchemeOf(address);
    return scheme != nullptr && scheme->kind == MapService;
}

void SetConnectionFinder(ConnectionFinder finder) { Finder::Instance().Set(std::move(finder)); }

ConnectionTerms TermsOf(std::string_view address) {
    DString const text = AddressIn(address);
    if (auto terms = Finder::Instance().Find(text))
        return *std::move(terms);
    return TermsOfItself(text);
}

} // namespace zelvar
