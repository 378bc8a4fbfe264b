#include "zelvar/reader/ReadablePlaces.h"

#include "zelvar/base/PathStyle.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace zelvar::reader {

namespace {

constexpr char const *kOfTheSystem[] = {"/usr",
                                        "/lib",
                                        "/lib64",
                                        "/opt",
                                        "/etc/alternatives",
                                        "/etc/ca-certificates",
                                        "/etc/gnutls",
                                        "/etc/ld.so.cache",
                                        "/etc/localtime",
                                        "/etc/pkcs11",
                                        "/etc/pki",
                                        "/etc/ssl",
                                        "/dev/urandom",
                                        "/proc/self",
                                        "/proc/meminfo",
                                        "/sys/devices/system/cpu"};
constexpr char const *kOfDatabases[] = {"/etc/odbc.ini", "/etc/odbcinst.ini", "/etc/freetds"};
/// Variables that name a file or a folder which GDAL and the libraries below it read.
constexpr char const *kVariables[] = {"GDAL_DATA",           "PROJ_LIB",         "PROJ_DATA",
                                      "SSL_CERT_FILE",       "CURL_CA_BUNDLE",   "SSL_CERT_DIR",
                                      "GDAL_CURL_CA_BUNDLE", "GDAL_DRIVER_PATH", "LD_LIBRARY_PATH"};
constexpr char const *kVariablesOfSources[] = {"ODBCSYSINI", "ODBCINSTINI"};
constexpr char const *kVariablesOfStores[] = {"AWS_CONFIG_FILE", "AWS_SHARED_CREDENTIALS_FILE",
                                              "CPL_AWS_CREDENTIALS_FILE", "GOOGLE_APPLICATION_CREDENTIALS",
                                              "CPL_GS_CREDENTIALS_FILE"};

template <class Names>
void AddNamed(Names const &variables, std::vector<DString> &places) {
    for (char const *name : variables)
        if (char const *const value = std::getenv(name); value != nullptr && *value == '/')
            for (DString &place : Split(value, ':'))
                places.push_back(std::move(place));
}

} // namespace

std::vector<DString> PlacesToRead(ConnectionTerms const &terms, std::vector<DString> const &modules) {
    std::vector<DString> places(std::begin(kOfTheSystem), std::end(kOfTheSystem));
    std::error_code error;
    DString const program = std::filesystem::read_symlink("/proc/self/exe", error).string();
    places.emplace_back(ParentPathOf(ParentPathOf(program))); // the libraries stand beside the program's folder
    for (DString const &module : modules)
        places.emplace_back(ParentPathOf(module));
    AddNamed(kVariables, places);
    for (char const *const certificates : {"ca", "authorities"})
        if (auto const file = terms.options.find(certificates); file != terms.options.end())
            places.push_back(file->second);
    char const *const home = std::getenv("HOME");
    auto const addOfHome = [&](std::initializer_list<char const *> names) {
        for (char const *name : names)
            if (home != nullptr)
                places.push_back(AppendPath(home, name));
    };
    switch (terms.kind) {
    case ConnectionKind::ObjectStore:
        AddNamed(kVariablesOfStores, places);
        addOfHome({".aws", ".boto", ".azure", ".config/gcloud"});
        break;
    case ConnectionKind::PostgreSql:
        addOfHome({".pgpass", ".pg_service.conf", ".postgresql"});
        break;
    case ConnectionKind::Odbc:
        places.insert(places.end(), std::begin(kOfDatabases), std::end(kOfDatabases));
        addOfHome({".odbcinst.ini", ".freetds.conf"});
        AddNamed(kVariablesOfSources, places);
        // A source that is a file and no server.
        for (auto const &[key, value] : terms.options)
            if (EqualNoCase(key, "odbc.Database"))
                places.push_back(value);
        break;
    default:
        addOfHome({".netrc"});
    }
    std::erase_if(places, [](DString const &place) { return !place.starts_with('/') || place == "/"; });
    return places;
}

} // namespace zelvar::reader
