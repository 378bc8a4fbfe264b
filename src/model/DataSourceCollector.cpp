#include "zelvar/model/DataSourceCollector.h"

#include "zelvar/base/DFile.h"
#include "zelvar/base/Directories.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/base/Redaction.h"
#include "zelvar/base/Translation.h"
#include "zelvar/data/PlaceCheck.h"
#include "zelvar/model/DataSourceDefinitions.h"
#include "zelvar/model/DefinitionOrder.h"
#include "zelvar/model/DefinitionsLock.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/model/TemplDataSourceItem.h"
#include "zelvar/platform/os/MountTable.h"
#include "zelvar/platform/os/ShellNamespace.h"
#include "zelvar/platform/os/SmbAddress.h"
#include "zelvar/store/DCnfg.h"
#include "zelvar/store/SettingsStore.h"
#include "zelvar/xml/XMLNode.h"

#include <algorithm>
#include <map>
#include <optional>

namespace zelvar {

using platform::ShellKind;
using platform::ShellNamespace;

namespace {

constexpr char kSection[] = "OpenFileDialog";
constexpr char kKey[] = "Favorites";

DVectorSafe<DString> ReadFavorites() {
    DVectorSafe<DString> paths;
    DUserCnfg(kSection).ReadStringVec(kKey, paths);
    return paths;
}

/// An address that a driver opens.
bool IsOfServer(DString const &path) {
    return IsUrl(path) && !platform::IsSmbAddress(path) && !StartsWithNoCase(path, "file://");
}

/// How a favourite is looked at: a place that may not answer, and a file that might have to be looked into, are left
/// for later.
enum class Look { Now, Later, Never };
Look LookAt(DString const &path) {
    if (platform::IsSmbAddress(path))
        return Look::Later;
    if (IsOfServer(path))
        return Look::Now; // which opens when it is chosen
    std::optional<platform::MountEntry> const mount = platform::FindMount(path);
    if (mount && platform::MayBlock(*mount))
        return Look::Later;
    platform::ShellId const id = ShellNamespace::Current().Parse(path);
    return id.IsNull() ? Look::Never : id.Kind() == ShellKind::File ? Look::Later : Look::Now;
}

} // namespace

char const *DataSourceGroupName(int group) {
    switch (group) {
    case kGroupDrives:
        return Mark("Drives");
    case kGroupNetworkDrives:
        return Mark("Network Drives");
    case kGroupDataSources:
        return Mark("Data Sources");
    case kGroupFavorites:
        return Mark("Favorites");
    case kGroupRecent:
        return Mark("Recent");
    case kGroupNetwork:
        return Mark("Network");
    default:
        return "";
    }
}

std::set<ShellKind> const &LocalDriveKinds() {
    static auto const &kinds =
        *new std::set<ShellKind>{ShellKind::Directory, ShellKind::Removable, ShellKind::Fixed, ShellKind::CdRom};
    return kinds;
}

std::set<ShellKind> const &NetworkDriveKinds() {
    static auto const &kinds = *new std::set<ShellKind>{ShellKind::NetDrive, ShellKind::NetServer, ShellKind::NetShare};
    return kinds;
}

void CollectDrives(std::set<ShellKind> const &kinds, DataSourceRows &rows) {
    ShellNamespace const &shell = ShellNamespace::Current();
    shell.Enumerate(shell.Drives(), ShellNamespace::Purpose::Browse, [&](platform::ShellChild &&child) {
        if (!kinds.contains(child.kind))
            return true;
        RefItemPtr<NtwDataSourceItem> item(NtwDataSourceItem::CreateItem(child.id, nullptr, nullptr));
        if (item != nullptr) {
            item->SetName(child.name);
            rows.emplace_back(std::move(item));
        }
        return true;
    });
}

void CollectFavorites(DataSourceRows &rows) {
    for (DString const &path : ReadFavorites())
        if (RefItemPtr<DataSourceItem> item = MakeFavorite(path); item != nullptr)
            rows.push_back(std::move(item));
}

void CollectFavorites(DataSourceRows &rows, std::vector<DString> &later) {
    for (DString const &path : ReadFavorites()) {
        Look const look = LookAt(path);
        if (look == Look::Later)
            later.push_back(path);
        else if (RefItemPtr<DataSourceItem> item = look == Look::Now ? MakeFavorite(path) : nullptr; item != nullptr)
            rows.push_back(std::move(item));
    }
}

RefItemPtr<DataSourceItem> MakeFavorite(DString const &path) {
    if (IsOfServer(path))
        return TemplDataSourceItem::CreateForAddress(path);
    RefItemPtr<NtwDataSourceItem> item(DoesPlaceAnswer(path)
                                           ? NtwDataSourceItem::CreateItem(path.c_str(), nullptr, nullptr)
                                           : NtwDataSourceItem::CreateUnreachable(path.c_str()));
    if (item != nullptr)
        item->BuildParents();
    return item;
}

DString RowTextOf(DataSourceItem const &item) {
    auto const *const place = dynamic_cast<NtwDataSourceItem const *>(&item);
    auto const *const connection = dynamic_cast<TemplDataSourceItem const *>(&item);
    DError const failure = connection == nullptr ? DError() : connection->GetFailure();
    bool const isMarked = failure.IsSet() || (place != nullptr && place->IsUnreachable());
    return isMarked ? MarkedName(item.GetName(), failure) : item.GetName();
}

DString MarkedName(DString const &name, DError const &failure) {
    constexpr int kUnauthorized = 401;
    constexpr int kForbidden = 403;
    // Such a server was reached; what it wants is told by the notice in the list.
    bool const wantsLogin = failure.Why() == DError::Cause::NeedsPassword ||
                            (failure.Why() == DError::Cause::Server && failure.Detail() == kUnauthorized);
    bool const isRefused = failure.Why() == DError::Cause::NotPermitted ||
                           (failure.Why() == DError::Cause::Server && failure.Detail() == kForbidden);
    if (wantsLogin)
        return Format(Translated("%s (password)"), name.c_str());
    return Format(isRefused ? Translated("%s (refused)") : Translated("%s (unreachable)"), name.c_str());
}

void CollectDefinitions(DataSourceRows &rows) {
    DataSourceDefinitions definitions;
    {
        // A new main file must not take the place of one that another process has just written.
        std::optional<DefinitionsLock> lock;
        if (!DFile(AppendPath(GetDataSourceDefinitionsDir(), "connections.xml")).Exist())
            lock.emplace();
        definitions.Load();
        if (lock && lock->IsHeld())
            definitions.Save();
    }
    auto const first = static_cast<std::ptrdiff_t>(rows.size());
    for (auto const &[name, node] : definitions) {
        if (node->GetName() != "DataSource" || !node->GetAttrBool("visible", true))
            continue;
        RefItemPtr<DataSourceItem> item(TemplDataSourceItem::CreateItem(node));
        if (item != nullptr)
            rows.push_back(std::move(item));
    }
    std::map<DString, std::size_t> places;
    for (DString const &name : DefinitionOrder::Read())
        places.emplace(name, places.size());
    auto const placeOf = [&places](RefItemPtr<DataSourceItem> const &row) {
        auto const place = places.find(row->GetName());
        return place == places.end() ? places.size() : place->second;
    };
    if (!places.empty())
        std::stable_sort(rows.begin() + first, rows.end(),
                         [&](auto const &a, auto const &b) { return placeOf(a) < placeOf(b); });
}

std::vector<DString> Favorites::All() {
    DVectorSafe<DString> const paths = ReadFavorites();
    return {paths.begin(), paths.end()};
}

bool Favorites::Contains(DString const &path) {
    DVectorSafe<DString> const paths = ReadFavorites();
    return std::any_of(paths.begin(), paths.end(), [&](DString const &entry) { return EqualNoCase(entry, path); });
}

void Favorites::Add(DString const &path) {
    // A transaction: another process may be adding one, too.
    SettingsStore::Instance().TransactSoon([path] {
        DVectorSafe<DString> paths = ReadFavorites();
        paths.push_back(Redacted(path));
        return DUserCnfg(kSection).WriteStringVec(kKey, paths);
    });
}

void Favorites::Remove(DString const &path) {
    if (!Contains(path))
        return;
    SettingsStore::Instance().TransactSoon([path] {
        DVectorSafe<DString> paths = ReadFavorites();
        auto const at =
            std::find_if(paths.begin(), paths.end(), [&](DString const &entry) { return EqualNoCase(entry, path); });
        if (at == paths.end())
            return false;
        paths.erase(at);
        return DUserCnfg(kSection).WriteStringVec(kKey, paths);
    });
}

} // namespace zelvar
