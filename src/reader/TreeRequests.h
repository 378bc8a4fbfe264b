#pragma once

#include "zelvar/data/StopSignal.h"
#include "zelvar/reader/Answers.h"
#include "zelvar/reader/OpenTrees.h"

namespace zelvar::reader {

/// Requests about trees of nodes.
class TreeRequests {
public:
    explicit TreeRequests(StopSignal const &stop) : m_stop(&stop) {}

    [[nodiscard]] Answer Open(wire::OpenTreeT const &asked);
    [[nodiscard]] Answer FindNode(wire::FindNodeT const &asked);
    [[nodiscard]] Answer ListChildren(wire::ListChildrenT const &asked);
    void Close(wire::CloseTreeT const &asked) { m_trees.Close(asked.id); }
    void CloseWalk(wire::CloseWalkT const &asked) { m_trees.CloseWalk(asked.tree, asked.walk); }

private:
    [[nodiscard]] Answer WalkChildren(OpenTrees::Tree &tree, BDINode const &parent,
                                      wire::ListChildrenT const &asked) const;

    StopSignal const *m_stop;
    OpenTrees m_trees;
};

} // namespace zelvar::reader
