#include "zelvar/data/gdal/FolderTree.h"

#include "zelvar/base/NaturalOrder.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/data/DataFolderLook.h"
#include "zelvar/data/gdal/FolderPlaces.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace zelvar::gdal {

namespace {

DString WithoutEndSlash(DString text) {
    while (text.size() > 1 && text.ends_with('/') && !text.ends_with("://"))
        text.pop_back();
    return text;
}

FolderPlace const &PlaceOf(FolderKind kind) {
    switch (kind) {
    case FolderKind::Web:
        return WebPlace();
    case FolderKind::Smb:
        return SmbPlace();
    case FolderKind::Directory:
        break;
    }
    return DiskPlace();
}

} // namespace

std::uint32_t FolderPlace::TypeOf(DString const &, FolderEntry const &entry) const {
    return entry.isFolder ? kDirectoryNode : Formats::Instance().TypeOf(entry.name);
}

FolderTree::FolderTree(FolderPlace const &place, DString root, DString filter)
    : m_place(place), m_filter(std::move(filter)) {
    root = WithoutEndSlash(std::move(root));
    DString name(FileNameOf(root));
    m_root = MakeNode(kDirectoryNode, root, name.empty() ? root : std::move(name));
}

bool FolderTree::CanList(DError &error) {
    if (std::optional<bool> const known = m_place.CanList(m_root.path))
        return *known;
    std::vector<FolderEntry> entries;
    m_restOfRoot = m_place.Begin(m_root.path, m_filter);
    error = m_restOfRoot == nullptr ? m_place.List(m_root.path, entries) : m_restOfRoot->Next(entries);
    if (error.IsSet() && entries.empty())
        return false;
    m_error = std::exchange(error, {});
    m_listedRoot = MakeNodes(m_root.path, std::move(entries), {});
    return true;
}

std::vector<BDINode> FolderTree::MakeNodes(DString const &folder, std::vector<FolderEntry> entries,
                                           DString const &names) const {
    auto const isWanted = [](DString const &name, DString const &mask) {
        return mask.empty() || PathMatchSpec(name, mask);
    };
    std::vector<std::pair<DString, FolderEntry>> ordered;
    ordered.reserve(entries.size());
    for (FolderEntry &entry : entries)
        if (entry.isFolder || (isWanted(entry.name, m_filter) && isWanted(entry.name, names)))
            ordered.emplace_back(MakeFileNameKey(entry.name), std::move(entry));
    std::sort(ordered.begin(), ordered.end(), [](auto const &a, auto const &b) { return a.first < b.first; });
    std::vector<BDINode> nodes;
    for (auto &[key, entry] : ordered) {
        DString path = m_place.PathOf(folder, entry);
        std::uint32_t const type = m_place.TypeOf(path, entry);
        if (type == 0)
            continue;
        BDINode &node = nodes.emplace_back(MakeNode(type, std::move(path), std::move(entry.name)));
        node.size = entry.size;
        node.modified = entry.modified;
    }
    return nodes;
}

void FolderTree::Remember(std::vector<BDINode> const &nodes) const {
    for (BDINode const &node : nodes)
        m_listed.insert_or_assign(node.path, node);
}

std::vector<BDINode> FolderTree::Children(BDINode const &parent) const {
    std::vector<BDINode> nodes;
    auto const cursor = OpenChildren(parent, {});
    for (std::vector<BDINode> part; cursor->Next(part);)
        std::move(part.begin(), part.end(), std::back_inserter(nodes));
    return nodes;
}

/// Children of a folder that comes in parts, or all at once.
class FolderTree::Cursor : public ChildCursor {
public:
    /// `listing` null: what `first` holds is all.
    Cursor(FolderTree const &tree, DString folder, DString names, std::optional<std::vector<BDINode>> first,
           std::unique_ptr<FolderListing> listing)
        : m_tree(tree), m_folder(std::move(folder)), m_names(std::move(names)), m_first(std::move(first)),
          m_listing(std::move(listing)) {}

    bool Next(std::vector<BDINode> &part) override {
        if (IsAtEnd())
            return false;
        if (m_first) {
            part = *std::exchange(m_first, std::nullopt);
        } else {
            std::vector<FolderEntry> entries;
            m_tree.m_error = m_listing->Next(entries);
            part = m_tree.MakeNodes(m_folder, std::move(entries), m_names);
        }
        m_tree.Remember(part);
        return true;
    }
    [[nodiscard]] bool IsAtEnd() const override { return !m_first && (m_listing == nullptr || m_listing->IsAtEnd()); }

private:
    FolderTree const &m_tree;
    DString m_folder;
    DString m_names;
    std::optional<std::vector<BDINode>> m_first;
    std::unique_ptr<FolderListing> m_listing;
};

std::unique_ptr<ChildCursor> FolderTree::OpenChildren(BDINode const &parent, DString const &names) const {
    auto const make = [&](std::optional<std::vector<BDINode>> first, std::unique_ptr<FolderListing> rest) {
        return std::make_unique<Cursor>(*this, parent.path, names, std::move(first), std::move(rest));
    };
    if (parent.path == m_root.path && m_listedRoot) {
        auto listed = std::exchange(m_listedRoot, std::nullopt);
        auto rest = std::move(m_restOfRoot);
        if (rest == nullptr || names.empty())
            return make(std::move(listed), std::move(rest));
    }
    m_error.Clear();
    if ((parent.type & BDINode_Directory) == 0)
        return make((parent.type & BDINode_Container) != 0 ? m_inner.Of(parent) : std::vector<BDINode>(), nullptr);
    // A store lists what begins alike without the rest; of two masks one is left for here.
    if (auto listing = m_place.Begin(parent.path, m_filter.empty() ? names : m_filter))
        return make(std::nullopt, std::move(listing));
    std::vector<FolderEntry> entries;
    m_error = m_place.List(parent.path, entries);
    return make(MakeNodes(parent.path, std::move(entries), {}), nullptr);
}

std::optional<BDINode> FolderTree::Find(DString const &path) const {
    auto const at = m_listed.find(path);
    return at == m_listed.end() ? m_inner.Find(path) : std::optional(at->second);
}

std::vector<DString> FolderTree::Filters() const {
    std::vector<DString> masks;
    for (Format const &format : Formats::Instance().All())
        if (format.raster && !format.extensions.empty() &&
            std::find(masks.begin(), masks.end(), format.extensions) == masks.end())
            masks.push_back(format.extensions);
    return masks;
}

DString FolderDriver::GetId() const {
    switch (m_kind) {
    case FolderKind::Web:
        return "WebDirectory";
    case FolderKind::Smb:
        return "SMB";
    case FolderKind::Directory:
        break;
    }
    return "Directory";
}

DString FolderDriver::GetInfo() const {
    switch (m_kind) {
    case FolderKind::Web:
        return "Folder of a web server or an object store";
    case FolderKind::Smb:
        return "Folder of a file server";
    case FolderKind::Directory:
        break;
    }
    return "Folder of images";
}

void *FolderDriver::OpenRepositoryOrSay(char const *url, bool inFamily, BDIDrvr **opener, BDINode **root,
                                        char const *filter, DError *error) {
    DString const folder =
        inFamily && m_kind == FolderKind::Directory && url != nullptr ? RootOf(m_kind, url) : DString();
    if (!folder.empty() && LookForDataFolder(folder))
        return nullptr;
    return TreeDriver::OpenRepositoryOrSay(url, inFamily, opener, root, filter, error);
}

std::unique_ptr<Tree> FolderDriver::OpenTree(DString const &url, DString const &filter, DError &error) const {
    DString const root = RootOf(m_kind, url);
    if (root.empty())
        return nullptr;
    auto tree = std::make_unique<FolderTree>(PlaceOf(m_kind), root, filter);
    return tree->CanList(error) ? std::move(tree) : nullptr;
}

} // namespace zelvar::gdal
