#include "support/PostgresServer.h"

#include "zelvar/base/DString.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <thread>
#include <tuple>

#include <fcntl.h>
#include <grp.h>
#include <netinet/in.h>
#include <pwd.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zelvar::test {

namespace {

constexpr char kPrograms[] = "/usr/lib/postgresql/15/bin/";
constexpr char kPasswordFile[] = "password";

/// Programs of the server refuse the superuser: in a child, before its program.
void LeaveSuperuser() {
    passwd const *const user =
        geteuid() == 0 ? getpwnam("postgres") : nullptr; // NOLINT(concurrency-mt-unsafe): a child
    if (user == nullptr)
        return;
    std::ignore = setgroups(0, nullptr);
    std::ignore = setgid(user->pw_gid);
    std::ignore = setuid(user->pw_uid);
}

/// Starts a program as the server's user, its output to the end of a file.
pid_t Begin(std::vector<std::string> const &words, std::string const &output) {
    std::vector<char *> arguments;
    for (std::string const &word : words)
        arguments.push_back(const_cast<char *>(word.c_str())); // NOLINT(cppcoreguidelines-pro-type-const-cast)
    arguments.push_back(nullptr);
    pid_t const process = fork();
    if (process != 0)
        return process;
    int const out = open(output.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    dup2(open("/dev/null", O_RDONLY | O_CLOEXEC), 0);
    dup2(out, 1);
    dup2(out, 2);
    close_range(3, ~0U, 0);
    LeaveSuperuser();
    prctl(PR_SET_PDEATHSIG, SIGQUIT); // behind the change of user, which takes it back
    execv(arguments[0], arguments.data());
    _exit(127);
}

bool Succeeds(pid_t process) {
    int status = 0;
    return process > 0 && waitpid(process, &status, 0) == process && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// A port that nobody has at this moment.
int FreePort() {
    int const listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto *const general = reinterpret_cast<sockaddr *>(&address);
    bool const isBound = bind(listener, general, size) == 0 && getsockname(listener, general, &size) == 0;
    close(listener);
    return isBound ? ntohs(address.sin_port) : 0;
}

std::string Quoted(std::string const &word) {
    std::string quoted = "'";
    for (char const c : word)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

/// What a shell's line prints.
std::string OutputOf(std::string const &line) {
    TempFolder const scratch;
    // NOLINTNEXTLINE(cert-env33-c,concurrency-mt-unsafe): a script is played
    std::ignore = std::system(("(" + line + ") >" + Quoted(scratch / "out") + " 2>&1 </dev/null").c_str());
    return ReadFile(scratch / "out");
}

} // namespace

PostgresServer::~PostgresServer() { Stop(); }

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
    if (passwd const *const user = getpwnam("postgres");
        geteuid() == 0 && user != nullptr) { // NOLINT(concurrency-mt-unsafe): one thread
        std::ignore = chown(m_folder.Path().c_str(), user->pw_uid, user->pw_gid);
        for (auto const &entry : std::filesystem::directory_iterator(m_folder.Path()))
            std::ignore = chown(entry.path().c_str(), user->pw_uid, user->pw_gid);
    }
    std::string const log = m_folder / "initdb.log";
    if (!Succeeds(test::Begin({std::string(kPrograms) + "initdb", "-D", m_folder / "data", "-U", kUser,
                               "--pwfile=" + m_folder / kPasswordFile, "-A", "scram-sha-256", "-E", "UTF8",
                               "--locale=C", "--no-sync"},
                              log)))
        return "no database (postgresql-15): " + ReadFile(log);
    constexpr int kTries = 5; // another may take the port before
    bool isUp = false;
    for (int i = 0; i < kTries && !isUp; ++i) {
        m_port = FreePort();
        isUp = Begin();
    }
    if (!isUp)
        return "the server does not start: " + ReadFile(m_folder / "log");
    std::string made = OutputOf(Psql(kUser) + " -d postgres -c 'create database field'");
    made += Execute("create extension postgis; create extension postgis_raster");
    return made.empty() ? made : "no PostGIS (postgresql-15-postgis-3): " + made;
}

bool PostgresServer::Begin() {
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
    m_process = test::Begin(words, m_folder / "log");
    for (int status = 0; waitpid(m_process, &status, WNOHANG) == 0; std::this_thread::yield())
        if (ReadFile(m_folder / "log").find("ready to accept connections", before) != std::string::npos)
            return true;
    m_process = -1;
    return false;
}

void PostgresServer::Stop() {
    if (m_process <= 0)
        return;
    kill(m_process, SIGQUIT);
    waitpid(m_process, nullptr, 0);
    m_process = -1;
}

bool PostgresServer::StartAgain() { return Begin(); }

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
