#include "zelvar/connections/ConnectionDraft.h"

#include "zelvar/base/Translation.h"

#include <algorithm>
#include <array>

namespace zelvar {

namespace {

constexpr int kLongest = 3600; // seconds

constexpr char const *kAllow = Mark("Hosts that are allowed are names or addresses, as cdn.lab:443.");
constexpr char const *kTimeLimit = Mark("The time limit is from 1 to 3600 seconds.");
constexpr char const *kNone = Mark("No password is needed");
constexpr char const *kKeyring = Mark("In the desktop's keyring");
constexpr char const *kAsk = Mark("In memory, until the program ends");
constexpr char const *kAwsProfile = Mark("In the profile (~/.aws/credentials)");
constexpr char const *kPgService = Mark("In the service (~/.pg_service.conf)");
constexpr char const *kPgPass = Mark("In ~/.pgpass");
constexpr char const *kNetrc = Mark("In ~/.netrc");
constexpr char const *kDefinition = Mark("In the definition, where anybody may read it");

struct ChoiceWords {
    char const *key; ///< of the field
    char const *choice;
    char const *words;
};
constexpr std::array kChoices{
    ChoiceWords{"service", "any", Mark("Found by itself")},
    ChoiceWords{"service", "wms", Mark("Maps (WMS)")},
    ChoiceWords{"service", "wmts", Mark("Tiles of maps (WMTS)")},
    ChoiceWords{"service", "wcs", Mark("Coverages (WCS)")},
    ChoiceWords{"service", "wfs", Mark("Features (WFS)")},
    ChoiceWords{"service", "s3", Mark("S3 and compatible")},
    ChoiceWords{"service", "gs", Mark("Google Cloud Storage")},
    ChoiceWords{"service", "az", Mark("Azure Blob Storage")},
    ChoiceWords{"sslmode", "prefer", Mark("If the server can")},
    ChoiceWords{"sslmode", "disable", Mark("Never")},
    ChoiceWords{"sslmode", "allow", Mark("If the server demands it")},
    ChoiceWords{"sslmode", "require", Mark("Always, any certificate")},
    ChoiceWords{"sslmode", "verify-ca", Mark("Always, by a known authority")},
    ChoiceWords{"sslmode", "verify-full", Mark("Always, by a known authority for this host")},
    ChoiceWords{"tables", "all", Mark("All")},
    ChoiceWords{"tables", "geometry", Mark("Only with geometry")},
    ChoiceWords{"addressing", "auto", Mark("By the endpoint")},
    ChoiceWords{"addressing", "virtual", Mark("Bucket in the host's name")},
    ChoiceWords{"addressing", "path", Mark("Bucket in the path")},
    ChoiceWords{"unsigned", "no", Mark("No")},
    ChoiceWords{"unsigned", "yes", Mark("Yes")},
};

std::vector<DString> WordsIn(DString const &text) {
    std::vector<DString> words;
    DString word;
    for (char const c : text + " ") {
        if (c != ' ' && c != ',' && c != ';' && c != '\t' && c != '\n') {
            word += c;
        } else if (!word.empty()) {
            words.push_back(std::move(word));
            word.clear();
        }
    }
    return words;
}

std::optional<int> SecondsIn(DString const &text) {
    DString const number(Trimmed(text));
    bool const isNumber = !number.empty() && number.size() <= 4 &&
                          std::all_of(number.begin(), number.end(), [](char c) { return c >= '0' && c <= '9'; });
    int const seconds = isNumber ? std::stoi(number) : 0;
    return seconds >= 1 && seconds <= kLongest ? std::optional(seconds) : std::nullopt;
}

bool IsAlike(ConnectionField const &a, ConnectionField const &b) {
    return std::string_view(a.key) == b.key && a.rule == b.rule && std::string_view(a.choices) == b.choices;
}

} // namespace

ConnectionDraft::ConnectionDraft(Connection const &connection)
    : name(connection.name), secret(connection.secret), m_kind(connection.kind) {
    m_texts[m_kind] = connection.fields;
    for (HostAndPort const &host : connection.allow)
        allow.append(allow.empty() ? "" : ", ").append(TextOf(host));
    if (connection.timeLimit.count() > 0)
        timeLimit = std::to_string(connection.timeLimit.count());
}

void ConnectionDraft::SetKind(ConnectionKind kind) {
    if (kind == m_kind)
        return;
    bool const isUsual = secret == SecretPlacesOf(m_kind).front();
    std::map<DString, DString> const former = m_texts[m_kind];
    std::map<DString, DString> &texts = m_texts[kind];
    std::vector<ConnectionField> const formerFields = FieldsOf(m_kind);
    for (ConnectionField const &field : FieldsOf(kind)) {
        bool const isAlike = std::any_of(formerFields.begin(), formerFields.end(),
                                         [&](ConnectionField const &other) { return IsAlike(field, other); });
        auto const text = former.find(field.key);
        if (isAlike && text != former.end() && texts[field.key].empty())
            texts[field.key] = text->second;
    }
    m_kind = kind;
    std::vector<SecretPlace> const places = SecretPlacesOf(kind);
    bool const isKnown =
        secret == SecretPlace::Definition || std::find(places.begin(), places.end(), secret) != places.end();
    if (isUsual || !isKnown)
        secret = places.front();
}

DString ConnectionDraft::Text(DString const &key) const {
    auto const texts = m_texts.find(m_kind);
    if (texts == m_texts.end())
        return {};
    auto const text = texts->second.find(key);
    return text == texts->second.end() ? DString() : text->second;
}

void ConnectionDraft::SetText(DString const &key, DString const &text) { m_texts[m_kind][key] = text; }

Connection ConnectionDraft::ToConnection() const {
    Connection connection{.name = DString(Trimmed(name)), .kind = m_kind, .secret = secret};
    for (ConnectionField const &field : FieldsOf(m_kind)) {
        // Names of databases and prefixes may begin with a blank; what names a place on the network never does.
        bool const isFree = field.rule == ConnectionField::Rule::Any;
        DString const text = isFree ? Text(field.key) : DString(Trimmed(Text(field.key)));
        bool const isUsual = field.rule == ConnectionField::Rule::Choice && text == Split(field.choices, '|').front();
        if (!text.empty() && !isUsual)
            connection.fields[field.key] = text;
    }
    for (DString const &word : WordsIn(allow))
        if (std::optional<HostAndPort> host = ParseHostAndPort(word))
            connection.allow.push_back(*std::move(host));
    connection.timeLimit = std::chrono::seconds(SecondsIn(timeLimit).value_or(0));
    return connection;
}

std::vector<ConnectionFault> ConnectionDraft::Faults() const {
    std::vector<ConnectionFault> faults = FaultsOf(ToConnection());
    std::vector<DString> const hosts = WordsIn(allow);
    bool const isAllowRead =
        std::all_of(hosts.begin(), hosts.end(), [](DString const &word) { return ParseHostAndPort(word).has_value(); });
    if (!isAllowRead)
        faults.push_back({"allow", Translated(kAllow)});
    if (!Trimmed(timeLimit).empty() && !SecondsIn(timeLimit))
        faults.push_back({"timeLimit", Translated(kTimeLimit)});
    return faults;
}

void ConnectionDraft::Take(PastedConnection const &pasted) {
    Connection connection = pasted.connection;
    bool const mayBeEither = connection.kind == ConnectionKind::WebFolder && m_kind == ConnectionKind::MapService;
    if (mayBeEither)
        connection.kind = m_kind;
    SetKind(connection.kind);
    for (ConnectionField const &field : FieldsOf(m_kind))
        if (field.place == ConnectionField::Place::Address && !(mayBeEither && DString(field.key) == "service"))
            m_texts[m_kind].erase(field.key);
    for (auto const &[key, value] : connection.fields)
        m_texts[m_kind][key] = value;
}

std::vector<SecretPlace> SecretPlacesOf(ConnectionKind kind) {
    switch (kind) {
    case ConnectionKind::PostgreSql:
    case ConnectionKind::ObjectStore:
        return kind == ConnectionKind::PostgreSql
                   ? std::vector{SecretPlace::Keyring, SecretPlace::Ask, SecretPlace::File, SecretPlace::Profile,
                                 SecretPlace::None}
                   : std::vector{SecretPlace::Profile, SecretPlace::Keyring, SecretPlace::Ask, SecretPlace::None};
    case ConnectionKind::Odbc:
        return {SecretPlace::None, SecretPlace::Keyring, SecretPlace::Ask}; // many are files
    default:
        return {SecretPlace::None, SecretPlace::Keyring, SecretPlace::Ask, SecretPlace::File};
    }
}

DString SecretPlaceInWords(SecretPlace place, ConnectionKind kind) {
    bool const isDatabase = kind == ConnectionKind::PostgreSql;
    switch (place) {
    case SecretPlace::None:
        return Translated(kNone);
    case SecretPlace::Keyring:
        return Translated(kKeyring);
    case SecretPlace::Ask:
        return Translated(kAsk);
    case SecretPlace::Profile:
        return Translated(isDatabase ? kPgService : kAwsProfile);
    case SecretPlace::File:
        return Translated(isDatabase ? kPgPass : kNetrc);
    case SecretPlace::Definition:
        return Translated(kDefinition);
    }
    return {};
}

DString ChoiceInWords(ConnectionField const &field, DString const &choice) {
    auto const *const found = std::find_if(kChoices.begin(), kChoices.end(), [&](ChoiceWords const &row) {
        return std::string_view(row.key) == field.key && choice == row.choice;
    });
    return found == kChoices.end() ? choice : Translated(found->words);
}

bool IsRareField(ConnectionField const &field) {
    static constexpr std::array<std::string_view, 9> kRare{"ca",      "fingerprint", "schemas",    "tables",  "sslmode",
                                                           "version", "region",      "addressing", "unsigned"};
    bool const isPgService = field.kind == ConnectionKind::PostgreSql && std::string_view(field.key) == "service";
    return isPgService || std::find(kRare.begin(), kRare.end(), field.key) != kRare.end();
}

DString SuggestedName(Connection const &connection) {
    std::optional<ConnectionAddress> const address = connection.Address();
    if (!address)
        return {};
    DString path;
    for (DString const &name : address->path)
        if (!name.empty())
            path.append(path.empty() ? "" : "/").append(name);
    if (connection.kind == ConnectionKind::PostgreSql)
        return ToValidUtf8(path.empty() ? address->host : path + " (" + address->host + ")");
    return ToValidUtf8(path.empty() ? address->host : address->host + "/" + path);
}

} // namespace zelvar
