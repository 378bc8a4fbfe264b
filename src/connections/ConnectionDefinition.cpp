#include "zelvar/base/Hex.h"
#include "zelvar/base/Percent.h"
#include "zelvar/connections/ConnectionFields.h"
#include "zelvar/model/DataSourceRepository.h"
#include "zelvar/xml/XMLNode.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace zelvar {

namespace {

constexpr char kPart[] = "Connection"; ///< the child of a definition that holds what addresses do not
constexpr std::array<std::string_view, 3> kPasswordKeys{"password", "passwd", "pwd"};

using Pairs = std::vector<std::pair<DString, DString>>;

/// As they stand in `Parameters`; the first of a key counts.
Pairs PairsOf(XMLNode const &definition) {
    Pairs pairs;
    if (XMLNode const *const parameters = definition.GetChldNode("Parameters"))
        for (DString const &token : Split(parameters->GetText(), ';'))
            if (std::size_t const equals = token.find('='); equals != DString::npos)
                pairs.emplace_back(token.substr(0, equals), token.substr(equals + 1));
    return pairs;
}

bool IsPasswordKey(DString const &key) {
    return std::any_of(kPasswordKeys.begin(), kPasswordKeys.end(),
                       [&](std::string_view word) { return EqualNoCase(key, word); });
}

XMLNode &ChildOf(XMLNode &node, char const *name) {
    XMLNode *const child = node.GetChldNode(name);
    return child == nullptr ? *node.AddChld(DString(name)) : *child;
}

/// Sets an attribute that may hold any bytes; one that was never there stays away while it has nothing to say.
void PutAttr(XMLNode &node, char const *name, DString const &value) {
    DString const encoded = DString(name) + "Hex";
    bool const isText = ToValidUtf8(value) == value;
    for (auto const &[key, text] : {std::pair<DString, DString>{name, isText ? value : DString()},
                                    {encoded, isText ? DString() : HexEncode(value)}})
        if (!text.empty() || node.HasAttr(key.c_str()))
            node.SetAttr(key.c_str(), text);
}

DString AttrOf(XMLNode const &node, char const *name) {
    DString const hex = node.GetAttrStr((DString(name) + "Hex").c_str());
    return hex.empty() ? node.GetAttrStr(name) : HexDecode(hex).value_or(DString());
}

std::vector<HostAndPort> HostsIn(DString const &text) {
    std::vector<HostAndPort> hosts;
    for (DString const &piece : Split(text, ','))
        if (std::optional<HostAndPort> host = ParseHostAndPort(Trimmed(piece)); host && !host->host.empty())
            hosts.push_back(std::move(*host));
    return hosts;
}

DString TextOfHosts(std::vector<HostAndPort> const &hosts) {
    DString text;
    for (HostAndPort const &host : hosts)
        text.append(text.empty() ? "" : ",").append(TextOf(host));
    return text;
}

ConnectionKind KindOf(XMLNode const &definition, DString const &scheme) {
    static auto const &schemes = *new std::map<std::string_view, ConnectionKind>{
        {"postgresql", ConnectionKind::PostgreSql}, {"postgresql+service", ConnectionKind::PostgreSql},
        {"s3", ConnectionKind::ObjectStore},        {"gs", ConnectionKind::ObjectStore},
        {"az", ConnectionKind::ObjectStore},        {"odbc", ConnectionKind::Odbc}};
    if (auto const found = schemes.find(scheme); found != schemes.end())
        return found->second;
    if (scheme.ends_with("+http") || scheme.ends_with("+https"))
        return ConnectionKind::MapService;
    XMLNode const *const driver = definition.GetChldNode("BDIDriver");
    DString const id = driver == nullptr ? DString() : driver->GetAttrStr("id");
    bool const isWeb = scheme == "http" || scheme == "https";
    return isWeb && (id.empty() || id == WordsOf(ConnectionKind::WebFolder).driver) ? ConnectionKind::WebFolder
                                                                                    : ConnectionKind::Address;
}

/// An address as a definition spells it, and what fills its placeholders.
struct Spelling {
    DString url;
    Pairs pairs;

    void Fill(char const *key, DString const &value, bool keepSlashes = false) {
        url.append("${").append(key).append("}");
        pairs.emplace_back(key, value.find(':') != DString::npos && DString(key) == "host"
                                    ? "[" + value + "]"
                                    : PercentEncoded(value, keepSlashes));
    }
    void FillLogin(char const *key, DString const &value, std::optional<DString> const &password) {
        if (value.empty() && !password)
            return;
        Fill(key, value);
        if (password) {
            url += ":";
            Fill("password", *password);
        }
        url += "@";
    }
};

Spelling Spell(Connection const &connection, ConnectionAddress const &address, std::optional<DString> const &password) {
    Spelling spelling{.url = address.scheme + "://", .pairs = {}};
    switch (connection.kind) {
    case ConnectionKind::PostgreSql:
        spelling.FillLogin("user", address.user, password);
        spelling.Fill(connection.Field("service").empty() ? "host" : "service", address.host);
        if (address.port != 0) {
            spelling.url += ":";
            spelling.Fill("port", std::to_string(address.port));
        }
        if (!address.path.empty()) {
            spelling.url += "/";
            spelling.Fill("database", address.path.front());
        }
        break;
    case ConnectionKind::ObjectStore:
        spelling.FillLogin(connection.Field("key").empty() ? "profile" : "key", address.user, password);
        if (address.host.empty())
            break; // all buckets
        spelling.Fill("bucket", address.host);
        spelling.url += "/";
        spelling.Fill("prefix", connection.Field("prefix"), true);
        break;
    case ConnectionKind::Odbc:
        spelling.FillLogin("user", address.user, password);
        spelling.Fill("dsn", address.host);
        break;
    default: {
        ConnectionAddress server = address;
        server.user.clear();
        spelling.FillLogin("user", address.user, password);
        spelling.url += server.ToText().substr(address.scheme.size() + 3);
    }
    }
    return spelling;
}

/// The pairs as text: those that fill the address, then what stood there and is neither known nor a password.
DString ParametersText(Pairs const &filling, Pairs const &former, ConnectionKind kind) {
    DString text;
    auto const add = [&text](auto const &pair) {
        text.append(text.empty() ? "" : ";").append(pair.first).append("=").append(pair.second);
    };
    std::for_each(filling.begin(), filling.end(), add);
    std::vector<ConnectionField> const fields = FieldsOf(kind);
    for (auto const &pair : former)
        if (!IsPasswordKey(pair.first) && std::none_of(fields.begin(), fields.end(), [&](ConnectionField const &field) {
                return field.key == pair.first;
            }))
            add(pair);
    return text;
}

bool IsOfOurs(DString const &driver) {
    std::span<ConnectionKindWords const> const kinds = ConnectionKinds();
    return std::any_of(kinds.begin(), kinds.end(),
                       [&](ConnectionKindWords const &kind) { return kind.driver == driver; });
}

bool IsAttribute(ConnectionKind kind, DString const &key) {
    std::vector<ConnectionField> const known = FieldsOf(kind);
    return std::any_of(known.begin(), known.end(), [&](ConnectionField const &field) {
        return field.key == key && field.place == ConnectionField::Place::Attribute;
    });
}

/// Whether the account of the address is a key's ID; without a word about it, it is a profile.
bool NamesKey(XMLNode const &definition) {
    Pairs const pairs = PairsOf(definition);
    return std::any_of(pairs.begin(), pairs.end(),
                       [](auto const &pair) { return pair.first == "key" && !pair.second.empty(); });
}

} // namespace

std::optional<DString> PasswordInDefinition(XMLNode const &definition) {
    if (std::optional<DString> password = PasswordInAddress(DataSourceRepository::GetURLFromNode(&definition)))
        return password;
    for (auto const &[key, value] : PairsOf(definition))
        if (IsPasswordKey(key))
            return value;
    return std::nullopt;
}

std::optional<Connection> Connection::FromNode(XMLNode const &definition) {
    Connection connection;
    connection.name = definition.GetAttrStr("name");
    DString const url = DataSourceRepository::GetURLFromNode(&definition);
    if (definition.GetName() != "DataSource" || connection.name.empty() || url.empty())
        return std::nullopt;
    std::optional<ConnectionAddress> const address = ParseConnectionAddress(url);
    connection.kind = KindOf(definition, address ? address->scheme : DString());
    if (NamesKey(definition) && address)
        connection.fields["key"] = address->user;
    bool const isPlain = connection.kind == ConnectionKind::Address && !PasswordInAddress(url);
    if (address && !isPlain)
        connection.TakeAddress(*address);
    else
        connection.fields["address"] = url;
    bool const hasPassword = PasswordInDefinition(definition).has_value();
    connection.secret = hasPassword ? SecretPlace::Definition : SecretPlace::None;
    XMLNode const *const part = definition.GetChldNode(kPart);
    if (part == nullptr)
        return connection;
    for (ConnectionField const &field : FieldsOf(connection.kind))
        if (DString const value = AttrOf(*part, field.key);
            field.place == ConnectionField::Place::Attribute && !value.empty())
            connection.fields[field.key] = value;
    if (!hasPassword)
        connection.secret = ParseSecretPlace(part->GetAttrStr("secret")).value_or(SecretPlace::None);
    connection.allow = HostsIn(part->GetAttrStr("allow"));
    constexpr long long kLongest = 3600;
    connection.timeLimit = std::chrono::seconds(std::clamp(part->GetAttrInt("timeout"), 0LL, kLongest));
    return connection;
}

std::unique_ptr<XMLNode> Connection::ToNode() const {
    auto node = std::make_unique<XMLNode>("DataSource");
    WriteTo(*node);
    return node;
}

void Connection::WriteTo(XMLNode &definition) const {
    if (definition.GetAttrStr("name") != name)
        definition.SetAttr("name", name);
    DString const url = DataSourceRepository::GetURLFromNode(&definition);
    std::optional<ConnectionAddress> const address = Address();
    std::optional<DString> password = PasswordInDefinition(definition);
    bool const losesPassword = password && secret != SecretPlace::Definition;
    if (losesPassword)
        password.reset();
    std::optional<Connection> const former = FromNode(definition);
    bool const isSame = former && former->kind == kind && former->Address() == address &&
                        former->Field("address") == Field("address") && NamesKey(definition) == !Field("key").empty();
    if (!isSame || losesPassword || url.empty()) {
        bool const isPlain = !address || (kind == ConnectionKind::Address && !password);
        Spelling const spelling = isPlain ? Spelling{Field("address"), {}} : Spell(*this, *address, password);
        Pairs const pairs = PairsOf(definition);
        definition.SetAttr("url", spelling.url);
        ChildOf(definition, "Parameters").SetText(ParametersText(spelling.pairs, pairs, kind));
    }
    char const *const driver = WordsOf(kind).driver;
    XMLNode const *const named = definition.GetChldNode("BDIDriver");
    DString const id = named == nullptr ? DString() : named->GetAttrStr("id");
    // One that names none is opened by whatever driver fits.
    if (*driver != '\0' && id != driver && (url.empty() || (!id.empty() && IsOfOurs(id))))
        ChildOf(definition, "BDIDriver").SetAttr("id", driver);
    bool const hasMore = std::any_of(fields.begin(), fields.end(), [this](auto const &field) {
        return !field.second.empty() && IsAttribute(kind, field.first);
    });
    bool const isSilent = (secret == SecretPlace::None || secret == SecretPlace::Definition) && allow.empty() &&
                          timeLimit.count() == 0 && !hasMore;
    // A definition of old that says nothing beyond its address stays without.
    if (isSilent && !url.empty() && definition.GetChldNode(kPart) == nullptr)
        return;
    XMLNode &part = ChildOf(definition, kPart);
    for (ConnectionField const &field : FieldsOf(kind))
        if (field.place == ConnectionField::Place::Attribute)
            PutAttr(part, field.key, Field(field.key));
    PutAttr(part, "secret", secret == SecretPlace::Definition ? DString() : SecretPlaceText(secret));
    PutAttr(part, "allow", TextOfHosts(allow));
    PutAttr(part, "timeout", timeLimit.count() == 0 ? DString() : std::to_string(timeLimit.count()));
}

} // namespace zelvar
