#include "zelvar/data/gdal/Passwords.h"

#include "zelvar/base/FileDescriptor.h"

#include <cpl_vsi.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zelvar::gdal {

namespace {

using Bytes = std::vector<char>;

/// What there is of so many bytes from a place on.
Bytes BytesAt(int file, std::uint64_t offset, std::size_t size) {
    Bytes bytes(size);
    ssize_t const count = pread(file, bytes.data(), size, static_cast<off_t>(offset));
    bytes.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
    return bytes;
}

/// A number in a file, its least byte first; 0 behind the end.
std::uint32_t NumberAt(Bytes const &bytes, std::size_t at, std::size_t size) {
    std::uint32_t number = 0;
    for (std::size_t i = size; at + size <= bytes.size() && i-- > 0;)
        number = number << 8U | static_cast<unsigned char>(bytes[at + i]);
    return number;
}

/// The directory at the end of an archive; empty for none.
Bytes DirectoryOf(int file, std::uint64_t size) {
    constexpr std::size_t kTail = 22;
    constexpr std::size_t kLongestComment = 65535;
    constexpr std::size_t kMostBytes = std::size_t{64} << 20U;
    std::size_t const length = static_cast<std::size_t>(std::min<std::uint64_t>(size, kTail + kLongestComment));
    Bytes const end = BytesAt(file, size - length, length);
    std::size_t const at = std::string_view(end.data(), end.size()).rfind("PK\x05\x06");
    if (at == std::string_view::npos || at + kTail > end.size())
        return {};
    return BytesAt(file, NumberAt(end, at + 16, 4), std::min<std::size_t>(NumberAt(end, at + 12, 4), kMostBytes));
}

/// Whether the member is encrypted, or all of them where none is named.
bool IsLocked(Bytes const &directory, std::string_view member) {
    constexpr std::size_t kHead = 46;
    bool areLocked = false;
    for (std::size_t at = 0; at + kHead <= directory.size() && std::memcmp(&directory[at], "PK\x01\x02", 4) == 0;) {
        std::size_t const nameSize = NumberAt(directory, at + 28, 2);
        if (at + kHead + nameSize > directory.size())
            return false;
        std::string_view const name(&directory[at + kHead], nameSize);
        bool const isLocked = (NumberAt(directory, at + 8, 2) & 1U) != 0;
        if (name == member || (member.empty() && !isLocked && !name.ends_with('/')))
            return isLocked;
        areLocked = areLocked || (isLocked && member.empty());
        at += kHead + nameSize + NumberAt(directory, at + 30, 2) + NumberAt(directory, at + 32, 2);
    }
    return areLocked;
}

/// What stands behind the archive in GDAL's name of a member, with or without braces around the archive.
std::string_view MemberIn(Source const &source) {
    std::size_t const at = source.name.find(source.diskPath);
    std::string_view rest =
        at == DString::npos ? std::string_view() : std::string_view(source.name).substr(at + source.diskPath.size());
    while (!rest.empty() && (rest.front() == '}' || rest.front() == '/'))
        rest.remove_prefix(1);
    return rest;
}

/// Whether the manifest of an office document, which is an archive, tells of encrypted parts.
bool HasLockedParts(DString const &archive) {
    constexpr std::size_t kMostBytes = std::size_t{1} << 20U;
    std::unique_ptr<VSILFILE, int (*)(VSILFILE *)> const manifest(
        VSIFOpenL(("/vsizip/{" + archive + "}/META-INF/manifest.xml").c_str(), "rb"), &VSIFCloseL);
    if (manifest == nullptr)
        return false;
    Bytes text(kMostBytes);
    text.resize(VSIFReadL(text.data(), 1, text.size(), manifest.get()));
    return std::string_view(text.data(), text.size()).find("<manifest:encryption-data") != std::string_view::npos;
}

} // namespace

bool NeedsPassword(Source const &source) {
    FileDescriptor const file(open(source.diskPath.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat info {};
    if (source.diskPath.empty() || !file.IsOpen() || fstat(file.Get(), &info) != 0 || !S_ISREG(info.st_mode))
        return false;
    Bytes const head = BytesAt(file.Get(), 0, std::size_t{64} << 10U);
    std::string_view const begin(head.data(), head.size());
    if (begin.starts_with("PK\x03\x04"))
        return IsLocked(DirectoryOf(file.Get(), static_cast<std::uint64_t>(info.st_size)), MemberIn(source)) ||
               HasLockedParts(source.diskPath);
    // A document that is encrypted as a whole lies in one stream of an older kind of container.
    constexpr std::string_view kStream("E\0n\0c\0r\0y\0p\0t\0e\0d\0P\0a\0c\0k\0a\0g\0e", 31);
    if (!begin.starts_with("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"))
        return false;
    std::uint64_t const directory = (std::uint64_t{NumberAt(head, 48, 4)} + 1)
                                    << std::clamp<unsigned>(NumberAt(head, 30, 2), 9, 12);
    Bytes const entries = BytesAt(file.Get(), directory, std::size_t{4096});
    return std::string_view(entries.data(), entries.size()).find(kStream) != std::string_view::npos;
}

} // namespace zelvar::gdal
