#pragma once

#include "zelvar/model/listing/PaneState.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/FolderListingWorker.h"
#include "zelvar/opends/ServerListing.h"

namespace zelvar {

/// The listing of a list: what lists, what it was made from, and what of the one before comes back in it.
struct DSListCtrl::Listing {
    FolderListingWorker worker;
    std::shared_ptr<ServerListing> server; ///< that was begun last; null for none
    ListingSort sort = ListingSort::None;  ///< of the worker
    bool ascending = true;
    PaneState savedState;  ///< what the last listing was made from
    PathSet selectedPaths; ///< rows that are to be selected when they turn up
    DString focusPath;     ///< of the row that the keyboard was at before a listing

    void ReleaseServer() {
        if (server != nullptr)
            server->Release();
        server.reset();
    }
};

} // namespace zelvar
