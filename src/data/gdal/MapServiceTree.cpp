#include "zelvar/data/gdal/MapServiceTree.h"

#include <algorithm>
#include <utility>

namespace zelvar::gdal {

namespace {

using services::Capabilities;
using services::Offer;
using services::Service;
using services::ServiceAddress;

/// What a service with no title is called: its server.
DString NameOf(ServiceAddress const &address) {
    DString const rest = address.url.substr(std::min(address.url.find("://"), address.url.size() - 3) + 3);
    return rest.substr(0, rest.find_first_of("/?"));
}

bool IsGroup(Offer const &offer) { return offer.name.empty(); }

/// A layer with more than one way to show it holds these ways.
bool HasWays(Capabilities const &capabilities, Offer const &offer) {
    bool const isTiles = capabilities.service == Service::Wmts;
    return isTiles ? offer.matrixSets.size() * std::max<std::size_t>(offer.styles.size(), 1) > 1
                   : offer.countStyles > 1;
}

std::uint32_t TypeOf(Capabilities const &capabilities, Offer const &offer) {
    if (capabilities.service == Service::Wfs)
        return BDINode_Thematic | BDINode_Table;
    if (IsGroup(offer))
        return kDirectoryNode;
    return BDINode_Raster | (HasWays(capabilities, offer) ? BDINode_Container : 0U);
}

} // namespace

MapServiceTree::MapServiceTree(ServiceAddress address, Known known)
    : m_address(std::move(address)), m_known(std::move(known)) {
    bool const isOne = m_known.size() == 1;
    DString const &title = isOne ? m_known.front()->capabilities.title : DString();
    Add(0, MakeNode(kDirectoryNode, m_address.connection, title.empty() ? NameOf(m_address) : title));
    for (auto const &service : m_known) {
        std::size_t parent = 0;
        if (!isOne || m_address.isFolder) {
            DString const name = services::NameOf(service->capabilities.service);
            parent =
                Add(0, MakeNode(kDirectoryNode,
                                m_address.Inside({.service = service->capabilities.service, .isFolder = true}), name));
        }
        AddOffers(parent, service->capabilities);
    }
}

std::size_t MapServiceTree::Add(std::size_t parent, BDINode node) {
    std::size_t const index = m_rows.size();
    m_byPath.try_emplace(node.path, index);
    m_rows.push_back({.node = std::move(node)});
    if (index != parent)
        m_rows[parent].children.push_back(index);
    return index;
}

void MapServiceTree::AddOffers(std::size_t parent, Capabilities const &capabilities) {
    std::vector<Offer> const &offers = capabilities.offers;
    // One layer around all others is the whole map: what it holds stands beside it.
    bool const isAround = offers.size() > 1 && std::all_of(offers.begin() + 1, offers.end(),
                                                           [](Offer const &offer) { return offer.parent >= 0; });
    std::vector<std::size_t> rows(offers.size());
    for (std::size_t i = 0; i < offers.size(); ++i) {
        Offer const &offer = offers[i];
        std::size_t const in =
            offer.parent < 0 || (isAround && offer.parent == 0) ? parent : rows[static_cast<std::size_t>(offer.parent)];
        rows[i] = parent;
        if (isAround && i == 0 && IsGroup(offer))
            continue;
        ServiceAddress thing{.service = capabilities.service};
        DString title = offer.title;
        if (IsGroup(offer)) {
            int const number = ++m_groups[title];
            thing.group = number > 1 || title.empty() ? zelvar::Format("%s#%d", title.c_str(), number) : title;
            title = title.empty() ? thing.group : title;
        } else {
            (capabilities.service == Service::Wfs   ? thing.type
             : capabilities.service == Service::Wcs ? thing.coverage
                                                    : thing.layer) = offer.name;
        }
        bool const hasOneSet = capabilities.service == Service::Wmts && !HasWays(capabilities, offer);
        if (hasOneSet)
            thing.matrixSet = offer.matrixSets.front();
        rows[i] = Add(in, MakeNode(TypeOf(capabilities, offer), m_address.Inside(thing), title));
        m_rows[rows[i]].from = &capabilities;
        m_rows[rows[i]].offer = static_cast<int>(i);
        if (in != parent)
            m_rows[in].node.type |= BDINode_Container;
    }
}

/// A layer's styles, and the sets of tiles that it has.
std::vector<BDINode> MapServiceTree::Ways(Row const &row) const {
    std::vector<BDINode> ways;
    Offer const &offer = row.from->offers[static_cast<std::size_t>(row.offer)];
    if (!HasWays(*row.from, offer))
        return ways;
    auto const add = [&](DString const &set, services::Style const &style) {
        DString const title = style.title.empty() ? style.name : style.title;
        bool const isBoth = !set.empty() && !title.empty();
        ways.push_back(
            MakeNode(BDINode_Raster,
                     m_address.Inside(
                         {.service = row.from->service, .layer = offer.name, .style = style.name, .matrixSet = set}),
                     isBoth ? set + ", " + title : set + title));
    };
    constexpr std::size_t most = 1000;
    std::vector<services::Style> styles = row.from->StylesOf(offer);
    bool const isTiles = row.from->service == Service::Wmts;
    if (isTiles && styles.empty())
        styles.emplace_back();
    std::vector<DString> const sets = isTiles ? offer.matrixSets : std::vector<DString>(1);
    for (DString const &set : sets)
        for (services::Style const &style : styles)
            if (ways.size() < most)
                add(set, isTiles && styles.size() == 1 ? services::Style() : style);
    return ways;
}

std::vector<BDINode> MapServiceTree::Children(BDINode const &parent) const {
    auto const at = m_byPath.find(parent.path);
    if (at == m_byPath.end())
        return {};
    Row const &row = m_rows[at->second];
    std::vector<BDINode> children = row.from == nullptr ? std::vector<BDINode>() : Ways(row);
    children.reserve(children.size() + row.children.size());
    for (std::size_t const child : row.children)
        children.push_back(m_rows[child].node);
    return children;
}

std::optional<BDINode> MapServiceTree::Find(DString const &path) const {
    if (auto const at = m_byPath.find(path); at != m_byPath.end())
        return m_rows[at->second].node;
    auto const thing = services::ParseServiceAddress(path);
    if (!thing)
        return std::nullopt;
    // As it is written here.
    DString const own = m_address.Inside(*thing);
    if (auto const at = m_byPath.find(own); at != m_byPath.end())
        return m_rows[at->second].node;
    auto const layer = m_byPath.find(m_address.Inside({.service = thing->service, .layer = thing->layer}));
    if (layer == m_byPath.end())
        return std::nullopt;
    for (BDINode &way : Children(m_rows[layer->second].node))
        if (way.path == own)
            return std::move(way);
    return std::nullopt;
}

std::unique_ptr<Tree> MapServiceTree::Make(ServiceAddress const &address, Known known, DError &error) {
    std::unique_ptr<MapServiceTree> tree(new MapServiceTree(address, std::move(known)));
    if (address.IsWhole())
        return tree;
    std::optional<BDINode> const inside = tree->Find(tree->m_address.Inside(address));
    if (!inside) {
        error.Set("there is no \"" + tree->m_address.Inside(address) + "\"", DError::Cause::Missing);
        return nullptr;
    }
    auto const row = tree->m_byPath.find(inside->path);
    tree->m_root = row == tree->m_byPath.end() ? tree->Add(0, *inside) : row->second; // a style is no row yet
    return tree;
}

std::unique_ptr<Tree> MapServiceDriver::OpenTree(DString const &url, DString const &, DError &error) const {
    auto const address = services::ParseServiceAddress(url);
    if (!address)
        return nullptr;
    GdalScope const scope(Reach::Network);
    std::vector<Service> wanted{address->service};
    if (address->service == Service::Any)
        wanted = {Service::Wms, Service::Wmts, Service::Wfs, Service::Wcs};
    MapServiceTree::Known known;
    for (Service const service : wanted) {
        DError reason;
        if (auto answer = AskService(*address, service, Freshness::New, reason))
            known.push_back(std::move(answer));
        else if (!error.IsSet() || error.Why() == DError::Cause::NotSupported)
            error = reason;
        // Who does not answer one question answers no other.
        using enum DError::Cause;
        if (reason.Why() == NoAnswer || reason.Why() == Untrusted)
            break;
    }
    if (known.empty())
        return nullptr;
    error.Clear();
    return MapServiceTree::Make(*address, std::move(known), error);
}

} // namespace zelvar::gdal
