#include "zelvar/thumbnails/ThumbnailPruner.h"

#include "zelvar/base/FileDescriptor.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zelvar {

namespace {

constexpr char kStamp[] = ".pruned";
constexpr std::uint64_t kBlock = 512; // bytes, of `st_blocks`

struct Kept {
    std::int64_t used = 0; ///< seconds
    std::uint64_t bytes = 0;
    std::string path;
};

/// Whether it is time, and no other process has just begun.
bool TakeTurn(DString const &folder, std::chrono::hours every) {
    DString const path = folder + "/" + kStamp;
    struct stat state {};
    // time() may lag behind the stamps of files by a tick, which reads as a second.
    std::int64_t const now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::int64_t const pause = std::chrono::duration_cast<std::chrono::seconds>(every).count();
    bool const isKnown = stat(path.c_str(), &state) == 0;
    // One from the future is of a clock that was wrong.
    if (isKnown && state.st_mtim.tv_sec <= now && now - state.st_mtim.tv_sec < pause)
        return false;
    FileDescriptor const file(
        open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, S_IRUSR | S_IWUSR));
    return file.IsOpen() && futimens(file.Get(), nullptr) == 0;
}

} // namespace

std::size_t PruneThumbnails(DString const &folder, ThumbnailBound const &bound, std::function<bool()> const &isOver) {
    if (folder.empty() || !TakeTurn(folder, bound.every))
        return 0;
    std::vector<Kept> kept;
    std::uint64_t total = 0;
    std::error_code error;
    using std::filesystem::directory_options;
    std::filesystem::recursive_directory_iterator at(folder, directory_options::skip_permission_denied, error);
    for (; !error && at != std::filesystem::recursive_directory_iterator() && !isOver(); at.increment(error)) {
        struct stat state {};
        std::string const &path = at->path().native();
        if (lstat(path.c_str(), &state) != 0 || !S_ISREG(state.st_mode) || at->path().filename() == kStamp)
            continue;
        std::uint64_t const bytes = static_cast<std::uint64_t>(state.st_blocks) * kBlock;
        total += bytes;
        kept.push_back({std::max<std::int64_t>(state.st_atim.tv_sec, state.st_mtim.tv_sec), bytes, path});
    }
    if (total <= bound.bytes)
        return 0;
    std::ranges::sort(kept, {}, &Kept::used);
    std::size_t gone = 0;
    for (Kept const &file : kept) {
        if (total <= bound.bytes || isOver())
            break;
        if (unlink(file.path.c_str()) != 0)
            continue;
        total -= file.bytes;
        ++gone;
    }
    return gone;
}

} // namespace zelvar
