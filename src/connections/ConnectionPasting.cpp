#include "zelvar/connections/ConnectionPasting.h"

#include "zelvar/connections/ConnectionFields.h"

#include <algorithm>
#include <array>

namespace zelvar {

namespace {

constexpr std::size_t kLongest = 64U << 10U; ///< bytes of a text that anybody would paste
constexpr std::string_view kAmazon = ".amazonaws.com";
constexpr std::string_view kAzure = ".blob.core."; // and the cloud's own name
constexpr std::string_view kUsualAzure = "blob.core.windows.net";

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

/// One value of libpq's text, from `at` on; false where a quote does not end.
bool TakeValue(std::string_view text, std::size_t &at, DString &value) {
    bool const isQuoted = at < text.size() && text[at] == '\'';
    at += isQuoted ? 1 : 0;
    for (; at < text.size(); ++at) {
        char const c = text[at];
        if (c == '\\' && at + 1 < text.size())
            value += text[++at];
        else if (isQuoted && c == '\'') {
            ++at;
            return at == text.size() || IsBlank(text[at]);
        } else if (!isQuoted && IsBlank(c))
            return true;
        else
            value += c;
    }
    return !isQuoted;
}

/// Moves what a PostgreSQL text says besides its address into the fields and the secret.
void TakePostgreSqlKey(PastedConnection &pasted, DString const &key, DString value) {
    static std::map<DString, char const *> const names{
        {"host", "host"}, {"hostaddr", "host"},   {"port", "port"},       {"dbname", "database"},
        {"user", "user"}, {"service", "service"}, {"sslmode", "sslmode"}, {"sslrootcert", "ca"}};
    if (key == "password")
        pasted.secret = Secret::TakenFrom(value);
    else if (auto const name = names.find(key); name != names.end() && !value.empty())
        pasted.connection.fields[name->second] = std::move(value);
}

PastedConnection PostgreSqlOf(ConnectionAddress const &address) {
    PastedConnection pasted{.connection = {.kind = ConnectionKind::PostgreSql}, .secret = {}};
    pasted.connection.TakeAddress(address);
    for (auto const &[key, value] : address.query)
        TakePostgreSqlKey(pasted, key, value.value_or(DString()));
    return pasted;
}

std::optional<PastedConnection> PostgreSqlOf(std::map<DString, DString> const &pairs) {
    static constexpr std::array<char const *, 3> kTelling{"host", "hostaddr", "service"};
    if (std::none_of(kTelling.begin(), kTelling.end(), [&](char const *key) { return pairs.contains(key); }))
        return std::nullopt;
    PastedConnection pasted{.connection = {.kind = ConnectionKind::PostgreSql}, .secret = {}};
    for (auto const &[key, value] : pairs)
        TakePostgreSqlKey(pasted, key, value);
    return pasted;
}

/// The service that a map request names: "wms", or empty.
DString MapServiceIn(ConnectionAddress const &address) {
    static constexpr std::array<std::string_view, 4> kServices{"wms", "wmts", "wcs", "wfs"};
    for (auto const &[key, value] : address.query)
        if (EqualNoCase(key, "service"))
            for (std::string_view const service : kServices)
                if (EqualNoCase(service, value.value_or(DString())))
                    return DString(service);
    return {};
}

bool AsksForCapabilities(ConnectionAddress const &address) {
    return std::any_of(address.query.begin(), address.query.end(), [](auto const &item) {
        return EqualNoCase(item.first, "request") && EqualNoCase(item.second.value_or(DString()), "GetCapabilities");
    });
}

/// Cuts down what asks for one answer: the address of the service itself stays.
PastedConnection MapServiceOf(ConnectionAddress address) {
    static constexpr std::array<std::string_view, 7> kOfOneRequest{"service", "request", "version",       "layers",
                                                                   "styles",  "format",  "acceptversions"};
    PastedConnection pasted{.connection = {.kind = ConnectionKind::MapService}, .secret = {}};
    DString const service = MapServiceIn(address);
    for (auto const &[key, value] : address.query)
        if (EqualNoCase(key, "version") && value)
            pasted.connection.fields["version"] = *value;
    std::erase_if(address.query, [](auto const &item) {
        return std::any_of(kOfOneRequest.begin(), kOfOneRequest.end(),
                           [&](std::string_view key) { return EqualNoCase(key, item.first); });
    });
    if (address.scheme.find('+') == DString::npos)
        address.scheme = (service.empty() ? "ogc" : service) + "+" + address.scheme;
    pasted.connection.TakeAddress(address);
    return pasted;
}

/// Bucket, prefix and region of an address of Amazon's; nothing for another one.
std::optional<PastedConnection> AmazonBucketOf(ConnectionAddress const &address) {
    std::string_view host = address.host;
    if (!host.ends_with(kAmazon))
        return std::nullopt;
    host.remove_suffix(kAmazon.size());
    // "[bucket.]s3[.region]", and "s3-region" as it was once.
    std::size_t const at = host.starts_with("s3") ? 0 : host.rfind(".s3");
    if (at == std::string_view::npos)
        return std::nullopt;
    std::string_view const service = host.substr(at == 0 ? 0 : at + 1);
    std::string_view const region = service.size() > 3 ? service.substr(3) : std::string_view();
    if (service.size() > 2 && service[2] != '.' && service[2] != '-')
        return std::nullopt;
    ConnectionAddress bucket{.scheme = "s3", .host = DString(host.substr(0, at)), .path = address.path};
    bool const isInPath = at == 0;
    if (isInPath && !bucket.path.empty()) {
        bucket.host = bucket.path.front();
        bucket.path.erase(bucket.path.begin());
    }
    PastedConnection pasted{.connection = {.kind = ConnectionKind::ObjectStore}, .secret = {}};
    pasted.connection.TakeAddress(bucket);
    if (!region.empty())
        pasted.connection.fields["region"] = region;
    if (isInPath)
        pasted.connection.fields["addressing"] = "path";
    return pasted;
}

/// Account, container, prefix and cloud of an address of Azure's; nothing for another one. A signature that comes with
/// it, as from its portal, is a secret: as it stands in the text, since it signs these very characters.
std::optional<PastedConnection> AzureContainerOf(ConnectionAddress const &address, std::string_view text) {
    std::size_t const at = address.host.find(kAzure);
    if (at == DString::npos || at == 0)
        return std::nullopt;
    ConnectionAddress container{.scheme = "az", .user = address.host.substr(0, at), .path = address.path};
    if (!container.path.empty()) {
        container.host = container.path.front();
        container.path.erase(container.path.begin());
    }
    PastedConnection pasted{.connection = {.kind = ConnectionKind::ObjectStore}, .secret = {}};
    pasted.connection.TakeAddress(container);
    if (DString cloud = address.host.substr(at + 1); cloud != kUsualAzure)
        pasted.connection.fields["endpoint"] = std::move(cloud);
    bool const isSigned = std::any_of(address.query.begin(), address.query.end(),
                                      [](auto const &item) { return item.first == "sig" && item.second; });
    if (std::size_t const query = text.find('?'); isSigned && query != std::string_view::npos) {
        text.remove_prefix(query + 1);
        pasted.secret = Secret(text.substr(0, text.find('#')));
    }
    return pasted;
}

PastedConnection PlainOf(ConnectionKind kind, ConnectionAddress const &address) {
    PastedConnection pasted{.connection = {.kind = kind}, .secret = {}};
    pasted.connection.TakeAddress(address);
    return pasted;
}

std::optional<PastedConnection> FromAddress(ConnectionAddress const &address, std::string_view text) {
    DString const &scheme = address.scheme;
    if (scheme.starts_with("postgresql"))
        return PostgreSqlOf(address);
    if (scheme == "s3" || scheme == "gs" || scheme == "az")
        return PlainOf(ConnectionKind::ObjectStore, address);
    if (scheme == "odbc")
        return PlainOf(ConnectionKind::Odbc, address);
    if (scheme.find('+') != DString::npos || AsksForCapabilities(address) || !MapServiceIn(address).empty())
        return MapServiceOf(address);
    if (scheme != "http" && scheme != "https")
        return std::nullopt;
    if (std::optional<PastedConnection> bucket = AmazonBucketOf(address))
        return bucket;
    if (std::optional<PastedConnection> container = AzureContainerOf(address, text))
        return container;
    return PlainOf(ConnectionKind::WebFolder, address);
}

} // namespace

std::optional<std::map<DString, DString>> ParseKeyValues(std::string_view text) {
    std::map<DString, DString> pairs;
    for (std::size_t at = 0; at < text.size();) {
        if (IsBlank(text[at])) {
            ++at;
            continue;
        }
        std::size_t const equals = text.find('=', at);
        if (equals == std::string_view::npos)
            return std::nullopt;
        DString const key(Trimmed(text.substr(at, equals - at)));
        bool const isKey = !key.empty() && std::all_of(key.begin(), key.end(),
                                                       [](char c) { return (c >= 'a' && c <= 'z') || c == '_'; });
        for (at = equals + 1; at < text.size() && IsBlank(text[at]);)
            ++at;
        if (DString value; isKey && TakeValue(text, at, value))
            pairs[key] = std::move(value);
        else
            return std::nullopt;
    }
    return pairs.empty() ? std::nullopt : std::optional(std::move(pairs));
}

std::optional<PastedConnection> ConnectionFromPasted(std::string_view text) {
    text = Trimmed(text);
    if (text.empty() || text.size() > kLongest)
        return std::nullopt;
    if (std::optional<ConnectionAddress> const address = ParseConnectionAddress(text)) {
        std::optional<PastedConnection> pasted = FromAddress(*address, text);
        if (std::optional<DString> password = PasswordInAddress(text); pasted && password)
            pasted->secret = Secret::TakenFrom(*password);
        return pasted;
    }
    std::optional<std::map<DString, DString>> const pairs = ParseKeyValues(text);
    return pairs ? PostgreSqlOf(*pairs) : std::nullopt;
}

} // namespace zelvar
