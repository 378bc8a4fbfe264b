#include "zelvar/thumbnails/ThumbnailStore.h"

#include "zelvar/base/DFile.h"
#include "zelvar/base/FileDescriptor.h"
#include "zelvar/base/Percent.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/SeriesPlace.h"
#include "zelvar/thumbnails/PngPicture.h"

#include <algorithm>
#include <boost/uuid/detail/md5.hpp>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <random>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zelvar {

namespace {

constexpr char kSoftware[] = "Zelvar";
constexpr char kFailures[] = "fail/zelvar-" ZELVAR_VERSION;
constexpr std::int64_t kNanoseconds = 1'000'000'000;
constexpr std::size_t kLargestFile = std::size_t{16} << 20U; // bytes of a thumbnail

struct KeptSize {
    int side;
    char const *folder;
};
constexpr KeptSize kSizes[] = {{128, "normal"}, {256, "large"}, {512, "x-large"}, {1024, "xx-large"}};

KeptSize const *SizeFor(int side) {
    auto const *const found = std::ranges::find_if(kSizes, [side](KeptSize const &size) { return size.side >= side; });
    return found == std::end(kSizes) ? std::prev(found) : found;
}

/// Formats that others read too, and show wrong where samples are wide. Without an ending it may be one of them.
bool IsShownWrong(std::string_view path) {
    constexpr std::string_view kEndings[] = {"",    "tif", "tiff", "btf", "tf8", "lsm", "svs", "png",  "pnm",  "pgm",
                                             "ppm", "pam", "jp2",  "j2k", "jpx", "jpf", "jxl", "avif", "heic", "exr"};
    return std::ranges::any_of(kEndings,
                               [&](std::string_view ending) { return EqualNoCase(ExtensionOf(path), ending); });
}

DString Md5Of(std::string_view text) {
    boost::uuids::detail::md5 hash;
    hash.process_bytes(text.data(), text.size());
    boost::uuids::detail::md5::digest_type digest{};
    hash.get_digest(digest);
    DString name;
    for (unsigned const word : digest) // whose first byte is the highest
        name += Format("%08x", word);
    return name;
}

bool IsBelow(std::string_view path, std::string_view folder) {
    return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

/// The folder and those above it; nobody else looks into one that is made here.
bool MakeFolder(DString const &folder) {
    if (mkdir(folder.c_str(), S_IRWXU) == 0 || errno == EEXIST)
        return true;
    std::string_view const parent = ParentPathOf(folder);
    return errno == ENOENT && parent.size() < folder.size() && !parent.empty() && MakeFolder(DString(parent)) &&
           (mkdir(folder.c_str(), S_IRWXU) == 0 || errno == EEXIST);
}

/// Whole, or not at all: who looks meanwhile sees the former one. What a power cut takes is made again.
void WriteAside(DString const &path, std::string_view bytes) {
    static thread_local std::mt19937_64 random{std::random_device{}()};
    DString const aside = path + Format(".%016llx", static_cast<unsigned long long>(random()));
    FileDescriptor file(open(aside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file.IsOpen())
        return;
    bool isWritten = true;
    while (isWritten && !bytes.empty()) {
        ssize_t const written = write(file.Get(), bytes.data(), bytes.size());
        isWritten = written > 0 || (written < 0 && errno == EINTR);
        bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
    if (!file.Close() || !isWritten || std::rename(aside.c_str(), path.c_str()) != 0)
        unlink(aside.c_str());
}

/// Whether a kept picture is that of the file as it is now.
bool Fits(PngTexts const &texts, ThumbnailKey const &key) {
    auto const text = [&](char const *name) {
        auto const at = texts.find(name);
        return at == texts.end() ? DString() : at->second;
    };
    DString const size = text("Thumb::Size");
    DString const modified = text("Thumb::MTime"); // some write a fraction behind it
    bool const isOurs = text("Software") == kSoftware;
    return text("Thumb::URI") == key.uri && modified.substr(0, modified.find('.')) == std::to_string(key.modified) &&
           (size.empty() || key.size < 0 || size == std::to_string(key.size)) && (isOurs || key.takesForeign);
}

std::optional<DCanvas> ReadKept(DString const &path, ThumbnailKey const &key) {
    DString bytes;
    if (path.empty() || !DFile(path).ReadAll(bytes, kLargestFile))
        return std::nullopt;
    return DecodePng(bytes, [&key](PngTexts const &texts) { return Fits(texts, key); });
}

} // namespace

ThumbnailStore::ThumbnailStore(DString folder) : m_folder(std::move(folder)) {
    while (m_folder.size() > 1 && m_folder.back() == '/')
        m_folder.pop_back();
}

DString ThumbnailStore::UsualFolder() {
    char const *const cache = std::getenv("XDG_CACHE_HOME");
    char const *const home = std::getenv("HOME");
    if (cache != nullptr && *cache == '/')
        return cache;
    return home == nullptr || *home != '/' ? DString() : AppendPath(home, ".cache");
}

int ThumbnailStore::KeptSide(int side) { return SizeFor(side)->side; }

DString ThumbnailStore::FileUri(std::string_view path) {
    constexpr std::string_view kPlain = "-_.!~*'()/&=:@+$,";
    DString uri = "file://";
    for (char const c : path) {
        bool const isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                             kPlain.find(c) != std::string_view::npos;
        uri += isPlain ? DString(1, c) : Format("%%%02X", static_cast<unsigned char>(c));
    }
    return uri;
}

std::optional<ThumbnailKey> ThumbnailStore::KeyOf(DString const &moniker) const {
    if (m_folder.empty() || moniker.empty() || moniker.find('\0') != DString::npos)
        return std::nullopt;
    struct stat state {};
    bool const isThere = moniker.starts_with('/') && stat(moniker.c_str(), &state) == 0;
    bool const isWhole = isThere && S_ISREG(state.st_mode);
    BDIMoniker const named(moniker, nullptr);
    DString const file = isThere ? moniker : named.FindFile();
    ThumbnailKey key{.uri = isWhole ? FileUri(file) : "zelvar:" + PercentEncoded(moniker, true),
                     .isShared = isWhole,
                     .takesForeign = isWhole && !IsShownWrong(file)};
    if (isThere || (!file.empty() && stat(file.c_str(), &state) == 0)) {
        key.modified = state.st_mtim.tv_sec;
        key.size = S_ISREG(state.st_mode) ? state.st_size : -1;
    } else if (auto const series = file.empty() ? SeriesOf(named) : std::nullopt) {
        SeriesListing const members = ListSeries(*series, Weigh::Yes);
        key.modified = members.modified / kNanoseconds;
        key.size = members.size;
    }
    bool const isOfStore = IsBelow(file, m_folder + "/thumbnails") || IsBelow(file, m_folder + "/zelvar");
    return key.modified <= 0 || isOfStore ? std::nullopt : std::optional(std::move(key));
}

DString ThumbnailStore::PathOf(ThumbnailKey const &key, DString const &sizeFolder) const {
    if (m_folder.empty())
        return {};
    return (key.isShared ? m_folder + "/thumbnails" : OwnFolder()) + "/" + sizeFolder + "/" + Md5Of(key.uri) + ".png";
}

DString ThumbnailStore::OwnFolder() const { return m_folder.empty() ? m_folder : m_folder + "/zelvar/thumbnails"; }

std::optional<DCanvas> ThumbnailStore::Find(ThumbnailKey const &key, int side) const {
    for (KeptSize const *size = SizeFor(side); size != std::end(kSizes); ++size)
        if (std::optional<DCanvas> kept = ReadKept(PathOf(key, size->folder), key))
            return kept;
    return std::nullopt;
}

bool ThumbnailStore::HasFailed(ThumbnailKey const &key) const {
    return ReadKept(PathOf(key, kFailures), key).has_value();
}

void ThumbnailStore::Keep(ThumbnailKey const &key, int side, DCanvas const &picture) const {
    Write(key, SizeFor(side)->folder, picture);
}

void ThumbnailStore::KeepFailure(ThumbnailKey const &key) const {
    DCanvas dot;
    dot.SetSize(1, 1);
    Write(key, kFailures, dot);
}

void ThumbnailStore::Write(ThumbnailKey const &key, DString const &sizeFolder, DCanvas const &picture) const {
    DString const path = PathOf(key, sizeFolder);
    PngTexts texts{{"Software", kSoftware}, {"Thumb::URI", key.uri}, {"Thumb::MTime", std::to_string(key.modified)}};
    if (key.size >= 0)
        texts["Thumb::Size"] = std::to_string(key.size);
    DString const bytes = path.empty() ? DString() : EncodePng(picture, texts);
    if (!bytes.empty() && MakeFolder(DString(ParentPathOf(path))))
        WriteAside(path, bytes);
}

} // namespace zelvar
