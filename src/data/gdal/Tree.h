#pragma once

#include "zelvar/data/BDIDrvr.h"

#include <memory>
#include <optional>
#include <vector>

namespace zelvar::gdal {

/// An open tree. Nodes are values; nothing in it is kept open between two calls.
class Tree {
public:
    virtual ~Tree() = default;
    Tree(Tree const &) = delete;
    Tree &operator=(Tree const &) = delete;

    [[nodiscard]] virtual BDINode Root() const = 0;
    /// The node of a path as `Root` and `Children` gave it; nothing if it is gone.
    [[nodiscard]] virtual std::optional<BDINode> Find(DString const &path) const = 0;
    [[nodiscard]] virtual std::vector<BDINode> Children(BDINode const &parent) const = 0;
    /// What kept the last question for children from its answer; not set where nothing did.
    [[nodiscard]] virtual DError ChildrenError() const { return {}; }
    /// Masks that the tree can be filtered with; empty where it knows no filter.
    [[nodiscard]] virtual std::vector<DString> Filters() const { return {}; }

protected:
    Tree() = default;
};

/// The node calls of a driver over a `Tree`.
class TreeDriver : public BDIDrvr {
public:
    [[nodiscard]] int GetAttrInt(char const *name) const override;
    void *OpenRepository(char const *url, BDINode **root, char const *filter) override;
    void *OpenRepositoryOrSay(char const *url, bool inFamily, BDIDrvr **opener, BDINode **root, char const *filter,
                              DError *error) override;
    void CloseRepository(void *repository) override;
    BDINode *OpenNode(void *repository, char const *path) override;
    BDINode *CloneNode(BDINode const *node) override;
    void CloseNode(BDINode *node) override;
    void *FindFirstChildNode(void *repository, BDINode const *node, int mask) override;
    BDINode const *FindNextChildNode(void *find) override;
    void FindClose(void *find) override;
    [[nodiscard]] DError GetWalkError(void *repository) const override;

protected:
    /// Null if `url` is no tree of this driver, with the reason in `error` where more is known. `filter` may be empty.
    [[nodiscard]] virtual std::unique_ptr<Tree> OpenTree(DString const &url, DString const &filter,
                                                         DError &error) const = 0;
    [[nodiscard]] virtual bool HoldsMultipleImages() const { return true; }
    [[nodiscard]] virtual bool TakesFilter() const { return false; }

    /// A repository handle for the tree, and its root.
    static void *Hand(std::unique_ptr<Tree> tree, DString const &url, BDINode **root);
};

[[nodiscard]] BDINode MakeNode(std::uint32_t type, DString path, DString name);

} // namespace zelvar::gdal
