#include "zelvar/data/gdal/ContainerProbe.h"

#include "zelvar/base/FileDescriptor.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/data/gdal/ContainerTree.h"
#include "zelvar/data/gdal/DataFolders.h"
#include "zelvar/platform/os/SmbClient.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <functional>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zelvar::gdal {

namespace {

struct Magic {
    std::string_view format;
    std::string_view bytes;
};
constexpr Magic kMagics[] = {
    {"GTiff", {"II*\0", 4}},
    {"GTiff", {"MM\0*", 4}},
    {"GTiff", {"II+\0", 4}},
    {"GTiff", {"MM\0+", 4}},
    {"netCDF", "CDF"},
    {"netCDF", "\x89HDF"},
    {"HDF5", "\x89HDF"},
    {"HDF4", "\x0e\x03\x13\x01"},
    {"GPKG", "SQLite format 3"},
    {"SQLite", "SQLite format 3"},
    {"NITF", "NITF"},
    {"NITF", "NSIF"},
    {"FITS", "SIMPLE  ="},
    {"OGR_VRT", "<"},
    {"OGR_VRT", "\xEF\xBB\xBF<"},
};
/// Formats of folders that are data sets, by whose extensions nothing else is called.
constexpr std::string_view kFolderFormats[] = {"Zarr", "OpenFileGDB"};

// Opening must not wait either, should the file have become a pipe meanwhile.
constexpr int kHowToOpen = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

/// Reads a file by windows of a kilobyte: the head of most files is in the first.
class FileWindow {
public:
    /// How many bytes came, below 0 for none.
    using ReadPiece = std::function<std::int64_t(std::int64_t at, void *to, std::size_t size)>;
    explicit FileWindow(ReadPiece readPiece) : m_readPiece(std::move(readPiece)) {}
    explicit FileWindow(int file)
        : FileWindow([file](std::int64_t at, void *to, std::size_t size) { return pread(file, to, size, at); }) {}
    /// False beyond the end of the file.
    [[nodiscard]] bool Read(std::uint64_t at, void *to, std::size_t size) {
        if (at >= kFarthest || size > m_bytes.size())
            return false;
        if (at < m_begin || at + size > m_begin + m_length) {
            std::int64_t const length = m_readPiece(static_cast<std::int64_t>(at), m_bytes.data(), m_bytes.size());
            m_begin = at;
            m_length = length < 0 ? 0 : static_cast<std::size_t>(length);
            if (size > m_length)
                return false;
        }
        std::memcpy(to, m_bytes.data() + (at - m_begin), size);
        return true;
    }

private:
    static constexpr std::uint64_t kFarthest = std::uint64_t{1} << 62U;
    ReadPiece m_readPiece;
    std::uint64_t m_begin = 0;
    std::size_t m_length = 0;
    std::array<unsigned char, 1024> m_bytes{};
};

constexpr std::size_t kHeadSize = 16;
using Head = std::array<char, kHeadSize>;

bool HasMagic(Head const &head, Format const &format) {
    std::string_view const bytes(head.data(), head.size());
    return std::any_of(std::begin(kMagics), std::end(kMagics),
                       [&](Magic const &magic) { return magic.format == format.id && bytes.starts_with(magic.bytes); });
}

/// A plain file, or a folder that is a data set, as it is now.
struct Subject {
    struct Key {
        dev_t device = 0;
        ino_t inode = 0;
        DString address{}; ///< of a file on a server; it has no numbers
        friend bool operator==(Key const &, Key const &) = default;
    };
    struct State {
        off_t size = 0;
        std::int64_t modified = 0; ///< nanoseconds
        std::int64_t changed = 0;  ///< nanoseconds
        friend bool operator==(State const &, State const &) = default;
    };
    Key key;
    State state;
    std::optional<DataFolder> folder{};
};

/// What is known of files, by their identity. All of it goes when it is full: an answer is cheap to find anew.
class Answers {
public:
    [[nodiscard]] std::optional<bool> Find(Subject const &subject, std::string_view kind) {
        std::lock_guard const lock(m_mutex);
        if (Known const *const known = FindKnown(subject))
            for (auto const &[what, answer] : known->answers)
                if (what == kind)
                    return answer;
        return std::nullopt;
    }
    /// `kind` lives as long as the process.
    void Keep(Subject const &subject, std::string_view kind, bool answer) {
        std::lock_guard const lock(m_mutex);
        ++m_count;
        Place(subject).answers.emplace_back(kind, answer);
    }
    /// The first bytes of the file, if they have been read.
    [[nodiscard]] std::optional<Head> FindHead(Subject const &subject) {
        std::lock_guard const lock(m_mutex);
        Known const *const known = FindKnown(subject);
        return known == nullptr ? std::nullopt : known->head;
    }
    void KeepHead(Subject const &subject, Head const &head) {
        std::lock_guard const lock(m_mutex);
        Place(subject).head = head;
    }
    static Answers &Instance() {
        static auto &answers = *new Answers;
        return answers;
    }

private:
    struct Known {
        Subject::State state{};
        std::optional<Head> head{};
        std::vector<std::pair<std::string_view, bool>> answers{};
    };
    static constexpr std::size_t kMost = 400'000; // files and answers, about 20 MB
    struct Hash {
        std::size_t operator()(Subject::Key const &key) const {
            return (key.inode * 0x9E3779B97F4A7C15U) ^ (key.device << 7U) ^ std::hash<DString>()(key.address);
        }
    };
    [[nodiscard]] Known const *FindKnown(Subject const &subject) const {
        auto const at = m_files.find(subject.key);
        return at == m_files.end() || at->second.state != subject.state ? nullptr : &at->second;
    }
    Known &Place(Subject const &subject) {
        if (m_files.size() + m_count >= kMost) {
            m_files.clear();
            m_count = 0;
        }
        Known &known = m_files[subject.key];
        if (known.state != subject.state)
            known = {.state = subject.state};
        return known;
    }

    std::mutex m_mutex;
    std::unordered_map<Subject::Key, Known, Hash> m_files;
    std::size_t m_count = 0; ///< of answers, those to former states too
};

std::int64_t Nanoseconds(timespec const &time) { return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec; }

std::optional<Subject> Look(DString const &path) {
    struct stat info {};
    if (stat(path.c_str(), &info) != 0)
        return std::nullopt;
    Subject subject{.key = {.device = info.st_dev, .inode = info.st_ino},
                    .state = {info.st_size, Nanoseconds(info.st_mtim), Nanoseconds(info.st_ctim)}};
    if (S_ISREG(info.st_mode))
        return subject;
    auto const found = S_ISDIR(info.st_mode) ? LookForDataFolder(path) : std::nullopt;
    if (!found)
        return std::nullopt;
    subject.state.modified = found->modified;
    subject.folder = found->kind;
    return subject;
}

/// Within one request about a file all drivers see it as the first one did.
std::optional<Subject> OnDisk(DString const &path) {
    RequestScope const *const scope = RequestScope::Current();
    if (scope == nullptr || scope->Kind() != RequestKind::Probe)
        return Look(path);
    struct Last {
        RequestScope::Clock::time_point scope;
        DString path;
        std::optional<Subject> found;
    };
    thread_local Last last;
    if (last.scope != scope->Begin() || last.path != path)
        last = {scope->Begin(), path, Look(path)};
    return last.found;
}

/// The drivers are asked about one file after the other: each question to a server would take its time.
std::optional<Subject> OnServer(DString const &address) {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::seconds kHolds{2};
    struct Last {
        DString address;
        Clock::time_point until;
        std::optional<Subject> found;
    };
    thread_local Last last;
    if (last.address == address && Clock::now() < last.until)
        return last.found;
    auto const parsed = platform::ParseSmbAddress(address);
    auto const entry = parsed ? platform::SmbClient::Instance().Stat(*parsed) : std::nullopt;
    std::optional<Subject> found;
    if (entry && entry->kind == platform::ShellKind::File)
        found = Subject{.key = {.address = address},
                        .state = {static_cast<off_t>(entry->times.size), entry->times.modified, 0}};
    last = {address, Clock::now() + kHolds, std::move(found)};
    return last.found;
}

/// What has at least a head.
std::optional<Subject> SubjectAt(DString const &path) {
    std::optional<Subject> subject = platform::IsSmbAddress(path) ? OnServer(path) : OnDisk(path);
    if (subject && !subject->folder && subject->state.size < static_cast<off_t>(kHeadSize))
        subject.reset();
    return subject;
}

template <class Ask>
bool Remembered(Subject const &subject, std::string_view kind, Ask const &ask) {
    if (std::optional<bool> const known = Answers::Instance().Find(subject, kind))
        return *known;
    bool const answer = ask();
    Answers::Instance().Keep(subject, kind, answer);
    return answer;
}

/// Shows the file behind a path or an address to `look`; false if it does not open.
template <class Look>
bool LookInto(DString const &path, Look const &look) {
    if (!platform::IsSmbAddress(path)) {
        FileDescriptor const file(open(path.c_str(), kHowToOpen));
        FileWindow window(file.Get());
        return file.IsOpen() && look(window);
    }
    platform::SmbClient &client = platform::SmbClient::Instance();
    auto const address = platform::ParseSmbAddress(path);
    platform::SmbFile *const file = address ? client.OpenFile(*address) : nullptr;
    if (file == nullptr)
        return false;
    FileWindow window(
        [&](std::int64_t at, void *to, std::size_t size) { return client.ReadFile(*file, at, to, size); });
    bool const answer = look(window);
    client.CloseFile(file);
    return answer;
}

/// Numbers of a TIFF, in its byte order.
class TiffBytes {
public:
    TiffBytes(FileWindow &file, bool swapped) : m_file(file), m_swapped(swapped) {}
    [[nodiscard]] bool Read(std::uint64_t at, unsigned char *to, std::size_t size) const {
        return m_file.Read(at, to, size);
    }
    [[nodiscard]] std::uint64_t Number(unsigned char const *bytes, std::size_t size) const {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < size; ++i)
            value |= std::uint64_t{bytes[m_swapped ? size - 1 - i : i]} << (8 * i);
        return value;
    }
    [[nodiscard]] bool ReadNumber(std::uint64_t at, std::size_t size, std::uint64_t &value) const {
        std::array<unsigned char, 8> bytes{};
        if (!Read(at, bytes.data(), size))
            return false;
        value = Number(bytes.data(), size);
        return true;
    }

private:
    FileWindow &m_file;
    bool m_swapped;
};

constexpr int kMostDirectories = 128;      // followed; pyramids have about ten
constexpr std::uint64_t kTagsLookedAt = 8; // tags are in rising order, and the kind of a page is the lowest
constexpr std::uint64_t kKindTag = 254;
constexpr std::uint64_t kSmallerOrMask = 1U | 4U;

/// Where the parts of a directory lie.
struct TiffLayout {
    std::size_t countSize;
    std::size_t entrySize;
    std::size_t offsetSize;
    std::size_t valueAt; ///< in an entry
};
constexpr TiffLayout kClassic{2, 12, 4, 8};
constexpr TiffLayout kBig{8, 20, 8, 12};

struct TiffDirectory {
    bool page = true;
    std::uint64_t next = 0;
};

bool ReadDirectory(TiffBytes const &bytes, TiffLayout const &layout, std::uint64_t at, TiffDirectory &directory) {
    std::uint64_t count = 0;
    if (!bytes.ReadNumber(at, layout.countSize, count) || count == 0 || count > 65535)
        return false;
    std::array<unsigned char, kTagsLookedAt * kBig.entrySize> entries{};
    std::uint64_t const looked = std::min(count, kTagsLookedAt);
    if (!bytes.Read(at + layout.countSize, entries.data(), looked * layout.entrySize))
        return false;
    for (std::uint64_t i = 0; i < looked; ++i) {
        unsigned char const *const entry = entries.data() + i * layout.entrySize;
        if (bytes.Number(entry, 2) == kKindTag)
            directory.page = (bytes.Number(entry + layout.valueAt, 4) & kSmallerOrMask) == 0;
    }
    if (!bytes.ReadNumber(at + layout.countSize + count * layout.entrySize, layout.offsetSize, directory.next))
        directory.next = 0;
    return true;
}

bool HasSecondPage(FileWindow &file) {
    std::array<unsigned char, kHeadSize> head{};
    if (!file.Read(0, head.data(), head.size()))
        return false;
    TiffBytes const bytes(file, head[0] == 'M');
    bool const big = bytes.Number(head.data() + 2, 2) == 43;
    TiffLayout const &layout = big ? kBig : kClassic;
    std::uint64_t at = big ? bytes.Number(head.data() + 8, 8) : bytes.Number(head.data() + 4, 4);
    std::vector<std::uint64_t> seen;
    int pages = 0;
    for (int i = 0; i < kMostDirectories && at != 0 && std::find(seen.begin(), seen.end(), at) == seen.end(); ++i) {
        TiffDirectory directory;
        if (!ReadDirectory(bytes, layout, at, directory))
            break;
        pages += directory.page ? 1 : 0;
        if (pages > 1)
            return true;
        seen.push_back(at);
        at = directory.next;
    }
    return false;
}

} // namespace

bool HasSecondTiffPage(int file) {
    FileWindow window(file);
    return HasSecondPage(window);
}

bool IsContainerFormat(Format const &format) {
    return std::ranges::find(kFolderFormats, std::string_view(format.id)) != std::end(kFolderFormats) ||
           std::any_of(std::begin(kMagics), std::end(kMagics),
                       [&](Magic const &magic) { return magic.format == format.id; });
}

namespace {

bool HasSeveralMembers(DString const &path, Format const &format) {
    auto const source = Resolve({path, nullptr}, nullptr);
    auto const members = source ? ListMembers(*source, &format) : std::nullopt;
    return members && members->nodes.size() > 1;
}

} // namespace

bool IsFolderOfSeveral(DString const &path) {
    std::optional<Subject> const subject = SubjectAt(path);
    Format const *const format =
        subject && subject->folder ? Formats::Instance().Find(FormatOf(*subject->folder)) : nullptr;
    return format != nullptr && HoldsSeveral(path, *format);
}

bool HoldsSeveral(DString const &path, Format const &format) {
    std::optional<Subject> const subject = SubjectAt(path);
    if (subject && subject->folder)
        return format.id == FormatOf(*subject->folder) &&
               Remembered(*subject, format.id, [&] { return HasSeveralMembers(path, format); });
    return subject && Remembered(*subject, format.id, [&] {
               std::optional<Head> head = Answers::Instance().FindHead(*subject);
               if (head && !HasMagic(*head, format))
                   return false;
               bool hasMagic = false;
               bool const hasSecondPage = LookInto(path, [&](FileWindow &window) {
                   Head bytes{};
                   if (!window.Read(0, bytes.data(), bytes.size()))
                       return false;
                   Answers::Instance().KeepHead(*subject, bytes);
                   hasMagic = HasMagic(bytes, format);
                   return hasMagic && format.id == "GTiff" && HasSecondPage(window);
               });
               if (!hasMagic || format.id == "GTiff")
                   return hasSecondPage;
               return HasSeveralMembers(path, format);
           });
}

bool AskOnce(DString const &path, std::string_view kind, bool (*ask)(DString const &path)) {
    std::optional<Subject> const subject = SubjectAt(path);
    return subject && !subject->folder && Remembered(*subject, kind, [&] { return ask(path); });
}

} // namespace zelvar::gdal
