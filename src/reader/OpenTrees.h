#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/data/BDIDrvr.h"
#include "zelvar/reader/RecentlyUsed.h"

#include <Messages_generated.h>

namespace zelvar::reader {

/// The trees that are open in this reader. One that is not is opened by what the request tells of it: the application
/// need not know which reader holds it.
class OpenTrees {
public:
    struct Tree {
        BDIDrvr *driver = nullptr; ///< that opened it
        void *repository = nullptr;
        BDINode *root = nullptr; ///< null if the driver gave none

        Tree() = default;
        Tree(Tree const &) = delete;
        Tree &operator=(Tree const &) = delete;
        ~Tree();
    };

    /// Null, with the reason in `error`, if it does not open.
    Tree *Find(wire::TreeSpecT const &spec, DError &error);
    void Close(std::uint64_t id) { m_trees.Remove(id); }

private:
    RecentlyUsed<Tree> m_trees;
};

} // namespace zelvar::reader
