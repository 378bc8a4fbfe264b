#include "zelvar/base/DFile.h"

#include "zelvar/base/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <tuple>

#include <fcntl.h>
#include <sys/stat.h>

namespace zelvar {

namespace {

/// Without empty elements, "." and "..", lexically: links are not looked at.
DString Normalized(std::string_view absolute) {
    std::vector<std::string_view> kept;
    for (std::size_t start = 0; start < absolute.size();) {
        std::size_t const end = std::min(absolute.find('/', start), absolute.size());
        std::string_view const element = absolute.substr(start, end - start);
        if (element == ".." && !kept.empty())
            kept.pop_back();
        else if (!element.empty() && element != "." && element != "..")
            kept.push_back(element);
        start = end + 1;
    }
    DString path;
    for (std::string_view const element : kept)
        path.append("/").append(element);
    return path.empty() ? "/" : path;
}

bool WriteAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        ssize_t const written = write(file, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

/// The file that a link leads to, so that the link stays one; the path itself when nothing is there yet.
DString WriteTarget(DString const &path) {
    std::array<char, 4096> resolved{}; // PATH_MAX
    return realpath(path.c_str(), resolved.data()) == nullptr ? path : DString(resolved.data());
}

/// A new file in `directory` under a name that nothing has; its path goes to `path`.
int CreateTemporary(std::string_view directory, DString &path) {
    static thread_local std::mt19937_64 random{std::random_device{}()};
    constexpr int attempts = 100;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        path = AppendPath(directory, Format(".zelvar-%016llx.tmp", static_cast<unsigned long long>(random())));
        int const file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (file >= 0 || errno != EEXIST)
            return file;
    }
    return -1;
}

bool FlushDirectory(DString const &directory) {
    FileDescriptor const opened(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return opened.IsOpen() && fsync(opened.Get()) == 0;
}

} // namespace

bool DFile::Exist() const {
    struct stat status {};
    return !m_path.empty() && stat(m_path.c_str(), &status) == 0;
}

bool DFile::IsDirectory() const {
    struct stat status {};
    return !m_path.empty() && stat(m_path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

void DFile::ChngDir(DString const &folder) { m_path = AppendPath(folder, GetName()); }

DString DFile::GetAbsolutePath() const {
    if (m_path.empty() || IsUrl(m_path))
        return m_path;
    if (m_path.front() == '/')
        return Normalized(m_path);
    std::array<char, 4096> current{};
    if (getcwd(current.data(), current.size()) == nullptr)
        return m_path;
    return Normalized(AppendPath(current.data(), m_path));
}

bool DFile::ReadAll(DString &bytes, std::size_t limit) const {
    bytes.clear();
    // Without waiting: a pipe of that name must not block the caller.
    FileDescriptor const file(open(m_path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (!file.IsOpen() || fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        static_cast<std::size_t>(status.st_size) > limit)
        return false;
    // Files of the kernel claim no size, and a file may grow while it is read.
    constexpr std::size_t step = std::size_t{64} << 10U;
    DString content(static_cast<std::size_t>(status.st_size) + 1, '\0');
    std::size_t filled = 0;
    for (;;) {
        ssize_t const count = read(file.Get(), content.data() + filled, content.size() - filled);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return false;
        if (count == 0)
            break;
        filled += static_cast<std::size_t>(count);
        if (filled > limit)
            return false;
        if (filled == content.size())
            content.resize(content.size() + step);
    }
    content.resize(filled);
    bytes = std::move(content);
    return true;
}

bool DFile::WriteAtomically(std::string_view bytes) const {
    if (m_path.empty())
        return false;
    DString const target = WriteTarget(DFile(m_path).GetAbsolutePath());
    struct stat former {};
    bool const exists = stat(target.c_str(), &former) == 0;
    // Renaming over a file that may not be written would get round its protection.
    if (exists && (!S_ISREG(former.st_mode) || access(target.c_str(), W_OK) != 0))
        return false;

    DString const directory(ParentPathOf(target));
    DString temporary;
    FileDescriptor file(CreateTemporary(directory, temporary));
    if (!file.IsOpen())
        return false;
    bool written = WriteAll(file.Get(), bytes);
    if (written && exists) {
        // Another owner's file stays his where the system allows it; the mode comes last, since a change of owner
        // clears parts of it.
        [[maybe_unused]] int const owned = fchown(file.Get(), former.st_uid, former.st_gid);
        written = fchmod(file.Get(), former.st_mode & 07777U) == 0;
    }
    written = written && fsync(file.Get()) == 0;
    written = file.Close() && written;
    if (!written || std::rename(temporary.c_str(), target.c_str()) != 0) {
        unlink(temporary.c_str());
        return false;
    }
    // The new content is in place whatever this says; some file systems cannot flush a directory.
    std::ignore = FlushDirectory(directory);
    return true;
}

DString StripExtn(DString const &fileName) {
    std::string_view const extension = ExtensionOf(fileName);
    return extension.empty() ? DString() : DString("*.").append(extension);
}

} // namespace zelvar
