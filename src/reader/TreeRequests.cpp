#include "zelvar/reader/TreeRequests.h"

#include "zelvar/data/BDIDrvr.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/data/reader/NodeMessage.h"
#include "zelvar/data/wire/MessageChannel.h"

#include <algorithm>

namespace zelvar::reader {

namespace {

constexpr std::size_t kMostNodes = 1'000'000; // of one answer
constexpr std::size_t kMostBytes = wire::MessageChannel::kLongest / 2;
constexpr std::size_t kBytesBesideTexts = 128; // of a node in a message, and more

/// A node that a driver made, given back to it.
struct CloseNode {
    BDIDrvr *driver = nullptr;
    void operator()(BDINode *node) const { driver->CloseNode(node); }
};
using OwnedNode = std::unique_ptr<BDINode, CloseNode>;

/// A walk at the child that was asked for: one that stands there, or a new one that has passed over those before. What
/// is asked for may be more than there is.
class WalkInHand {
public:
    WalkInHand(OpenTrees::Tree &tree, BDINode const &parent, wire::ListChildrenT const &asked, StopSignal const &stop)
        : m_tree(tree) {
        m_walk.number = asked.walk;
        auto const at = std::ranges::find(tree.walks, asked.walk, &OpenTrees::Tree::Walk::number);
        if (at != tree.walks.end()) {
            m_walk = *at;
            tree.walks.erase(at);
            if (m_walk.passed == asked.first) {
                tree.driver->FetchNextPart(m_walk.find); // one a request, which may be stopped
                return;
            }
            tree.driver->FindClose(m_walk.find);
            m_walk.passed = 0;
        }
        m_walk.find = tree.driver->FindFirstChildNamed(tree.repository, &parent, asked.mask, asked.names.c_str());
        while (m_walk.passed < asked.first && !stop && Next() != nullptr)
            continue;
    }
    ~WalkInHand() { Close(); }
    WalkInHand(WalkInHand const &) = delete;
    WalkInHand &operator=(WalkInHand const &) = delete;

    /// Null at the end, where the walk is closed.
    BDINode const *Next() {
        BDINode const *const child = m_walk.find == nullptr ? nullptr : m_tree.driver->FindNextChildNode(m_walk.find);
        if (child == nullptr)
            Close();
        else
            ++m_walk.passed;
        return child;
    }
    [[nodiscard]] bool IsNextAtHand() const {
        return m_walk.find == nullptr || m_tree.driver->IsNextAtHand(m_walk.find);
    }
    /// Leaves it open for another request; false if it is at its end.
    [[nodiscard]] bool Keep() {
        if (m_walk.find == nullptr)
            return false;
        if (m_tree.walks.size() == OpenTrees::Tree::kMostWalks)
            m_tree.CloseWalk(m_tree.walks.front().number);
        m_tree.walks.push_back(m_walk);
        m_walk.find = nullptr;
        return true;
    }

private:
    void Close() {
        if (m_walk.find != nullptr)
            m_tree.driver->FindClose(m_walk.find);
        m_walk.find = nullptr;
    }

    OpenTrees::Tree &m_tree;
    OpenTrees::Tree::Walk m_walk;
};

} // namespace

Answer TreeRequests::Open(wire::OpenTreeT const &asked) {
    return With(m_trees, asked.tree, [&](OpenTrees::Tree const &tree) {
        wire::TreeOpenedT opened;
        opened.driver = tree.driver->GetId();
        if (tree.root != nullptr)
            opened.root = ToWire(*tree.root);
        return Say(std::move(opened));
    });
}

Answer TreeRequests::FindNode(wire::FindNodeT const &asked) {
    return With(m_trees, asked.tree, [&](OpenTrees::Tree const &tree) {
        OwnedNode const node(tree.driver->OpenNode(tree.repository, asked.path.c_str()), CloseNode{tree.driver});
        if (node == nullptr)
            return Failure("no node " + asked.path);
        wire::NodeFoundT found;
        found.node = ToWire(*node);
        return Say(std::move(found));
    });
}

Answer TreeRequests::ListChildren(wire::ListChildrenT const &asked) {
    return With(m_trees, asked.tree, [&](OpenTrees::Tree &tree) {
        if (asked.parent == nullptr)
            return Failure(kIncomplete);
        if (tree.root != nullptr && asked.parent->path == tree.root->path)
            return WalkChildren(tree, *tree.root, asked);
        OwnedNode const known(tree.driver->OpenNode(tree.repository, asked.parent->path.c_str()),
                              CloseNode{tree.driver});
        if (known != nullptr)
            return WalkChildren(tree, *known, asked);
        // A folder that another reader has seen, which is no more: what the application knows of it is as good.
        Answer nothing = Failure("no node " + asked.parent->path);
        if (!tree.driver->HasPlainNodes() || (asked.parent->type & BDINode_Directory) == 0)
            return nothing;
        Answer told = WalkChildren(tree, NodeFrom(wire::NodeT(*asked.parent)), asked);
        wire::ChildrenT const *const children = told.AsChildren();
        return children != nullptr && children->nodes.empty() && !children->more ? std::move(nothing) : std::move(told);
    });
}

Answer TreeRequests::WalkChildren(OpenTrees::Tree &tree, BDINode const &parent,
                                  wire::ListChildrenT const &asked) const {
    wire::ChildrenT children;
    RequestScope scope(RequestKind::List);
    scope.together = asked.together;
    WalkInHand walk(tree, parent, asked, *m_stop);
    bool const inParts = asked.walk != 0;
    std::size_t bytes = 0;
    bool isFull = false;
    while (!isFull && (!inParts || walk.IsNextAtHand())) {
        BDINode const *const child = walk.Next();
        if (m_stop->load())
            return Failure(kStopped);
        if (child == nullptr)
            break;
        children.nodes.push_back(ToWire(*child));
        bytes += child->path.size() + child->name.size() + child->value.size() + kBytesBesideTexts;
        isFull = bytes > kMostBytes || children.nodes.size() == kMostNodes;
    }
    children.more = inParts && walk.Keep();
    if (isFull && !inParts)
        return Failure("more nodes than fit into one answer");
    if (DError const error = tree.driver->GetWalkError(tree.repository); error.IsSet()) {
        Answer failure = Failure(error);
        if (children.nodes.empty())
            return failure;
        if (inParts)
            children.failed = std::make_unique<wire::FailedT>(*failure.AsFailed());
    }
    return Say(std::move(children));
}

} // namespace zelvar::reader
