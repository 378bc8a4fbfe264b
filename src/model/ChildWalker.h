#pragma once

#include "zelvar/data/BDIDrvr.h"

#include <vector>

namespace zelvar {

/// Walks over the children of a driver's node. Closes what it has opened when it ends.
class ChildWalker {
public:
    enum class Depth { Children, Descendants };

    /// `mask` names the types of the children to visit. Nothing is asked before `Start`.
    ChildWalker(BDIDrvr &driver, void *repository, BDINode const &parent, int mask, Depth depth = Depth::Children)
        : m_driver(driver), m_repository(repository), m_parent(parent), m_mask(mask), m_depth(depth) {}
    ~ChildWalker();
    ChildWalker(ChildWalker const &) = delete;
    ChildWalker &operator=(ChildWalker const &) = delete;

    /// Moves to the first child.
    void Start();
    /// Moves on; only while `Current()` is not null.
    void Next();
    /// The child, valid until the next move; null at the end.
    [[nodiscard]] BDINode const *Current() const { return m_current; }

private:
    bool Push(BDINode const &parent);
    void Fetch();

    BDIDrvr &m_driver;
    void *m_repository;
    BDINode const &m_parent;
    int m_mask;
    Depth m_depth;
    std::vector<void *> m_finds; ///< one handle a level
    BDINode const *m_current = nullptr;
};

} // namespace zelvar
