#include "zelvar/data/gdal/Siblings.h"

#include "zelvar/base/PathStyle.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <mutex>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zelvar::gdal {

namespace {

constexpr std::size_t kMostEntries = 1000;

/// What usually lies beside an image: behind its whole name, or in place of its extension.
constexpr char const *kBehind[] = {".ovr", ".aux", ".msk", ".hdr", ".HDR", ".OVR"};
constexpr char const *kInstead[] = {".ovr", ".aux", ".msk", ".hdr", ".HDR", ".tfw", ".TFW", ".wld", ".prj", ".PRJ",
                                    ".rrd", ".ige", ".shx", ".SHX", ".dbf", ".DBF", ".cpg", ".clr", ".stx", ".dat",
                                    ".img", ".raw", ".jgw", ".pgw", ".mid", ".MID", ".id",  ".map", ".sbn"};

struct Entry {
    DString name;
    bool trap = false; ///< a pipe, socket or device
};

/// The last folder read. Walking through a folder asks for it again and again.
struct Remembered {
    std::mutex mutex;
    DString folder;
    struct timespec modified {};
    bool large = false;
    std::shared_ptr<std::vector<Entry> const> entries;
};

Remembered &TheRemembered() {
    static auto &remembered = *new Remembered;
    return remembered;
}

bool IsTrap(mode_t mode) { return !S_ISREG(mode) && !S_ISDIR(mode); }

/// Null if the folder holds too many.
std::shared_ptr<std::vector<Entry> const> ReadFolder(DString const &folder) {
    std::unique_ptr<DIR, int (*)(DIR *)> const directory(opendir(folder.c_str()), &closedir);
    auto entries = std::make_shared<std::vector<Entry>>();
    if (directory == nullptr)
        return entries;
    while (dirent const *entry = readdir(directory.get())) {
        if (entries->size() >= kMostEntries)
            return nullptr;
        auto mode = static_cast<mode_t>(DTTOIF(entry->d_type));
        if (entry->d_type == DT_UNKNOWN || entry->d_type == DT_LNK) {
            struct stat info {};
            if (fstatat(dirfd(directory.get()), entry->d_name, &info, 0) != 0)
                continue;
            mode = info.st_mode;
        }
        if (!S_ISDIR(mode))
            entries->push_back({entry->d_name, IsTrap(mode)});
    }
    return entries;
}

/// The folder's entries, or null if there are too many.
std::shared_ptr<std::vector<Entry> const> EntriesOf(DString const &folder) {
    struct stat info {};
    if (stat(folder.c_str(), &info) != 0)
        return std::make_shared<std::vector<Entry>>();
    Remembered &remembered = TheRemembered();
    std::lock_guard const lock(remembered.mutex);
    bool const same = remembered.folder == folder && remembered.modified.tv_sec == info.st_mtim.tv_sec &&
                      remembered.modified.tv_nsec == info.st_mtim.tv_nsec;
    if (!same) {
        remembered.entries = ReadFolder(folder);
        remembered.large = remembered.entries == nullptr;
        remembered.folder = folder;
        remembered.modified = info.st_mtim;
    }
    return remembered.entries;
}

DString StemOf(DString const &name) { return name.substr(0, name.size() - ExtensionOf(name).size()); }

/// True if GDAL may open the entry along with a file of that name.
bool BelongsTo(DString const &entry, DString const &name, DString const &stem) {
    return entry.starts_with(name) || StartsWithNoCase(entry, stem);
}

std::vector<Entry> ProbeNames(DString const &folder, DString const &name) {
    std::vector<Entry> entries;
    DString stem = StemOf(name);
    if (stem.ends_with('.'))
        stem.pop_back();
    auto const probe = [&](DString sibling) {
        struct stat info {};
        if (sibling != name && stat(AppendPath(folder, sibling).c_str(), &info) == 0 && !S_ISDIR(info.st_mode))
            entries.push_back({std::move(sibling), IsTrap(info.st_mode)});
    };
    for (char const *more : kBehind)
        probe(name + more);
    for (char const *more : kInstead)
        probe(stem + more);
    return entries;
}

} // namespace

std::optional<std::vector<DString>> SiblingsOf(DString const &path) {
    DString const folder(path.find('/') == DString::npos ? "." : ParentPathOf(path));
    DString const name(FileNameOf(path));
    auto const all = EntriesOf(folder);
    std::vector<Entry> const probed = all == nullptr ? ProbeNames(folder, name) : std::vector<Entry>();
    DString const stem = StemOf(name);
    std::vector<DString> names{name};
    for (Entry const &entry : all == nullptr ? probed : *all) {
        if (entry.trap && BelongsTo(entry.name, name, stem))
            return std::nullopt;
        if (!entry.trap && entry.name != name)
            names.push_back(entry.name);
    }
    return names;
}

} // namespace zelvar::gdal
