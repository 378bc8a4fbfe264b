#include "zelvar/data/SeriesPlace.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/PlaceCheck.h"
#include "zelvar/platform/os/ShellNamespace.h"
#include "zelvar/platform/os/SmbAddress.h"

#include <algorithm>
#include <limits>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace zelvar {

namespace {

constexpr std::string_view kFileScheme = "file://";
constexpr std::size_t kEntriesPerLook = 1024; // at the stop

using Stopped = std::function<bool()>;

struct CloseFolder {
    void operator()(DIR *folder) const { closedir(folder); }
};

std::error_code LastError() { return {errno, std::generic_category()}; }

/// What one member adds to a listing.
class Gathering {
public:
    Gathering(SeriesPlace const &place, Stopped const &isStopped) : m_place(place), m_isStopped(isStopped) {}

    [[nodiscard]] std::optional<std::uint64_t> SlotOf(std::string_view name) const {
        auto const values = m_place.name.ValuesOf(name);
        return values ? std::optional(m_place.name.SlotOf(*values)) : std::nullopt;
    }
    void Add(std::uint64_t slot, std::int64_t size, std::int64_t modified) {
        listing.slots.push_back(slot);
        listing.size += size;
        listing.modified = std::max(listing.modified, modified);
    }
    [[nodiscard]] bool IsStopped() {
        if (++m_seen % kEntriesPerLook != 0 || !m_isStopped || !m_isStopped())
            return false;
        listing.error = std::make_error_code(std::errc::operation_canceled);
        return true;
    }

    SeriesListing listing;

private:
    SeriesPlace const &m_place;
    Stopped const &m_isStopped;
    std::size_t m_seen = 0;
};

void ReadFolder(DString const &path, Weigh weigh, Gathering &found) {
    std::unique_ptr<DIR, CloseFolder> const folder(opendir(path.empty() ? "." : path.c_str()));
    if (folder == nullptr) {
        found.listing.error = LastError();
        return;
    }
    for (;;) {
        errno = 0;
        dirent const *const entry = readdir(folder.get());
        if (entry == nullptr) {
            found.listing.error = errno == 0 ? std::error_code() : LastError();
            return;
        }
        if (found.IsStopped())
            return;
        bool const mayBeFile = entry->d_type == DT_REG || entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN;
        auto const slot = mayBeFile ? found.SlotOf(entry->d_name) : std::nullopt;
        if (!slot)
            continue;
        struct stat info {};
        if (weigh == Weigh::No && entry->d_type == DT_REG)
            found.Add(*slot, 0, 0);
        else if (fstatat(dirfd(folder.get()), entry->d_name, &info, 0) == 0 && S_ISREG(info.st_mode))
            found.Add(*slot, info.st_size, info.st_mtim.tv_sec * std::int64_t{1'000'000'000} + info.st_mtim.tv_nsec);
    }
}

void ReadShare(DString const &address, Gathering &found) {
    platform::ShellNamespace const &shell = platform::ShellNamespace::Current();
    platform::ShellId const folder = shell.Parse(address);
    if (folder.IsNull()) {
        found.listing.error = std::make_error_code(std::errc::no_such_file_or_directory);
        return;
    }
    using Wish = platform::ShellNamespace::Wish;
    std::error_code const error = shell.Enumerate(
        folder, platform::ShellNamespace::Purpose::Browse,
        [&](platform::ShellChild const &child) {
            auto const slot = child.kind == platform::ShellKind::File ? found.SlotOf(child.id.Element()) : std::nullopt;
            if (slot)
                found.Add(*slot, std::max<std::int64_t>(child.file.size, 0), child.file.modified);
            return !found.IsStopped();
        },
        [&](std::string_view name) { return found.SlotOf(name) ? Wish::Yes : Wish::No; });
    if (!found.listing.error)
        found.listing.error = error;
}

bool IsPlainFile(DString const &path) {
    struct stat info {};
    return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

DString PathIn(DString const &folder, DString const &name) {
    return AppendPath(folder, platform::IsSmbAddress(folder) ? platform::EscapedSmbPart(name) : name);
}

} // namespace

std::optional<SeriesPlace> SeriesPlace::Of(std::string_view path) {
    if (path.starts_with("/vsi") || (IsUrl(path) && !platform::IsSmbAddress(path)) ||
        path.find('\0') != std::string_view::npos)
        return std::nullopt;
    std::size_t const slash = path.rfind('/');
    DString element(slash == std::string_view::npos ? path : path.substr(slash + 1));
    if (platform::IsSmbAddress(path))
        element = PercentDecoded(element);
    auto name = element.find('[') == DString::npos ? std::nullopt : SeriesName::Parse(element);
    if (!name)
        return std::nullopt;
    DString folder(path.substr(0, slash == std::string_view::npos ? 0 : std::max<std::size_t>(slash, 1)));
    return SeriesPlace{.folder = std::move(folder), .name = *std::move(name)};
}

DString SeriesPlace::Path() const { return PathIn(folder, name.Text()); }

DString SeriesPlace::MemberName(std::uint64_t slot) const { return name.MemberName(name.ValuesAt(slot)); }

DString SeriesPlace::MemberPath(std::uint64_t slot) const { return PathIn(folder, MemberName(slot)); }

std::optional<SeriesPlace> SeriesOf(BDIMoniker const &moniker) {
    if (moniker.GetText().find('[') == DString::npos && moniker.GetText().find("%5") == DString::npos)
        return std::nullopt;
    if (DString const &text = moniker.GetText(); text.starts_with('/') && !DoesPlaceAnswer(text))
        return SeriesPlace::Of(text.substr(0, text.find('?'))); // who reads it finds out whether it comes back
    DString const source = moniker.GetSource();
    auto place = SeriesPlace::Of(StartsWithNoCase(source, kFileScheme)
                                     ? PercentDecoded(std::string_view(source).substr(kFileScheme.size()))
                                     : source);
    return !place || (!platform::IsSmbAddress(source) && !moniker.FindFile().empty()) ? std::nullopt : std::move(place);
}

SeriesListing ListSeries(SeriesPlace const &place, Weigh weigh, std::function<bool()> const &isStopped) {
    Gathering found(place, isStopped);
    if (place.name.Slots() == std::numeric_limits<std::uint64_t>::max())
        found.listing.error = std::make_error_code(std::errc::value_too_large); // its slots have no numbers
    else if (platform::IsSmbAddress(place.folder))
        ReadShare(place.folder, found);
    else
        ReadFolder(place.folder, weigh, found);
    // Names of letters of two cases, or read twice while the folder changed.
    auto &slots = found.listing.slots;
    std::sort(slots.begin(), slots.end());
    slots.erase(std::unique(slots.begin(), slots.end()), slots.end());
    return std::move(found.listing);
}

bool HasMembers(SeriesPlace const &place) {
    bool const isLocal = !platform::IsSmbAddress(place.folder);
    return (isLocal && IsPlainFile(place.MemberPath(0))) || !ListSeries(place, Weigh::No).slots.empty();
}

} // namespace zelvar
