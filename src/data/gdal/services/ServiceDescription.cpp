#include "zelvar/data/gdal/services/ServiceDescription.h"

#include "zelvar/base/Percent.h"
#include "zelvar/data/gdal/services/ServiceElement.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace zelvar::services {

namespace {

using Cause = DError::Cause;

constexpr int kTile = 1024;   // pixels
constexpr int kSmallest = 64; // of a tile that a server gives
constexpr int kLevels = 20;   // below the whole
constexpr char const *kCrs84 = "CRS:84";
constexpr char const *kEpsg4326 = "EPSG:4326";

DString Escaped(std::string_view text) {
    DString out;
    for (char const c : text) {
        static constexpr std::pair<char, char const *> kEntities[] = {
            {'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}};
        auto const *const entity = std::find_if(std::begin(kEntities), std::end(kEntities),
                                                [c](auto const &known) { return known.first == c; });
        if (entity != std::end(kEntities))
            out += entity->second;
        else if (static_cast<unsigned char>(c) >= 0x20)
            out += c;
    }
    return out;
}

DString Element(char const *name, std::string_view text) {
    return DString("<").append(name).append(">").append(Escaped(text)).append("</").append(name).append(">");
}

DString Element(char const *name, int number) { return Element(name, std::to_string(number)); }

/// All digits that a number has.
DString Number(double value) {
    std::array<char, 64> digits{};
    auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    return {digits.data(), end.ptr};
}

/// Kept for a while in memory, so that the values of a picture need no second request.
DString CacheElement(DString const &folder) {
    constexpr int most = 32 << 20; // bytes
    constexpr int seconds = 300;
    return "<Cache>" + Element("Type", "file") + Element("Path", folder) + Element("Depth", 0) +
           Element("MaxSize", most) + Element("Expires", seconds) + "</Cache>";
}

/// The login of the service, which GDAL has beside the description, is for no other server.
DString LoginElement(ServiceAddress const &address, DString const &place) {
    return place.empty() || AreOfOneServer(address.url, place) ? DString() : Element("UserPwd", ":");
}

bool IsOfNewOrder(DString const &version) { return version >= "1.3"; }

/// The extent in the first system that is known, its axes in order.
std::optional<BoundingBox> PlaceOf(Capabilities const &capabilities, Offer const &layer,
                                   AxisQuestion const &isNorthFirst, bool &isTurned) {
    bool const isNew = IsOfNewOrder(capabilities.version);
    for (BoundingBox const &box : capabilities.BoxesOf(layer)) {
        auto const north = box.system == kCrs84 ? std::optional(false) : isNorthFirst(box.system);
        if (!north)
            continue;
        isTurned = isNew && *north;
        Extent const &e = box.extent;
        return BoundingBox{.system = box.system,
                           .extent = isTurned ? Extent{e.bottom, e.left, e.top, e.right} : box.extent};
    }
    auto const geographic = capabilities.GeographicOf(layer);
    if (!geographic)
        return std::nullopt;
    bool const isCrs84 =
        isNew && (capabilities.MayAskIn(layer, &Offer::hasCrs84) || !capabilities.MayAskIn(layer, &Offer::hasEpsg4326));
    isTurned = isNew && !isCrs84;
    return BoundingBox{.system = isCrs84 ? kCrs84 : kEpsg4326, .extent = *geographic};
}

/// Lossless before lossy.
DString FormatOf(std::vector<DString> const &formats) {
    for (std::string_view const wanted : {"image/png", "png", "image/jpeg", "image/"})
        for (DString const &format : formats)
            if (format == wanted || (wanted != "image/png" && format.find(wanted) != DString::npos))
                return format;
    return formats.empty() ? "image/png" : formats.front();
}

} // namespace

std::optional<DString> DescribeMap(ServiceAddress const &address, Capabilities const &capabilities, Offer const &layer,
                                   AxisQuestion const &isNorthFirst, DString const &cache, DError &error) {
    bool isTurned = false;
    auto const map = PlaceOf(capabilities, layer, isNorthFirst, isTurned);
    double const ratio = map ? (map->extent.right - map->extent.left) / (map->extent.top - map->extent.bottom) : 0;
    if (!std::isfinite(ratio) || ratio < 1.0 / kTile || ratio > kTile) {
        error.Set("the layer \"" + layer.name + "\" is nowhere on the earth that a map could show",
                  Cause::NotSupported);
        return std::nullopt;
    }
    bool const isNew = IsOfNewOrder(capabilities.version);
    int const tile = capabilities.mostPixels == 0 ? kTile : std::clamp(capabilities.mostPixels, kSmallest, kTile);
    DString const place = PlaceToAsk(address.url, capabilities.place);
    DString text = "<GDAL_WMS><Service name=\"WMS\">";
    text += Element("Version", capabilities.version.empty() ? "1.1.1" : capabilities.version);
    text += Element("ServerUrl", place);
    text += Element(isNew ? "CRS" : "SRS", map->system);
    text += Element("ImageFormat", FormatOf(capabilities.formats));
    text += Element("Transparent", "FALSE");
    text += Element("Layers", PercentEncoded(layer.name)); // they become part of the request as they are
    text += Element("Styles", PercentEncoded(address.style));
    text += Element("BBoxOrder", isTurned ? "yxYX" : "xyXY");
    text += "</Service><DataWindow>";
    text += Element("UpperLeftX", Number(map->extent.left)) + Element("UpperLeftY", Number(map->extent.top));
    text += Element("LowerRightX", Number(map->extent.right)) + Element("LowerRightY", Number(map->extent.bottom));
    text += Element("SizeX", static_cast<int>(ratio >= 1 ? kAnyResolution : std::lround(kAnyResolution * ratio)));
    text += Element("SizeY", static_cast<int>(ratio <= 1 ? kAnyResolution : std::lround(kAnyResolution / ratio)));
    text += "</DataWindow>";
    text += Element("Projection", map->system) + Element("BandsCount", 3) + Element("BlockSizeX", tile) +
            Element("BlockSizeY", tile) + Element("OverviewCount", kLevels) + Element("MaxConnections", 2);
    return text + LoginElement(address, place) + CacheElement(cache) + "</GDAL_WMS>";
}

DString DescribeTiles(ServiceAddress const &address, Capabilities const &capabilities, Offer const &layer,
                      DString const &document, DString const &cache) {
    DString const place = layer.tiles.empty() ? capabilities.place : layer.tiles;
    DString text = "<GDAL_WMTS>" + Element("GetCapabilitiesUrl", document) + Element("Layer", address.layer);
    if (!address.style.empty())
        text += Element("Style", address.style);
    return text + LoginElement(address, place) + Element("TileMatrixSet", address.matrixSet) +
           Element("BandsCount", 3) + CacheElement(cache) + "</GDAL_WMTS>";
}

DString DescribeCoverage(ServiceAddress const &address, Capabilities const &capabilities) {
    return "<WCS_GDAL>" + Element("ServiceURL", address.url) + Element("Version", capabilities.version) +
           Element("CoverageName", address.coverage) + "</WCS_GDAL>";
}

namespace {

constexpr std::size_t kNone = std::string_view::npos;

/// Where the next start or end tag ("</") of that local name begins and ends; `at` is `kNone` behind the last.
struct Tag {
    std::size_t at = kNone;
    std::size_t end = kNone;
};
Tag NextTag(std::string_view text, std::string_view open, std::string_view name, std::size_t from) {
    for (std::size_t at = text.find(open, from); at != kNone; at = text.find(open, at + 1)) {
        std::size_t const begin = at + open.size();
        std::size_t const stop = text.find_first_of(" \t\r\n/>", begin);
        if (stop == kNone)
            break;
        std::string_view const full = text.substr(begin, stop - begin);
        std::size_t const colon = full.find(':');
        if (full.substr(colon == kNone ? 0 : colon + 1) != name)
            continue;
        std::size_t const end = text.find('>', stop);
        return end == kNone ? Tag() : Tag{at, end + 1};
    }
    return {};
}

/// The capabilities of a WFS with one type of features; nothing where they are not written plainly enough.
std::optional<DString> WithTypeAlone(std::string_view document, DString const &name) {
    constexpr char const *element = "FeatureType";
    Tag const first = NextTag(document, "<", element, 0);
    std::size_t behind = first.at;
    std::optional<std::string_view> found;
    for (Tag type = first; type.at != kNone; type = NextTag(document, "<", element, behind)) {
        behind = NextTag(document, "</", element, type.end).end;
        if (behind == kNone)
            return std::nullopt;
        std::string_view const text = document.substr(type.at, behind - type.at);
        XMLNode node;
        if (!found && node.LoadText(text) && TextIn(&node, "Name") == name)
            found = text;
    }
    if (!found)
        return std::nullopt;
    DString alone = DString(document.substr(0, first.at)).append(*found).append(document.substr(behind));
    DError error;
    auto const read = ReadCapabilities(Service::Wfs, alone, error);
    bool const isIt = read && read->offers.size() == 1 && read->offers.front().name == name;
    return isIt ? std::optional(std::move(alone)) : std::nullopt;
}

} // namespace

DString DescribeFeatures(ServiceAddress const &address, std::string_view document) {
    return "<OGRWFSDataSource>" + Element("URL", address.url) +
           WithTypeAlone(document, address.type).value_or(DString(document)) + "</OGRWFSDataSource>";
}

} // namespace zelvar::services
