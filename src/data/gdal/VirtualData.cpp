#include "zelvar/data/gdal/VirtualData.h"

#include "zelvar/base/FileDescriptor.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/DataFolderLook.h"
#include "zelvar/data/gdal/VirtualText.h"

#include <cpl_vsi.h>
#include <gdal.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <optional>
#include <set>

#include <fcntl.h>
#include <sys/stat.h>

namespace zelvar::gdal {

namespace {

constexpr std::size_t kLongestText = std::size_t{32} << 20U;
constexpr std::ptrdiff_t kMostMarks = 3'000'000;            // of elements and attributes: each takes some 100 bytes
constexpr std::size_t kMostTexts = std::size_t{128} << 20U; // bytes of all documents
constexpr std::size_t kDeepest = 16;                        // virtual files in virtual files
constexpr std::size_t kMostSources = 1'000'000;             // of all, each counted as often as it is come by

constexpr std::string_view kArchives[] = {"/vsizip/", "/vsitar/", "/vsigzip/"};
/// Not to be opened by what a file says, though files of them are by name: it writes beside what it reads.
constexpr std::string_view kWriters[] = {"GML"};

struct CloseFile {
    void operator()(VSILFILE *file) const { VSIFCloseL(file); }
};

std::optional<DString> ReadText(DString const &name) {
    std::unique_ptr<VSILFILE, CloseFile> const file(VSIFOpenL(name.c_str(), "rb"));
    if (file == nullptr || VSIFSeekL(file.get(), 0, SEEK_END) != 0 || VSIFTellL(file.get()) > kLongestText)
        return std::nullopt;
    DString text(static_cast<std::size_t>(VSIFTellL(file.get())), '\0');
    bool const isRead =
        VSIFSeekL(file.get(), 0, SEEK_SET) == 0 && VSIFReadL(text.data(), 1, text.size(), file.get()) == text.size();
    return isRead ? std::optional(std::move(text)) : std::nullopt;
}

/// "NETCDF:..." and the like: a driver's own name before a file's.
std::size_t PrefixLength(std::string_view name) {
    std::size_t const colon = name.find(':');
    bool const isPrefix =
        colon != std::string_view::npos && colon > 1 && colon < 32 &&
        std::all_of(name.begin(), name.begin() + static_cast<std::ptrdiff_t>(colon), [](char c) {
            return c == '_' || (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        });
    return isPrefix ? colon + 1 : 0;
}

/// Formats that reach out, run programs or write.
std::vector<char const *> UnfitFormats() {
    std::vector<char const *> names;
    for (int i = 0; i < GDALGetDriverCount(); ++i) {
        char const *const id = GDALGetDriverShortName(GDALGetDriver(i));
        Format const *const format = Formats::Instance().Find(id);
        if (format == nullptr || std::ranges::find(kWriters, std::string_view(id)) != std::end(kWriters))
            names.push_back(id);
    }
    names.push_back(nullptr);
    return names;
}

/// Whether the file begins as pictures do that no other format takes for its own: most tiles of a mosaic.
bool IsPlainPicture(DString const &path) {
    static constexpr std::string_view kBegins[] = {{"II*\0", 4},
                                                   {"MM\0*", 4},
                                                   {"II+\0", 4},
                                                   {"MM\0+", 4},
                                                   {"\x89PNG\r\n\x1A\n\0", 9},
                                                   {"\xFF\xD8\xFF\xE0\0", 5},
                                                   {"\0\0\0\x0CjP  ", 8}};
    FileDescriptor const file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    std::array<char, 16> head{};
    bool const isRead =
        file.IsOpen() && pread(file.Get(), head.data(), head.size(), 0) == static_cast<ssize_t>(head.size());
    std::string_view const bytes(head.data(), head.size());
    return isRead && std::ranges::any_of(kBegins, [&](std::string_view begin) { return bytes.starts_with(begin); });
}

/// The format that GDAL takes the source for, among these; null for none of them.
char const *IdentifiedAs(DString const &name, std::vector<char const *> const &formats) {
    GDALDriverH driver = GDALIdentifyDriverEx(name.c_str(), GDAL_OF_RASTER | GDAL_OF_VECTOR, formats.data(), nullptr);
    return driver == nullptr ? nullptr : GDALGetDriverShortName(driver);
}

bool IsVirtualId(std::string_view id) { return id == "VRT" || id == "OGR_VRT"; }

/// One walk through all that a virtual data set leads to.
class Check {
public:
    Check() : m_unfit(UnfitFormats()), m_all(m_unfit) { m_all.insert(m_all.begin(), {"VRT", "OGR_VRT"}); }

    /// False with `m_fault` set. `name` is a virtual data set's.
    bool Document(DString const &name) {
        DString const key = KeyOf(name);
        if (std::ranges::find(m_path, key) != m_path.end())
            return Fail(name, "refers to itself");
        if (m_path.size() >= kDeepest)
            return Fail(name, "lies behind more than 16 virtual files");
        if (auto const known = m_known.find(key); known != m_known.end())
            return Count(name, known->second);
        std::size_t const before = m_sources;
        m_path.push_back(key);
        bool const isFine = References(name);
        m_path.pop_back();
        m_known[key] = m_sources - before;
        return isFine;
    }
    [[nodiscard]] DString const &Fault() const { return m_fault; }

private:
    bool Fail(DString const &document, DString const &why) {
        m_fault = "\"" + document + "\" " + why;
        return false;
    }
    bool Count(DString const &document, std::size_t more) {
        m_sources += more;
        return m_sources <= kMostSources || Fail(document, "refers to too many files");
    }
    /// The same for the same file, by whatever name.
    static DString KeyOf(DString const &name) {
        struct stat info {};
        return stat(name.c_str(), &info) == 0 ? std::to_string(info.st_dev) + ":" + std::to_string(info.st_ino) : name;
    }

    bool References(DString const &document) {
        std::vector<DString> names;
        {
            std::optional<DString> const text = ReadText(document);
            m_bytes += text ? text->size() : 0;
            auto const isMark = [](char c) { return c == '<' || c == '='; };
            if (!text || m_bytes > kMostTexts || std::ranges::count_if(*text, isMark) > kMostMarks)
                return Fail(document, "is larger than a virtual file may be, or cannot be read");
            VirtualText read = ReadVirtualText(*text);
            if (!read.fault.empty())
                return Fail(document, read.fault);
            names = std::move(read.names);
        }
        std::ranges::sort(names);
        // Names are relative to the file, to the file that a link leads to, or to where the process stands.
        std::set<std::filesystem::path> bases;
        std::error_code error;
        bases.insert(std::filesystem::canonical(document, error).parent_path());
        bases.insert(std::filesystem::canonical(std::filesystem::absolute(document, error).parent_path(), error));
        bases.insert(std::filesystem::current_path(error));
        bases.insert(std::filesystem::path(document).parent_path()); // inside an archive
        for (std::size_t i = 0; i < names.size(); ++i) {
            bool const isNew = i == 0 || names[i] != names[i - 1];
            std::size_t const before = m_sources;
            if (isNew && !Reference(document, names[i], bases))
                return false;
            if (isNew)
                m_ofLast = m_sources - before;
            else if (!Count(document, m_ofLast))
                return false;
        }
        return true;
    }

    bool Reference(DString const &document, DString const &name, std::set<std::filesystem::path> const &bases) {
        if (name.empty())
            return true;
        if (!Count(document, 1))
            return false;
        if (name.front() == '<' || name.front() == '{' || name.find('\n') != DString::npos)
            return Fail(document, "holds a description of another source");
        if (UsesForeignFileSystem(name) || BDIMoniker(name, nullptr).IsUrl())
            return Fail(document, "refers to \"" + name + "\", which is no file on a disk");
        std::size_t const prefix = PrefixLength(name);
        std::vector<DString> candidates;
        if (prefix != 0) {
            candidates.push_back(name);
            std::size_t const inner = prefix + (name[prefix] == '"' ? 1 : 0);
            for (std::filesystem::path const &base : bases)
                if (inner < name.size() && name[inner] != '/')
                    candidates.push_back(name.substr(0, inner) + (base / name.substr(inner)).string());
        } else {
            for (std::filesystem::path const &base : bases)
                candidates.push_back((base / name).string()); // a name from the root stays
            candidates.erase(std::unique(candidates.begin(), candidates.end()), candidates.end());
        }
        bool isFound = false;
        for (DString const &candidate : candidates) {
            DString const path = BDIMoniker(candidate, nullptr).FindFile();
            if (path.empty())
                continue;
            isFound = true;
            if (!Source(document, candidate, path))
                return false;
        }
        // A tile that is missing leaves a gap; what is no path at all is a connection.
        return isFound || prefix == 0 || Fail(document, "refers to \"" + name + "\", which is no file of this machine");
    }

    bool Source(DString const &document, DString const &name, DString const &path) {
        struct stat info {};
        bool const isThere = stat(path.c_str(), &info) == 0;
        bool const isFolder = isThere && S_ISDIR(info.st_mode) && LookForDataFolder(path);
        if (!isFolder && !(isThere && S_ISREG(info.st_mode)))
            return Fail(document, "refers to \"" + path + "\", which is no plain file");
        if (name == path && isThere && !isFolder && IsPlainPicture(path))
            return true;
        char const *id = IdentifiedAs(name, m_all);
        if (id == nullptr)
            return true;
        bool const isVirtual = IsVirtualId(id);
        id = isVirtual ? IdentifiedAs(name, m_unfit) : id;
        if (id != nullptr)
            return Fail(document, "refers to \"" + name + "\", which is of the kind " + id + " and may reach out");
        return Document(name);
    }

    KnownServices m_services;               ///< nothing is opened meanwhile
    std::vector<char const *> m_unfit;      ///< formats
    std::vector<char const *> m_all;        ///< the same and the virtual ones
    std::vector<DString> m_path;            ///< keys of the documents that lead here
    std::map<DString, std::size_t> m_known; ///< how many sources a document has
    std::size_t m_sources = 0;
    std::size_t m_ofLast = 0; ///< sources behind the last reference
    std::size_t m_bytes = 0;
    DString m_fault;
};

} // namespace

bool IsVirtual(Format const &format) { return IsVirtualId(format.id); }

DString ReasonAgainstVirtual(DString const &name) {
    Check check;
    return check.Document(name) ? DString() : check.Fault();
}

bool UsesForeignFileSystem(std::string_view name) {
    for (std::size_t at = name.find("/vsi"); at != std::string_view::npos; at = name.find("/vsi", at + 1)) {
        bool const starts = at == 0 || std::string_view(":\"{").find(name[at - 1]) != std::string_view::npos ||
                            name.substr(0, at).rfind("/vsi") == 0;
        bool const archive = std::any_of(std::begin(kArchives), std::end(kArchives),
                                         [&](std::string_view prefix) { return name.substr(at).starts_with(prefix); });
        if (starts && !archive)
            return true;
    }
    return false;
}

} // namespace zelvar::gdal
