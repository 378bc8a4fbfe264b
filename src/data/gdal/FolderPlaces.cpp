#include "zelvar/data/gdal/FolderPlaces.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/data/gdal/Causes.h"
#include "zelvar/data/gdal/ContainerProbe.h"
#include "zelvar/data/gdal/StoreListing.h"
#include "zelvar/data/gdal/WebListing.h"
#include "zelvar/data/gdal/ZipTree.h"
#include "zelvar/platform/os/SmbClient.h"

#include <cpl_string.h>
#include <cpl_vsi.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zelvar::gdal {

namespace {

DError OfErrno(DString const &folder, int number) {
    DError error;
    error.Set("\"" + folder + "\": " + std::strerror(number), CauseOfErrno(number));
    return error;
}

class Disk : public FolderPlace {
public:
    [[nodiscard]] DError List(DString const &folder, std::vector<FolderEntry> &entries) const override {
        std::unique_ptr<DIR, int (*)(DIR *)> const directory(opendir(folder.c_str()), &closedir);
        if (directory == nullptr)
            return OfErrno(folder, errno);
        while (dirent const *entry = readdir(directory.get())) {
            if (entry->d_name[0] == '.')
                continue;
            unsigned char type = entry->d_type;
            struct stat info {};
            if ((type == DT_LNK || type == DT_UNKNOWN) && fstatat(dirfd(directory.get()), entry->d_name, &info, 0) == 0)
                type = static_cast<unsigned char>(IFTODT(info.st_mode));
            if (type == DT_DIR || type == DT_REG)
                entries.push_back({entry->d_name, type == DT_DIR});
        }
        return {};
    }
    [[nodiscard]] std::optional<bool> CanList(DString const &folder) const override {
        return access(folder.c_str(), R_OK | X_OK) == 0;
    }
    [[nodiscard]] DString PathOf(DString const &folder, FolderEntry const &entry) const override {
        return AppendPath(folder, entry.name);
    }
    /// Several pages make a picture a container. Other containers are told by their names alone.
    [[nodiscard]] std::uint32_t TypeOf(DString const &path, FolderEntry const &entry) const override {
        std::uint32_t const type = FolderPlace::TypeOf(path, entry);
        if (type != BDINode_Raster)
            return type;
        static Format const *const tiff = Formats::Instance().Find("GTiff");
        std::string_view const extension = ExtensionOf(entry.name);
        bool const mayHavePages = tiff != nullptr && PathMatchSpec(entry.name, tiff->extensions);
        return mayHavePages && !extension.empty() && HoldsSeveral(path, *tiff) ? type | BDINode_Container : type;
    }
};

/// GDAL does not tell folders of an FTP server's listing from files, and to ask for each would cost a request: a name
/// without an extension, or with a number for one, is a folder.
bool LooksLikeFolder(std::string_view name) {
    std::string_view const extension = ExtensionOf(name);
    return std::all_of(extension.begin(), extension.end(), [](char c) { return c >= '0' && c <= '9'; });
}

DError ListFtpFolder(DString const &folder, DString const &name, std::vector<FolderEntry> &entries,
                     GdalScope const &scope) {
    VSICurlPartialClearCache(name.c_str()); // else what failed once fails for good
    std::unique_ptr<char *, void (*)(char **)> const names(VSIReadDir(name.c_str()), &CSLDestroy);
    if (names == nullptr)
        return ErrorOfServer(folder, scope.Errors().empty() ? DString() : scope.Errors().front().text);
    for (int i = 0; i < CSLCount(names.get()); ++i) {
        DString entry = PercentDecoded(names.get()[i]);
        bool isFolder = entry.ends_with('/');
        if (isFolder)
            entry.pop_back();
        if (entry.empty() || entry.front() == '.' || entry.find('/') != DString::npos)
            continue;
        isFolder = isFolder || LooksLikeFolder(entry);
        entries.push_back({std::move(entry), isFolder});
    }
    return {};
}

bool StartsWithAny(DString const &url, std::initializer_list<std::string_view> starts) {
    return std::any_of(starts.begin(), starts.end(),
                       [&](std::string_view start) { return StartsWithNoCase(url, start); });
}

class Web : public FolderPlace {
public:
    [[nodiscard]] DError List(DString const &folder, std::vector<FolderEntry> &entries) const override {
        GdalScope const scope(Reach::Network);
        if (StartsWithAny(folder, {"http://", "https://"}))
            return ListWebFolder(folder, entries);
        if (!IsOfStore(folder))
            return ListFtpFolder(folder, VirtualNameOf(folder), entries, scope);
        auto const listing = ListStore(folder, {});
        DError error;
        while (!listing->IsAtEnd() && !error.IsSet())
            error = listing->Next(entries);
        return error;
    }
    [[nodiscard]] std::unique_ptr<FolderListing> Begin(DString const &folder, DString const &mask) const override {
        return IsOfStore(folder) ? ListStore(folder, PrefixOf(mask)) : nullptr;
    }
    [[nodiscard]] DString ListingKey(DString const &mask) const override { return PrefixOf(mask); }
    [[nodiscard]] DString PathOf(DString const &folder, FolderEntry const &entry) const override {
        return IsOfStore(folder) ? ObjectIn(folder, entry.name) : folder + "/" + PercentEncoded(entry.name);
    }
};

class Smb : public FolderPlace {
public:
    [[nodiscard]] DError List(DString const &folder, std::vector<FolderEntry> &entries) const override {
        auto const address = platform::ParseSmbAddress(folder);
        if (!address)
            return OfErrno(folder, ENOENT);
        std::error_code const error = platform::SmbClient::Instance().List(*address, [&](platform::SmbEntry &&entry) {
            entries.push_back({std::move(entry.name), entry.kind != platform::ShellKind::File});
            return true;
        });
        return error ? OfErrno(folder, error.value()) : DError();
    }
    [[nodiscard]] DString PathOf(DString const &folder, FolderEntry const &entry) const override {
        return folder + "/" + platform::EscapedSmbPart(entry.name);
    }
};

/// Whether an address may be that of a folder: no format's files are called so.
bool MayBeFolder(DString const &url) {
    return url.ends_with('/') || ExtensionOf(url).empty() ||
           Formats::Instance().TypeOf(PercentDecoded(FileNameOf(url))) == 0;
}

} // namespace

FolderPlace const &DiskPlace() {
    static auto const &place = *new Disk;
    return place;
}

FolderPlace const &WebPlace() {
    static auto const &place = *new Web;
    return place;
}

FolderPlace const &SmbPlace() {
    static auto const &place = *new Smb;
    return place;
}

DString RootOf(FolderKind kind, DString const &url) {
    switch (kind) {
    case FolderKind::Smb:
        return StartsWithNoCase(url, "smb://") ? url : DString();
    case FolderKind::Web: {
        bool const listable = StartsWithAny(url, {"http://", "https://", "ftp://", "s3://", "gs://", "az://"});
        return listable && MayBeFolder(url) && url.find('?') == DString::npos ? url : DString();
    }
    case FolderKind::Directory:
        break;
    }
    DString const path = IsUrl(url) && StartsWithNoCase(url, "file://") ? BDIMoniker(url, nullptr).FindFile() : url;
    struct stat info {};
    return !path.empty() && stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode) ? path : DString();
}

} // namespace zelvar::gdal
