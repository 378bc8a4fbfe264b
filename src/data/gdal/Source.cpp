#include "zelvar/data/gdal/Source.h"

#include "zelvar/base/FileDescriptor.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/base/TypedSecrets.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/data/gdal/Causes.h"
#include "zelvar/data/gdal/DataFolders.h"
#include "zelvar/data/gdal/LandsatScene.h"
#include "zelvar/data/gdal/MapService.h"
#include "zelvar/data/gdal/OpenOptions.h"
#include "zelvar/data/gdal/Siblings.h"
#include "zelvar/data/gdal/SmbFiles.h"
#include "zelvar/data/gdal/StoreListing.h"
#include "zelvar/data/gdal/VirtualData.h"

#include <cpl_string.h>
#include <cpl_vsi.h>
#include <gdal.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zelvar::gdal {

namespace {

bool IsIn(std::string_view text, std::string_view part) { return text.find(part) != std::string_view::npos; }

/// The strings as GDAL takes them: pointers ended by null, into `texts`.
std::vector<char const *> Pointers(std::vector<DString> const &texts) {
    std::vector<char const *> pointers;
    pointers.reserve(texts.size() + 1);
    for (DString const &text : texts)
        pointers.push_back(text.c_str());
    pointers.push_back(nullptr);
    return pointers;
}

/// True for what an address tells us and not its server: what any of the formats calls an option. The names are
/// compared as they are told, so that few of those that servers use are among them.
bool IsAnyFormatsOption(std::string_view name) {
    std::vector<Format> const &formats = Formats::Instance().All();
    DString const key(name);
    return name == "OVERVIEW_LEVEL" || name == kLayerOption || name == kNodeOption || name == kGroupOption ||
           name == kRasterOption || name == kDriverOption ||
           std::any_of(formats.begin(), formats.end(),
                       [&](Format const &format) { return !format.isService && format.openOptions.contains(key); });
}

/// Takes the address's own query, such as a signature, from a moniker's options: "?..." in the order of the moniker, or
/// nothing.
DString TakeQuery(BDIMoniker const &moniker, std::vector<std::pair<DString, DString>> &options) {
    DString const &text = moniker.GetText();
    if (!StartsWithNoCase(text, "http://") && !StartsWithNoCase(text, "https://"))
        return {};
    DString query;
    options.clear();
    DString const rest = text.substr(moniker.GetSource().size());
    // Options may stand behind a "?" of their own.
    for (std::size_t begin = 1; begin < rest.size();) {
        std::size_t const end = std::min(rest.find_first_of("&?", begin), rest.size());
        DString const piece = rest.substr(begin, end - begin);
        std::size_t const equals = std::min(piece.find('='), piece.size());
        if (IsAnyFormatsOption(std::string_view(piece).substr(0, equals)))
            options.emplace_back(piece.substr(0, equals), piece.substr(std::min(equals + 1, piece.size())));
        else
            query += (query.empty() ? '?' : rest[begin - 1]) + piece;
        begin = end + 1;
    }
    return query;
}

std::optional<Source> Refuse(DError *error, DString reason, DError::Cause cause = DError::Cause::Unknown) {
    if (error != nullptr)
        error->Set(std::move(reason), cause);
    return std::nullopt;
}

/// A database that keeps a log beside itself: opening it, even to read, makes files.
bool KeepsWriteAheadLog(DString const &path) {
    FileDescriptor const file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    std::array<char, 20> head{};
    return file.IsOpen() && pread(file.Get(), head.data(), head.size(), 0) == static_cast<ssize_t>(head.size()) &&
           std::string_view(head.data(), 15) == "SQLite format 3" && (head[18] == 2 || head[19] == 2);
}

/// The formats to try for this very file.
std::vector<char const *> AllowedFor(Source const &source, Format const *only) {
    std::vector<char const *> names = Formats::Instance().AllowedNames(only);
    auto const drop = [&](std::string_view id) {
        std::erase_if(names, [&](char const *name) { return name != nullptr && id == name; });
    };
    // This format's library takes such names apart: what stands in parentheses would be written.
    if (source.name.find_first_of("([|") != DString::npos)
        drop("FITS");
    if (!source.diskPath.empty() && KeepsWriteAheadLog(source.diskPath)) {
        drop("SQLite");
        drop("MBTiles");
    }
    // What a server's file refers to is not looked at before GDAL gets there.
    if (source.reach == Reach::Network) {
        drop("VRT");
        drop("OGR_VRT");
    }
    if (source.folder)
        std::erase_if(names, [id = std::string_view(FormatOf(*source.folder))](char const *name) {
            return name != nullptr && name != id;
        });
    return names;
}

/// The picture of a scene whose bands are files of their own.
OpenedSource OpenScene(Source const &source, Format const *format, DError *error) {
    OpenedSource opened;
    LandsatScene const scene = ReadLandsatScene(source.name);
    if (format == nullptr || scene.picture.empty()) {
        std::ignore =
            Refuse(error, "\"" + source.text + "\" holds no bands that can be read", DError::Cause::NotSupported);
        return opened;
    }
    char const *const chosen[] = {format->id.c_str(), nullptr};
    opened.dataset =
        Own(GDALOpenEx(scene.picture.c_str(), GDAL_OF_RASTER | GDAL_OF_READONLY, chosen, nullptr, nullptr));
    opened.format = format;
    return opened;
}

bool HoldsAny(DatasetPtr const &dataset) {
    return dataset != nullptr && GDALGetRasterCount(Raw(dataset)) + GDALDatasetGetLayerCount(Raw(dataset)) > 0;
}

/// Names of the files beside a local file; nothing if one of them is a trap. Empty where GDAL is to look for none.
std::optional<std::vector<DString>> SiblingsFor(Source const &source) {
    if (source.reach == Reach::Network || source.folder || source.name != source.diskPath)
        return std::vector<DString>();
    return SiblingsOf(source.diskPath);
}

} // namespace

DString EscapedUrl(std::string_view url) {
    DString out;
    for (char const c : url) {
        auto const byte = static_cast<unsigned char>(c);
        if (byte <= 0x20 || byte >= 0x7F)
            out += PercentEncoded(std::string_view(&c, 1));
        else
            out += c;
    }
    return out;
}

DString VirtualNameOf(DString const &url) {
    for (std::string_view const scheme : {"http://", "https://", "ftp://"})
        if (StartsWithNoCase(url, scheme))
            return "/vsicurl/" + EscapedUrl(WithSecrets(url));
    if (IsOfStore(url))
        return StoreNameOf(url);
    if (StartsWithNoCase(url, "smb://"))
        return SmbVirtualName(url);
    return {};
}

std::optional<Source> Resolve(BDIMoniker const &moniker, DError *error) {
    Source source;
    if (auto service = services::ParseServiceAddress(moniker.GetText())) {
        source.text = moniker.GetText();
        source.reach = Reach::Network;
        source.layer = service->type;
        source.service = std::move(service);
        return source;
    }
    auto options = moniker.GetOptions();
    source.text = moniker.GetSource() + TakeQuery(moniker, options);
    source.name = source.text;
    for (auto const &[name, value] : options) {
        if (name == kLayerOption)
            source.layer = PercentDecoded(value);
        else if (name == kNodeOption)
            source.name = PercentDecoded(value);
        else if (name == kGroupOption)
            source.group = PercentDecoded(value);
        else if (name != kRasterOption && name != kDriverOption) // that one is the manager's
            source.options.emplace_back(name, value);
    }
    if (source.name.find('\0') != DString::npos)
        return Refuse(error, "a name with a zero byte");
    if (moniker.IsUrl()) {
        source.reach = Reach::Network;
        source.name = zelvar::IsUrl(source.name) ? VirtualNameOf(source.name) : WithSecrets(source.name);
        if (source.name.empty() || IsIn(source.name, "/vsistdin"))
            return Refuse(error, "the address \"" + source.text + "\" is of no known kind",
                          DError::Cause::NotSupported);
        return source;
    }
    source.diskPath = BDIMoniker(source.name, nullptr).FindFile();
    if (StartsWithNoCase(source.name, "file://"))
        source.name = source.diskPath;
    struct stat info {};
    if (UsesForeignFileSystem(source.name))
        return Refuse(error, "\"" + source.text + "\" is not there", DError::Cause::Missing);
    // What is not found may lie in a folder that must not be searched.
    DString const &sought = source.diskPath.empty() ? source.name : source.diskPath;
    int const failure = stat(sought.c_str(), &info) != 0 ? errno : source.diskPath.empty() ? ENOENT : 0;
    if (failure != 0 && CauseOfErrno(failure) != DError::Cause::Missing)
        return Refuse(error, "\"" + source.text + "\": " + std::strerror(failure), CauseOfErrno(failure));
    if (failure != 0)
        return Refuse(error, "\"" + source.text + "\" is not there", DError::Cause::Missing);
    if (S_ISREG(info.st_mode))
        return source;
    auto const folder = S_ISDIR(info.st_mode) ? LookForDataFolder(source.diskPath) : std::nullopt;
    if (!folder)
        return Refuse(error, "\"" + source.text + "\" is no plain file", DError::Cause::NotSupported);
    if (DString reason = ReasonAgainstFolder(source.diskPath, folder->kind); !reason.empty())
        return Refuse(error, std::move(reason), DError::Cause::Refused);
    source.folder = folder->kind;
    if (source.name == source.diskPath)
        source.name = folder->entry;
    return source;
}

namespace {

/// The formats that take the source for theirs, `most` of them.
std::vector<Format const *> IdentifyAmong(Source const &source, unsigned flags, Format const *only, std::size_t most) {
    GdalScope const scope(source.reach);
    std::vector<Format const *> found;
    std::vector<char const *> allowed = AllowedFor(source, only);
    if (source.folder == DataFolder::Landsat) {
        if (allowed.size() > 1 && (flags & GDAL_OF_RASTER) != 0)
            found.push_back(Formats::Instance().Find(allowed.front()));
        return found;
    }
    auto const siblings = SiblingsFor(source);
    if (!siblings)
        return found;
    std::vector<char const *> const siblingNames = Pointers(*siblings);
    while (allowed.size() > 1 && found.size() < most) {
        GDALDriverH driver = GDALIdentifyDriverEx(source.name.c_str(), flags, allowed.data(),
                                                  siblings->empty() ? nullptr : siblingNames.data());
        if (driver == nullptr)
            break;
        char const *const id = GDALGetDriverShortName(driver);
        if (Format const *const format = Formats::Instance().Find(id); format != nullptr)
            found.push_back(format);
        std::erase_if(allowed, [&](char const *name) { return name != nullptr && EqualNoCase(name, id); });
    }
    return found;
}

} // namespace

Format const *Identify(Source const &source, unsigned flags, Format const *only) {
    if (source.service)
        return FormatOfService(*source.service, flags);
    std::vector<Format const *> const found = IdentifyAmong(source, flags, only, 1);
    return found.empty() ? nullptr : found.front();
}

std::vector<Format const *> IdentifyAll(Source const &source, unsigned flags) {
    constexpr std::size_t kMost = 8;
    if (Format const *const ofService = source.service ? FormatOfService(*source.service, flags) : nullptr)
        return {ofService};
    return IdentifyAmong(source, flags, nullptr, kMost);
}

OpenedSource Open(Source const &source, unsigned flags, Format const *only, DError *error) {
    if (source.service)
        return OpenInService(source, flags, only, error);
    GdalScope const scope(source.reach);
    std::vector<char const *> allowed = AllowedFor(source, only);
    if (source.folder == DataFolder::Landsat)
        return OpenScene(source, Identify(source, flags, only), error);
    OpenedSource opened;
    if (DError refused = AskServer(source); refused.IsSet()) {
        if (error != nullptr)
            *error = std::move(refused);
        return opened;
    }
    auto const siblings = SiblingsFor(source);
    OpenAttempt attempt;
    if (!siblings) {
        std::ignore = Refuse(error, "a side file of \"" + source.text + "\" is no plain file", DError::Cause::Refused);
        return opened;
    }
    std::vector<char const *> const siblingNames = Pointers(*siblings);
    char const *const *const siblingList = siblings->empty() ? nullptr : siblingNames.data();
    // Each format has options of its own, so the one that will read is found first. Its first bytes may promise more
    // than the rest holds: then the next one is tried.
    while (!opened && allowed.size() > 1) {
        GDALDriverH driver = GDALIdentifyDriverEx(source.name.c_str(), flags, allowed.data(), siblingList);
        if (driver == nullptr)
            break;
        char const *id = GDALGetDriverShortName(driver);
        Format const *format = Formats::Instance().Find(id);
        attempt.known = attempt.known == nullptr ? format : attempt.known;
        if (format != nullptr) {
            if (format->id == "netCDF" || format->id.starts_with("HDF5") || format->id == "BAG")
                SilenceHdf5();
            if (DString reason = IsVirtual(*format) ? ReasonAgainstVirtual(source.name) : DString(); !reason.empty()) {
                std::ignore = Refuse(error, std::move(reason), DError::Cause::Refused);
                return opened;
            }
            DString fault;
            std::vector<DString> const options = OpenOptionsFor(source, *format, fault);
            if (!fault.empty()) {
                std::ignore = Refuse(error, std::move(fault), DError::Cause::Refused);
                return opened;
            }
            char const *const chosen[] = {format->id.c_str(), nullptr};
            opened.dataset = Own(GDALOpenEx(source.name.c_str(), flags | GDAL_OF_READONLY | GDAL_OF_VERBOSE_ERROR,
                                            chosen, Pointers(options).data(), siblingList));
            opened.format = format;
        }
        std::erase_if(allowed, [&](char const *name) { return name != nullptr && EqualNoCase(name, id); });
    }
    if (!opened && error != nullptr) {
        constexpr unsigned allKinds = GDAL_OF_RASTER | GDAL_OF_VECTOR;
        bool const isKnown = attempt.known != nullptr;
        attempt.isOther = isKnown && source.reach == Reach::Local && !HasSaidWhy(scope) &&
                          HoldsAny(Open(source, allKinds & ~flags, only, nullptr).dataset);
        attempt.wouldWrite = !isKnown && !source.diskPath.empty() && KeepsWriteAheadLog(source.diskPath);
        *error = WhyNotOpened(source, attempt, scope);
    }
    return opened;
}

} // namespace zelvar::gdal
