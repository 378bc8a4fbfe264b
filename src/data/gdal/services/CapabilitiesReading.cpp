#include "zelvar/data/gdal/services/Capabilities.h"
#include "zelvar/data/gdal/services/ServiceElement.h"

#include <algorithm>
#include <utility>

namespace zelvar::services {

namespace {

using Cause = DError::Cause;

constexpr std::size_t kMostOffers = 200'000;
constexpr std::size_t kMostOfEach = 1000; // boxes, styles, formats, matrix sets of one
constexpr int kDeepest = 32;              // levels of layers
constexpr std::size_t kLongestLine = 120; // bytes

/// What is read, and why no more.
struct Reading {
    Capabilities found{};
    DError error{};

    /// False when there are more than can be listed.
    bool Add(Offer offer) {
        if (found.offers.size() >= kMostOffers) {
            error.Set(Format("the service offers more than %zu layers", kMostOffers), Cause::TooLarge);
            return false;
        }
        if (offer.title.empty())
            offer.title = offer.name;
        found.offers.push_back(std::move(offer));
        return true;
    }
};

template <class Item>
void AddTo(std::vector<Item> &list, Item item) {
    if (list.size() < kMostOfEach)
        list.push_back(std::move(item));
}

/// Numbers in attributes of an element, one of which may be missing.
std::optional<Extent> ExtentOf(XMLNode const &box) {
    auto const side = [&](char const *name) { return NumberOf(box.GetAttrStr(name)); };
    auto const left = side("minx");
    auto const bottom = side("miny");
    auto const right = side("maxx");
    auto const top = side("maxy");
    if (!left || !bottom || !right || !top)
        return std::nullopt;
    Extent const extent{*left, *bottom, *right, *top};
    return extent.IsValid() ? std::optional(extent) : std::nullopt;
}

/// "10 50" and "13 52" of two corners.
std::optional<Extent> ExtentOfCorners(XMLNode const *box, std::string_view lower, std::string_view upper) {
    auto const place = [](DString const &text) -> std::optional<std::pair<double, double>> {
        std::size_t const blank = text.find_first_of(" \t\r\n");
        auto const x = NumberOf(std::string_view(text).substr(0, blank));
        auto const y = NumberOf(blank == DString::npos ? std::string_view() : std::string_view(text).substr(blank));
        return x && y ? std::optional(std::pair(*x, *y)) : std::nullopt;
    };
    auto const low = place(TextIn(box, lower));
    auto const high = place(TextIn(box, upper));
    if (!low || !high)
        return std::nullopt;
    Extent const extent{low->first, low->second, high->first, high->second};
    return extent.IsValid() ? std::optional(extent) : std::nullopt;
}

/// The address that a kind of request has.
DString PlaceOf(XMLNode const *request) {
    XMLNode const *const resource = ChildOf(request, {"DCPType", "HTTP", "Get", "OnlineResource"});
    return resource == nullptr ? DString() : DString(Trimmed(resource->GetAttrStr("xlink:href")));
}

// WMS

void ReadLayerFacts(XMLNode const &layer, Offer &offer) {
    offer.name = TextIn(&layer, "Name");
    offer.title = TextIn(&layer, "Title");
    for (XMLNode const *child = layer.GetFirstChild(); child != nullptr; child = child->GetNext()) {
        DString const name = LocalName(*child);
        if (name == "CRS" || name == "SRS") {
            for (DString const &system : Split(TextOf(child), ' ')) { // of old in one element
                offer.hasCrs84 = offer.hasCrs84 || system == "CRS:84";
                offer.hasEpsg4326 = offer.hasEpsg4326 || system == "EPSG:4326";
            }
        } else if (name == "BoundingBox") {
            DString system = child->GetAttrStr("CRS", child->GetAttrStr("SRS"));
            if (auto const extent = ExtentOf(*child); extent && system.size() < kLongestLine)
                AddTo(offer.boxes, {.system = std::move(system), .extent = *extent});
        } else if (name == "LatLonBoundingBox") {
            offer.geographic = ExtentOf(*child);
        } else if (name == "EX_GeographicBoundingBox") {
            auto const left = NumberOf(TextIn(child, "westBoundLongitude"));
            auto const bottom = NumberOf(TextIn(child, "southBoundLatitude"));
            auto const right = NumberOf(TextIn(child, "eastBoundLongitude"));
            auto const top = NumberOf(TextIn(child, "northBoundLatitude"));
            Extent const extent{left.value_or(0), bottom.value_or(0), right.value_or(0), top.value_or(0)};
            if (extent.IsValid())
                offer.geographic = extent;
        } else if (name == "Style") {
            if (DString style = TextIn(child, "Name"); !style.empty())
                AddTo(offer.styles, {.name = std::move(style), .title = TextIn(child, "Title")});
        }
    }
}

void ReadWms(XMLNode const &root, Reading &reading) {
    XMLNode const *const map = ChildOf(&root, {"Capability", "Request", "GetMap"});
    reading.found.place = PlaceOf(map);
    ForEachChild(map, "Format", [&](XMLNode const &format) { AddTo(reading.found.formats, TextOf(&format)); });
    XMLNode const *const service = ChildOf(&root, "Service");
    reading.found.title = TextIn(service, "Title");
    for (char const *side : {"MaxWidth", "MaxHeight"})
        if (auto const pixels = NumberOf(TextIn(service, side)); pixels && *pixels >= 1 && *pixels < 1e6)
            reading.found.mostPixels = reading.found.mostPixels == 0
                                           ? static_cast<int>(*pixels)
                                           : std::min(reading.found.mostPixels, static_cast<int>(*pixels));
    // Depth first without recursion: the next layer, and the one that it lies in.
    struct Level {
        XMLNode const *next;
        int parent;
    };
    std::vector<Level> levels{{ChildOf(&root, {"Capability", "Layer"}), -1}};
    while (!levels.empty()) {
        Level &level = levels.back();
        XMLNode const *const layer = level.next;
        if (layer == nullptr) {
            levels.pop_back();
            continue;
        }
        int const parent = level.parent;
        level.next = layer->GetNext();
        if (LocalName(*layer) != "Layer")
            continue;
        Offer offer{.parent = parent};
        ReadLayerFacts(*layer, offer);
        offer.countStyles =
            offer.styles.size() + (parent < 0 ? 0 : reading.found.offers[static_cast<std::size_t>(parent)].countStyles);
        if (!reading.Add(std::move(offer)))
            return;
        if (static_cast<int>(levels.size()) < kDeepest)
            levels.push_back({layer->GetFirstChild(), static_cast<int>(reading.found.offers.size()) - 1});
    }
}

// WMTS

void ReadWmts(XMLNode const &root, Reading &reading) {
    reading.found.title = TextOf(ChildOf(&root, {"ServiceIdentification", "Title"}));
    ForEachChild(ChildOf(&root, "OperationsMetadata"), "Operation", [&](XMLNode const &operation) {
        XMLNode const *const get = ChildOf(&operation, {"DCP", "HTTP", "Get"});
        if (get != nullptr && operation.GetAttrStr("name") == "GetTile")
            reading.found.place = Trimmed(get->GetAttrStr("xlink:href"));
    });
    bool isRoom = true;
    ForEachChild(ChildOf(&root, "Contents"), "Layer", [&](XMLNode const &layer) {
        Offer offer{.name = TextIn(&layer, "Identifier"), .title = TextIn(&layer, "Title")};
        ForEachChild(&layer, "Style", [&](XMLNode const &style) {
            AddTo(offer.styles, {.name = TextIn(&style, "Identifier"), .title = TextIn(&style, "Title")});
        });
        ForEachChild(&layer, "TileMatrixSetLink", [&](XMLNode const &link) {
            if (DString set = TextIn(&link, "TileMatrixSet"); !set.empty())
                AddTo(offer.matrixSets, std::move(set));
        });
        ForEachChild(&layer, "ResourceURL", [&](XMLNode const &resource) {
            if (offer.tiles.empty() && resource.GetAttrStr("resourceType") == "tile")
                offer.tiles = resource.GetAttrStr("template");
        });
        offer.countStyles = offer.styles.size();
        offer.geographic = ExtentOfCorners(ChildOf(&layer, "WGS84BoundingBox"), "LowerCorner", "UpperCorner");
        if (!offer.name.empty() && !offer.matrixSets.empty())
            isRoom = isRoom && reading.Add(std::move(offer));
    });
}

// WCS

void ReadWcs(XMLNode const &root, Reading &reading) {
    bool isRoom = true;
    auto const add = [&](Offer offer) {
        if (!offer.name.empty())
            isRoom = isRoom && reading.Add(std::move(offer));
    };
    reading.found.title = TextOf(ChildOf(&root, {"ServiceIdentification", "Title"}));
    if (reading.found.title.empty())
        reading.found.title = TextOf(ChildOf(&root, {"Service", "label"}));
    ForEachChild(ChildOf(&root, "Contents"), "CoverageSummary", [&](XMLNode const &coverage) {
        DString name = TextIn(&coverage, "CoverageId");
        if (name.empty())
            name = TextIn(&coverage, "Identifier");
        add({.name = std::move(name), .title = TextIn(&coverage, "Title")});
    });
    ForEachChild(ChildOf(&root, "ContentMetadata"), "CoverageOfferingBrief", [&](XMLNode const &coverage) {
        add({.name = TextIn(&coverage, "name"), .title = TextIn(&coverage, "label")});
    });
}

// WFS

void ReadWfs(XMLNode const &root, Reading &reading) {
    bool isRoom = true;
    reading.found.title = TextOf(ChildOf(&root, {"ServiceIdentification", "Title"}));
    ForEachChild(ChildOf(&root, "FeatureTypeList"), "FeatureType", [&](XMLNode const &type) {
        Offer offer{.name = TextIn(&type, "Name"), .title = TextIn(&type, "Title")};
        if (!offer.name.empty())
            isRoom = isRoom && reading.Add(std::move(offer));
    });
}

/// What documents of a service look like, and who reads them.
struct Form {
    Service service;
    std::string_view root;
    std::string_view body; ///< a child that each has
    void (*read)(XMLNode const &root, Reading &reading);
    std::string_view foreign{}; ///< what lies in the body of another service's: servers of one ignore what is asked for
};
constexpr Form kForms[] = {
    {Service::Wms, "WMS_Capabilities", "Capability", &ReadWms},
    {Service::Wms, "WMT_MS_Capabilities", "Capability", &ReadWms},
    {Service::Wmts, "Capabilities", "Contents", &ReadWmts, "CoverageSummary"},
    {Service::Wcs, "WCS_Capabilities", "ContentMetadata", &ReadWcs},
    {Service::Wcs, "Capabilities", "Contents", &ReadWcs, "TileMatrixSet"},
    {Service::Wfs, "WFS_Capabilities", "FeatureTypeList", &ReadWfs},
};

/// The words of a service's own refusal; empty for another document.
DString RefusalIn(XMLNode const &root) {
    DString const name = LocalName(root);
    DString words;
    if (name == "ServiceExceptionReport")
        words = TextIn(&root, "ServiceException");
    else if (name == "ExceptionReport")
        words = TextOf(ChildOf(&root, {"Exception", "ExceptionText"}));
    else
        return {};
    return words.empty() ? DString("it gives no reason") : words.substr(0, words.find('\n'));
}

} // namespace

DString FirstLineOf(std::string_view page) {
    constexpr std::size_t most = 65536;
    page = page.substr(0, most);
    DString text;
    bool isTag = false;
    DString const folded = FoldCase(page.substr(0, std::min<std::size_t>(page.size(), 8192)));
    std::size_t const title = folded.find(FoldCase("<title>"));
    std::size_t const end = title == DString::npos ? title : folded.find(FoldCase("</title>"), title);
    // Folding keeps the lengths of what is ASCII alone.
    if (end != DString::npos && folded.size() == std::min<std::size_t>(page.size(), 8192))
        page = page.substr(title + 7, end - title - 7);
    for (char const c : page) {
        isTag = c == '<' || (isTag && c != '>');
        if (!isTag && c != '>')
            text += c;
        else if (c == '>' && Trimmed(text).empty())
            text.clear();
    }
    std::string_view line = Trimmed(text);
    line = Trimmed(line.substr(0, line.find('\n')));
    return ToValidUtf8(line.substr(0, kLongestLine));
}

std::optional<Capabilities> ReadCapabilities(Service service, std::string_view answer, DError &error) {
    auto const refuse = [&](DString const &words, Cause cause) {
        error.Set(words, cause);
        return std::nullopt;
    };
    XMLNode root;
    DString fault;
    bool const isDocument = root.LoadText(answer, &fault);
    DString const name = isDocument ? LocalName(root) : DString();
    if (!isDocument || EqualNoCase(name, "html")) {
        std::string_view const begin = Trimmed(answer.substr(0, 4096));
        bool const isXml = begin.find("Capabilities") != std::string_view::npos &&
                           (begin.starts_with("<?xml") || begin.starts_with("\xEF\xBB\xBF<?xml"));
        if (!isDocument && isXml)
            return refuse("the capabilities cannot be read: " + fault, Cause::Damaged);
        DString const line = FirstLineOf(answer);
        return refuse("the address answers with a web page, not capabilities" + (line.empty() ? "" : ": " + line),
                      Cause::NotSupported);
    }
    if (DString const refusal = RefusalIn(root); !refusal.empty())
        return refuse("the server says: " + refusal, Cause::Server);
    auto const *const form = std::ranges::find_if(kForms, [&](Form const &known) {
        XMLNode const *const body = ChildOf(&root, known.body);
        return known.service == service && known.root == name && body != nullptr &&
               (known.foreign.empty() || ChildOf(body, known.foreign) == nullptr);
    });
    if (form == std::end(kForms))
        return refuse(DString("the address answers with \"") + name.substr(0, kLongestLine) +
                          "\", not with the capabilities of a " + NameOf(service),
                      Cause::NotSupported);
    Reading reading;
    reading.found.service = service;
    reading.found.version = DString(Trimmed(root.GetAttrStr("version"))).substr(0, 16);
    form->read(root, reading);
    if (reading.error.IsSet()) {
        error = reading.error;
        return std::nullopt;
    }
    return std::move(reading.found);
}

} // namespace zelvar::services
