#pragma once

#include "zelvar/base/DThread.h"
#include "zelvar/data/BDIDrvr.h"
#include "zelvar/model/DataSourceItem.h"

#include <atomic>
#include <boost/shared_ptr.hpp>
#include <mutex>
#include <vector>

namespace zelvar {

class XMLNode;

/// Template data source item: a node of a tree that a driver serves, of a configured connection or a container file.
/// All items of one tree share one open repository. A connection opens late, at `Prepare`.
class ZELVAR_API TemplDataSourceItem : public DataSourceItem {
public:
    /// Root of the connection that a definition describes; nothing is opened. Null if it has no URL.
    static TemplDataSourceItem *CreateItem(XMLNode const *definition);
    /// Root of an opened file or address, with `driver` or, if it is null or does not open, the first that does. Null
    /// if nothing opens, with the reason in `*error`, which may be null.
    static TemplDataSourceItem *CreateItem(BDIDrvr *driver, char const *typed, RefItemPtr<DataSourceItem> parent,
                                           DError *error = nullptr);
    /// Root of what an address names; nothing is opened.
    static TemplDataSourceItem *CreateForAddress(DString const &address);
    /// The node at `path` in the tree of `root`, an item of ours; null if there is none.
    static TemplDataSourceItem *CreateNodeItem(RefItemPtr<TemplDataSourceItem> const &root, char const *path);

    TemplDataSourceItem(TemplDataSourceItem const &) = delete;
    TemplDataSourceItem &operator=(TemplDataSourceItem const &) = delete;
    ~TemplDataSourceItem() override;

    void SetName(DString const &name) override { m_name = name; }
    [[nodiscard]] DString GetName() const override;
    /// The node's path in its tree; empty while there is no node.
    [[nodiscard]] DString GetPath() const override;
    [[nodiscard]] DString GetRDIDriverId() const override;
    [[nodiscard]] DString GetBDIDriverId() const override;
    /// Null before a connection was prepared, or when it could not be opened. `filter` is for drivers that have their
    /// server leave out other names, see `BDIDrvr::FindFirstChildNamed`.
    DataSourceItemItr *CreateIterator(ICancel *cancel, char const *filter, char const *driverId, int nodeMask,
                                      DLGTemplate dlgTemplate) override;
    void DeleteIterator(DataSourceItemItr *itr) override { delete itr; }
    /// What kept the connection from opening or, once it is open, the item's last listing from being whole; not set
    /// where nothing did. Does not wait for either.
    [[nodiscard]] DError GetFailure() const;
    [[nodiscard]] std::int64_t GetFileSize() const override { return m_node == nullptr ? -1 : m_node->size; }
    bool GetModificationTime(SystemTime &time) const override;
    RefItemPtr<DataSourceItem> GetParent() override { return m_parent; }
    /// Shares the open tree; without parent and picture of its own.
    RefItemPtr<DataSourceItem> Clone() override;
    [[nodiscard]] bool IsFolder() const override;
    [[nodiscard]] bool IsFile(int mask) const override;
    [[nodiscard]] int GetIconIndex() const override;
    [[nodiscard]] HIMAGELIST GetImageList() const override;
    void Prepare() override;
    bool ResetFilter(char const *filter) override;
    bool IsFilterSupported() override;
    DString GetFilterConf() override;
    [[nodiscard]] DataSourceType GetDataSourceType() const override { return DST_REPOSITORY; }
    void BuildParents() override;

    /// Whether its tree is on a server: to open or to list it may take as long as that does.
    [[nodiscard]] bool IsOnServer() const;
    /// Whether it stands for the whole tree: a connection, an address, a container.
    [[nodiscard]] bool IsRoot() const { return m_kind == KindRoot; }
    /// Whether it has a node, and so can be listed.
    [[nodiscard]] bool IsOpen() const { return m_node != nullptr; }
    /// A connection that another item of it, such as a clone on another thread, has opened gets its node. False while
    /// it is not open. Waits for nothing.
    bool TakeOpened();
    /// What the tree is opened from: a path, an address or a moniker, without a password of an address.
    [[nodiscard]] DString GetSource() const;
    /// The name of the definition that says where the tree is; empty for a tree without.
    [[nodiscard]] DString GetDefinition() const;

    /// A picture in place of those of the definition; children inherit it.
    void SetIcon(HIMAGELIST list, int index) { m_iconList = list, m_iconIdx = index; }
    [[nodiscard]] BDINode *GetNode() const { return m_node; }
    /// Takes the node over and closes the former one.
    void SetNode(BDINode *node);

protected:
    struct CRep;
    enum Kind : std::int32_t { KindRoot = 0, KindFolder = 1, KindLeaf = 2 };

    TemplDataSourceItem() = default;
    void CloseNode();
    /// Opens the connection unless it is open; tells whether it is.
    bool CreateRepository();

private:
    friend class TemplDataSourceItemItr;
    [[nodiscard]] BDIDrvr *Driver() const;
    /// Of several definitions with its address its own counts from now on.
    void NoteUse() const;
    /// A copy with a node of its own that children hold as their parent.
    [[nodiscard]] RefItemPtr<TemplDataSourceItem> Snapshot() const;
    void ReadIcons(XMLNode const &icons, DString const &directory);
    [[nodiscard]] bool HasInheritedIcon() const { return m_iconList != nullptr && m_iconIdx >= 0; }

    boost::shared_ptr<CRep> m_rep;
    DString m_name;
    RefItemPtr<DataSourceItem> m_parent;
    std::int32_t m_kind = KindLeaf;
    HIMAGELIST m_iconList = nullptr; ///< not owned
    std::int32_t m_iconIdx = -1;
    BDINode *m_node = nullptr;       ///< owned, closed through the driver
    mutable DError m_listingFailure; ///< of its last listing; guarded as that of the opening
};

/// What all items of one tree share; closes the repository with the last of them.
struct TemplDataSourceItem::CRep {
    CRep() = default;
    CRep(CRep const &) = delete;
    CRep &operator=(CRep const &) = delete;
    ~CRep();

    /// Guards every call into the tree: it is used by one thread at a time. Copying and closing a node is not one.
    DMutex m_lock;
    std::mutex m_turn; ///< taken before it by who will take it again and again: each waits its turn
    std::atomic<void *> m_repository{nullptr}; ///< set behind the driver
    std::mutex m_stateLock;                    ///< of the next two; held for a moment only: windows ask
    DError m_failure;                          ///< of the last opening
    BDINode *m_root = nullptr;                 ///< of a connection that is open; owned
    std::vector<void *> m_formerRepositories;  ///< replaced by a filter while nodes of theirs live
    /// The manager's; null until one is chosen at the opening. The one that a definition names is looked up at the
    /// first question while drivers are still to come: a list of definitions does not wait for them.
    BDIDrvr *Driver();
    std::atomic<BDIDrvr *> m_drvr{nullptr};
    DString m_drvrId; ///< that the definition names; may be empty
    std::once_flag m_lookUp;
    DString m_rdiDriverId;
    std::int32_t m_iconDataSource = -1; ///< indexes in `m_imageList`
    std::int32_t m_iconFolder = -1;
    std::int32_t m_iconImage = -1;
    std::unique_ptr<ImageList> m_imageList; ///< null for a definition without icons
    DString m_url;                          ///< that the definition names
    DString m_definition;                   ///< its name; empty where there is no definition
    DString m_file;                         ///< that the tree was made from, where there is no definition
};

} // namespace zelvar
