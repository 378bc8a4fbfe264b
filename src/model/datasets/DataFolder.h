#pragma once

#include "zelvar/base/DString.h"

#include <optional>
#include <vector>

namespace zelvar {

/// A folder whose files are one data set.
enum class DataFolder { Zarr, EsriGrid, Coverage, Geodatabase, Sentinel1, Sentinel2, Landsat, Dimap, MapInfo };

/// What lies in a folder, as far as somebody has looked.
struct FolderContent {
    std::vector<DString> files{};
    bool hasFolders = false;
    bool isWhole = true; ///< there is nothing else in it
};

/// How many names are enough to tell.
inline constexpr std::size_t kNamesThatTell = 64;

/// Whether the folder is a data set: told by its name and by two or three names inside.
[[nodiscard]] ZELVAR_API std::optional<DataFolder> TellDataFolder(std::string_view name, FolderContent const &content);

/// The name of what a driver opens of it: a file in it, or empty for the folder itself.
[[nodiscard]] ZELVAR_API DString EntryOf(DataFolder kind, FolderContent const &content);

/// "Zarr", "Geodatabase", ...: for people.
[[nodiscard]] ZELVAR_API char const *ToText(DataFolder kind);

} // namespace zelvar
