#pragma once

#include "zelvar/data/gdal/ContainerTree.h"

namespace zelvar::gdal {

/// One name in a folder.
struct FolderEntry {
    DString name; ///< plain bytes
    bool isFolder = false;
    std::int64_t size = -1;    ///< bytes; -1 if that is not known
    std::int64_t modified = 0; ///< nanoseconds since 1970; 0 if that is not known
};

/// A folder that is listed in parts.
class FolderListing {
public:
    virtual ~FolderListing() = default;
    FolderListing(FolderListing const &) = delete;
    FolderListing &operator=(FolderListing const &) = delete;

    /// Appends the next part; why there is none, or none behind it, where something keeps it from the end.
    virtual DError Next(std::vector<FolderEntry> &entries) = 0;
    /// Whether there is nothing more to ask for.
    [[nodiscard]] virtual bool IsAtEnd() const = 0;

protected:
    FolderListing() = default;
};

/// A kind of place that holds folders: what a folder tree asks of it.
class FolderPlace {
public:
    virtual ~FolderPlace() = default;
    FolderPlace(FolderPlace const &) = delete;
    FolderPlace &operator=(FolderPlace const &) = delete;

    /// Why the folder cannot be listed, or not to its end; not set if it was.
    [[nodiscard]] virtual DError List(DString const &folder, std::vector<FolderEntry> &entries) const = 0;
    /// The same in parts, where the place gives them so; else null. `mask` is one of names that are of use, others may
    /// be left out; empty for all. Nothing is asked before the first part.
    [[nodiscard]] virtual std::unique_ptr<FolderListing> Begin(DString const &folder, DString const &mask) const {
        static_cast<void>(folder), static_cast<void>(mask);
        return nullptr;
    }
    /// What of such a mask decides what is asked for: listings of a folder with the same are the same.
    [[nodiscard]] virtual DString ListingKey(DString const &) const { return {}; }
    /// Whether the folder can be listed, where that can be told without listing it.
    [[nodiscard]] virtual std::optional<bool> CanList(DString const &) const { return std::nullopt; }
    /// The path or address of a child.
    [[nodiscard]] virtual DString PathOf(DString const &folder, FolderEntry const &entry) const = 0;
    /// Its `BDINodeType` bits; 0 for what is no data.
    [[nodiscard]] virtual std::uint32_t TypeOf(DString const &path, FolderEntry const &entry) const;

protected:
    FolderPlace() = default;
};

/// Folders and the data in them, in natural order of their names, which is that of a part where they come in parts.
/// Each folder is listed when it is asked for.
class FolderTree : public Tree {
public:
    /// `filter` is a mask of file names, empty for all.
    FolderTree(FolderPlace const &place, DString root, DString filter);
    [[nodiscard]] BDINode Root() const override { return m_root; }
    [[nodiscard]] std::optional<BDINode> Find(DString const &path) const override;
    [[nodiscard]] std::vector<BDINode> Children(BDINode const &parent) const override;
    [[nodiscard]] std::unique_ptr<ChildCursor> OpenChildren(BDINode const &parent, DString const &names) const override;
    /// The masks of the formats that read pictures.
    [[nodiscard]] std::vector<DString> Filters() const override;

    [[nodiscard]] DError ChildrenError() const override { return m_error; }

    /// False if the root cannot be listed, with the reason in `error`. If it has to be listed to find out, that is kept
    /// for the first question.
    [[nodiscard]] bool CanList(DError &error);

private:
    class Cursor;
    class Listed;
    using ListedPtr = std::shared_ptr<Listed>;
    [[nodiscard]] std::vector<BDINode> MakeNodes(DString const &folder, std::vector<FolderEntry> entries,
                                                 DString const &names) const;
    void Remember(std::vector<BDINode> const &nodes) const;
    [[nodiscard]] ListedPtr Begin(DString const &folder, DString const &mask) const;

    FolderPlace const &m_place; ///< lives as long as the process
    BDINode m_root;
    DString m_filter;
    // One thread at a time uses a tree.
    mutable ListedPtr m_last;                 ///< that of opening, or one that others will ask for, too; else null
    mutable std::uint64_t m_lastTogether = 0; ///< who those are, see `RequestScope::Together`; 0 for any
    mutable std::unordered_map<DString, BDINode> m_listed;
    mutable InnerMembers m_inner;
    mutable DError m_error; ///< of the last listing
};

/// Tree drivers over folders: "Directory" for a path or "file://", "WebDirectory" for the listing of a web server or an
/// object store, "SMB" for a share on a file server, "smb://host/share".
enum class FolderKind { Directory, Web, Smb };
class FolderDriver : public TreeDriver {
public:
    explicit FolderDriver(FolderKind kind) : m_kind(kind) {}
    [[nodiscard]] DString GetId() const override;
    [[nodiscard]] DString GetInfo() const override;
    /// A folder is no file.
    [[nodiscard]] bool CanReadPath(DString const &) const override { return false; }
    /// A folder that is a data set is one of places only for who names this driver.
    void *OpenRepositoryOrSay(char const *url, bool inFamily, BDIDrvr **opener, BDINode **root, char const *filter,
                              DError *error) override;

protected:
    [[nodiscard]] std::unique_ptr<Tree> OpenTree(DString const &url, DString const &filter,
                                                 DError &error) const override;
    [[nodiscard]] bool HoldsMultipleImages() const override { return false; }
    [[nodiscard]] bool TakesFilter() const override { return true; }

private:
    FolderKind m_kind;
};

} // namespace zelvar::gdal
