#include "zelvar/data/gdal/WebListing.h"

#include "zelvar/base/TypedSecrets.h"
#include "zelvar/data/gdal/Causes.h"

#include <cpl_conv.h>
#include <cpl_error.h>
#include <cpl_http.h>
#include <cpl_string.h>
#include <cpl_vsi.h>

#include <memory>
#include <mutex>
#include <optional>
#include <set>

namespace zelvar::gdal {

namespace {

using Cause = DError::Cause;

constexpr std::size_t kMostBytes = std::size_t{32} << 20U; // of a listing
constexpr std::int64_t kMostObjects = 2'000'000;
constexpr std::int64_t kSecond = 1'000'000'000; // ns

/// What is asked of each entry; whatever else a server knows is not sent.
constexpr char const *kProperties =
    R"(<?xml version="1.0" encoding="utf-8"?><D:propfind xmlns:D="DAV:"><D:prop><D:resourcetype/>)"
    R"(<D:getcontentlength/><D:getlastmodified/></D:prop></D:propfind>)";

DError Because(DString const &text, Cause cause, std::int64_t detail = -1) {
    DError error;
    error.Set(text, cause, detail);
    return error;
}

/// Servers that have answered that they do not speak WebDAV. For the process; a thread at a time.
class PlainServers {
public:
    static PlainServers &Instance() {
        static auto &servers = *new PlainServers;
        return servers;
    }
    [[nodiscard]] bool Has(DString const &server) {
        std::lock_guard const lock(m_mutex);
        return m_servers.contains(server);
    }
    void Add(DString const &server) {
        constexpr std::size_t most = 1000;
        std::lock_guard const lock(m_mutex);
        if (m_servers.size() < most)
            m_servers.insert(server);
    }

private:
    std::mutex m_mutex;
    std::set<DString> m_servers;
};

DString ServerOf(DString const &url) { return url.substr(0, url.find('/', url.find("://") + 3)); }

/// What a server has sent.
struct Answer {
    DString body;
    DError error;           ///< not set if it is the answer to a listing's question
    bool isRefused = false; ///< by the server itself, which answers
};

/// Takes a body as long as it may be a listing: marked up text of a bounded size.
struct Body {
    DString text;
    bool isTooLong = false;
    bool isOther = false;

    bool Take(std::string_view part) {
        bool const isFirst = text.empty();
        text.append(part);
        isTooLong = text.size() > kMostBytes;
        std::size_t const begin = text.find_first_not_of("\xEF\xBB\xBF \t\r\n");
        isOther = isFirst && begin != DString::npos && text[begin] != '<';
        return !isTooLong && !isOther;
    }
    static size_t Write(void *bytes, size_t size, size_t count, void *body) {
        std::string_view const part(static_cast<char const *>(bytes), size * count);
        return static_cast<Body *>(body)->Take(part) ? part.size() : 0;
    }
};

Answer Ask(DString const &url, char const *const *options) {
    Body body;
    Answer answer;
    CPLHTTPResult *const result =
        CPLHTTPFetchEx(WithSecrets(url).c_str(), options, nullptr, nullptr, &Body::Write, &body);
    if (result == nullptr) {
        answer.error = Because("nothing was asked of \"" + url + "\"", Cause::NoAnswer);
        return answer;
    }
    DString const said = result->pszErrBuf == nullptr ? "" : result->pszErrBuf;
    if (body.isTooLong)
        answer.error = Because(zelvar::Format("the listing of \"%s\" is longer than %d MB", url.c_str(),
                                              static_cast<int>(kMostBytes >> 20U)),
                               Cause::TooLarge, static_cast<std::int64_t>(kMostBytes));
    else if (!body.isOther && (result->nStatus != 0 || !said.empty()))
        answer.error = ErrorOfServer(url, said);
    answer.isRefused = answer.error.Why() == Cause::Server;
    answer.body = body.isOther ? DString() : std::move(body.text);
    CPLHTTPDestroyResult(result);
    return answer;
}

/// The title of a page, for who got another page than he asked for.
DString TitleOf(DString const &page) {
    constexpr std::size_t longest = 100;
    std::size_t const begin = page.find("<title>");
    std::size_t const end = begin == DString::npos ? begin : page.find("</title>", begin);
    if (end == DString::npos)
        return {};
    std::string_view const title = Trimmed(std::string_view(page).substr(begin + 7, end - begin - 7));
    return title.empty() ? DString() : ": " + ToValidUtf8(title.substr(0, longest));
}

/// Listens to GDAL on this thread while it asks an object store: the store's own reason comes as a remark only.
class StoreTalk {
public:
    StoreTalk() {
        if (char const *const former = CPLGetThreadLocalConfigOption("CPL_DEBUG", nullptr))
            m_former = former;
        CPLSetThreadLocalConfigOption("CPL_DEBUG", "ON");
        CPLPushErrorHandlerEx(&OnSaid, this);
    }
    ~StoreTalk() {
        CPLPopErrorHandler();
        CPLSetThreadLocalConfigOption("CPL_DEBUG", m_former ? m_former->c_str() : nullptr);
    }
    StoreTalk(StoreTalk const &) = delete;
    StoreTalk &operator=(StoreTalk const &) = delete;

    /// "NoSuchBucket", "AccessDenied" ...; empty if it named none.
    [[nodiscard]] DString const &Code() const { return m_code; }
    /// What GDAL itself found wrong first; empty for nothing.
    [[nodiscard]] DString const &Error() const { return m_error; }

private:
    static void CPL_STDCALL OnSaid(CPLErr level, CPLErrorNum, char const *text) {
        auto &talk = *static_cast<StoreTalk *>(CPLGetErrorHandlerUserData());
        std::string_view const said(text);
        // Remarks hold requests with their signatures: nothing but the code is taken from them.
        if (std::size_t const begin = said.find("<Code>"); begin != std::string_view::npos && talk.m_code.empty()) {
            std::string_view const rest = said.substr(begin + 6);
            std::size_t const end = rest.find("</Code>");
            if (end <= kLongestCode)
                talk.m_code = ToValidUtf8(rest.substr(0, end));
        }
        if (level == CE_Debug)
            return;
        Report::TraceMessage(Report::kTraceDriver, "GDAL: %s", text);
        if (level >= CE_Failure && talk.m_error.empty())
            talk.m_error = Trimmed(said);
    }

    static constexpr std::size_t kLongestCode = 64;
    std::optional<DString> m_former;
    DString m_code;
    DString m_error;
};

} // namespace

DError ListWebFolder(DString const &folder, std::vector<FolderEntry> &entries) {
    DString const url = EscapedUrl(folder.ends_with('/') ? folder : folder + "/");
    DString const server = ServerOf(url);
    auto const take = [&](std::optional<std::vector<FolderEntry>> found) {
        if (found)
            entries = std::move(*found);
        return found.has_value();
    };
    if (!PlainServers::Instance().Has(server)) {
        CPLStringList options;
        options.SetNameValue("CUSTOMREQUEST", "PROPFIND");
        options.SetNameValue("HEADERS", "Depth: 1\r\nContent-Type: application/xml; charset=utf-8");
        options.SetNameValue("POSTFIELDS", kProperties);
        Answer const answer = Ask(url, options.List());
        if (!answer.error.IsSet() && take(EntriesOfMultiStatus(answer.body, url)))
            return {};
        if (answer.error.IsSet() && !answer.isRefused)
            return answer.error;
        constexpr std::int64_t unauthorized = 401; // it may speak it to others
        if (answer.error.Detail() != unauthorized)
            PlainServers::Instance().Add(server);
    }
    Answer const answer = Ask(url, nullptr);
    if (answer.error.IsSet() || take(EntriesOfIndexPage(answer.body, url)))
        return answer.error;
    return Because("\"" + folder + "\" answers with " +
                       (answer.body.empty() ? DString("something else than a listing")
                                            : "a web page, not with a listing" + TitleOf(answer.body)),
                   Cause::NotSupported);
}

DError ListObjects(DString const &folder, DString const &name, std::vector<FolderEntry> &entries) {
    VSICurlPartialClearCache(name.c_str()); // else what failed once fails for good
    StoreTalk const talk;
    constexpr int thisFolderAlone = 0;
    std::unique_ptr<VSIDIR, void (*)(VSIDIR *)> const listing(VSIOpenDir(name.c_str(), thisFolderAlone, nullptr),
                                                              &VSICloseDir);
    if (listing == nullptr)
        return ErrorOfStore(folder, talk.Code(), talk.Error());
    while (VSIDIREntry const *const found = VSIGetNextDirEntry(listing.get())) {
        FolderEntry entry;
        entry.name = found->pszName == nullptr ? "" : found->pszName;
        entry.isFolder = entry.name.ends_with('/') || (found->bModeKnown != 0 && VSI_ISDIR(found->nMode) != 0);
        while (entry.name.ends_with('/'))
            entry.name.pop_back();
        if (entry.name.empty() || entry.name.front() == '.' || entry.name.find('/') != DString::npos)
            continue;
        if (found->bSizeKnown != 0 && !entry.isFolder && found->nSize <= static_cast<vsi_l_offset>(INT64_MAX))
            entry.size = static_cast<std::int64_t>(found->nSize);
        if (found->bMTimeKnown != 0 && found->nMTime > 0 && found->nMTime < INT64_MAX / kSecond)
            entry.modified = found->nMTime * kSecond;
        entries.push_back(std::move(entry));
        if (static_cast<std::int64_t>(entries.size()) == kMostObjects)
            return Because("\"" + folder + "\" holds more than can be listed", Cause::TooLarge);
    }
    return talk.Code().empty() && talk.Error().empty() ? DError() : ErrorOfStore(folder, talk.Code(), talk.Error());
}

} // namespace zelvar::gdal
