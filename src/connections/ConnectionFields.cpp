#include "zelvar/connections/ConnectionFields.h"

#include "zelvar/connections/FilledWords.h"
#include "zelvar/data/ServerCertificate.h"

#include <algorithm>
#include <iterator>

namespace zelvar {

namespace {

using Kind = ConnectionKind;
using Place = ConnectionField::Place;
using Rule = ConnectionField::Rule;

constexpr ConnectionField kFields[] = {
    {Kind::PostgreSql, "service", Mark("Service"), Place::Address},
    {Kind::PostgreSql, "host", Mark("Host"), Place::Address, Rule::Host},
    {Kind::PostgreSql, "port", Mark("Port"), Place::Address, Rule::Port},
    {Kind::PostgreSql, "database", Mark("Database"), Place::Address},
    {Kind::PostgreSql, "user", Mark("User"), Place::Address},
    {Kind::PostgreSql, "sslmode", Mark("Encryption"), Place::Attribute, Rule::Choice,
     "prefer|disable|allow|require|verify-ca|verify-full"},
    {Kind::PostgreSql, "ca", Mark("Certificates of the authority"), Place::Attribute, Rule::FullPath},
    {Kind::PostgreSql, "fingerprint", Mark("Accepted certificate"), Place::Attribute, Rule::Fingerprint},
    {Kind::PostgreSql, "schemas", Mark("Schemas"), Place::Attribute},
    {Kind::PostgreSql, "tables", Mark("Tables"), Place::Attribute, Rule::Choice, "all|geometry"},

    {Kind::MapService, "address", Mark("Address"), Place::Address, Rule::WebAddress},
    {Kind::MapService, "service", Mark("Service"), Place::Address, Rule::Choice, "any|wms|wmts|wcs|wfs"},
    {Kind::MapService, "user", Mark("User"), Place::Address},
    {Kind::MapService, "version", Mark("Version"), Place::Attribute},
    {Kind::MapService, "ca", Mark("Certificates of the authority"), Place::Attribute, Rule::FullPath},
    {Kind::MapService, "fingerprint", Mark("Accepted certificate"), Place::Attribute, Rule::Fingerprint},

    {Kind::ObjectStore, "service", Mark("Service"), Place::Address, Rule::Choice, "s3|gs|az"},
    {Kind::ObjectStore, "bucket", Mark("Bucket"), Place::Address, Rule::Bucket},
    {Kind::ObjectStore, "prefix", Mark("Prefix"), Place::Address},
    {Kind::ObjectStore, "profile", Mark("Profile"), Place::Address},
    {Kind::ObjectStore, "key", Mark("Key ID"), Place::Address},
    {Kind::ObjectStore, "endpoint", Mark("Endpoint"), Place::Attribute, Rule::Endpoint},
    {Kind::ObjectStore, "region", Mark("Region"), Place::Attribute},
    {Kind::ObjectStore, "addressing", Mark("Addressing"), Place::Attribute, Rule::Choice, "auto|virtual|path"},
    {Kind::ObjectStore, "unsigned", Mark("Without signature"), Place::Attribute, Rule::Choice, "no|yes"},
    {Kind::ObjectStore, "ca", Mark("Certificates of the authority"), Place::Attribute, Rule::FullPath},
    {Kind::ObjectStore, "fingerprint", Mark("Accepted certificate"), Place::Attribute, Rule::Fingerprint},

    {Kind::WebFolder, "address", Mark("Address"), Place::Address, Rule::WebAddress},
    {Kind::WebFolder, "user", Mark("User"), Place::Address},
    {Kind::WebFolder, "ca", Mark("Certificates of the authority"), Place::Attribute, Rule::FullPath},
    {Kind::WebFolder, "fingerprint", Mark("Accepted certificate"), Place::Attribute, Rule::Fingerprint},

    {Kind::Odbc, "dsn", Mark("Data source name"), Place::Address},
    {Kind::Odbc, "user", Mark("User"), Place::Address},
    {Kind::Odbc, "schemas", Mark("Schemas"), Place::Attribute},

    {Kind::Address, "address", Mark("Name"), Place::Address},
};

/// What a rule says of a value that breaks it. `%s` stands for the choices.
struct RuleWords {
    Rule rule;
    char const *words;
};
constexpr RuleWords kRules[] = {
    {Rule::Host, Mark("The host is a name or an address, as db.lab or 10.0.0.5.")},
    {Rule::Port, Mark("The port is a number from 1 to 65535.")},
    {Rule::WebAddress, Mark("The address begins with http:// or https:// and names a server.")},
    {Rule::Bucket, Mark("The name of a bucket holds letters, digits, dots, hyphens and underscores.")},
    {Rule::Endpoint, Mark("The endpoint is a host, with a port if it has one, as s3.lab:9000.")},
    {Rule::FullPath, Mark("The file is named by its full path, from / on.")},
    {Rule::Fingerprint, Mark("The certificate is told by its SHA-256 fingerprint: 64 hexadecimal digits.")},
    {Rule::Choice, Mark("This is one of: %s.")},
};

/// One of these is needed.
struct Need {
    Kind kind;
    std::vector<char const *> keys;
    char const *words;
};
std::vector<Need> const &Needs() {
    static auto const &needs = *new std::vector<Need>{
        {Kind::PostgreSql, {"host", "service"}, Mark("A host is needed, or a service.")},
        {Kind::PostgreSql, {"database", "service"}, Mark("A database is needed: each connection leads to one.")},
        {Kind::MapService, {"address"}, Mark("An address is needed.")},
        {Kind::WebFolder, {"address"}, Mark("An address is needed.")},
        {Kind::Odbc, {"dsn"}, Mark("The name of a data source is needed.")},
        {Kind::Address, {"address"}, Mark("An address is needed.")},
    };
    return needs;
}

constexpr char const *kNoName = Mark("A name is needed.");
constexpr char const *kNoText = Mark("The name holds bytes that are no text.");
constexpr char const *kControl = Mark("Line ends and other control characters cannot be kept.");
constexpr char const *kNoEscape = Mark(R"(";" and "${" cannot be kept in this field.)");
constexpr char const *kPassword = Mark("The address holds a password: it has a field of its own.");
constexpr char const *kNoBucket = Mark("A prefix is one of a bucket. Without both all buckets are listed.");
constexpr char const *kBoth = Mark("Either a profile or a key ID, not both.");
constexpr char const *kAllow = Mark("Hosts that are allowed are names or addresses.");

bool HasControl(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](char c) {
        auto const byte = static_cast<unsigned char>(c);
        return byte < 0x20 || byte == 0x7F;
    });
}

bool IsWebAddress(DString const &text) {
    std::optional<ConnectionAddress> const address = ParseConnectionAddress(text);
    return address && (address->scheme == "http" || address->scheme == "https") && IsHostName(address->host);
}

bool IsEndpoint(std::string_view text) {
    for (std::string_view const scheme : {"http://", "https://"})
        if (text.starts_with(scheme))
            text.remove_prefix(scheme.size());
    auto const server = ParseHostAndPort(text);
    return server && IsHostName(server->host);
}

bool IsBucket(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
               std::string_view(".-_").find(c) != std::string_view::npos;
    });
}

bool Fits(ConnectionField const &field, DString const &value) {
    switch (field.rule) {
    case Rule::Any:
        return true;
    case Rule::Host:
        return IsHostName(value);
    case Rule::Port:
        return ParsePort(value).has_value();
    case Rule::WebAddress:
        return IsWebAddress(value);
    case Rule::Bucket:
        return IsBucket(value);
    case Rule::Endpoint:
        return IsEndpoint(value);
    case Rule::FullPath:
        return value.starts_with('/');
    case Rule::Fingerprint:
        return FingerprintIn(value).has_value();
    case Rule::Choice: {
        std::vector<DString> const choices = Split(field.choices, '|');
        return std::find(choices.begin(), choices.end(), value) != choices.end();
    }
    }
    return false;
}

DString WordsAgainst(ConnectionField const &field) {
    auto const *const words = std::find_if(std::begin(kRules), std::end(kRules),
                                           [&](RuleWords const &row) { return row.rule == field.rule; });
    if (field.rule != Rule::Choice)
        return Translated(words->words);
    DString choices;
    for (DString const &choice : Split(field.choices, '|'))
        choices.append(choices.empty() ? "" : ", ").append(choice);
    return FilledWords(words->words, choices);
}

DString FaultOf(ConnectionField const &field, DString const &value) {
    if (HasControl(value))
        return Translated(kControl);
    bool const isAddress = DString(field.key) == "address";
    // Its own placeholders are those of the definition.
    if (field.place == Place::Address &&
        (value.find("${") != DString::npos || (!isAddress && value.find(';') != DString::npos)))
        return Translated(kNoEscape);
    if (isAddress && PasswordInAddress(value))
        return Translated(kPassword);
    return Fits(field, value) ? DString() : WordsAgainst(field);
}

DString FaultOfName(DString const &name) {
    if (Trimmed(name).empty())
        return Translated(kNoName);
    if (HasControl(name))
        return Translated(kControl);
    return ToValidUtf8(name) == name ? DString() : Translated(kNoText);
}

} // namespace

bool IsHostName(std::string_view text) {
    return !text.empty() && text.find_first_of(" /@?#;,%$\\\"'<>|") == std::string_view::npos && !HasControl(text);
}

std::vector<ConnectionField> FieldsOf(ConnectionKind kind) {
    std::vector<ConnectionField> fields;
    std::copy_if(std::begin(kFields), std::end(kFields), std::back_inserter(fields),
                 [kind](ConnectionField const &field) { return field.kind == kind; });
    return fields;
}

std::vector<ConnectionFault> FaultsOf(Connection const &connection) {
    std::vector<ConnectionFault> faults;
    auto const add = [&faults](DString const &field, DString words) {
        if (!words.empty())
            faults.push_back({field, std::move(words)});
    };
    add("name", FaultOfName(connection.name));
    for (Need const &need : Needs())
        if (need.kind == connection.kind && std::all_of(need.keys.begin(), need.keys.end(),
                                                        [&](char const *key) { return connection.Field(key).empty(); }))
            add(need.keys.front(), Translated(need.words));
    for (ConnectionField const &field : FieldsOf(connection.kind))
        if (DString const value = connection.Field(field.key); !value.empty())
            add(field.key, FaultOf(field, value));
    if (!connection.Field("prefix").empty() && connection.Field("bucket").empty())
        add("prefix", Translated(kNoBucket));
    if (!connection.Field("profile").empty() && !connection.Field("key").empty())
        add("key", Translated(kBoth));
    if (!std::all_of(connection.allow.begin(), connection.allow.end(),
                     [](HostAndPort const &host) { return IsHostName(host.host); }))
        add("allow", Translated(kAllow));
    return faults;
}

} // namespace zelvar
