#include "support/PostgresServer.h"

#include "support/Processes.h"
#include "zelvar/base/DString.h"

#include <cstdlib>
#include <filesystem>
#include <tuple>

#include <pwd.h>
#include <unistd.h>

namespace zelvar::test {

namespace {

constexpr char kPrograms[] = "/usr/lib/postgresql/15/bin/";
constexpr char kPasswordFile[] = "password";
constexpr char kUserOfServer[] = "postgres"; // programs of the server refuse the superuser

/// What a shell's line prints.
std::string OutputOf(std::string const &line) {
    TempFolder const scratch;
    // NOLINTNEXTLINE(cert-env33-c,concurrency-mt-unsafe): a script is played
    std::ignore = std::system(("(" + line + ") >" + Quoted(scratch / "out") + " 2>&1 </dev/null").c_str());
    return ReadFile(scratch / "out");
}

} // namespace

std::string PostgresServer::MakeCertificates() const {
    std::string const folder = Quoted(m_folder.Path());
    std::string const make =
        "cd " + folder +
        " && openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj '/CN=Lab CA'"
        " -keyout ca.key -out ca.pem && openssl req -newkey rsa:2048 -nodes -subj /CN=localhost"
        " -keyout server.key -out server.csr && openssl x509 -req -in server.csr -CA ca.pem"
        " -CAkey ca.key -CAcreateserial -days 2 -out server.pem && chmod 600 server.key && echo made";
    std::string const told = OutputOf(make);
    return told.ends_with("made\n") ? std::string() : "no certificates: " + told;
}

std::string PostgresServer::Start(Encryption encryption) {
    m_encryption = encryption;
    m_folder.Write(kPasswordFile, std::string(kPassword) + "\n");
    if (encryption == Encryption::Required)
        if (std::string fault = MakeCertificates(); !fault.empty())
            return fault;
    if (passwd const *const user = getpwnam(kUserOfServer);
        geteuid() == 0 && user != nullptr) { // NOLINT(concurrency-mt-unsafe): one thread
        std::ignore = chown(m_folder.Path().c_str(), user->pw_uid, user->pw_gid);
        for (auto const &entry : std::filesystem::directory_iterator(m_folder.Path()))
            std::ignore = chown(entry.path().c_str(), user->pw_uid, user->pw_gid);
    }
    std::string const log = m_folder / "initdb.log";
    if (!ServerProcess::Succeeds({.words = {std::string(kPrograms) + "initdb", "-D", m_folder / "data", "-U", kUser,
                                            "--pwfile=" + m_folder / kPasswordFile, "-A", "scram-sha-256", "-E", "UTF8",
                                            "--locale=C", "--no-sync"},
                                  .log = log,
                                  .user = kUserOfServer}))
        return "no database (postgresql-15): " + ReadFile(log);
    m_port = StartAtFreePort([this](int port) {
        m_port = port;
        return StartAgain();
    });
    if (m_port == 0)
        return "the server does not start: " + ReadFile(m_folder / "log");
    std::string made = OutputOf(Psql(kUser) + " -d postgres -c 'create database field'");
    made += Execute("create extension postgis; create extension postgis_raster");
    return made.empty() ? made : "no PostGIS (postgresql-15-postgis-3): " + made;
}

bool PostgresServer::StartAgain() {
    std::vector<std::string> words{std::string(kPrograms) + "postgres",
                                   "-D",
                                   m_folder / "data",
                                   "-p",
                                   std::to_string(m_port),
                                   "-h",
                                   "127.0.0.1",
                                   "-k",
                                   m_folder.Path(),
                                   "-c",
                                   "fsync=off",
                                   "-c",
                                   "shared_buffers=16MB",
                                   "-c",
                                   "log_statement=all",
                                   "-c",
                                   "log_line_prefix=%a|"};
    if (m_encryption == Encryption::Required)
        for (std::string const &word :
             {std::string("-c"), std::string("ssl=on"), std::string("-c"), "ssl_cert_file=" + m_folder / "server.pem",
              std::string("-c"), "ssl_key_file=" + m_folder / "server.key"})
            words.push_back(word);
    std::size_t const before = ReadFile(m_folder / "log").size();
    return m_process.Start({.words = words, .log = m_folder / "log", .user = kUserOfServer, .ending = SIGQUIT}, [&] {
        return ReadFile(m_folder / "log").find("ready to accept connections", before) != std::string::npos;
    });
}

std::string PostgresServer::Psql(std::string const &user) const {
    return "PGAPPNAME=kit PGSSLMODE=prefer PGPASSWORD=" + Quoted(kPassword) +
           " PGOPTIONS=-cclient_min_messages=warning psql -X -q -A -t -v ON_ERROR_STOP=1" + " -h 127.0.0.1 -p " +
           std::to_string(m_port) + " -U " + Quoted(user);
}

std::string PostgresServer::Execute(std::string const &statements, std::string const &user) const {
    TempFolder const scratch;
    return OutputOf(Psql(user) + " -d field -f " + Quoted(scratch.Write("statements.sql", statements)));
}

std::string PostgresServer::Load(std::string const &loader) const {
    TempFolder const scratch;
    std::string const file = Quoted(scratch / "statements.sql");
    std::string const errors = Quoted(scratch / "errors");
    return OutputOf(loader + " >" + file + " 2>" + errors + " || cat " + errors + "; " + Psql(kUser) +
                    " -d field -o /dev/null -f " + file);
}

std::vector<std::string> PostgresServer::TakeStatements(std::string const &application) {
    std::string const log = ReadFile(m_folder / "log");
    std::vector<std::string> statements;
    for (DString const &line : Split(std::string_view(log).substr(m_logSeen), '\n'))
        for (std::string const &head : {application + "|LOG:  statement: ", application + "|LOG:  execute <unnamed>: "})
            if (line.starts_with(head))
                statements.push_back(line.substr(head.size()));
    m_logSeen = log.size();
    return statements;
}

} // namespace zelvar::test
