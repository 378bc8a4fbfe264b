#include "zelvar/connections/OdbcSource.h"

#include "zelvar/connections/ConnectionAddress.h"
#include "zelvar/connections/SecretFiles.h"

#include <utility>

namespace zelvar {

namespace {

/// The server that a data source names may be reached: drivers differ in how they call it.
void TakeServer(IniSection &section, ConnectionTerms &terms) {
    DString host;
    std::uint16_t port = 0;
    for (auto &[key, value] : section) {
        if (EqualNoCase(key, "Server") || EqualNoCase(key, "Servername") || EqualNoCase(key, "Host")) {
            if (value == "localhost") // for which drivers take a local socket, which readers may not
                value = "127.0.0.1";
            host = value;
        } else if (EqualNoCase(key, "Port")) {
            port = ParsePort(value).value_or(std::uint16_t{0});
        }
    }
    if (!host.empty() && host.find_first_of("/\\,") == DString::npos)
        terms.hosts.push_back({std::move(host), port});
}

} // namespace

void TakeOdbcSource(ConnectionTerms &terms) {
    auto const source = terms.options.find("dsn");
    if (source == terms.options.end())
        return;
    DString const name = source->second;
    for (DString const &path : OdbcSourceFiles()) {
        SecretFileText file = ReadSecretFile(path, false);
        std::optional<IniSection> section = FindIniSection(file.text, name);
        Wipe(file.text);
        if (!section)
            continue;
        TakeServer(*section, terms);
        for (auto &[key, value] : *section) {
            if (!EqualNoCase(key, "PWD") && !EqualNoCase(key, "Password")) {
                terms.options["odbc." + key] = value;
                continue;
            }
            if (!value.empty())
                terms.secrets.try_emplace("password", value);
            Wipe(value);
        }
        return;
    }
}

} // namespace zelvar
