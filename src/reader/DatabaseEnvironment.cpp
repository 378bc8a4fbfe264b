#include "zelvar/reader/DatabaseEnvironment.h"

#include <cstdlib>
#include <cstring>
#include <string_view>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace zelvar::reader {

namespace {

struct Variable {
    char const *name;
    char const *option; ///< of the terms
};
constexpr Variable kOfTerms[] = {{"PGHOST", "host"}, {"PGPORT", "port"},       {"PGDATABASE", "database"},
                                 {"PGUSER", "user"}, {"PGSSLMODE", "sslmode"}, {"PGSSLROOTCERT", "ca"}};
struct Setting {
    char const *name;
    char const *value;
};
constexpr Setting kAlways[] = {{"PGAPPNAME", "zelvar"},
                               {"PGCLIENTENCODING", "UTF8"},
                               {"PGDATESTYLE", "ISO"},
                               {"PGCONNECT_TIMEOUT", "15"},  // seconds
                               {"PGGSSENCMODE", "disable"}}; // tickets lie where this process cannot read
/// They would lead elsewhere.
constexpr char const *kLeadElsewhere[] = {"PGSERVICE", "PGHOSTADDR", "PGTARGETSESSIONATTRS"};
constexpr std::string_view kSession = "-c default_transaction_read_only=on -c statement_timeout=60000"; // ms

/// A line of a file of passwords that fits whoever asks; none if there is no memory.
FileDescriptor PasswordFile(std::string_view password) {
    DString line = "*:*:*:*:";
    for (char const c : password) {
        if (c == ':' || c == '\\')
            line += '\\';
        line += c;
    }
    line += '\n';
    FileDescriptor file(memfd_create("zelvar", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    // Libraries refuse one that others might read.
    bool const isWritten =
        file.IsOpen() && fchmod(file.Get(), S_IRUSR | S_IWUSR) == 0 &&
        write(file.Get(), line.data(), line.size()) == static_cast<ssize_t>(line.size()) &&
        fcntl(file.Get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL) == 0;
    explicit_bzero(line.data(), line.size());
    return isWritten ? std::move(file) : FileDescriptor(-1);
}

} // namespace

FileDescriptor TellOfDatabase(ConnectionTerms const &terms) {
    FileDescriptor password(-1);
    if (terms.kind != ConnectionKind::PostgreSql)
        return password;
    constexpr int replace = 1;
    for (char const *name : kLeadElsewhere)
        unsetenv(name);
    for (Variable const &variable : kOfTerms) {
        auto const at = terms.options.find(variable.option);
        if (at == terms.options.end())
            unsetenv(variable.name);
        else
            setenv(variable.name, at->second.c_str(), replace);
    }
    for (Setting const &setting : kAlways)
        setenv(setting.name, setting.value, replace);
    char const *const own = std::getenv("PGOPTIONS");
    DString const options = (own == nullptr ? DString() : DString(own) + " ").append(kSession);
    setenv("PGOPTIONS", options.c_str(), replace);
    if (auto const secret = terms.secrets.find("password"); secret != terms.secrets.end() && !secret->second.empty()) {
        password = PasswordFile(secret->second);
        setenv("PGPASSFILE", ("/proc/self/fd/" + std::to_string(password.Get())).c_str(), replace);
        unsetenv("PGPASSWORD"); // it would come first
    }
    return password;
}

} // namespace zelvar::reader
