#include "zelvar/data/gdal/SmbFiles.h"

#include "zelvar/base/Report.h"
#include "zelvar/platform/os/SmbClient.h"

#include <cpl_vsi.h>

#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <optional>

#include <sys/stat.h>

namespace zelvar::gdal {

namespace {

using platform::SmbClient;

constexpr char const *kPrefix = "/vsismb/";
constexpr std::size_t kReadAhead = std::size_t{256} << 10U;
constexpr std::size_t kCache = std::size_t{16} << 20U;

/// The address of what stands behind the prefix.
std::optional<platform::SmbAddress> AddressOf(char const *name) {
    return platform::ParseSmbAddress("smb://" + DString(name == nullptr ? "" : name));
}

struct OpenFile {
    platform::SmbFile *file = nullptr;
    vsi_l_offset position = 0;
    bool atEnd = false;
};

// GDAL calls these; nothing may be thrown into it.

int StatFile(void *, char const *name, VSIStatBufL *info, int) {
    auto const address = AddressOf(name);
    auto const entry = address ? SmbClient::Instance().Stat(*address) : std::nullopt;
    if (!entry)
        return -1;
    std::memset(info, 0, sizeof *info);
    bool const file = entry->kind == platform::ShellKind::File;
    info->st_mode = file ? S_IFREG : S_IFDIR;
    info->st_size = file ? entry->times.size : 0;
    info->st_mtime = entry->times.modified / 1'000'000'000;
    return 0;
}

void *Open(void *, char const *name, char const *access) {
    auto const address = AddressOf(name);
    if (!address || std::strpbrk(access, "wa+") != nullptr)
        return nullptr;
    platform::SmbFile *const file = SmbClient::Instance().OpenFile(*address);
    return file == nullptr ? nullptr : new OpenFile{.file = file};
}

vsi_l_offset Tell(void *file) { return static_cast<OpenFile *>(file)->position; }

int Seek(void *file, vsi_l_offset offset, int whence) {
    auto &open = *static_cast<OpenFile *>(file);
    open.atEnd = false;
    if (whence == SEEK_SET)
        open.position = offset;
    else if (whence == SEEK_CUR)
        open.position += offset;
    else
        open.position = static_cast<vsi_l_offset>(SmbClient::SizeOf(*open.file)) + offset;
    return 0;
}

std::size_t Read(void *file, void *buffer, std::size_t size, std::size_t count) {
    auto &open = *static_cast<OpenFile *>(file);
    if (size == 0 || count == 0)
        return 0;
    std::int64_t const done =
        SmbClient::Instance().ReadFile(*open.file, static_cast<std::int64_t>(open.position), buffer, size * count);
    if (done < static_cast<std::int64_t>(size * count))
        open.atEnd = true;
    if (done <= 0)
        return 0;
    open.position += static_cast<vsi_l_offset>(done);
    return static_cast<std::size_t>(done) / size;
}

int IsAtEnd(void *file) { return static_cast<OpenFile *>(file)->atEnd ? 1 : 0; }

int Close(void *file) {
    std::unique_ptr<OpenFile> const open(static_cast<OpenFile *>(file));
    SmbClient::Instance().CloseFile(open->file);
    return 0;
}

bool Install() {
    std::unique_ptr<VSIFilesystemPluginCallbacksStruct, void (*)(VSIFilesystemPluginCallbacksStruct *)> const calls(
        VSIAllocFilesystemPluginCallbacksStruct(), &VSIFreeFilesystemPluginCallbacksStruct);
    calls->stat = &StatFile;
    calls->open = &Open;
    calls->tell = &Tell;
    calls->seek = &Seek;
    calls->read = &Read;
    calls->eof = &IsAtEnd;
    calls->close = &Close;
    calls->nBufferSize = kReadAhead;
    calls->nCacheSize = kCache;
    bool const installed = VSIInstallPluginHandler(kPrefix, calls.get()) == 0;
    Report::TraceMessage(Report::kTraceDriver, "the file system %s was installed? %s", kPrefix,
                         installed ? "YES" : "NO");
    return installed;
}

} // namespace

std::error_code SmbErrorOf(DString const &virtualName) {
    auto const address =
        virtualName.starts_with(kPrefix) ? AddressOf(virtualName.c_str() + std::strlen(kPrefix)) : std::nullopt;
    if (!address)
        return {};
    std::error_code const error = SmbClient::Instance().List(*address, [](platform::SmbEntry &&) { return false; });
    return error == std::errc::not_a_directory ? std::error_code() : error;
}

DString SmbVirtualName(DString const &url) {
    static bool const installed = Install();
    auto const address = platform::ParseSmbAddress(url);
    if (!installed || !address || address->parts.empty())
        return {};
    return kPrefix + platform::ToText(*address).substr(std::strlen("smb://"));
}

} // namespace zelvar::gdal
