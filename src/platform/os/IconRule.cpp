#include "zelvar/platform/os/IconRule.h"

#include "zelvar/base/PathStyle.h"

#include <algorithm>
#include <array>

namespace zelvar::platform {

namespace {

constexpr std::string_view kAnyFile = "application-octet-stream";

struct SuffixGroup {
    std::string_view icon;
    std::string_view suffixes; ///< each between blanks, lower case
};

constexpr std::array<SuffixGroup, 8> kSuffixGroups{{
    {"image-x-generic", " tif tiff jpg jpeg png gif bmp jp2 j2k img ecw sid webp ppm pgm pbm pnm svg ico heic avif exr "
                        "hdr dem bil bip bsq dat lan ntf nitf vrt asc grd svs ndpi scn mrxs czi lsm lif btf cog jxl "},
    {"application-x-sqlite3", " gpkg sqlite sqlite3 db mbtiles "},
    {"x-office-spreadsheet", " csv tsv xls xlsx ods dbf "},
    {"x-office-document", " pdf doc docx odt rtf ps eps "},
    {"x-office-drawing", " shp dxf dwg dgn kml kmz gml geojson gpx tab mif fgb "},
    {"package-x-generic", " zip tar gz tgz bz2 xz 7z rar zst h5 hdf hdf5 he5 nc nc4 cdf zarr "},
    {"text-x-generic", " txt log md json xml ini cfg conf html htm yaml yml prj wld tfw jgw hdrtxt rst tex "},
    {"application-x-executable", " exe appimage run bin "},
}};

std::string_view FileIcon(std::string_view name) {
    std::string_view const suffix = ExtensionOf(name);
    constexpr std::size_t kLongestSuffix = 8;
    if (suffix.empty() || suffix.size() > kLongestSuffix || suffix.find(' ') != std::string_view::npos)
        return kAnyFile;
    DString wanted = " ";
    for (char const c : suffix)
        wanted += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    wanted += ' ';
    for (SuffixGroup const &group : kSuffixGroups)
        if (group.suffixes.find(wanted) != std::string_view::npos)
            return group.icon;
    return kAnyFile;
}

std::string_view IconName(ShellKind kind, std::string_view name, bool home, bool network) {
    switch (kind) {
    case ShellKind::File:
        return FileIcon(name);
    case ShellKind::Removable:
        return "drive-removable-media";
    case ShellKind::Fixed:
        return "drive-harddisk";
    case ShellKind::CdRom:
        return "drive-optical";
    case ShellKind::NetDrive:
    case ShellKind::NetShare:
        return "folder-remote";
    case ShellKind::NetServer:
        return "network-server";
    case ShellKind::NetDomain:
    case ShellKind::NetRestOfNet:
    case ShellKind::NetOther:
        return "network-workgroup";
    case ShellKind::Virtual:
        return network ? "network-workgroup" : "computer";
    case ShellKind::Directory:
    case ShellKind::Unknown:
        break;
    }
    return home ? "user-home" : "folder";
}

} // namespace

ImageDescription IconFor(ShellKind kind, std::string_view name, bool link, bool home, bool network) {
    ImageDescription icon;
    icon.kind = ImageDescription::Kind::ThemeIcon;
    icon.name = IconName(kind, name, home, network);
    icon.fallback = icon.name;
    icon.linkOverlay = link;
    return icon;
}

bool SaysWhatItIs(std::string_view name) {
    constexpr std::array<std::string_view, 4> kAnything{"dat", "db", "bin", "run"};
    std::string_view const suffix = ExtensionOf(name);
    return FileIcon(name) != kAnyFile && std::none_of(kAnything.begin(), kAnything.end(),
                                                      [&](std::string_view any) { return EqualNoCase(suffix, any); });
}

} // namespace zelvar::platform
