#include "zelvar/data/DataFolderLook.h"

#include "zelvar/base/PathStyle.h"

#include <algorithm>

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

/// Takes `folder`, a descriptor.
FolderContent ReadContent(int folder) {
    FolderContent content;
    for (char const *name : kTelling)
        if (faccessat(folder, name, F_OK, AT_SYMLINK_NOFOLLOW) == 0)
            content.files.emplace_back(name);
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
        else if (std::find(content.files.begin(), content.files.end(), name) == content.files.end())
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
    FolderContent const content = ReadContent(folder);
    std::optional<DataFolder> const kind = TellDataFolder(FileNameOf(path), content);
    if (!kind)
        return std::nullopt;
    DString const entry = EntryOf(*kind, content);
    return FoundDataFolder{*kind, entry.empty() ? path : AppendPath(path, entry)};
}

} // namespace zelvar
