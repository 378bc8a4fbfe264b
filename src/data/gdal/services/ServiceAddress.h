#pragma once

#include "zelvar/base/DString.h"

#include <optional>
#include <utility>
#include <vector>

namespace zelvar::services {

/// A kind of map service.
enum class Service {
    Any, ///< it is to be found out
    Wms,
    Wmts,
    Wcs,
    Wfs,
};
/// "WMS": as requests and monikers name it; empty for any.
[[nodiscard]] char const *NameOf(Service service);
[[nodiscard]] std::optional<Service> ServiceOf(std::string_view name); ///< letters in any case

/// The address of a map service, or of one thing in it: "wms+https://ann@maps.lab/ows?map=field&LAYER=height". What
/// stands in capital letters behind its own query names the thing, encoded. A value.
struct ServiceAddress {
    using Parts = std::vector<std::pair<char const *, DString>>; ///< keys in capital letters and plain values

    DString connection{}; ///< the part that names the service: "wms+https://ann@maps.lab/ows?map=field"
    DString url{};        ///< what requests begin with, without a login: "https://maps.lab/ows?map=field"
    DString login{};      ///< "ann" or, where the text held one, "ann:password"; as it is written
    Service service = Service::Any;
    bool isAny = false; ///< the address of the connection does not say which service it is
    DString version{};  ///< that the address asks for; empty for the server's own choice

    // The thing in it; all empty for the whole service.
    DString layer{};       ///< of a WMS or WMTS
    DString style{};       ///< of a layer; empty for the server's own choice
    DString matrixSet{};   ///< of a WMTS
    DString coverage{};    ///< of a WCS
    DString type{};        ///< of a WFS
    DString group{};       ///< of layers that have no name of their own
    bool isFolder = false; ///< it names one service of an address that has several, "SERVICE=WFS"

    /// Whether it names a layer, a coverage or a type.
    [[nodiscard]] bool HasThing() const { return !layer.empty() || !coverage.empty() || !type.empty(); }
    [[nodiscard]] bool IsWhole() const { return !HasThing() && group.empty() && !isFolder; }
    /// The moniker of something in this connection.
    [[nodiscard]] DString Inside(ServiceAddress const &thing) const;
    /// An address to ask: `url` with these behind it.
    [[nodiscard]] DString Request(Parts const &parts) const;
};

/// Whether a text begins as such an address does.
[[nodiscard]] bool IsServiceAddress(std::string_view text);
/// Nothing for what is none.
[[nodiscard]] std::optional<ServiceAddress> ParseServiceAddress(std::string_view text);

/// "https://maps.lab/ows?map=field" and parts: "?" and "&" where they are needed.
[[nodiscard]] DString WithQuery(DString url, ServiceAddress::Parts const &parts);

/// Where requests go for which the service at `asked` names `told`. That is there, but that what was asked with TLS is
/// not asked without: many a server behind a proxy does not know that it has TLS. Without a login.
[[nodiscard]] DString PlaceToAsk(DString const &asked, DString const &told);

/// Whether two addresses are of one host, port and way to reach it: a login for the one may be sent to the other.
[[nodiscard]] bool AreOfOneServer(DString const &a, DString const &b);

} // namespace zelvar::services
