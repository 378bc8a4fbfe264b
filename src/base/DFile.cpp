#include "zelvar/base/DFile.h"

#include "zelvar/base/AtomicFile.h"
#include "zelvar/base/FileDescriptor.h"
#include "zelvar/base/NormalPath.h"

#include <array>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>

namespace zelvar {

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
        return NormalPath(m_path);
    std::array<char, 4096> current{};
    if (getcwd(current.data(), current.size()) == nullptr)
        return m_path;
    return NormalPath(AppendPath(current.data(), m_path));
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
    AtomicFile file(m_path);
    file.Write(bytes);
    return file.Commit();
}

DString StripExtn(DString const &fileName) {
    std::string_view const extension = ExtensionOf(fileName);
    return extension.empty() ? DString() : DString("*.").append(extension);
}

} // namespace zelvar
