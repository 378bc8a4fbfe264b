#include "zelvar/data/DataFolderLook.h"

#include "zelvar/base/PathStyle.h"

#include <algorithm>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zelvar {

namespace {

/// Names that tell, and that may stand behind thousands of others.
constexpr char const *kTelling[] = {".zgroup",      ".zarray",       ".zmetadata",        "zarr.json", "hdr.adf",
                                    "w001001.adf",  "w001001x.adf",  "arc.adf",           "tic.adf",   "bnd.adf",
                                    "METADATA.DIM", "manifest.safe", "a00000001.gdbtable"};

std::int64_t ModifiedOf(struct stat const &info) {
    return std::int64_t{info.st_mtim.tv_sec} * 1'000'000'000 + info.st_mtim.tv_nsec;
}

/// Takes `folder`, a descriptor.
FolderContent ReadContent(int folder, std::int64_t &modified) {
    FolderContent content;
    struct stat info {};
    if (fstat(folder, &info) == 0)
        modified = ModifiedOf(info);
    DIR *const entries = fdopendir(folder);
    if (entries == nullptr) {
        close(folder);
        return content;
    }
    std::size_t looked = 0;
    while (dirent const *const entry = readdir(entries)) {
        std::string_view const name = entry->d_name;
        if (name == "." || name == "..")
            continue;
        if (++looked > kNamesThatTell) {
            content.isWhole = false;
            break;
        }
        if (entry->d_type == DT_DIR)
            content.hasFolders = true;
        else
            content.files.emplace_back(name);
    }
    for (char const *const name : kTelling) {
        bool const isSeen = std::find(content.files.begin(), content.files.end(), name) != content.files.end();
        // In a folder that was seen whole nobody is asked for what is not there.
        if ((content.isWhole && !isSeen) || fstatat(folder, name, &info, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        modified = std::max(modified, ModifiedOf(info));
        if (!isSeen)
            content.files.emplace_back(name);
    }
    closedir(entries);
    return content;
}

} // namespace

std::optional<FoundDataFolder> LookForDataFolder(DString const &path) {
    int const folder = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0)
        return std::nullopt;
    std::int64_t modified = 0;
    FolderContent const content = ReadContent(folder, modified);
    std::optional<DataFolder> const kind = TellDataFolder(FileNameOf(path), content);
    if (!kind)
        return std::nullopt;
    DString const name = EntryOf(*kind, content);
    DString entry = name.empty() ? path : AppendPath(path, name);
    if (struct stat info{}; !name.empty() && stat(entry.c_str(), &info) == 0)
        modified = std::max(modified, ModifiedOf(info));
    return FoundDataFolder{*kind, std::move(entry), modified};
}

} // namespace zelvar
