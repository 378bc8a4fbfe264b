#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/model/DataSourceItem.h"
#include "zelvar/platform/os/ShellId.h"

#include <set>
#include <vector>

namespace zelvar {

/// Groups of the data source list; the numbers are those of `DataSourceItem::GetGroup`, the order is that on the
/// screen.
enum DataSourceGroup {
    kGroupDrives = 1,
    kGroupNetworkDrives = 2,
    kGroupDataSources = 3,
    kGroupFavorites = 4,
    kGroupRecent = 5,
    kGroupNetwork = 6,
};
/// Header of a group.
[[nodiscard]] ZELVAR_API char const *DataSourceGroupName(int group);

/// The kinds that make a local and a network drive.
[[nodiscard]] ZELVAR_API std::set<platform::ShellKind> const &LocalDriveKinds();
[[nodiscard]] ZELVAR_API std::set<platform::ShellKind> const &NetworkDriveKinds();

// What the data source list is filled from. Each appends items in the source's order and leaves out, silently, what
// cannot be made. User-interface thread, or the only thread of a script.
using DataSourceRows = std::vector<RefItemPtr<DataSourceItem>>;

/// The children of the computer's drives place whose kind is in `kinds`.
ZELVAR_API void CollectDrives(std::set<platform::ShellKind> const &kinds, DataSourceRows &rows);
/// The favourites whose place exists now; the others stay stored. One on a server that does not answer has a row all
/// the same, see `NtwDataSourceItem::IsUnreachable`.
ZELVAR_API void CollectFavorites(DataSourceRows &rows);
/// The folders on this machine's own discs among them, which take no time; the paths of the others go to `later`.
ZELVAR_API void CollectFavorites(DataSourceRows &rows, std::vector<DString> &later);
/// One of them; null if its place does not exist. May take as long as a server does. Any thread.
[[nodiscard]] ZELVAR_API RefItemPtr<DataSourceItem> MakeFavorite(DString const &path);
/// What a row shows of an item: its name, and that it cannot be reached or wants a password.
[[nodiscard]] ZELVAR_API DString RowTextOf(DataSourceItem const &item);
/// A name with the mark of that failure: "Lab (password)" where the server takes nobody without one, or not this one,
/// "Lab (refused)" where it takes not this user, else "Lab (unreachable)".
[[nodiscard]] ZELVAR_API DString MarkedName(DString const &name, DError const &failure);
/// The visible connection definitions, as the user has ordered them, see `DefinitionOrder`, or by name. Writes a new
/// main file of definitions if there was none.
ZELVAR_API void CollectDefinitions(DataSourceRows &rows);

/// The user's favourite folders, by path, case not regarded. Each call reads the settings anew.
class ZELVAR_API Favorites {
public:
    [[nodiscard]] static std::vector<DString> All(); ///< in the order of the settings
    [[nodiscard]] static bool Contains(DString const &path);
    static void Add(DString const &path);
    /// Removes the first entry of that path; with none nothing is written.
    static void Remove(DString const &path);
};

} // namespace zelvar
