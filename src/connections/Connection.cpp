#include "zelvar/connections/Connection.h"

#include "zelvar/base/Translation.h"

#include <algorithm>
#include <iterator>

namespace zelvar {

namespace {

constexpr ConnectionKindWords kKinds[] = {
    {ConnectionKind::PostgreSql, "postgresql", "PostgreSQL", Mark("PostgreSQL database")},
    {ConnectionKind::MapService, "map", "OGC", Mark("Map service")},
    {ConnectionKind::ObjectStore, "objects", "ObjectStore", Mark("Object store")},
    {ConnectionKind::WebFolder, "web", "WebDirectory", Mark("Web folder")},
    {ConnectionKind::Odbc, "odbc", "ODBC", Mark("ODBC data source")},
    {ConnectionKind::Address, "address", "", Mark("Any address")},
};

constexpr std::pair<SecretPlace, char const *> kPlaces[] = {
    {SecretPlace::None, "none"},       {SecretPlace::Keyring, "keyring"}, {SecretPlace::Ask, "ask"},
    {SecretPlace::Profile, "profile"}, {SecretPlace::File, "file"},       {SecretPlace::Definition, "definition"},
};

constexpr char kByService[] = "postgresql+service";

DString JoinedPath(std::vector<DString> const &names) {
    DString path;
    for (std::size_t i = 0; i < names.size(); ++i)
        path.append(i == 0 ? "" : "/").append(names[i]);
    return path;
}

ConnectionAddress PostgreSqlAddress(Connection const &connection) {
    ConnectionAddress address{.scheme = "postgresql", .user = connection.Field("user")};
    if (DString const service = connection.Field("service"); !service.empty()) {
        address.scheme = kByService;
        address.host = service;
    } else {
        address.host = connection.Field("host");
        std::transform(address.host.begin(), address.host.end(), address.host.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
        address.port = ParsePort(connection.Field("port")).value_or(std::uint16_t{0});
    }
    if (DString const database = connection.Field("database"); !database.empty())
        address.path = {database};
    return address;
}

ConnectionAddress ObjectStoreAddress(Connection const &connection) {
    DString const service = connection.Field("service");
    DString const profile = connection.Field("profile");
    ConnectionAddress address{.scheme = service.empty() ? "s3" : service,
                              .user = profile.empty() ? connection.Field("key") : profile,
                              .host = connection.Field("bucket")};
    if (!address.host.empty()) // else all buckets
        address.path = Split(connection.Field("prefix"), '/');
    return address;
}

/// That of a service on the web, whose address the user knows as one text.
std::optional<ConnectionAddress> WebAddress(Connection const &connection) {
    std::optional<ConnectionAddress> address = ParseConnectionAddress(connection.Field("address"));
    if (!address)
        return std::nullopt;
    if (DString const user = connection.Field("user"); !user.empty())
        address->user = user;
    if (connection.kind == ConnectionKind::MapService) {
        DString const service = connection.Field("service");
        address->scheme = (service.empty() || service == "any" ? "ogc" : service) + "+" + address->scheme;
    }
    return address;
}

} // namespace

DString Connection::Field(DString const &key) const {
    auto const found = fields.find(key);
    return found == fields.end() ? DString() : found->second;
}

std::optional<ConnectionAddress> Connection::Address() const {
    std::optional<ConnectionAddress> address;
    switch (kind) {
    case ConnectionKind::PostgreSql:
        address = PostgreSqlAddress(*this);
        break;
    case ConnectionKind::ObjectStore:
        address = ObjectStoreAddress(*this);
        break;
    case ConnectionKind::Odbc:
        address = ConnectionAddress{.scheme = "odbc", .user = Field("user"), .host = Field("dsn")};
        break;
    case ConnectionKind::MapService:
    case ConnectionKind::WebFolder:
    case ConnectionKind::Address:
        return WebAddress(*this);
    }
    return address->host.empty() && kind != ConnectionKind::ObjectStore ? std::nullopt : address;
}

void Connection::TakeAddress(ConnectionAddress const &address) {
    auto const put = [this](char const *key, DString const &value) {
        if (value.empty())
            fields.erase(key);
        else
            fields[key] = value;
    };
    ConnectionAddress web = address;
    switch (kind) {
    case ConnectionKind::PostgreSql: {
        bool const isService = address.scheme == kByService;
        put("service", isService ? address.host : DString());
        put("host", isService ? DString() : address.host);
        put("port", address.port == 0 ? DString() : std::to_string(address.port));
        put("database", address.path.empty() ? DString() : address.path.front());
        put("user", address.user);
        return;
    }
    case ConnectionKind::ObjectStore:
        put("service", address.scheme == "s3" ? DString() : address.scheme);
        put("bucket", address.host);
        put("prefix", JoinedPath(address.path));
        put(address.scheme == "s3" && Field("key").empty() ? "profile" : "key",
            address.user); // others have no profiles
        return;
    case ConnectionKind::Odbc:
        put("dsn", address.host);
        put("user", address.user);
        return;
    case ConnectionKind::MapService: {
        std::size_t const plus = address.scheme.find('+');
        DString const service = plus == DString::npos ? DString() : address.scheme.substr(0, plus);
        put("service", service == "ogc" ? DString() : service);
        web.scheme = plus == DString::npos ? address.scheme : address.scheme.substr(plus + 1);
        break;
    }
    default:
        break;
    }
    if (kind != ConnectionKind::Address) {
        put("user", address.user);
        web.user.clear();
    }
    put("address", web.ToText());
}

std::span<ConnectionKindWords const> ConnectionKinds() { return kKinds; }

ConnectionKindWords const &WordsOf(ConnectionKind kind) {
    return *std::find_if(std::begin(kKinds), std::end(kKinds),
                         [kind](ConnectionKindWords const &words) { return words.kind == kind; });
}

char const *SecretPlaceText(SecretPlace place) {
    return std::find_if(std::begin(kPlaces), std::end(kPlaces), [place](auto const &row) { return row.first == place; })
        ->second;
}

std::optional<SecretPlace> ParseSecretPlace(std::string_view text) {
    auto const *const found =
        std::find_if(std::begin(kPlaces), std::end(kPlaces), [text](auto const &row) { return text == row.second; });
    return found == std::end(kPlaces) ? std::nullopt : std::optional(found->first);
}

} // namespace zelvar
