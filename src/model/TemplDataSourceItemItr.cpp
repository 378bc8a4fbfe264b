#include "zelvar/model/TemplDataSourceItemItr.h"

#include "zelvar/model/TemplDataSourceItem.h"

#include <mutex>
#include <utility>

namespace zelvar {

/// A walk that is not at its end.
struct TemplDataSourceItemItr::Walk {
    Walk(TemplDataSourceItem const &item, BDIDrvr &by, DataSourceItem::ICancel *asked, int types, char const *mask)
        : parent(item), snapshot(item.Snapshot()), driver(by), repository(item.m_rep->m_repository), cancel(asked),
          nodeMask(types), names(mask == nullptr ? "" : mask) {}
    ~Walk() {
        DSingleLock const lock(snapshot->m_rep->m_lock);
        if (find != nullptr)
            driver.FindClose(find);
    }
    Walk(Walk const &) = delete;
    Walk &operator=(Walk const &) = delete;

    [[nodiscard]] bool IsCanceled() const { return cancel != nullptr && cancel->IsCanceled(); }
    /// Asks for the next part.
    void Ask() {
        if (std::exchange(hasBegun, true))
            driver.FetchNextPart(find);
        else
            find = driver.FindFirstChildNamed(repository, snapshot->m_node, nodeMask, names.c_str());
    }

    TemplDataSourceItem const &parent;
    /// A child holds the repository and its own branch, not the pane's row.
    RefItemPtr<TemplDataSourceItem> snapshot;
    BDIDrvr &driver;
    void *repository; ///< of the moment at which it began: another filter opens another one
    DataSourceItem::ICancel *cancel;
    int nodeMask;
    DString names;
    void *find = nullptr;
    bool hasBegun = false;
};

TemplDataSourceItemItr::TemplDataSourceItemItr() = default;
TemplDataSourceItemItr::~TemplDataSourceItemItr() = default;

bool TemplDataSourceItemItr::Fill(TemplDataSourceItem const &parent, DataSourceItem::ICancel *cancel, int nodeMask,
                                  char const *names) {
    BDIDrvr *const driver = parent.Driver();
    if (driver == nullptr || parent.m_node == nullptr)
        return false;
    constexpr int kFolders = BDINode_Container | BDINode_Folder;
    {
        DSingleLock const lock(parent.m_rep->m_lock);
        m_walk = std::make_unique<Walk>(parent, *driver, cancel, nodeMask | kFolders, names);
    }
    FetchPart();
    CreateCursor();
    return true;
}

void TemplDataSourceItemItr::FetchPart() {
    Walk &walk = *m_walk;
    TemplDataSourceItem::CRep &rep = *walk.snapshot->m_rep;
    std::unique_lock turn(rep.m_turn);
    DSingleLock const lock(rep.m_lock);
    turn.unlock();
    bool const isFirst = !walk.hasBegun;

    // 1. The walk's nodes are valid during the walk only: copies are kept or, where those would not do, paths.
    bool const isPlain = walk.driver.HasPlainNodes();
    std::vector<BDINode *> nodes;
    std::vector<DString> paths;
    bool isStopped = false;
    bool isAtEnd = false;
    for (walk.Ask(); !isAtEnd && !isStopped && (walk.find == nullptr || walk.driver.IsNextAtHand(walk.find));) {
        BDINode const *const child = walk.find == nullptr ? nullptr : walk.driver.FindNextChildNode(walk.find);
        isAtEnd = child == nullptr;
        isStopped = !isAtEnd && walk.IsCanceled();
        if (isAtEnd || isStopped)
            continue;
        if (isPlain)
            nodes.push_back(walk.driver.CloneNode(child));
        else
            paths.push_back(child->path);
    }
    if (DError failure = walk.driver.GetWalkError(walk.repository); isFirst || failure.IsSet()) {
        if (isAtEnd && walk.IsCanceled())
            failure.Clear(); // whoever stops it knows why
        if (failure.IsSet())
            m_error = std::make_error_code(std::errc::io_error);
        std::lock_guard const stateLock(rep.m_stateLock);
        walk.parent.m_listingFailure = std::move(failure);
    }

    // 2. A node that an item owns is opened by its path. What was found is made, stopped or not.
    for (DString const &path : paths) {
        nodes.push_back(walk.driver.OpenNode(walk.repository, path.c_str()));
        if (nodes.back() == nullptr)
            m_error = std::make_error_code(std::errc::io_error);
    }
    Take(nodes);
    if (isStopped || isAtEnd)
        m_walk.reset();
}

void TemplDataSourceItemItr::Take(std::vector<BDINode *> const &nodes) {
    TemplDataSourceItem const &parent = m_walk->parent;
    for (BDINode *const node : nodes) {
        if (node == nullptr)
            continue;
        RefItemPtr<TemplDataSourceItem> const child(new TemplDataSourceItem);
        if (parent.HasInheritedIcon())
            child->SetIcon(parent.m_iconList, parent.m_iconIdx);
        child->m_rep = parent.m_rep;
        child->m_node = node;
        child->m_parent = m_walk->snapshot;
        child->m_kind = child->IsFolder() ? TemplDataSourceItem::KindFolder : TemplDataSourceItem::KindLeaf;
        m_items.push_back(child);
    }
}

void TemplDataSourceItemItr::First() {
    DataSourceItemItr::First();
    FetchToCursor();
}

void TemplDataSourceItemItr::Next() {
    DataSourceItemItr::Next();
    FetchToCursor();
}

void TemplDataSourceItemItr::FetchToCursor() {
    while (!IsValid() && m_walk != nullptr) {
        if (m_walk->IsCanceled())
            m_walk.reset();
        else
            FetchPart();
    }
}

} // namespace zelvar
