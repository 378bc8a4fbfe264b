#include "zelvar/data/gdal/LandsatScene.h"

#include "zelvar/base/FileDescriptor.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/data/gdal/GdalScope.h"

#include <cpl_conv.h>
#include <cpl_string.h>
#include <gdal.h>

#include <algorithm>
#include <map>
#include <memory>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

namespace zelvar::gdal {

namespace {

constexpr std::size_t kLongestDescription = std::size_t{1} << 20U;
constexpr std::size_t kMostFiles = 64;

struct Band {
    DString path;
    DString number; ///< "1", "6_VCID_1"; empty for what is no band
    int width = 0;
    int height = 0;
    GDALDataType type = GDT_Unknown;
    DString georeference{}; ///< as a part of the description
};

DString ReadStart(DString const &path) {
    FileDescriptor const file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    DString text(kLongestDescription, '\0');
    ssize_t const length = file.IsOpen() ? read(file.Get(), text.data(), text.size()) : 0;
    text.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return text;
}

/// The files that `FILE_NAME_BAND_4 = "a_B4.TIF"` and its like name, in their order: what says which band, and the
/// name.
std::vector<std::pair<DString, DString>> NamedFiles(DString const &text) {
    constexpr std::string_view key = "FILE_NAME_";
    constexpr std::string_view band = "BAND_";
    std::vector<std::pair<DString, DString>> files;
    for (DString const &line : Split(text, '\n')) {
        std::size_t const begin = line.find_first_not_of(" \t");
        std::size_t const open = line.find('"');
        std::size_t const close = line.rfind('"');
        if (begin == DString::npos || line.compare(begin, key.size(), key) != 0 || open == close)
            continue;
        DString name = line.substr(open + 1, close - open - 1);
        DString what = line.substr(begin + key.size(), line.find_first_of(" \t=", begin) - begin - key.size());
        bool const isBand =
            what.starts_with(band) && what.size() > band.size() && what[band.size()] >= '0' && what[band.size()] <= '9';
        bool const isTiff = EqualNoCase(ExtensionOf(name), "tif") && name.find('/') == DString::npos;
        if (isTiff && files.size() < kMostFiles)
            files.emplace_back(isBand ? what.substr(band.size()) : DString(), std::move(name));
    }
    return files;
}

DString Escaped(char const *text) {
    std::unique_ptr<char, void (*)(void *)> const escaped(CPLEscapeString(text, -1, CPLES_XML), &VSIFree);
    return escaped.get();
}

/// False unless it is a plain TIFF of one band.
bool Look(Band &band) {
    struct stat info {};
    if (stat(band.path.c_str(), &info) != 0 || !S_ISREG(info.st_mode))
        return false;
    char const *const tiff[] = {"GTiff", nullptr};
    DatasetPtr const dataset =
        Own(GDALOpenEx(band.path.c_str(), GDAL_OF_RASTER | GDAL_OF_READONLY, tiff, nullptr, nullptr));
    if (dataset == nullptr || GDALGetRasterCount(Raw(dataset)) != 1)
        return false;
    band.width = GDALGetRasterXSize(Raw(dataset));
    band.height = GDALGetRasterYSize(Raw(dataset));
    band.type = GDALGetRasterDataType(GDALGetRasterBand(Raw(dataset), 1));
    double place[6] = {};
    if (GDALGetGeoTransform(Raw(dataset), place) == CE_None)
        band.georeference = Format("<SRS>%s</SRS><GeoTransform>%.17g,%.17g,%.17g,%.17g,%.17g,%.17g</GeoTransform>",
                                   Escaped(GDALGetProjectionRef(Raw(dataset))).c_str(), place[0], place[1], place[2],
                                   place[3], place[4], place[5]);
    return true;
}

DString Describe(std::vector<Band const *> const &bands) {
    DString text =
        Format(R"(<VRTDataset rasterXSize="%d" rasterYSize="%d">)", bands.front()->width, bands.front()->height);
    text += bands.front()->georeference;
    for (Band const *const band : bands)
        text += Format(R"(<VRTRasterBand dataType="%s"><Description>%s</Description><SimpleSource>)"
                       R"(<SourceFilename relativeToVRT="0">%s</SourceFilename></SimpleSource></VRTRasterBand>)",
                       GDALGetDataTypeName(band->type), Escaped(("Band " + band->number).c_str()).c_str(),
                       Escaped(band->path.c_str()).c_str());
    return text + "</VRTDataset>";
}

} // namespace

LandsatScene ReadLandsatScene(DString const &description) {
    std::vector<Band> bands;
    for (auto &[number, name] : NamedFiles(ReadStart(description))) {
        Band band{.path = AppendPath(ParentPathOf(description), name), .number = number};
        if (Look(band))
            bands.push_back(std::move(band));
    }
    std::map<std::pair<int, int>, std::size_t> sizes;
    for (Band const &band : bands)
        sizes[{band.width, band.height}] += band.number.empty() ? 0U : 1U;
    auto const most = std::ranges::max_element(sizes, {}, [](auto const &size) { return size.second; });
    LandsatScene scene;
    std::vector<Band const *> together;
    for (Band const &band : bands)
        if (!band.number.empty() && std::pair(band.width, band.height) == most->first)
            together.push_back(&band);
        else
            scene.others.push_back(band.path);
    if (!together.empty())
        scene.picture = Describe(together);
    return scene;
}

} // namespace zelvar::gdal
