#pragma once

#include "zelvar/data/gdal/ContainerTree.h"

namespace zelvar::gdal {

/// An archive as folders and files: those that are data by their names. Its directory is read once, when it opens.
class ZipTree : public Tree {
public:
    [[nodiscard]] BDINode Root() const override { return m_root; }
    [[nodiscard]] std::optional<BDINode> Find(DString const &path) const override;
    [[nodiscard]] std::vector<BDINode> Children(BDINode const &parent) const override;

    /// Null if the source is no archive, is damaged, or holds more than a million entries.
    [[nodiscard]] static std::unique_ptr<ZipTree> Open(Source const &source);
    [[nodiscard]] bool HoldsData() const { return m_holdsData; }

private:
    ZipTree() = default;
    void Add(DString const &name, bool isFolder);

    BDINode m_root;
    DString m_prefix; ///< GDAL's name of the archive
    bool m_holdsData = false;
    std::unordered_map<DString, std::vector<BDINode>> m_children; ///< by the folder's path
    std::unordered_map<DString, BDINode> m_nodes;                 ///< by path
    mutable InnerMembers m_inner;                                 ///< one thread at a time uses a tree
};

/// Tree driver "ZIP".
class ZipDriver : public TreeDriver {
public:
    [[nodiscard]] DString GetId() const override { return "ZIP"; }
    [[nodiscard]] DString GetInfo() const override { return "ZIP archive"; }
    [[nodiscard]] DString GetExtensions() const override { return "*.zip"; }
    /// One image is enough: nothing else opens an archive.
    [[nodiscard]] bool CanReadPath(DString const &path) const override;

protected:
    [[nodiscard]] std::unique_ptr<Tree> OpenTree(DString const &url, DString const &filter,
                                                 DError &error) const override;
};

} // namespace zelvar::gdal
