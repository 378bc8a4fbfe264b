#include "zelvar/model/TemplDataSourceItemItr.h"

#include "zelvar/model/ChildWalker.h"
#include "zelvar/model/TemplDataSourceItem.h"

namespace zelvar {

bool TemplDataSourceItemItr::Fill(TemplDataSourceItem const &parent, DataSourceItem::ICancel *cancel, int nodeMask) {
    BDIDrvr *const driver = parent.Driver();
    if (driver == nullptr || parent.m_node == nullptr)
        return false;
    TemplDataSourceItem::CRep &rep = *parent.m_rep;
    DSingleLock const lock(rep.m_lock);
    // A child holds the repository and its own branch, not the pane's row.
    RefItemPtr<TemplDataSourceItem> const snapshot = parent.Snapshot();

    // 1. The walk's nodes are valid during the walk only: their paths are noted.
    std::vector<DString> paths;
    constexpr int kFolders = BDINode_Container | BDINode_Folder;
    ChildWalker walker(*driver, rep.m_repository, *parent.m_node, nodeMask | kFolders);
    walker.Start();
    DError const failure = driver->GetWalkError(rep.m_repository);
    if (failure.IsSet())
        m_error = std::make_error_code(std::errc::io_error);
    {
        std::lock_guard const failureLock(rep.m_failureLock);
        parent.m_listingFailure = failure;
    }
    for (; walker.Current() != nullptr; walker.Next()) {
        if (cancel != nullptr && cancel->IsCanceled())
            break;
        paths.push_back(walker.Current()->path);
    }

    // 2. A node that an item owns is opened by its path. What was found is made, stopped or not.
    m_items.reserve(paths.size());
    for (DString const &path : paths) {
        BDINode *const node = driver->OpenNode(rep.m_repository, path.c_str());
        if (node == nullptr) {
            m_error = std::make_error_code(std::errc::io_error);
            continue;
        }
        RefItemPtr<TemplDataSourceItem> const child(new TemplDataSourceItem);
        if (parent.HasInheritedIcon())
            child->SetIcon(parent.m_iconList, parent.m_iconIdx);
        child->m_rep = parent.m_rep;
        child->m_node = node;
        child->m_parent = snapshot;
        child->m_kind = child->IsFolder() ? TemplDataSourceItem::KindFolder : TemplDataSourceItem::KindLeaf;
        m_items.push_back(child);
    }
    CreateCursor();
    return true;
}

} // namespace zelvar
