#include "zelvar/base/AtomicFile.h"

#include "zelvar/base/DFile.h"

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

constexpr std::size_t kBuffer = std::size_t{256} << 10U;

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

AtomicFile::AtomicFile(DString const &target) {
    if (target.empty())
        return;
    m_target = WriteTarget(DFile(target).GetAbsolutePath());
    struct stat former {};
    // Renaming over a file that may not be written would get round its protection.
    if (stat(m_target.c_str(), &former) == 0 && (!S_ISREG(former.st_mode) || access(m_target.c_str(), W_OK) != 0))
        return;
    DString temporary;
    int const file = CreateTemporary(ParentPathOf(m_target), temporary);
    if (file < 0)
        return;
    m_file.emplace(file);
    m_temporary = std::move(temporary);
    m_good = true;
}

AtomicFile::~AtomicFile() {
    if (!m_temporary.empty() && m_process == getpid())
        unlink(m_temporary.c_str());
}

void AtomicFile::Write(std::string_view bytes) {
    if (!IsGood())
        return;
    if (m_buffer.size() + bytes.size() > kBuffer)
        WriteBuffer();
    if (bytes.size() > kBuffer)
        m_good = m_good && WriteAll(m_file->Get(), bytes);
    else
        m_buffer.append(bytes);
}

void AtomicFile::WriteBuffer() {
    m_good = m_good && WriteAll(m_file->Get(), m_buffer);
    m_buffer.clear();
}

bool AtomicFile::TakeFormerRights() {
    struct stat former {};
    if (stat(m_target.c_str(), &former) != 0)
        return true;
    // Another owner's file stays his where the system allows it; the mode comes last, since a change of owner clears
    // parts of it.
    [[maybe_unused]] int const owned = fchown(m_file->Get(), former.st_uid, former.st_gid);
    return fchmod(m_file->Get(), former.st_mode & 07777U) == 0;
}

bool AtomicFile::Flush() {
    if (!m_file || !IsGood())
        return m_good = IsGood();
    WriteBuffer();
    m_good = m_good && TakeFormerRights();
    m_good = m_good && fsync(m_file->Get()) == 0;
    m_good = m_file->Close() && m_good;
    m_file.reset();
    return m_good;
}

bool AtomicFile::Commit() {
    if (m_temporary.empty() || !Flush() || std::rename(m_temporary.c_str(), m_target.c_str()) != 0)
        return m_good = false;
    m_temporary.clear();
    // The new content is in place whatever this says; some file systems cannot flush a directory.
    std::ignore = FlushDirectory(DString(ParentPathOf(m_target)));
    return true;
}

} // namespace zelvar
