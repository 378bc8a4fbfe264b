#include "zelvar/data/gdal/ContainerTree.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/base/TypedSecrets.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/gdal/ContainerProbe.h"
#include "zelvar/data/gdal/LandsatScene.h"
#include "zelvar/data/gdal/StoreListing.h"

#include <cpl_string.h>
#include <gdal.h>
#include <ogr_api.h>

#include <algorithm>
#include <charconv>
#include <utility>

namespace zelvar::gdal {

namespace {

constexpr int kMostMembers = 1'000'000;

DString WithOption(DString const &source, char const *name, DString const &value) {
    return BDIMoniker(source, nullptr).WithOptions(DString(name).append("=").append(value)).GetText();
}

/// GDAL's description of a node; "a - a", a name with an identifier that says no more, is "a".
DString ShownName(DString const &name, DString const &description) {
    if (description.empty())
        return name;
    std::size_t const half = description.find(" - ");
    bool const twice = half != DString::npos && description.size() == 2 * half + 3 &&
                       description.compare(0, half, description, half + 3, half) == 0;
    return twice ? description.substr(0, half) : description;
}

/// The groups that a thing lies in by GDAL's name for it: "a/b" of `HDF5:"f.h5"://a/b/c`, and nothing where the format
/// has none.
DString GroupOf(Source const &source, std::string_view name) {
    constexpr std::size_t deepest = 64;
    DString const file = DString("\"").append(source.name).append("\":");
    std::size_t const at = name.find(file);
    if (at == std::string_view::npos || !name.substr(at + file.size()).starts_with('/'))
        return {};
    DString group;
    std::vector<DString> const pieces = Split(name.substr(at + file.size()), '/');
    for (std::size_t i = 0; i + 1 < pieces.size() && i < deepest; ++i)
        if (!pieces[i].empty())
            group += (group.empty() ? "" : "/") + pieces[i];
    return group;
}

/// A node named by GDAL, unless the name leads out of the source: a file's content must not name a server.
void AddSubdataset(Source const &source, DString const &name, DString const &description, Members &members) {
    if (name.empty() || (source.reach == Reach::Local && BDIMoniker(name, nullptr).IsUrl()))
        return;
    members.nodes.push_back(MakeNode(BDINode_Raster, NodePath(source.text, name), ShownName(name, description)));
    members.groups.resize(members.nodes.size());
    members.groups.back() = GroupOf(source, name);
}

/// A piece of the list "SUBDATASET_<number>_NAME=<value>", "SUBDATASET_<number>_DESC=<value>".
struct Subdataset {
    DString name;
    DString description;
};

/// By number, from 1 on without a gap. In one pass: to look each up by its key would read the list once for each.
std::vector<Subdataset> ReadSubdatasets(char **list) {
    constexpr std::string_view prefix = "SUBDATASET_";
    std::vector<Subdataset> found;
    for (; list != nullptr && *list != nullptr; ++list) {
        std::string_view const entry(*list);
        std::size_t const equals = entry.find('=');
        if (equals == std::string_view::npos || !entry.starts_with(prefix))
            continue;
        int number = 0;
        char const *const end = entry.data() + equals;
        char const *const behind = std::from_chars(entry.data() + prefix.size(), end, number).ptr;
        std::string_view const key(behind, static_cast<std::size_t>(end - behind));
        if (number < 1 || number > kMostMembers || (key != "_NAME" && key != "_DESC"))
            continue;
        auto const place = static_cast<std::size_t>(number) - 1;
        if (place >= found.size())
            found.resize(place + 1);
        (key == "_NAME" ? found[place].name : found[place].description) = entry.substr(equals + 1);
    }
    auto const gap = std::find_if(found.begin(), found.end(), [](Subdataset const &s) { return s.name.empty(); });
    found.erase(gap, found.end());
    return found;
}

void AddSubdatasets(GDALDatasetH dataset, Source const &source, Members &members) {
    for (Subdataset const &piece : ReadSubdatasets(GDALGetMetadata(dataset, "SUBDATASETS")))
        AddSubdataset(source, piece.name, piece.description, members);
}

/// The picture of a scene, and the bands of another size: files that open by themselves.
void AddBandsApart(Source const &source, Members &members) {
    for (DString const &path : ReadLandsatScene(source.name).others) {
        if (members.nodes.empty())
            members.nodes.push_back(
                MakeNode(BDINode_Raster, WithOption(source.text, kRasterOption, "1"), RootName(source)));
        members.nodes.push_back(MakeNode(BDINode_Raster, path, DString(FileNameOf(path))));
    }
}

void AddLayers(GDALDatasetH dataset, Source const &source, Members &members) {
    int const count = std::min(GDALDatasetGetLayerCount(dataset), kMostMembers);
    if (count > 0 && members.nodes.empty() && members.hasPicture)
        members.nodes.push_back(
            MakeNode(BDINode_Raster, WithOption(source.text, kRasterOption, "1"), RootName(source)));
    for (int i = 0; i < count; ++i) {
        OGRLayerH layer = GDALDatasetGetLayer(dataset, i);
        if (layer == nullptr)
            continue;
        DString const name = OGR_L_GetName(layer);
        bool const table = OGR_L_GetGeomType(layer) == wkbNone;
        members.nodes.push_back(MakeNode(table ? BDINode_Table : BDINode_Thematic,
                                         WithOption(source.text, kLayerOption, PercentEncoded(name)), name));
    }
}

} // namespace

DString NodePath(DString const &source, DString const &virtualName) {
    DString const name = TakeSecrets(virtualName);
    // GDAL's name of what lies in a store does not tell the account.
    if (BDIMoniker(name, nullptr).GetSource() == name && !IsOfStore(source))
        return name;
    return WithOption(source, kNodeOption, PercentEncoded(name));
}

DString RootName(Source const &source) { return DString(FileNameOf(BDIMoniker(source.text, nullptr).GetSource())); }

std::vector<BDINode> InnerMembers::Of(BDINode const &container) {
    auto const source = Resolve({container.path, nullptr}, nullptr);
    auto members = source ? ListMembers(*source, nullptr) : std::nullopt;
    if (!members)
        return {};
    for (BDINode const &node : members->nodes)
        m_found.insert_or_assign(node.path, node);
    return std::move(members->nodes);
}

std::optional<BDINode> InnerMembers::Find(DString const &path) const {
    auto const at = m_found.find(path);
    return at == m_found.end() ? std::nullopt : std::optional(at->second);
}

std::optional<Members> ListMembers(Source const &source, Format const *only, DError *error) {
    if (source.service)
        return std::nullopt; // it has a tree of its own
    // Why a file holds no members would take another look at it.
    DError *const reason = source.reach == Reach::Network ? error : nullptr;
    OpenedSource const opened = Open(source, GDAL_OF_RASTER | GDAL_OF_VECTOR, only, reason);
    if (!opened)
        return std::nullopt;
    GdalScope const scope(source.reach);
    Members members;
    members.format = opened.format;
    members.hasPicture = GDALGetRasterCount(Raw(opened.dataset)) > 0;
    AddSubdatasets(Raw(opened.dataset), source, members);
    if (source.folder == DataFolder::Landsat)
        AddBandsApart(source, members);
    AddLayers(Raw(opened.dataset), source, members);
    members.groups.resize(members.nodes.size());
    return members;
}

ContainerTree::ContainerTree(Source const &source, Members members) : m_source(source.text) {
    std::uint32_t const type =
        (members.nodes.empty() ? 0U : BDINode_Container) | (members.hasPicture ? BDINode_Raster : 0U);
    m_root = MakeNode(type == 0 ? BDINode_Container : type, source.text, RootName(source));
    m_byPath.reserve(members.nodes.size());
    for (std::size_t i = 0; i < members.nodes.size(); ++i) {
        DString const parent = AddGroup(members.groups[i]);
        Add(parent, std::move(members.nodes[i]));
    }
    if (source.group.empty())
        return;
    // The tree of a group alone.
    auto const group = m_byPath.find(GroupPath(source.group));
    m_holdsGroup = group != m_byPath.end();
    if (m_holdsGroup)
        m_root = m_nodes[group->second];
}

std::unique_ptr<Tree> ContainerTree::Make(Source const &source, Members members) {
    std::unique_ptr<ContainerTree> tree(new ContainerTree(source, std::move(members)));
    return tree->m_holdsGroup ? std::move(tree) : nullptr;
}

DString ContainerTree::GroupPath(DString const &group) const {
    return group.empty() ? m_source : WithOption(m_source, kGroupOption, PercentEncoded(group));
}

DString ContainerTree::AddGroup(DString const &group) {
    DString path = GroupPath(group);
    if (group.empty() || m_byPath.contains(path))
        return path;
    // From the outermost one on.
    DString parent = GroupPath({});
    for (std::size_t begin = 0; begin < group.size();) {
        std::size_t const end = std::min(group.find('/', begin), group.size());
        DString const inner = GroupPath(group.substr(0, end));
        if (!m_byPath.contains(inner))
            Add(parent, MakeNode(BDINode_Container, inner, group.substr(begin, end - begin)));
        parent = inner;
        begin = end + 1;
    }
    return path;
}

void ContainerTree::Add(DString const &parent, BDINode node) {
    m_byPath.emplace(node.path, m_nodes.size());
    m_children[parent].push_back(m_nodes.size());
    m_nodes.push_back(std::move(node));
}

std::optional<BDINode> ContainerTree::Find(DString const &path) const {
    auto const at = m_byPath.find(path);
    return at == m_byPath.end() ? std::nullopt : std::optional(m_nodes[at->second]);
}

std::vector<BDINode> ContainerTree::Children(BDINode const &parent) const {
    std::vector<BDINode> children;
    auto const at = m_children.find(parent.path);
    for (std::size_t i = 0; at != m_children.end() && i < at->second.size(); ++i)
        children.push_back(m_nodes[at->second[i]]);
    return children;
}

bool ContainerDriver::HoldsMultipleImages() const { return IsContainerFormat(m_format); }

bool ContainerDriver::CanReadPath(DString const &path) const { return HoldsSeveral(path, m_format); }

std::unique_ptr<Tree> ContainerDriver::OpenTree(DString const &url, DString const &, DError &error) const {
    auto const source = Resolve({url, nullptr}, nullptr);
    std::optional<Members> members = source ? ListMembers(*source, &m_format, &error) : std::nullopt;
    return members ? ContainerTree::Make(*source, std::move(*members)) : nullptr;
}

void *ContainerDriver::OpenRepositoryOrSay(char const *url, bool inFamily, BDIDrvr **opener, BDINode **root,
                                           char const *filter, DError *error) {
    if (!inFamily)
        return TreeDriver::OpenRepositoryOrSay(url, inFamily, opener, root, filter, error);
    auto const source = Resolve({url, nullptr}, nullptr);
    std::optional<Members> members = source ? ListMembers(*source, nullptr, error) : std::nullopt;
    if (!members)
        return nullptr;
    BDIDrvr *const named = BDIDrvrMngr::Instance()->GetDrvr(members->format->id.c_str());
    *opener = named != nullptr && named->GetFamily() == GetFamily() ? named : this;
    return Hand(ContainerTree::Make(*source, std::move(*members)), url, root);
}

} // namespace zelvar::gdal
