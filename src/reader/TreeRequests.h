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

private:
    [[nodiscard]] Answer WalkChildren(OpenTrees::Tree &tree, BDINode const &parent, int mask) const;

    StopSignal const *m_stop;
    OpenTrees m_trees;
};

} // namespace zelvar::reader
