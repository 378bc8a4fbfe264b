#include "zelvar/data/gdal/ConnectionSettings.h"

#include <cpl_conv.h>

#include <arpa/inet.h>
#include <netinet/in.h>

namespace zelvar::gdal {

namespace {

struct Setting {
    std::string_view option;
    char const *setting; ///< of GDAL
};

/// Where several are set the libraries differ in which they take.
constexpr Setting kOfTheWeb[] = {{"ca", "SSL_CERT_FILE"},
                                 {"ca", "GDAL_CURL_CA_BUNDLE"},
                                 {"ca", "CURL_CA_BUNDLE"},
                                 {"seconds", "GDAL_HTTP_CONNECTTIMEOUT"},
                                 {"seconds", "GDAL_HTTP_LOW_SPEED_TIME"}};
constexpr Setting kOfAmazon[] = {{"endpoint", "AWS_S3_ENDPOINT"},
                                 {"region", "AWS_REGION"},
                                 {"profile", "AWS_PROFILE"},
                                 {"key", "AWS_ACCESS_KEY_ID"}};
constexpr Setting kSecretsOfAmazon[] = {{"key", "AWS_SECRET_ACCESS_KEY"}, {"token", "AWS_SESSION_TOKEN"}};

using Texts = std::map<DString, DString>;

DString ValueOf(Texts const &texts, std::string_view name) {
    auto const at = texts.find(DString(name));
    return at == texts.end() ? DString() : at->second;
}

template <class Settings>
void SetAll(Texts const &texts, Settings const &settings) {
    for (Setting const &setting : settings)
        if (DString const value = ValueOf(texts, setting.option); !value.empty())
            CPLSetConfigOption(setting.setting, value.c_str());
}

DString SchemeOf(ConnectionTerms const &terms) {
    return ValueOf(terms.options, "https") == "no" ? "http://" : "https://";
}

bool IsUnsigned(ConnectionTerms const &terms) { return ValueOf(terms.options, "unsigned") == "yes"; }

/// A server that is named by its number has no names below it.
bool IsNumber(DString const &endpoint) {
    in_addr number{};
    return endpoint.starts_with('[') ||
           inet_pton(AF_INET, endpoint.substr(0, endpoint.find(':')).c_str(), &number) == 1;
}

bool IsInPath(ConnectionTerms const &terms) {
    DString const addressing = ValueOf(terms.options, "addressing");
    return addressing == "path" || (addressing != "virtual" && IsNumber(ValueOf(terms.options, "endpoint")));
}

void TellOfAmazon(ConnectionTerms const &terms) {
    SetAll(terms.options, kOfAmazon);
    SetAll(terms.secrets, kSecretsOfAmazon);
    if (bool const isInPath = IsInPath(terms); isInPath || ValueOf(terms.options, "addressing") == "virtual")
        CPLSetConfigOption("AWS_VIRTUAL_HOSTING", isInPath ? "NO" : "YES"); // else as it is set outside
    if (ValueOf(terms.options, "https") == "no")
        CPLSetConfigOption("AWS_HTTPS", "NO");
    if (IsUnsigned(terms))
        CPLSetConfigOption("AWS_NO_SIGN_REQUEST", "YES");
}

/// The name of an account: what stands before "@" in addresses.
DString AccountOf(ConnectionTerms const &terms) {
    DString const key = ValueOf(terms.options, "key");
    return key.empty() ? ValueOf(terms.options, "profile") : key;
}

/// Keys of the kind that other stores have, too; without one GDAL looks for a file of a service's account.
void TellOfGoogle(ConnectionTerms const &terms) {
    if (DString const endpoint = ValueOf(terms.options, "endpoint"); !endpoint.empty())
        CPLSetConfigOption("CPL_GS_ENDPOINT", (SchemeOf(terms) + endpoint + "/").c_str());
    if (DString const secret = ValueOf(terms.secrets, "key"); !secret.empty()) {
        CPLSetConfigOption("GS_ACCESS_KEY_ID", AccountOf(terms).c_str());
        CPLSetConfigOption("GS_SECRET_ACCESS_KEY", secret.c_str());
    }
    if (IsUnsigned(terms))
        CPLSetConfigOption("GS_NO_SIGN_REQUEST", "YES");
}

/// With a key, or a signature that somebody has given for a while ("sv=...&sig=..."), all in one text, which comes
/// before whatever the environment says.
void TellOfAzure(ConnectionTerms const &terms) {
    DString const account = AccountOf(terms);
    DString const told = ValueOf(terms.options, "endpoint");
    DString const endpoint = told.empty() ? "blob.core.windows.net" : told;
    DString const place = SchemeOf(terms) + (IsInPath(terms) ? endpoint + "/" + account : account + "." + endpoint);
    DString const key = IsUnsigned(terms) ? DString() : ValueOf(terms.secrets, "key");
    std::string_view const secret = std::string_view(key).substr(key.starts_with('?') ? 1 : 0);
    if (secret.empty()) {
        if (!account.empty())
            CPLSetConfigOption("AZURE_STORAGE_ACCOUNT", account.c_str());
        if (!told.empty())
            CPLSetConfigOption("CPL_AZURE_ENDPOINT", place.c_str());
        if (IsUnsigned(terms)) {
            CPLSetConfigOption("AZURE_STORAGE_CONNECTION_STRING", "");
            CPLSetConfigOption("AZURE_NO_SIGN_REQUEST", "YES");
        }
        return;
    }
    bool const isSignature = secret.find("sig=") != std::string_view::npos;
    DString const text = "AccountName=" + account + ";BlobEndpoint=" + place +
                         (isSignature ? ";SharedAccessSignature=" : ";AccountKey=") + DString(secret);
    CPLSetConfigOption("AZURE_STORAGE_CONNECTION_STRING", text.c_str());
}

} // namespace

void TellGdal(ConnectionTerms const &terms) {
    SetAll(terms.options, kOfTheWeb);
    if (terms.kind == ConnectionKind::ObjectStore) {
        DString const service = ValueOf(terms.options, "service");
        (service == "gs" ? TellOfGoogle : service == "az" ? TellOfAzure : TellOfAmazon)(terms);
        return;
    }
    DString const user = ValueOf(terms.options, "user");
    DString const password = ValueOf(terms.secrets, "password");
    bool const isOfTheWeb = terms.kind != ConnectionKind::PostgreSql && terms.kind != ConnectionKind::Odbc;
    if (isOfTheWeb && !user.empty() && !password.empty())
        CPLSetConfigOption("GDAL_HTTP_USERPWD", (user + ":" + password).c_str());
}

} // namespace zelvar::gdal
