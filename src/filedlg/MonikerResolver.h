#pragma once

#include "zelvar/base/Containers.h"
#include "zelvar/data/BDIMoniker.h"

#include <unordered_set>

namespace zelvar {

/// Turns the monikers of chosen files into those of the data in them. It works on the caller's list, whose pointers are
/// owned by whoever owns the list; null ones stay. Drivers are asked as often as there are files and nodes: whoever
/// calls it from the windows' thread lets the user stop it, see `RequestScope`. What cannot be opened stays as it is.
class MonikerResolver {
public:
    /// `nodeMask`: `BDINodeType` bits of the data wanted.
    MonikerResolver(int nodeMask, DVector<BDIMoniker *> &monikers) : m_nodeMask(nodeMask), m_monikers(monikers) {}

    /// Whether the list is one file with data of a wanted type inside, so that the user must choose.
    [[nodiscard]] bool HoldsAChoice() const;
    /// The one file gives way to nodes in it.
    void Replace(DVectorSafe<DString> const &paths);
    /// The one file gets the options that it needs to be opened.
    void AddDriverOptions();
    /// Each container gives way to all that is in it.
    void ExpandAll();
    /// What is of no wanted type loses its driver. Where tables are wanted it becomes its first child instead, and that
    /// ends the look at the others.
    void CheckTypes();

private:
    using List = DVector<BDIMoniker *>;
    [[nodiscard]] bool IsWanted(BDINode const &node) const;
    [[nodiscard]] bool HasWanted(BDIMoniker const &moniker, BDINode const &node, int depth) const;
    [[nodiscard]] List Descendants(BDIMoniker const &moniker) const;

    int m_nodeMask;
    List &m_monikers;
    std::unordered_set<BDIMoniker const *> m_known; ///< were found by their type
};

} // namespace zelvar
