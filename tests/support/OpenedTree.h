#pragma once

#include "support/Test.h"
#include "zelvar/data/BDIDrvrMngr.h"

namespace zelvar::test {

/// Opens one tree, with the first driver that can or with the named one.
class OpenedTree : Pinned {
public:
    explicit OpenedTree(DString const &url, char const *driverId = nullptr, char const *filter = nullptr) {
        if (driverId == nullptr)
            repository = BDIDrvrMngr::Instance()->OpenFile(url.c_str(), &driver, &root, filter, nullptr);
        else if (driver = BDIDrvrMngr::Instance()->GetDrvr(driverId); driver != nullptr)
            repository = driver->OpenRepository(url.c_str(), &root, filter);
    }
    ~OpenedTree() {
        if (repository == nullptr)
            return;
        driver->CloseNode(root);
        driver->CloseRepository(repository);
    }
    explicit operator bool() const { return repository != nullptr; }

    [[nodiscard]] std::vector<BDINode> Children(BDINode const &parent, int mask = 0xFF) const {
        std::vector<BDINode> children;
        void *const find = driver->FindFirstChildNode(repository, &parent, mask);
        while (BDINode const *const child = find == nullptr ? nullptr : driver->FindNextChildNode(find))
            children.push_back(*child);
        if (find != nullptr)
            driver->FindClose(find);
        return children;
    }
    [[nodiscard]] std::map<DString, std::uint32_t> Names(BDINode const &parent, int mask = 0xFF) const {
        std::map<DString, std::uint32_t> names;
        for (BDINode const &child : Children(parent, mask))
            names[child.name] = child.type;
        return names;
    }
    /// The node that a path opens.
    [[nodiscard]] std::optional<BDINode> Node(DString const &path) const {
        BDINode *const node = driver->OpenNode(repository, path.c_str());
        if (node == nullptr)
            return {};
        BDINode found = *node;
        driver->CloseNode(node);
        return found;
    }

    BDIDrvr *driver = nullptr;
    BDINode *root = nullptr;
    void *repository = nullptr;
};

/// The paths of what lies in a place, with what is told of each behind it; none if it does not open.
inline std::vector<DString> PathsIn(DString const &url, char const *driverId = nullptr) {
    std::vector<DString> paths;
    OpenedTree const tree(url, driverId);
    if (tree)
        for (BDINode const &child : tree.Children(*tree.root))
            paths.push_back(child.path + (child.value.empty() ? "" : " " + child.value));
    return paths;
}

/// Why no driver opens it as a tree.
inline DError WhyNotOpened(DString const &url) {
    BDIDrvr *driver = nullptr;
    BDINode *root = nullptr;
    DError error;
    EXPECT_EQ(BDIDrvrMngr::Instance()->OpenFile(url.c_str(), &driver, &root, nullptr, &error), nullptr) << url;
    return error;
}

} // namespace zelvar::test
