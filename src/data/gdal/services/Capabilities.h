#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/data/gdal/services/ServiceAddress.h"

#include <cstdint>

namespace zelvar::services {

/// A place on the earth in the units of its system, x to the east and y to the north.
struct Extent {
    double left = 0;
    double bottom = 0;
    double right = 0;
    double top = 0;
    [[nodiscard]] bool IsValid() const { return left < right && bottom < top; }
};

/// An extent in a system, as a service writes it.
struct BoundingBox {
    DString system{}; ///< "EPSG:4326"
    Extent extent{};  ///< in the order of the axes that the system has for the version of the service
};

/// A way to draw a layer.
struct Style {
    DString name{};
    DString title{};
};

/// Something that a service offers: a layer, a coverage, a type of features. A value.
struct Offer {
    DString name{};                     ///< that requests use; empty for layers that only hold others
    DString title{};                    ///< for people
    int parent = -1;                    ///< index; -1 at the top
    std::vector<Style> styles{};        ///< its own alone
    std::size_t countStyles = 0;        ///< with those of the layers around it
    std::vector<BoundingBox> boxes{};   ///< its own alone
    std::optional<Extent> geographic{}; ///< its own, degrees
    bool hasCrs84 = false;              ///< it may be asked for in this one
    bool hasEpsg4326 = false;           ///< the same
    DString tiles{};                    ///< of a WMTS: the address of a tile, with places for its numbers
    std::vector<DString> matrixSets{};  ///< of a WMTS
};

/// What a service says of itself. A value.
struct Capabilities {
    Service service = Service::Any;
    DString version{};
    DString title{};
    DString place{};                ///< that is asked for maps or data; empty where it names none
    std::vector<DString> formats{}; ///< of maps, as "image/png"
    int mostPixels = 0;             ///< the longer side of a map; 0 for any
    std::vector<Offer> offers{};    ///< parents before what they hold

    /// The first offer of that name; null if there is none.
    [[nodiscard]] Offer const *Find(std::string_view name) const;
    /// Its own and those of the layers around it, some hundreds at most.
    [[nodiscard]] std::vector<Style> StylesOf(Offer const &offer) const;
    /// What the offer says, or the nearest of those around it.
    [[nodiscard]] std::vector<BoundingBox> BoxesOf(Offer const &offer) const;
    [[nodiscard]] std::optional<Extent> GeographicOf(Offer const &offer) const;
    [[nodiscard]] bool MayAskIn(Offer const &offer, bool Offer::*system) const;
};

/// Reads the answer to the question for the capabilities of a service, whatever it is: nothing in it is trusted.
/// Nothing, with the reason in `error`, for a web page, the service's own refusal, a broken document, another service,
/// or more offers than anybody would look through.
[[nodiscard]] std::optional<Capabilities> ReadCapabilities(Service service, std::string_view answer, DError &error);

/// The first line that a reader of a page or another text sees, cut; its title where it has one.
[[nodiscard]] DString FirstLineOf(std::string_view page);

} // namespace zelvar::services
