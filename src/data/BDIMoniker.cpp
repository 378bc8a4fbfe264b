#include "zelvar/data/BDIMoniker.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/base/TypedSecrets.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/Connection.h"
#include "zelvar/data/DataFolderLook.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/data/SeriesPlace.h"

#include <algorithm>
#include <optional>

#include <sys/stat.h>

namespace zelvar {

namespace {

constexpr std::size_t kNone = DString::npos;

enum class Found { Nothing, File, Other };

Found LookAt(DString const &path) {
    struct stat info {};
    if (path.empty() || path.find('\0') != kNone || stat(path.c_str(), &info) != 0)
        return Found::Nothing;
    return S_ISREG(info.st_mode) ? Found::File : Found::Other;
}

/// The text itself if it exists, else the longest beginning that is a plain file and ends before one of `ends`: what
/// follows names something inside that file. Behind a driver's own name a folder that is a data set is as good.
DString LongestExisting(DString text, std::string_view ends) {
    if (LookAt(text) != Found::Nothing)
        return text;
    bool const isDriversName = ends.find(':') != kNone;
    for (std::size_t cut = text.find_last_of(ends); cut != kNone && cut > 0; cut = text.find_last_of(ends, cut - 1)) {
        bool const isWhole = text[cut] != '/';
        text.resize(cut);
        Found const found = LookAt(text);
        if (found == Found::File || (found == Found::Other && isDriversName && isWhole && LookForDataFolder(text)))
            return text;
    }
    return {};
}

/// "/vsizip//a/x.zip/in.tif" and "/vsizip/{/a/x.zip}/in.tif" without what stands before the archive's path.
std::optional<DString> WithoutArchivePrefix(DString const &text) {
    for (std::string_view const prefix : {"/vsizip/", "/vsitar/", "/vsigzip/"}) {
        if (!text.starts_with(prefix))
            continue;
        DString rest = text.substr(prefix.size());
        if (!rest.starts_with('{'))
            return rest;
        // Braces of the archive's own name come in pairs.
        int depth = 0;
        for (std::size_t i = 0; i < rest.size(); ++i) {
            depth += rest[i] == '{' ? 1 : rest[i] == '}' ? -1 : 0;
            if (depth == 0)
                return rest.substr(1, i - 1);
        }
        return std::nullopt;
    }
    return std::nullopt;
}

/// A path from the root. Its signs are those of names: drivers put theirs behind a name of their own.
bool IsFromRoot(std::string_view text) { return text.starts_with('/') && !text.starts_with("/vsi"); }

/// The file of a local source, a text without options. Drivers name what lies inside a file as `NAME:"/path":inside` or
/// `NAME:/path:inside`.
DString DiskPathOf(DString const &source) {
    if (StartsWithNoCase(source, "file://")) {
        std::string_view rest = std::string_view(source).substr(7);
        if (StartsWithNoCase(rest, "localhost/"))
            rest.remove_prefix(9);
        return LongestExisting(PercentDecoded(rest), "/");
    }
    if (IsFromRoot(source))
        return LongestExisting(source, "/");
    if (DString path = LongestExisting(source, "/:}"); !path.empty())
        return path;
    if (auto const inner = WithoutArchivePrefix(source))
        return LongestExisting(*inner, "/:}");
    for (std::size_t colon = source.find(':'); colon < 64; colon = source.find(':', colon + 1)) {
        DString rest = source.substr(colon + 1);
        bool const isQuoted = rest.starts_with('"'); // a quote of the name's own may follow
        if (isQuoted)
            rest.erase(0, 1);
        auto const inner = WithoutArchivePrefix(rest);
        if (DString path = LongestExisting(inner ? *inner : rest, isQuoted ? "\"/:}" : "/:}"); !path.empty())
            return path;
    }
    return {};
}

/// How long the part of a path from the root is that leads to the deepest folder there is.
std::size_t FolderLength(DString const &path) {
    for (std::size_t cut = path.rfind('/'); cut != kNone && cut > 0; cut = path.rfind('/', cut - 1))
        if (LookAt(path.substr(0, cut)) == Found::Other)
            return cut;
    return 0;
}

/// Where the name of a series ends that holds a "?", if `text` begins with one. No file tells: its first member does,
/// else it ends as early as it can.
std::optional<std::size_t> SeriesLength(DString const &text, std::size_t first) {
    std::optional<std::size_t> length;
    for (std::size_t end = first; text.find('[') != kNone; end = text.find_first_of("?&", end + 1)) {
        end = std::min(end, text.size());
        if (auto const place = SeriesPlace::Of(text.substr(0, end)); place) {
            if (LookAt(place->MemberPath(0)) == Found::File)
                return end;
            length = length.value_or(end);
        }
        if (end == text.size())
            break;
    }
    return length;
}

} // namespace

/// A driver's repository and its root.
struct BDIMoniker::Opened {
    BDIDrvr *driver = nullptr;
    void *repository = nullptr;
    BDINode *node = nullptr;

    Opened() = default;
    Opened(Opened const &) = delete;
    Opened &operator=(Opened const &) = delete;
    ~Opened() {
        if (node != nullptr)
            driver->CloseNode(node);
        if (repository != nullptr)
            driver->CloseRepository(repository);
    }
};

BDIMoniker::BDIMoniker(DString text, BDIDrvr *driver)
    // A path on disk is what it is, whatever stands in its names.
    : m_text(text.starts_with('/') && !text.starts_with("/vsi") ? std::move(text) : TakeSecrets(std::move(text))),
      m_driver(driver) {}

BDIMoniker BDIMoniker::OfPath(DString path, DString const &options, BDIDrvr *driver) {
    std::size_t const length = path.size();
    if (!options.empty())
        path.append(path.find('?') == kNone ? "?" : "&").append(options);
    BDIMoniker moniker(std::move(path), driver);
    moniker.m_pathLength = length;
    return moniker;
}

std::size_t BDIMoniker::SourceLength() const {
    if (m_pathLength != 0)
        return m_pathLength;
    std::size_t first = m_text.find('?');
    if (first == kNone)
        return m_text.size();
    if (IsUrl())
        return first;
    // A folder that is there keeps a "?" of its name.
    if (IsFromRoot(m_text))
        first = m_text.find('?', FolderLength(m_text));
    if (first == kNone)
        return m_text.size();
    for (std::size_t end = m_text.size(); end != kNone && end >= first;
         end = end == 0 ? kNone : m_text.find_last_of("?&", end - 1)) {
        DString const path = DiskPathOf(m_text.substr(0, end));
        if (path.empty())
            continue;
        std::size_t const at = m_text.find(path);
        if (at == kNone)
            return end;
        std::size_t const behind = at + path.size();
        // Whoever adds options looks for a "?" first, and takes one in the file's own name for the beginning of
        // options.
        if (behind < m_text.size() && m_text[behind] == '&' && path.find('?') != kNone)
            return behind;
        // What stands between the file and the next "?" names something inside the file.
        return std::min(m_text.find('?', behind), m_text.size());
    }
    return SeriesLength(m_text, first).value_or(first);
}

DString BDIMoniker::GetSource() const { return m_text.substr(0, SourceLength()); }

std::vector<std::pair<DString, DString>> BDIMoniker::GetOptions() const {
    std::vector<std::pair<DString, DString>> options;
    std::size_t const length = SourceLength();
    if (length >= m_text.size())
        return options;
    for (DString const &piece : Split(std::string_view(m_text).substr(length + 1), '&')) {
        if (piece.empty())
            continue;
        std::size_t const equals = std::min(piece.find('='), piece.size());
        options.emplace_back(piece.substr(0, equals), piece.substr(std::min(equals + 1, piece.size())));
    }
    return options;
}

BDIMoniker BDIMoniker::WithOptions(DString const &options) const {
    if (options.empty())
        return *this;
    std::size_t const length = SourceLength();
    bool const isMarked = m_pathLength != 0 && GetSource().find('?') != kNone;
    char const *const separator = length == m_text.size() && !isMarked ? "?" : length + 1 == m_text.size() ? "" : "&";
    BDIMoniker joined(m_text + separator + options, m_driver);
    joined.m_pathLength = m_pathLength;
    return joined;
}

DString BDIMoniker::FindFile() const {
    if (m_pathLength != 0)
        return LookAt(GetSource()) == Found::Nothing ? DString() : GetSource();
    return IsUrl() ? DString() : DiskPathOf(GetSource());
}

DString BDIMoniker::GetPathOnDisk() const {
    if (m_pathLength != 0)
        return GetSource();
    DString found = FindFile();
    bool const isPlain = !m_text.starts_with("/vsi") && (m_text.starts_with('/') || m_text.find(':') == kNone);
    if (!found.empty() || IsUrl() || !isPlain)
        return found;
    // Nothing is there to tell a name with "?" from a name with options, but options have values.
    for (auto const &[name, value] : GetOptions())
        if (value.empty())
            return m_text;
    return GetSource();
}

DString BDIMoniker::GetDisplayName() const {
    DString const source = GetSource();
    if (IsMapServiceAddress(m_text))
        for (auto const &[key, value] : GetOptions())
            if (key == "LAYER" || key == "COVERAGE" || key == "TYPENAME" || key == "GROUP")
                return PercentDecoded(value);
    if (IsUrl()) {
        std::string_view const address = std::string_view(source).substr(0, source.find_last_not_of('/') + 1);
        return PercentDecoded(FileNameOf(address));
    }
    DString const file = FindFile();
    std::size_t const at = file.empty() ? kNone : source.find(file);
    if (at == kNone)
        return DString(FileNameOf(source));
    DString name(FileNameOf(file));
    // Drivers put quotes, braces and separators between a file and what is inside.
    std::size_t const inside = source.find_first_not_of("\":/}", at + file.size());
    return inside == kNone ? name : name + " " + source.substr(inside);
}

DString BDIMoniker::GetFrmtExtn(bool withDot) const {
    DString const file = GetPathOnDisk();
    DString const extension(ExtensionOf(file.empty() ? GetSource() : file));
    return extension.empty() || !withDot ? extension : "." + extension;
}

void BDIMoniker::SetDrvr(BDIDrvr *driver) {
    if (driver != m_driver)
        CloseNode();
    m_driver = driver;
}

BDINode const *BDIMoniker::GetNode() const {
    if (m_opened != nullptr)
        return m_opened->node;
    m_opened = std::make_shared<Opened>();
    if (m_pathLength != 0 && FindFile().empty())
        return nullptr; // a driver would look for a shorter name
    if (m_driver == nullptr) {
        RequestScope const scope(RequestKind::Probe, {}, kNamedProbe);
        m_driver = BDIDrvrMngr::Instance()->FindContainerDriver(FindFile());
    }
    if (m_driver == nullptr)
        return nullptr;
    m_opened->driver = m_driver;
    m_opened->repository = m_driver->OpenRepository(m_text.c_str(), &m_opened->node, nullptr);
    return m_opened->node;
}

void *BDIMoniker::GetRepository() const { return GetNode() == nullptr ? nullptr : m_opened->repository; }

bool BDIMoniker::IsUrl() const {
    if (m_pathLength != 0)
        return false;
    if (zelvar::IsUrl(m_text))
        return !StartsWithNoCase(m_text, "file://");
    // Nodes inside a thing on the network are named through these file systems, maybe through an archive there.
    static constexpr std::string_view kNetwork[] = {"/vsicurl/", "/vsis3/", "/vsigs/", "/vsiaz/", "/vsismb/"};
    return std::any_of(std::begin(kNetwork), std::end(kNetwork), [this](std::string_view network) {
        std::size_t const at = m_text.find(network);
        return at == 0 || (at != kNone && (std::string_view(":\"{").find(m_text[at - 1]) != kNone ||
                                           m_text.rfind("/vsi", at - 1) != kNone));
    });
}

} // namespace zelvar
