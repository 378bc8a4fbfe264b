#include "zelvar/data/gdal/Tree.h"

#include "zelvar/base/Report.h"
#include "zelvar/base/TypedSecrets.h"

#include <cstring>
#include <exception>
#include <tuple>
#include <utility>

namespace zelvar::gdal {

namespace {

struct Repository {
    std::unique_ptr<Tree> tree;
    DString url; ///< as it was asked for: the root is opened by it too
};

struct Walk {
    std::unique_ptr<ChildCursor> cursor;
    std::uint32_t mask = 0;
    std::vector<BDINode> children; ///< the present part
    std::size_t next = 0;

    [[nodiscard]] bool IsAtHand() const { return next < children.size() || cursor->IsAtEnd(); }
    /// Goes to the next part, with those of its children that are wanted. Nothing is at hand.
    void Fetch() {
        next = 0;
        children.clear();
        if (cursor->Next(children))
            std::erase_if(children, [this](BDINode const &child) { return (child.type & mask) == 0; });
    }
};

class ListedChildren : public ChildCursor {
public:
    explicit ListedChildren(std::vector<BDINode> nodes) : m_nodes(std::move(nodes)) {}
    bool Next(std::vector<BDINode> &part) override {
        if (m_isAtEnd)
            return false;
        part = std::move(m_nodes);
        return m_isAtEnd = true;
    }
    [[nodiscard]] bool IsAtEnd() const override { return m_isAtEnd; }

private:
    std::vector<BDINode> m_nodes;
    bool m_isAtEnd = false;
};

// Nodes that tell how the tree may be filtered. A "?" never occurs in the path of a folder's child as it stands.
constexpr char const *kFilters = "?Filters";
constexpr char const *kFilter = "?Filters=";

Repository &Of(void *repository) { return *static_cast<Repository *>(repository); }

/// What a tree over damaged data throws (no memory, a broken name) ends here.
template <class Result, class Body>
Result Guarded(char const *what, Body const &body) {
    try {
        return body();
    } catch (std::exception const &failure) {
        Report::TraceMessage(Report::kTraceDriver, "%s failed: %s", what, failure.what());
        return Result{};
    }
}

std::vector<BDINode> FilterNodes(Tree const &tree, DString const &rootPath) {
    std::vector<BDINode> nodes;
    for (DString const &mask : tree.Filters()) {
        nodes.push_back(MakeNode(BDINode_Table, rootPath + kFilter + std::to_string(nodes.size()), "Filter"));
        nodes.back().value = mask;
    }
    return nodes;
}

std::unique_ptr<ChildCursor> ChildrenOf(Tree const &tree, BDINode const &parent, std::uint32_t mask,
                                        DString const &names) {
    DString const rootPath = tree.Root().path;
    if (parent.path == rootPath + kFilters)
        return WholeChildren(FilterNodes(tree, rootPath));
    if (parent.path != rootPath || mask != BDINode_Table || tree.Filters().empty())
        return tree.OpenChildren(parent, names);
    std::vector<BDINode> nodes = tree.Children(parent);
    nodes.insert(nodes.begin(), MakeNode(BDINode_Table, rootPath + kFilters, "Filters"));
    return WholeChildren(std::move(nodes));
}

} // namespace

std::unique_ptr<ChildCursor> WholeChildren(std::vector<BDINode> nodes) {
    return std::make_unique<ListedChildren>(std::move(nodes));
}

std::unique_ptr<ChildCursor> Tree::OpenChildren(BDINode const &parent, DString const &) const {
    return WholeChildren(Children(parent));
}

BDINode MakeNode(std::uint32_t type, DString path, DString name) {
    BDINode node;
    node.type = type;
    node.path = std::move(path);
    node.name = std::move(name);
    return node;
}

int TreeDriver::GetAttrInt(char const *name) const {
    if (std::strcmp(name, "BDI_Multiple_Images") == 0)
        return HoldsMultipleImages() ? 1 : 0;
    return std::strcmp(name, "BDI_Filtering") == 0 && TakesFilter() ? 1 : 0;
}

void *TreeDriver::Hand(std::unique_ptr<Tree> tree, DString const &url, BDINode **root) {
    if (tree == nullptr)
        return nullptr;
    *root = new BDINode(tree->Root());
    return new Repository{std::move(tree), url};
}

void *TreeDriver::OpenRepository(char const *url, BDINode **root, char const *filter) {
    BDIDrvr *opener = nullptr;
    return TreeDriver::OpenRepositoryOrSay(url, false, &opener, root, filter, nullptr);
}

void *TreeDriver::OpenRepositoryOrSay(char const *url, bool, BDIDrvr **opener, BDINode **root, char const *filter,
                                      DError *error) {
    if (url == nullptr || *url == '\0')
        return nullptr;
    DError reason;
    *opener = this;
    void *const repository = Guarded<void *>("opening a tree", [&] {
        DString const place = TakeSecrets(url);
        return Hand(OpenTree(place, filter == nullptr ? "" : filter, reason), place, root);
    });
    if (error != nullptr)
        *error = repository == nullptr ? std::move(reason) : DError();
    return repository;
}

void TreeDriver::CloseRepository(void *repository) { delete static_cast<Repository *>(repository); }

BDINode *TreeDriver::OpenNode(void *repository, char const *path) {
    if (repository == nullptr || path == nullptr)
        return nullptr;
    return Guarded<BDINode *>("opening a node", [&]() -> BDINode * {
        Tree const &tree = *Of(repository).tree;
        BDINode root = tree.Root();
        if (Of(repository).url == path || root.path == path)
            return new BDINode(std::move(root));
        if (root.path + kFilters == path)
            return new BDINode(MakeNode(BDINode_Table, path, "Filters"));
        if (std::string_view(path).starts_with(root.path + kFilter)) {
            for (BDINode &node : FilterNodes(tree, root.path))
                if (node.path == path)
                    return new BDINode(std::move(node));
            return nullptr;
        }
        std::optional<BDINode> found = tree.Find(path);
        return found ? new BDINode(std::move(*found)) : nullptr;
    });
}

BDINode *TreeDriver::CloneNode(BDINode const *node) { return node == nullptr ? nullptr : new BDINode(*node); }

void TreeDriver::CloseNode(BDINode *node) { delete node; }

void *TreeDriver::FindFirstChildNamed(void *repository, BDINode const *node, int mask, char const *names) {
    if (repository == nullptr || node == nullptr)
        return nullptr;
    return Guarded<void *>("listing a node", [&]() -> void * {
        auto walk = std::make_unique<Walk>();
        walk->mask = static_cast<std::uint32_t>(mask);
        walk->cursor = ChildrenOf(*Of(repository).tree, *node, walk->mask, names == nullptr ? "" : names);
        if (walk->cursor == nullptr)
            return nullptr;
        walk->Fetch();
        return walk->children.empty() && walk->cursor->IsAtEnd() ? nullptr : walk.release();
    });
}

BDINode const *TreeDriver::FindNextChildNode(void *find) {
    auto *walk = static_cast<Walk *>(find);
    if (walk == nullptr)
        return nullptr;
    return Guarded<BDINode const *>("listing a node", [&]() -> BDINode const * {
        while (!walk->IsAtHand())
            walk->Fetch();
        return walk->next < walk->children.size() ? &walk->children[walk->next++] : nullptr;
    });
}

bool TreeDriver::IsNextAtHand(void *find) const { return find == nullptr || static_cast<Walk *>(find)->IsAtHand(); }

void TreeDriver::FetchNextPart(void *find) {
    std::ignore = Guarded<bool>("listing a node", [&] {
        if (auto *const walk = static_cast<Walk *>(find); walk != nullptr && !walk->IsAtHand())
            walk->Fetch();
        return true;
    });
}

DError TreeDriver::GetWalkError(void *repository) const {
    return repository == nullptr ? DError() : Of(repository).tree->ChildrenError();
}

void TreeDriver::FindClose(void *find) { delete static_cast<Walk *>(find); }

} // namespace zelvar::gdal
