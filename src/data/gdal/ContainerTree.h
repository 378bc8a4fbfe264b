#pragma once

#include "zelvar/data/gdal/Source.h"
#include "zelvar/data/gdal/Tree.h"

#include <unordered_map>

namespace zelvar::gdal {

/// What lies inside a source: its images, layers and tables, by the names that GDAL gives them. None of them is opened.
struct Members {
    bool hasPicture = false; ///< the source itself opens as an image
    std::vector<BDINode> nodes;
    std::vector<DString> groups;    ///< that each node lies in: "outer/inner", empty at the top
    Format const *format = nullptr; ///< that read it
};
/// Nothing if no allowed format, or not `only`, reads the source. What a server says of it goes into `*error`, which
/// may be null.
[[nodiscard]] std::optional<Members> ListMembers(Source const &source, Format const *only, DError *error = nullptr);

/// The text of a moniker for what GDAL names `name` inside `source`.
[[nodiscard]] DString NodePath(DString const &source, DString const &name);

/// The name that a source is shown by.
[[nodiscard]] DString RootName(Source const &source);

/// Members of the containers that a larger tree holds: found when their parent is listed, remembered for `Find`.
class InnerMembers {
public:
    [[nodiscard]] std::vector<BDINode> Of(BDINode const &container);
    [[nodiscard]] std::optional<BDINode> Find(DString const &path) const;

private:
    std::unordered_map<DString, BDINode> m_found;
};

/// The tree of a file with members, or of one group inside it. It is read once, when the tree opens. Groups are
/// containers; they come from the names of what lies in them.
class ContainerTree : public Tree {
public:
    /// Null if the group that the source names is not there.
    [[nodiscard]] static std::unique_ptr<Tree> Make(Source const &source, Members members);
    [[nodiscard]] BDINode Root() const override { return m_root; }
    [[nodiscard]] std::optional<BDINode> Find(DString const &path) const override;
    [[nodiscard]] std::vector<BDINode> Children(BDINode const &parent) const override;

private:
    ContainerTree(Source const &source, Members members);
    void Add(DString const &parent, BDINode node);
    DString AddGroup(DString const &group); ///< its path
    [[nodiscard]] DString GroupPath(DString const &group) const;

    DString m_source; ///< the text of the whole file's moniker
    BDINode m_root;
    std::vector<BDINode> m_nodes;
    std::unordered_map<DString, std::size_t> m_byPath;
    std::unordered_map<DString, std::vector<std::size_t>> m_children; ///< by the parent's path
    bool m_holdsGroup = true;                                         ///< the one that the source names
};

/// Tree driver over one of GDAL's formats. All of them are one family.
class ContainerDriver : public TreeDriver {
public:
    explicit ContainerDriver(Format const &format) : m_format(format) {}
    [[nodiscard]] DString GetId() const override { return m_format.id; }
    [[nodiscard]] DString GetInfo() const override { return m_format.name; }
    [[nodiscard]] DString GetExtensions() const override { return m_format.extensions; }
    [[nodiscard]] DString GetFamily() const override { return "GDAL"; }
    [[nodiscard]] bool CanReadPath(DString const &path) const override;
    void *OpenRepositoryInFamily(char const *url, BDIDrvr **opener, BDINode **root, char const *filter) override {
        return OpenRepositoryOrSay(url, true, opener, root, filter, nullptr);
    }
    void *OpenRepositoryOrSay(char const *url, bool inFamily, BDIDrvr **opener, BDINode **root, char const *filter,
                              DError *error) override;

protected:
    [[nodiscard]] std::unique_ptr<Tree> OpenTree(DString const &url, DString const &filter,
                                                 DError &error) const override;
    [[nodiscard]] bool HoldsMultipleImages() const override;

private:
    Format const &m_format; ///< the catalogue's
};

} // namespace zelvar::gdal
