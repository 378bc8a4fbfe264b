#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/data/BDIDrvr.h"
#include "zelvar/reader/RecentlyUsed.h"

#include <vector>

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

        /// A walk over children that is not at its end.
        struct Walk {
            std::uint64_t number = 0; ///< the application's
            void *find = nullptr;     ///< the driver's
            std::int64_t passed = 0;  ///< children so far
        };
        static constexpr std::size_t kMostWalks = 8; ///< the oldest one ends for a ninth
        std::vector<Walk> walks;
        void CloseWalk(std::uint64_t number);

        Tree() = default;
        Tree(Tree const &) = delete;
        Tree &operator=(Tree const &) = delete;
        ~Tree();
    };

    /// Null, with the reason in `error`, if it does not open.
    Tree *Find(wire::TreeSpecT const &spec, DError &error);
    void Close(std::uint64_t id) { m_trees.Remove(id); }
    /// Of a tree that is open, if it is.
    void CloseWalk(std::uint64_t id, std::uint64_t walk) {
        if (Tree *const tree = m_trees.Find(id); tree != nullptr)
            tree->CloseWalk(walk);
    }

private:
    RecentlyUsed<Tree> m_trees;
};

} // namespace zelvar::reader
