#include "zelvar/data/gdal/ConnectionSettings.h"

#include <cpl_conv.h>

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
constexpr Setting kOfStores[] = {{"endpoint", "AWS_S3_ENDPOINT"},
                                 {"region", "AWS_REGION"},
                                 {"profile", "AWS_PROFILE"},
                                 {"key", "AWS_ACCESS_KEY_ID"}};
constexpr Setting kSecretsOfStores[] = {{"key", "AWS_SECRET_ACCESS_KEY"}, {"token", "AWS_SESSION_TOKEN"}};

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

} // namespace

void TellGdal(ConnectionTerms const &terms) {
    SetAll(terms.options, kOfTheWeb);
    if (terms.kind == ConnectionKind::ObjectStore) {
        SetAll(terms.options, kOfStores);
        SetAll(terms.secrets, kSecretsOfStores);
        if (DString const addressing = ValueOf(terms.options, "addressing"); !addressing.empty())
            CPLSetConfigOption("AWS_VIRTUAL_HOSTING", addressing == "path" ? "NO" : "YES");
        if (ValueOf(terms.options, "https") == "no")
            CPLSetConfigOption("AWS_HTTPS", "NO");
        if (ValueOf(terms.options, "unsigned") == "yes")
            CPLSetConfigOption("AWS_NO_SIGN_REQUEST", "YES");
        return;
    }
    DString const user = ValueOf(terms.options, "user");
    DString const password = ValueOf(terms.secrets, "password");
    bool const isOfTheWeb = terms.kind != ConnectionKind::PostgreSql && terms.kind != ConnectionKind::Odbc;
    if (isOfTheWeb && !user.empty() && !password.empty())
        CPLSetConfigOption("GDAL_HTTP_USERPWD", (user + ":" + password).c_str());
}

} // namespace zelvar::gdal
