#include "zelvar/data/gdal/GdalScope.h"

#include "zelvar/base/Report.h"
#include "zelvar/data/ReaderDuty.h"
#include "zelvar/data/gdal/ConnectionSettings.h"
#include "zelvar/data/gdal/Formats.h"

#include <cpl_conv.h>
#include <cpl_error.h>
#include <cpl_http.h>
#include <cpl_string.h>
#include <gdal.h>

#include <algorithm>
#include <cstdint>
#include <mutex>
#include <string_view>
#include <utility>

#include <dlfcn.h>

namespace zelvar::gdal {

namespace {

constexpr std::size_t kMostErrors = 8;
constexpr GIntBig kMostCacheBytes = GIntBig{64} << 20U;

using Setting = std::pair<char const *, char const *>;

/// What holds in every scope, whatever the environment says.
constexpr Setting kAlways[] = {
    {"GDAL_PAM_ENABLED", "NO"},                    // no .aux.xml
    {"GDAL_DISABLE_READDIR_ON_OPEN", "EMPTY_DIR"}, // siblings are handed in
    {"GML_SKIP_RESOLVE_ELEMS", "ALL"},             // no .resolved.gml, no look at what links name
    {"SHAPE_RESTORE_SHX", "NO"},
    {"GDAL_MAX_DATASET_POOL_SIZE", "16"},
    {"CPL_VSIL_CURL_CACHE_SIZE", "16000000"},
    {"GTIFF_IGNORE_READ_ERRORS", "NO"},
    {"GDAL_VRT_ENABLE_PYTHON", "NO"}, // a file runs no program
};
/// What the environment may say otherwise; seconds, and bytes a second of a server that is as good as silent.
constexpr Setting kUnlessSet[] = {
    {"GDAL_HTTP_TIMEOUT", "30"},        {"GDAL_HTTP_CONNECTTIMEOUT", "5"},
    {"GDAL_HTTP_LOW_SPEED_TIME", "10"}, {"GDAL_HTTP_LOW_SPEED_LIMIT", "16"},
    {"GDAL_HTTP_MAX_RETRY", "0"},       {"CPL_AWS_AUTODETECT_EC2", "NO"}, // would ask a server that nobody named
    {"CPL_MACHINE_IS_GCE", "NO"},       {"OGR_WFS_PAGE_SIZE", "1000"},    // rows of a request
};
/// Nobody listens on that port: whoever passes the two bars before this one ends here.
constexpr Setting kBarred[] = {
    {"CPL_VSIL_CURL_ALLOWED_FILENAME", "none"},
    {"GDAL_HTTP_PROXY", "http://127.0.0.1:1"},
    {"GDAL_HTTPS_PROXY", "http://127.0.0.1:1"},
};
/// What a virtual file leads to has side files too: each is asked for by its name, no folder is read.
constexpr Setting kOnDisk = {"GDAL_DISABLE_READDIR_ON_OPEN", "TRUE"};

CPLHTTPResult *RefuseFetch(char const *url, CSLConstList, GDALProgressFunc, void *, CPLHTTPFetchWriteFunc, void *,
                           void *) {
    Report::TraceMessage(Report::kTraceDriver, "barred a request to %s", url == nullptr ? "" : url);
    auto *result = static_cast<CPLHTTPResult *>(CPLCalloc(1, sizeof(CPLHTTPResult)));
    result->nStatus = 1;
    result->pszErrBuf = CPLStrdup("the network is barred");
    return result;
}

} // namespace

void StartGdal() {
    static std::once_flag once;
    std::call_once(once, [] {
        if (GDALGetDriverCount() == 0)
            GDALAllRegister();
        if (ReaderDuty const *const duty = OwnDuty()) {
            DeregisterServices();
            if (duty->connection)
                TellGdal(*duty->connection);
        }
        GDALSetCacheMax64(std::min(GDALGetCacheMax64(), kMostCacheBytes));
    });
}

void SilenceHdf5() {
    thread_local bool silent = false;
    if (std::exchange(silent, true))
        return;
    // The library comes with GDAL, which may have been built without it; nothing of ours links it.
    Dl_info gdal{};
    if (dladdr(reinterpret_cast<void const *>(&GDALAllRegister), &gdal) == 0 || gdal.dli_fname == nullptr)
        return;
    void *const library = dlopen(gdal.dli_fname, RTLD_NOW | RTLD_NOLOAD);
    if (library == nullptr)
        return;
    using SetAuto = int (*)(std::int64_t stack, void *function, void *data);
    auto const setAuto = reinterpret_cast<SetAuto>(dlsym(library, "H5Eset_auto2"));
    constexpr std::int64_t kThisThread = 0;
    if (setAuto != nullptr)
        setAuto(kThisThread, nullptr, nullptr);
    dlclose(library);
}

GdalScope::GdalScope(Reach reach) : m_reach(reach) {
    StartGdal();
    m_formerOptions = CPLGetThreadLocalConfigOptions();
    auto const set = [](Setting const &setting) { CPLSetThreadLocalConfigOption(setting.first, setting.second); };
    std::for_each(std::begin(kAlways), std::end(kAlways), set);
    for (Setting const &setting : kUnlessSet)
        if (CPLGetConfigOption(setting.first, nullptr) == nullptr)
            set(setting);
    if (reach == Reach::Local) {
        std::for_each(std::begin(kBarred), std::end(kBarred), set);
        set(kOnDisk);
        CPLHTTPPushFetchCallback(&RefuseFetch, nullptr);
    }
    CPLErrorReset();
    CPLPushErrorHandlerEx([](CPLErr level, CPLErrorNum number, char const *text) { OnError(level, number, text); },
                          this);
}

GdalScope::~GdalScope() {
    CPLPopErrorHandler();
    if (m_reach == Reach::Local)
        CPLHTTPPopFetchCallback();
    CPLSetThreadLocalConfigOptions(m_formerOptions);
    CSLDestroy(m_formerOptions);
}

void GdalScope::OnError(int level, int number, char const *text) {
    auto *scope = static_cast<GdalScope *>(CPLGetErrorHandlerUserData());
    if (level == CE_Debug)
        return;
    Report::TraceMessage(Report::kTraceDriver, "GDAL %s %d: %s", level == CE_Warning ? "warning" : "error", number,
                         text);
    if (scope == nullptr)
        return;
    if (level == CE_Warning && std::string_view(text).find("Premature end of JPEG file") != std::string_view::npos)
        scope->m_hasEndedTooSoon = true;
    if (level >= CE_Failure && scope->m_errors.size() < kMostErrors) {
        DString line(Trimmed(text));
        std::replace(line.begin(), line.end(), '\n', ' ');
        scope->m_errors.push_back({number, std::move(line)});
    }
}

void CloseDataset::operator()(GDALDatasetHS *dataset) const {
    GdalScope const scope(Reach::Local);
    GDALClose(dataset);
}

} // namespace zelvar::gdal
