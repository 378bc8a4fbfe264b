#include "zelvar/base/DFileFind.h"

#include <algorithm>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace zelvar {

namespace {

constexpr int kDeepestFolder = 64; // a recursive search stops there; links are not followed down

struct Entry {
    DString name;
    bool directory = false;
    bool link = false;
};

/// Entries of a directory in byte order of their names; none if it cannot be read.
std::vector<Entry> ReadDirectory(DString const &path) {
    struct Closer {
        void operator()(DIR *directory) const { closedir(directory); }
    };
    std::vector<Entry> entries;
    std::unique_ptr<DIR, Closer> const directory(opendir(path.c_str()));
    if (!directory)
        return entries;
    while (dirent const *found = readdir(directory.get())) { // NOLINT(concurrency-mt-unsafe): a stream of our own
        std::string_view const name(found->d_name);
        if (name == "." || name == "..")
            continue;
        Entry entry{.name = DString(name), .directory = found->d_type == DT_DIR, .link = found->d_type == DT_LNK};
        if (found->d_type == DT_LNK || found->d_type == DT_UNKNOWN) {
            struct stat status {};
            entry.directory =
                fstatat(dirfd(directory.get()), found->d_name, &status, 0) == 0 && S_ISDIR(status.st_mode);
            entry.link = fstatat(dirfd(directory.get()), found->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
                         S_ISLNK(status.st_mode);
        }
        entries.push_back(std::move(entry));
    }
    std::sort(entries.begin(), entries.end(), [](Entry const &a, Entry const &b) { return a.name < b.name; });
    return entries;
}

/// What one search wants, and what it has found.
struct Search {
    char const *masks = nullptr;
    bool files = false;
    bool directories = false;
    bool recursive = false;
    bool hidden = false;
    std::size_t limit = 0;
    DVector<DFile> &found;

    [[nodiscard]] bool IsFull() const { return limit != 0 && found.size() >= limit; }

    void Visit(DString const &directory, int depth) {
        for (Entry const &entry : ReadDirectory(directory)) {
            if (IsFull())
                return;
            if (!hidden && entry.name.starts_with('.'))
                continue;
            DString const path = AppendPath(directory, entry.name);
            bool const wanted = entry.directory ? directories : files;
            bool const entered = recursive && entry.directory && !entry.link && depth < kDeepestFolder;
            if (wanted && PathMatchSpec(entry.name, masks))
                found.emplace_back(path);
            if (entered && !IsFull())
                Visit(path, depth + 1);
        }
    }
};

} // namespace

DFileFind::DFileFind(DString const &directory, char const *masks, bool files, bool directories, bool recursive,
                     bool hidden, int limit) {
    if (directory.empty() || masks == nullptr)
        return;
    Search search{masks, files, directories, recursive, hidden, static_cast<std::size_t>(std::max(limit, 0)), m_files};
    search.Visit(directory, 0);
}

} // namespace zelvar
