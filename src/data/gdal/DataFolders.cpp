#include "zelvar/data/gdal/DataFolders.h"

#include "zelvar/base/FileDescriptor.h"
#include "zelvar/base/PathStyle.h"

#include <algorithm>
#include <memory>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace zelvar::gdal {

namespace {

constexpr std::size_t kMostEntries = 10'000; // looked at
constexpr off_t kLongestMetadata = off_t{64} << 20U;
constexpr int kDeepestMetadata = 32; // brackets in brackets
constexpr int kDeepestName = 64;     // folders in folders

bool IsTrap(mode_t mode) { return !S_ISREG(mode) && !S_ISDIR(mode); }

bool HoldsTrap(DString const &path) {
    std::unique_ptr<DIR, int (*)(DIR *)> const folder(opendir(path.c_str()), &closedir);
    if (folder == nullptr)
        return false;
    std::size_t looked = 0;
    while (dirent const *const entry = readdir(folder.get())) {
        if (++looked > kMostEntries)
            return false;
        struct stat info {};
        bool const isPlain = entry->d_type == DT_REG || entry->d_type == DT_DIR;
        if (!isPlain && fstatat(dirfd(folder.get()), entry->d_name, &info, 0) == 0 && IsTrap(info.st_mode))
            return true;
    }
    return false;
}

/// Whether brackets lie in brackets, or names of arrays in names of groups, deeper than a description has them. What
/// reads them goes down by calling itself.
bool IsTooDeep(std::string_view json) {
    int depth = 0;
    int slashes = 0;
    bool isText = false;
    for (std::size_t i = 0; i < json.size(); ++i) {
        char const c = json[i];
        if (isText && c == '\\')
            ++i;
        else if (c == '"')
            isText = !isText;
        else if (!isText)
            depth += c == '{' || c == '[' ? 1 : c == '}' || c == ']' ? -1 : 0;
        slashes = !isText ? 0 : slashes + (c == '/' ? 1 : 0);
        if (depth > kDeepestMetadata || slashes > kDeepestName)
            return true;
    }
    return false;
}

DString ReasonAgainstMetadata(DString const &path) {
    FileDescriptor const file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat info {};
    if (!file.IsOpen() || fstat(file.Get(), &info) != 0 || !S_ISREG(info.st_mode))
        return {};
    if (info.st_size > kLongestMetadata)
        return "\"" + path + "\" is larger than a description may be";
    DString text(static_cast<std::size_t>(info.st_size), '\0');
    std::size_t done = 0;
    for (ssize_t count = 1; count > 0 && done < text.size();
         done += static_cast<std::size_t>(std::max<ssize_t>(count, 0)))
        count = read(file.Get(), text.data() + done, text.size() - done);
    return IsTooDeep(std::string_view(text).substr(0, done)) ? "\"" + path + "\" goes deeper than a description may"
                                                             : DString();
}

} // namespace

char const *FormatOf(DataFolder kind) {
    switch (kind) {
    case DataFolder::Zarr:
        return "Zarr";
    case DataFolder::EsriGrid:
        return "AIG";
    case DataFolder::Coverage:
        return "AVCBin";
    case DataFolder::Geodatabase:
        return "OpenFileGDB";
    case DataFolder::Sentinel1:
        return "SAFE";
    case DataFolder::Sentinel2:
        return "SENTINEL2";
    case DataFolder::Dimap:
        return "DIMAP";
    case DataFolder::MapInfo:
        return "MapInfo File";
    case DataFolder::Landsat:
        break;
    }
    return "VRT"; // its bands are put together
}

DString ReasonAgainstFolder(DString const &path, DataFolder kind) {
    if (HoldsTrap(path))
        return "a file in \"" + path + "\" is no plain file";
    DString reason;
    for (char const *name : {".zmetadata", ".zgroup", ".zarray", ".zattrs", "zarr.json"})
        if (reason.empty() && kind == DataFolder::Zarr)
            reason = ReasonAgainstMetadata(AppendPath(path, name));
    return reason;
}

} // namespace zelvar::gdal
