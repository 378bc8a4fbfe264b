#include "zelvar/filedlg/PathQuestions.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/data/PlaceCheck.h"

#include <array>
#include <cstdio>
#include <optional>

#include <dirent.h>
#include <fcntl.h>
#include <mntent.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zelvar {

namespace {

std::optional<struct stat> StatusOf(DString const &path) {
    struct stat status {};
    if (!DoesPlaceAnswer(path) || stat(path.c_str(), &status) != 0)
        return std::nullopt;
    return status;
}

} // namespace

bool IsThere(DString const &path) { return StatusOf(path).has_value(); }

bool IsFolder(DString const &path) {
    auto const status = StatusOf(path);
    return status && S_ISDIR(status->st_mode);
}

bool HoldsDeadPlace(DString const &folder) {
    FILE *const table = setmntent("/proc/self/mounts", "re");
    if (table == nullptr)
        return false;
    bool holds = false;
    mntent entry{};
    std::array<char, 8192> texts{};
    while (!holds && getmntent_r(table, &entry, texts.data(), static_cast<int>(texts.size())) != nullptr)
        holds = ParentPathOf(entry.mnt_dir) == folder && !DoesPlaceAnswer(entry.mnt_dir);
    endmntent(table);
    return holds;
}

bool HoldsMatch(DString const &folder, std::string_view masks) {
    if (!DoesPlaceAnswer(folder))
        return false;
    DIR *const directory = opendir(folder.c_str());
    if (directory == nullptr)
        return false;
    bool holds = false;
    for (dirent const *entry = nullptr; !holds && (entry = readdir(directory)) != nullptr;) {
        std::string_view const name(entry->d_name);
        holds = name != "." && name != ".." && PathMatchSpec(name, masks);
    }
    closedir(directory);
    return holds;
}

bool IsWritable(DString const &path) {
    return DoesPlaceAnswer(path) && faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}

std::int64_t ChangeTime(DString const &path) {
    constexpr std::int64_t nanoseconds = 1'000'000'000;
    auto const status = StatusOf(path);
    return status ? status->st_mtim.tv_sec * nanoseconds + status->st_mtim.tv_nsec : 0;
}

} // namespace zelvar
