#include "zelvar/data/gdal/services/ServiceDescription.h"
#include "zelvar/xml/XMLNode.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <tuple>

// What a map service says of itself: whatever is read of it has an order that can be walked, every name in it stands in
// an address and comes back, and what GDAL is to open of it is a document.

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size);

namespace {

using namespace zelvar;
using namespace zelvar::services;

void Demand(bool holds) {
    if (!holds)
        std::abort();
}

void CheckOffer(ServiceAddress const &service, Capabilities const &found, Offer const &offer,
                std::string_view document) {
    constexpr std::size_t mostStyles = 500;
    auto const styles = found.StylesOf(offer);
    Demand(styles.size() <= mostStyles);
    Demand(styles.size() == std::min(mostStyles, offer.countStyles));
    ServiceAddress thing{.service = found.service, .style = styles.empty() ? DString() : styles.front().name};
    (found.service == Service::Wfs   ? thing.type
     : found.service == Service::Wcs ? thing.coverage
                                     : thing.layer) = offer.name;
    if (!thing.HasThing())
        thing = {.service = found.service, .group = offer.title};
    auto const again = ParseServiceAddress(service.Inside(thing));
    Demand(again && again->layer == thing.layer && again->style == thing.style && again->coverage == thing.coverage &&
           again->type == thing.type && again->group == thing.group && again->connection == service.connection);
    DError error;
    auto const isNorthFirst = [](DString const &system) { return std::optional(system.size() % 2 == 0); };
    auto const map = DescribeMap(*again, found, offer, isNorthFirst, "/vsimem/x", error);
    Demand(map.has_value() != error.IsSet());
    DString fault;
    std::size_t const root = std::min(document.find("<WFS_"), document.size());
    std::ignore = DescribeFeatures(*again, document.substr(root));
    for (DString const &text : {map.value_or("<x/>"), DescribeTiles(*again, found, offer, "/vsimem/y", "/vsimem/x"),
                                DescribeCoverage(*again, found)})
        Demand(XMLNode().LoadText(text, &fault));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size) {
    std::string_view const text(reinterpret_cast<char const *>(data), size);
    static ServiceAddress const address = *ParseServiceAddress("ogc+https://ann@maps.lab/ows?map=field");
    for (Service const service : {Service::Wms, Service::Wmts, Service::Wcs, Service::Wfs}) {
        DError error;
        auto const found = ReadCapabilities(service, text, error);
        Demand(found.has_value() != error.IsSet());
        if (!found)
            continue;
        constexpr int mostChecked = 20;
        for (int i = 0; i < static_cast<int>(found->offers.size()); ++i) {
            Offer const &offer = found->offers[static_cast<std::size_t>(i)];
            Demand(offer.parent < i && offer.parent >= -1);
            if (i < mostChecked)
                CheckOffer(address, *found, offer, text);
        }
    }
    return 0;
}
