#pragma once

#include "zelvar/data/gdal/MapService.h"
#include "zelvar/data/gdal/Tree.h"

#include <unordered_map>

namespace zelvar::gdal {

/// What a map service offers: layers in their groups with their styles, layers of tiles with their matrix sets,
/// coverages, types of features. An address that does not say which service it is has a folder for each that answers.
/// Asked for once, when the tree opens.
class MapServiceTree : public Tree {
public:
    using Known = std::vector<std::shared_ptr<KnownService const>>;
    /// Null, with the reason in `error`, if what the address names is not there.
    [[nodiscard]] static std::unique_ptr<Tree> Make(services::ServiceAddress const &address, Known known,
                                                    DError &error);
    [[nodiscard]] BDINode Root() const override { return m_rows[m_root].node; }
    [[nodiscard]] std::optional<BDINode> Find(DString const &path) const override;
    [[nodiscard]] std::vector<BDINode> Children(BDINode const &parent) const override;

private:
    struct Row {
        BDINode node;
        std::vector<std::size_t> children{};          ///< rows
        services::Capabilities const *from = nullptr; ///< of an offer, else null
        int offer = -1;
    };

    MapServiceTree(services::ServiceAddress address, Known known);
    std::size_t Add(std::size_t parent, BDINode node);
    void AddOffers(std::size_t parent, services::Capabilities const &capabilities);
    [[nodiscard]] std::vector<BDINode> Ways(Row const &row) const;

    services::ServiceAddress m_address;
    Known m_known;
    std::vector<Row> m_rows{}; ///< the whole connection first
    std::unordered_map<DString, std::size_t> m_byPath{};
    std::unordered_map<DString, int> m_groups{}; ///< how many there are of a title
    std::size_t m_root = 0;
};

/// Tree driver over map services: "wms+https://", "wmts+https://", "wcs+https://", "wfs+https://", and "ogc+https://"
/// where it is to be found out; the same with "http".
class MapServiceDriver : public TreeDriver {
public:
    [[nodiscard]] DString GetId() const override { return "OGC"; }
    [[nodiscard]] DString GetInfo() const override { return "Map service (WMS, WMTS, WCS, WFS)"; }
    [[nodiscard]] bool CanReadPath(DString const &) const override { return false; } ///< a service is no file

protected:
    [[nodiscard]] std::unique_ptr<Tree> OpenTree(DString const &url, DString const &filter,
                                                 DError &error) const override;
    [[nodiscard]] bool HoldsMultipleImages() const override { return false; }
};

} // namespace zelvar::gdal
