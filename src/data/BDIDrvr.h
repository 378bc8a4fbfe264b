#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/data/BDINode.h"
#include "zelvar/data/DIOPlugin.h"

namespace zelvar {

/// Block data interface driver: shows a file, address or connection as a tree of nodes.
///
/// One tree is used by one thread at a time; different trees by different threads. Handles are opaque.
class ZELVAR_API BDIDrvr : public DIOPlugin {
public:
    /// "BDI_Multiple_Images": 1 if a file can hold several images. "BDI_Filtering": 1 if `OpenRepository` takes a
    /// filter. 0 for what the driver does not know.
    [[nodiscard]] virtual int GetAttrInt(char const *name) const = 0;
    /// True if the plain file at `path` is a tree of more than one image or table for this driver. Cheap: extension and
    /// first bytes before anything else, and only ever regular files.
    [[nodiscard]] virtual bool CanReadPath(DString const &path) const = 0;

    /// Opens with this driver; sets `*root` to a node that the caller closes. Null if it does not open. `filter` may be
    /// null.
    virtual void *OpenRepository(char const *url, BDINode **root, char const *filter) = 0;
    virtual void CloseRepository(void *repository) = 0;
    /// The same for a whole family (`GetFamily`): whichever of its drivers reads `url` opens, and is set in `*opener`.
    virtual void *OpenRepositoryInFamily(char const *url, BDIDrvr **opener, BDINode **root, char const *filter) {
        *opener = this;
        return OpenRepository(url, root, filter);
    }
    /// That with `inFamily`, else `OpenRepository`. Where nothing opens and the driver knows why it says so in
    /// `*error`, which may be null.
    virtual void *OpenRepositoryOrSay(char const *url, bool inFamily, BDIDrvr **opener, BDINode **root,
                                      char const *filter, DError *error) {
        static_cast<void>(error);
        if (inFamily)
            return OpenRepositoryInFamily(url, opener, root, filter);
        *opener = this;
        return OpenRepository(url, root, filter);
    }

    /// The options that the node of a file needs to be opened by its moniker, as "name=value&name=value"; empty if it
    /// needs none, as with every format that tells by itself what it is.
    [[nodiscard]] virtual DString GetDriverParameterString(BDINode const *node) {
        static_cast<void>(node);
        return {};
    }

    /// A node by its path, or null. The caller closes it.
    virtual BDINode *OpenNode(void *repository, char const *path) = 0;
    virtual BDINode *CloneNode(BDINode const *node) = 0;
    virtual void CloseNode(BDINode *node) = 0;

    /// Bit 0 of the mask of the find calls, which is also the bit of containers: a walk that goes below them sets it.
    static constexpr int kFindRecursive = 1;
    /// Starts a walk over the direct children that have a bit of `mask`; null if there is nothing to walk. The children
    /// are fetched in one batch, or in parts where their source gives them so, see `IsNextAtHand`. Filter nodes
    /// ("Filters", "Filter") are given only where `mask` asks for tables alone, so that they are never listed among
    /// data.
    virtual void *FindFirstChildNode(void *repository, BDINode const *node, int mask) = 0;
    /// The same where only plain files whose names a mask ("*.tif;*.img") lets through are wanted; null or empty for
    /// all. A driver that can have its server leave out the others does so; most do not regard it.
    virtual void *FindFirstChildNamed(void *repository, BDINode const *node, int mask, char const *names) {
        static_cast<void>(names);
        return FindFirstChildNode(repository, node, mask);
    }
    /// The next child, valid until the next call, or null at the end.
    virtual BDINode const *FindNextChildNode(void *find) = 0;
    virtual void FindClose(void *find) = 0;
    /// What kept the last walk that was begun in that tree from finding children; not set where nothing did.
    [[nodiscard]] virtual DError GetWalkError(void *repository) const {
        static_cast<void>(repository);
        return {};
    }

    /// Whether `FindNextChildNode` answers at once. False where it has to ask for the next part, as of a store that
    /// lists its keys in pages: who shows children shows those that have come first. A part may fail; the walk ends
    /// then, and `GetWalkError` says why.
    [[nodiscard]] virtual bool IsNextAtHand(void *find) const {
        static_cast<void>(find);
        return true;
    }
    /// Where it is not at hand: waits for one part more. That may hold no child that is wanted, and none is at hand
    /// then.
    virtual void FetchNextPart(void *find) { static_cast<void>(find); }
    /// Whether nodes are plain records: a copy of a walk's node (`CloneNode`) is then as good as one that `OpenNode`
    /// opens by its path behind the walk, and nothing is asked for it.
    [[nodiscard]] virtual bool HasPlainNodes() const { return false; }
};

} // namespace zelvar
