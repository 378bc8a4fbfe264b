#include "zelvar/reader/TreeRequests.h"

#include "zelvar/data/BDIDrvr.h"
#include "zelvar/data/reader/NodeMessage.h"
#include "zelvar/data/wire/MessageChannel.h"

namespace zelvar::reader {

namespace {

constexpr std::size_t kMostNodes = 3'000'000;  // of one answer
constexpr std::size_t kBytesBesideTexts = 128; // of a node in a message, and more

/// A node that a driver made, given back to it.
struct CloseNode {
    BDIDrvr *driver = nullptr;
    void operator()(BDINode *node) const { driver->CloseNode(node); }
};
using OwnedNode = std::unique_ptr<BDINode, CloseNode>;

struct CloseWalk {
    BDIDrvr *driver = nullptr;
    void operator()(void *walk) const { driver->FindClose(walk); }
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
            return WalkChildren(tree, *tree.root, asked.mask);
        OwnedNode const parent(tree.driver->OpenNode(tree.repository, asked.parent->path.c_str()),
                               CloseNode{tree.driver});
        return parent == nullptr ? Failure("no node " + asked.parent->path) : WalkChildren(tree, *parent, asked.mask);
    });
}

Answer TreeRequests::WalkChildren(OpenTrees::Tree &tree, BDINode const &parent, int mask) const {
    wire::ChildrenT children;
    std::unique_ptr<void, CloseWalk> const walk(tree.driver->FindFirstChildNode(tree.repository, &parent, mask),
                                                CloseWalk{tree.driver});
    std::size_t bytes = 0;
    while (walk != nullptr) {
        BDINode const *const child = tree.driver->FindNextChildNode(walk.get());
        if (child == nullptr)
            break;
        bytes += child->path.size() + child->name.size() + child->value.size() + kBytesBesideTexts;
        if (bytes > wire::MessageChannel::kLongest || children.nodes.size() == kMostNodes)
            return Failure("more nodes than fit into one answer");
        if (m_stop->load())
            return Failure(kStopped);
        children.nodes.push_back(ToWire(*child));
    }
    if (DError const error = tree.driver->GetWalkError(tree.repository); children.nodes.empty() && error.IsSet())
        return Failure(error);
    return Say(std::move(children));
}

} // namespace zelvar::reader
