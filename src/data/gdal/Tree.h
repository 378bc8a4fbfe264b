#pragma once

#include "zelvar/data/BDIDrvr.h"

#include <memory>
#include <optional>
#include <vector>

namespace zelvar::gdal {

/// Children of a node on their way: they come in parts where their source gives them so. It ends before its tree.
class ChildCursor {
public:
    virtual ~ChildCursor() = default;
    ChildCursor(ChildCursor const &) = delete;
    ChildCursor &operator=(ChildCursor const &) = delete;

    /// Puts the next part in place of what `part` holds, which may be nothing. False behind the last one: then there is
    /// none. May wait for a server.
    virtual bool Next(std::vector<BDINode> &part) = 0;
    /// Whether the part that came last was the last one, as far as that is known without asking.
    [[nodiscard]] virtual bool IsAtEnd() const = 0;

protected:
    ChildCursor() = default;
};

/// An open tree. Nodes are values; nothing in it is kept open between two calls but what a cursor holds.
class Tree {
public:
    virtual ~Tree() = default;
    Tree(Tree const &) = delete;
    Tree &operator=(Tree const &) = delete;

    [[nodiscard]] virtual BDINode Root() const = 0;
    /// The node of a path as `Root` and `Children` gave it; nothing if it is gone.
    [[nodiscard]] virtual std::optional<BDINode> Find(DString const &path) const = 0;
    [[nodiscard]] virtual std::vector<BDINode> Children(BDINode const &parent) const = 0;
    /// The same in parts. `names` is a mask of those that are wanted, empty for all; one that lists all at once need
    /// not regard it.
    [[nodiscard]] virtual std::unique_ptr<ChildCursor> OpenChildren(BDINode const &parent, DString const &names) const;
    /// What kept the last question for children from its answer, or the last cursor from going on; not set where
    /// nothing did.
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
    void *FindFirstChildNode(void *repository, BDINode const *node, int mask) override {
        return FindFirstChildNamed(repository, node, mask, nullptr);
    }
    void *FindFirstChildNamed(void *repository, BDINode const *node, int mask, char const *names) override;
    BDINode const *FindNextChildNode(void *find) override;
    void FindClose(void *find) override;
    [[nodiscard]] DError GetWalkError(void *repository) const override;
    [[nodiscard]] bool IsNextAtHand(void *find) const override;
    void FetchNextPart(void *find) override;
    [[nodiscard]] bool HasPlainNodes() const override { return true; }

protected:
    /// Null if `url` is no tree of this driver, with the reason in `error` where more is known. `filter` may be empty.
    [[nodiscard]] virtual std::unique_ptr<Tree> OpenTree(DString const &url, DString const &filter,
                                                         DError &error) const = 0;
    [[nodiscard]] virtual bool HoldsMultipleImages() const { return true; }
    [[nodiscard]] virtual bool TakesFilter() const { return false; }

    /// A repository handle for the tree, and its root.
    static void *Hand(std::unique_ptr<Tree> tree, DString const &url, BDINode **root);
};

/// Children that are all there.
[[nodiscard]] std::unique_ptr<ChildCursor> WholeChildren(std::vector<BDINode> nodes);

[[nodiscard]] BDINode MakeNode(std::uint32_t type, DString path, DString name);

} // namespace zelvar::gdal
