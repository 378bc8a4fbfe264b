#include "zelvar/model/datasets/DataFolder.h"

#include "zelvar/base/PathStyle.h"

#include <algorithm>
#include <array>

namespace zelvar {

namespace {

/// The first file that fits the mask, without regard to case; empty for none.
DString Find(FolderContent const &content, std::string_view mask) {
    auto const at = std::find_if(content.files.begin(), content.files.end(),
                                 [&](DString const &file) { return PathMatchSpec(file, mask); });
    return at == content.files.end() ? DString() : *at;
}

bool Has(FolderContent const &content, std::string_view mask) { return !Find(content, mask).empty(); }

/// Nothing but tables of MapInfo, and at least one of them.
bool HoldsMapInfoAlone(FolderContent const &content) {
    // In this order: the first file of most folders settles it.
    return content.isWhole && !content.hasFolders &&
           std::all_of(
               content.files.begin(), content.files.end(),
               [](DString const &file) { return PathMatchSpec(file, "*.tab;*.dat;*.map;*.id;*.ind;*.mif;*.mid"); }) &&
           Has(content, "*.tab;*.mif");
}

bool EndsWith(std::string_view name, std::string_view lower) {
    auto const toLower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return name.size() >= lower.size() &&
           std::equal(lower.rbegin(), lower.rend(), name.rbegin(), [&](char a, char b) { return a == toLower(b); });
}

/// Whether the name can be the first of those that tell of any kind but MapInfo. Walks ask this of every name, masks
/// only of what is left.
bool MayTell(std::string_view name) {
    constexpr std::array<std::string_view, 9> kEndings{".zgroup",   ".zarray",   ".zmetadata",
                                                       "zarr.json", ".gdbtable", "manifest.safe",
                                                       ".adf",      "_mtl.txt",  "metadata.dim"};
    if (EndsWith(name, ".xml"))
        return StartsWithNoCase(name, "vol_") || StartsWithNoCase(name, "dim_");
    return std::any_of(kEndings.begin(), kEndings.end(), [&](std::string_view end) { return EndsWith(name, end); });
}

} // namespace

std::optional<DataFolder> TellDataFolder(std::string_view name, FolderContent const &content) {
    if (std::none_of(content.files.begin(), content.files.end(), &MayTell))
        return HoldsMapInfoAlone(content) ? std::optional(DataFolder::MapInfo) : std::nullopt;
    std::string_view const extension = ExtensionOf(name);
    if (Has(content, ".zgroup;.zarray;.zmetadata;zarr.json"))
        return DataFolder::Zarr;
    if (EqualNoCase(extension, "gdb") && Has(content, "a0000000?.gdbtable"))
        return DataFolder::Geodatabase;
    if (EqualNoCase(extension, "safe") && Has(content, "manifest.safe"))
        return Has(content, "MTD_MSI*.xml") ? DataFolder::Sentinel2 : DataFolder::Sentinel1;
    if (Has(content, "hdr.adf") && Has(content, "w001001.adf;w001001x.adf"))
        return DataFolder::EsriGrid;
    if (Has(content, "arc.adf;lab.adf;pal.adf;cnt.adf") && Has(content, "tic.adf;bnd.adf;tol.adf"))
        return DataFolder::Coverage;
    if (Has(content, "*_MTL.txt") && Has(content, "*_B1.TIF;*_SR_B1.TIF"))
        return DataFolder::Landsat;
    if (Has(content, "VOL_*.XML;DIM_*.XML;METADATA.DIM"))
        return DataFolder::Dimap;
    if (HoldsMapInfoAlone(content))
        return DataFolder::MapInfo;
    return std::nullopt;
}

DString EntryOf(DataFolder kind, FolderContent const &content) {
    switch (kind) {
    case DataFolder::Sentinel2:
        return Find(content, "MTD_MSI*.xml");
    case DataFolder::Landsat:
        return Find(content, "*_MTL.txt");
    default:
        return {};
    }
}

char const *ToText(DataFolder kind) {
    switch (kind) {
    case DataFolder::Zarr:
        return "Zarr";
    case DataFolder::EsriGrid:
        return "Esri Grid";
    case DataFolder::Coverage:
        return "Coverage";
    case DataFolder::Geodatabase:
        return "Geodatabase";
    case DataFolder::Sentinel1:
        return "Sentinel-1";
    case DataFolder::Sentinel2:
        return "Sentinel-2";
    case DataFolder::Landsat:
        return "Landsat";
    case DataFolder::Dimap:
        return "DIMAP";
    case DataFolder::MapInfo:
        break;
    }
    return "MapInfo";
}

} // namespace zelvar
