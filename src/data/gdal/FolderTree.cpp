#include "zelvar/data/gdal/FolderTree.h"

#include "zelvar/base/NaturalOrder.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/data/DataFolderLook.h"
#include "zelvar/data/RequestScope.h"
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

/// One listing of a folder. What has come of it is kept for as long as somebody else may want it.
class FolderTree::Listed {
public:
    struct Part {
        std::vector<FolderEntry> entries{};
        DError error{};
    };
    /// `listing` null: the first part is all.
    Listed(DString folder, DString key, std::unique_ptr<FolderListing> listing)
        : m_folder(std::move(folder)), m_key(std::move(key)), m_listing(std::move(listing)) {}
    [[nodiscard]] DString const &Folder() const { return m_folder; }
    [[nodiscard]] bool IsOf(DString const &folder, DString const &key) const {
        return m_folder == folder && m_key == key;
    }
    [[nodiscard]] bool IsInParts() const { return m_listing != nullptr; }
    [[nodiscard]] bool Has(std::size_t part) const {
        return part < m_parts.size() || (m_listing != nullptr && !m_listing->IsAtEnd());
    }
    /// One behind the last that has come is waited for.
    [[nodiscard]] Part &Get(std::size_t part) {
        if (part == m_parts.size()) {
            Part next;
            next.error = m_listing->Next(next.entries);
            m_parts.push_back(std::move(next));
        }
        return m_parts[part];
    }
    void PutAll(Part part) { m_parts.push_back(std::move(part)); }

private:
    DString m_folder;
    DString m_key; ///< of its place, see `FolderPlace::ListingKey`
    std::unique_ptr<FolderListing> m_listing;
    std::vector<Part> m_parts;
};

FolderTree::ListedPtr FolderTree::Begin(DString const &folder, DString const &mask) const {
    auto listed = std::make_shared<Listed>(folder, m_place.ListingKey(mask), m_place.Begin(folder, mask));
    if (!listed->IsInParts()) {
        Listed::Part all;
        all.error = m_place.List(folder, all.entries);
        listed->PutAll(std::move(all));
    }
    return listed;
}

bool FolderTree::CanList(DError &error) {
    if (std::optional<bool> const known = m_place.CanList(m_root.path))
        return *known;
    ListedPtr listed = Begin(m_root.path, m_filter);
    Listed::Part const &first = listed->Get(0);
    if (first.error.IsSet() && first.entries.empty()) {
        error = first.error;
        return false;
    }
    m_last = std::move(listed);
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

/// Children of a folder, by the parts in which it comes.
class FolderTree::Cursor : public ChildCursor {
public:
    Cursor(FolderTree const &tree, ListedPtr listed, DString const &names)
        : m_tree(tree), m_listed(std::move(listed)), m_names(m_listed->IsInParts() ? names : DString()) {}

    bool Next(std::vector<BDINode> &part) override {
        if (IsAtEnd())
            return false;
        Listed::Part &came = m_listed->Get(m_next++);
        m_tree.m_error = came.error;
        bool const isLast = m_listed.use_count() == 1;
        part = m_tree.MakeNodes(m_listed->Folder(), isLast ? std::move(came.entries) : came.entries, m_names);
        m_tree.Remember(part);
        return true;
    }
    [[nodiscard]] bool IsAtEnd() const override { return !m_listed->Has(m_next); }

private:
    FolderTree const &m_tree;
    ListedPtr m_listed;
    DString m_names;
    std::size_t m_next = 0;
};

std::unique_ptr<ChildCursor> FolderTree::OpenChildren(BDINode const &parent, DString const &names) const {
    m_error.Clear();
    if ((parent.type & BDINode_Directory) == 0) {
        auto nodes = (parent.type & BDINode_Container) != 0 ? m_inner.Of(parent) : std::vector<BDINode>();
        Remember(nodes);
        return WholeChildren(std::move(nodes));
    }
    // A store lists what begins alike without the rest; of two masks one is left for here.
    DString const &mask = m_filter.empty() ? names : m_filter;
    std::uint64_t const together = RequestScope::Together();
    bool const isSame = m_last != nullptr && m_last->IsOf(parent.path, m_place.ListingKey(mask)) &&
                        (m_lastTogether == 0 || m_lastTogether == together);
    ListedPtr listed = isSame ? m_last : Begin(parent.path, mask);
    m_last = together == 0 ? nullptr : listed;
    m_lastTogether = together;
    return std::make_unique<Cursor>(*this, std::move(listed), names);
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
