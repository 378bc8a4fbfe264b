#include "zelvar/connections/ConnectionBook.h"

#include "zelvar/base/DFileFind.h"
#include "zelvar/base/Directories.h"
#include "zelvar/base/Translation.h"
#include "zelvar/base/TypedSecrets.h"
#include "zelvar/connections/ConnectionFields.h"
#include "zelvar/connections/ConnectionListing.h"
#include "zelvar/connections/OdbcSource.h"
#include "zelvar/connections/PostgreSqlService.h"
#include "zelvar/data/DefinitionUse.h"
#include "zelvar/data/ServerCertificate.h"
#include "zelvar/xml/XMLNode.h"

#include <algorithm>
#include <mutex>
#include <tuple>

#include <sys/stat.h>

namespace zelvar {

namespace {

constexpr std::uint16_t kHttp = 80;
constexpr std::uint16_t kHttps = 443;
constexpr char const *kNoConnection = Mark("No connection for %s is defined.");

/// The files of definitions in the order in which they count: the main one first.
std::vector<DString> DefinitionFiles() {
    DString const directory = GetDataSourceDefinitionsDir();
    if (directory.empty())
        return {};
    DString const main = DFile(AppendPath(directory, "connections.xml")).GetAbsolutePath();
    std::vector<DString> files{main};
    DFileFind const found(directory, "*.xml", true, false, false, false, 0);
    for (DFile const &file : found.GetFiles())
        if (DString const path = file.GetAbsolutePath(); !EqualNoCase(path, main))
            files.push_back(path);
    return files;
}

/// What changes when a file is written.
using Stamp = std::vector<std::tuple<DString, ino_t, off_t, time_t, long>>;

Stamp StampOf(std::vector<DString> const &files) {
    Stamp stamp;
    for (DString const &path : files) {
        struct stat status {};
        if (stat(path.c_str(), &status) == 0)
            stamp.emplace_back(path, status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec);
    }
    return stamp;
}

/// Of a store whose addresses name a bucket and no server.
std::vector<HostAndPort> StoreHosts(Connection const &connection) {
    if (DString endpoint = connection.Field("endpoint"); !endpoint.empty()) {
        bool const isPlain = endpoint.starts_with("http://");
        if (std::size_t const scheme = endpoint.find("://"); scheme != DString::npos)
            endpoint.erase(0, scheme + 3);
        std::optional<HostAndPort> host = ParseHostAndPort(endpoint.substr(0, endpoint.find('/')));
        if (!host)
            return {};
        if (host->port == 0)
            host->port = isPlain ? kHttp : kHttps;
        return {*host, {"*." + host->host, host->port}}; // a bucket's name may come before the server's
    }
    DString const service = connection.Field("service");
    if (service == "gs")
        return {{"storage.googleapis.com", kHttps}, {"oauth2.googleapis.com", kHttps}};
    if (service == "az")
        return {{"*.blob.core.windows.net", kHttps}};
    return {{"s3.amazonaws.com", kHttps}, {"*.amazonaws.com", kHttps}};
}

std::vector<HostAndPort> HostsOf(Connection const &connection) {
    switch (connection.kind) {
    case ConnectionKind::ObjectStore:
        return StoreHosts(connection);
    case ConnectionKind::Odbc:
        return {}; // named by the driver's own files: those that are allowed
    case ConnectionKind::PostgreSql: {
        Connection plain = WithServiceFields(connection);
        plain.fields.erase("service");
        std::optional<ConnectionAddress> const address = plain.Address();
        return address ? std::vector{HostAndPort{address->host, address->PortOrUsual()}} : std::vector<HostAndPort>();
    }
    default: {
        std::optional<ConnectionAddress> const address = connection.Address();
        return address ? std::vector{HostAndPort{address->host, address->PortOrUsual()}} : std::vector<HostAndPort>();
    }
    }
}

/// Whether an address alone does not say enough to reach what it names.
bool NeedsConnection(std::string_view scheme) { return scheme.starts_with("postgresql") || scheme == "odbc"; }

void PutSecret(ConnectionTerms &terms, char const *key, Secret const &secret) {
    if (!secret.IsEmpty())
        terms.secrets[key] = secret.Reveal();
}

/// Whether TLS may be spoken with its server.
bool MayEncrypt(Connection const &connection, std::optional<ConnectionAddress> const &address) {
    switch (connection.kind) {
    case ConnectionKind::PostgreSql:
        return connection.Field("sslmode") != "disable";
    case ConnectionKind::ObjectStore:
        return !connection.Field("endpoint").starts_with("http://");
    case ConnectionKind::MapService:
    case ConnectionKind::WebFolder:
        return address && address->scheme.ends_with("https");
    default:
        return false;
    }
}

/// Where a certificate is looked at, and what holds with one that the user has accepted.
void TellOfCertificate(Connection const &connection, ConnectionTerms &terms) {
    bool const hasServer = !terms.hosts.empty() && !terms.hosts.front().host.starts_with("*");
    if (!hasServer || !MayEncrypt(connection, connection.Address())) {
        terms.options.erase("fingerprint");
        return;
    }
    terms.options["server"] = TextOf(terms.hosts.front());
    std::optional<DString> const accepted = FingerprintIn(connection.Field("fingerprint"));
    if (!accepted)
        return;
    terms.options["fingerprint"] = *accepted;
    if (!connection.allow.empty())
        terms.options["others"] = "yes"; // servers that have certificates of their own
    if (connection.kind == ConnectionKind::PostgreSql && connection.Field("sslmode") != "verify-full")
        terms.options["sslmode"] = "verify-ca"; // else it is not looked at, or done without
}

/// Of a database: a password that was typed with the address comes before the one that is kept.
ConnectionTerms WithTypedPassword(ConnectionTerms terms, std::string_view address) {
    if (terms.kind == ConnectionKind::PostgreSql || terms.kind == ConnectionKind::Odbc)
        if (std::optional<DString> const typed = PasswordInAddress(WithSecrets(DString(address))))
            terms.secrets["password"] = *typed;
    return terms;
}

} // namespace

ConnectionBook ConnectionBook::Read() {
    ConnectionBook book;
    for (DString const &path : DefinitionFiles()) {
        XMLNode root;
        if (!DFile(path).Exist() || !root.Load(DFile(path)))
            continue;
        for (XMLNode const *node = root.GetFirstChild(); node != nullptr; node = node->GetNext()) {
            std::optional<Connection> connection = Connection::FromNode(*node);
            if (!connection)
                continue;
            Entry entry{
                .connection = *std::move(connection), .secret = {}, .isVisible = node->GetAttrBool("visible", true)};
            if (std::optional<DString> password = PasswordInDefinition(*node))
                entry.secret = Secret::TakenFrom(*password);
            DString const name = entry.connection.name;
            book.m_entries.insert_or_assign(name, std::move(entry));
        }
    }
    return book;
}

std::shared_ptr<ConnectionBook const> ConnectionBook::Now() {
    struct Known {
        std::mutex mutex;
        Stamp stamp;
        std::shared_ptr<ConnectionBook const> book;
    };
    static auto &known = *new Known; // never destroyed: workers may still ask while the process ends
    std::lock_guard const lock(known.mutex);
    Stamp now = StampOf(DefinitionFiles());
    if (known.book == nullptr || now != known.stamp) {
        known.book = std::make_shared<ConnectionBook const>(Read());
        known.stamp = std::move(now);
    }
    return known.book;
}

ConnectionBook::Entry const *ConnectionBook::Find(DString const &name) const {
    auto const found = m_entries.find(name);
    return found == m_entries.end() ? nullptr : &found->second;
}

ConnectionBook::Entry const *ConnectionBook::FindByAddress(std::string_view address) const {
    std::optional<ConnectionAddress> const wanted = ParseConnectionAddress(address);
    Entry const *best = nullptr;
    std::size_t length = 0;
    for (auto const &[name, entry] : m_entries) {
        std::optional<ConnectionAddress> const own = entry.connection.Address();
        bool const holds =
            own ? wanted && own->Holds(*wanted) : !address.empty() && entry.connection.Field("address") == address;
        // Before the address that says more about it.
        std::size_t const size = own ? (own->host.empty() ? 1 : 2) + own->path.size() + own->query.size() : 1;
        if (holds && (size > length || (size == length && LastUseOf(name) > LastUseOf(best->connection.name)))) {
            best = &entry;
            length = size;
        }
    }
    return best;
}

DString MissingConnectionInWords(std::string_view address) {
    std::optional<ConnectionAddress> const wanted = ParseConnectionAddress(address);
    return wanted ? Format(Translated(kNoConnection), wanted->Target().c_str()) : DString();
}

DString ConnectionIdOf(Connection const &connection) {
    std::optional<ConnectionAddress> const address = connection.Address();
    return address ? address->ToText() : DString();
}

ConnectionTerms MakeTerms(ConnectionBook::Entry const &entry, StopSignal const *stop) {
    Connection const connection = WithServiceFields(entry.connection);
    ConnectionTerms terms{.id = ConnectionIdOf(entry.connection), .kind = connection.kind};
    terms.hosts = HostsOf(connection);
    terms.hosts.insert(terms.hosts.end(), connection.allow.begin(), connection.allow.end());
    for (auto const &[key, value] : connection.fields)
        if (!value.empty())
            terms.options[key] = value;
    // Some type the user into the address.
    if (std::optional<ConnectionAddress> const address = connection.Address();
        connection.kind != ConnectionKind::ObjectStore && address && !address->user.empty())
        terms.options.try_emplace("user", address->user);
    // GDAL takes the endpoint without its scheme.
    if (auto const endpoint = terms.options.find("endpoint"); endpoint != terms.options.end())
        if (std::size_t const colon = endpoint->second.find("://"); colon != DString::npos) {
            if (endpoint->second.starts_with("http://"))
                terms.options["https"] = "no";
            endpoint->second.erase(0, colon + 3);
        }
    if (connection.timeLimit.count() > 0) {
        terms.connectTime = connection.timeLimit;
        terms.options["seconds"] = std::to_string(connection.timeLimit.count()); // that its server may be silent
    }
    TellOfCertificate(connection, terms);
    if (connection.kind == ConnectionKind::Odbc)
        TakeOdbcSource(terms); // a secret of the connection's own takes the place of one found there
    bool const isStore = connection.kind == ConnectionKind::ObjectStore;
    if (!entry.secret.IsEmpty()) {
        PutSecret(terms, isStore ? "key" : "password", entry.secret);
        return terms;
    }
    SecretAnswer const answer = SecretStore::Instance().Find(entry.connection, stop);
    PutSecret(terms, isStore ? "key" : "password", answer.secret);
    PutSecret(terms, "token", answer.token);
    if (!answer.user.empty())
        terms.options[isStore ? "key" : "user"] = answer.user;
    return terms;
}

void UseDefinedConnections() {
    SetConnectionFinder([](std::string_view address) -> std::optional<ConnectionTerms> {
        if (std::optional<ConnectionBook::Entry> const tried = TriedConnection::FindByAddress(address))
            return MakeTerms(*tried);
        std::shared_ptr<ConnectionBook const> const book = ConnectionBook::Now();
        if (ConnectionBook::Entry const *const entry = book->FindByAddress(address))
            return WithTypedPassword(MakeTerms(*entry), address);
        std::optional<ConnectionAddress> const wanted = ParseConnectionAddress(address);
        if (!wanted || !NeedsConnection(wanted->scheme))
            return std::nullopt;
        return ConnectionTerms{.id = wanted->ToText(), .missing = MissingConnectionInWords(address)};
    });
}

} // namespace zelvar
