#include "zelvar/data/gdal/WebListing.h"

#include "zelvar/base/TypedSecrets.h"
#include "zelvar/data/gdal/Causes.h"

#include <cpl_http.h>
#include <cpl_string.h>

#include <memory>
#include <mutex>
#include <optional>
#include <set>

namespace zelvar::gdal {

namespace {

using Cause = DError::Cause;

constexpr std::size_t kMostBytes = std::size_t{32} << 20U; // of a listing

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

/// Takes a body as long as it may be a listing: marked up text of a bounded size. Of anything else it takes what a
/// server may say of a refusal, whose number is told behind it.
struct Body {
    DString text;
    bool isTooLong = false;
    bool isOther = false;
    bool isCut = false; ///< here, not by the server

    bool Take(std::string_view part) {
        constexpr std::size_t mostWords = std::size_t{64} << 10U;
        bool const isFirst = text.empty();
        text.append(part);
        isTooLong = text.size() > kMostBytes;
        std::size_t const begin = text.find_first_not_of("\xEF\xBB\xBF \t\r\n");
        isOther = isOther || (isFirst && begin != DString::npos && text[begin] != '<');
        isCut = isTooLong || (isOther && text.size() > mostWords);
        return !isCut;
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
    else if (!body.isCut && (result->nStatus != 0 || !said.empty()))
        answer.error = ErrorOfServer(url, said);
    answer.isRefused = answer.error.Why() == Cause::Server || answer.error.Why() == Cause::NeedsPassword;
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

} // namespace zelvar::gdal
