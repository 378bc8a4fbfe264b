#include "zelvar/opends/FolderListingWorker.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/model/ListingWalk.h"
#include "zelvar/model/NtwDataSourceItem.h"

namespace zelvar {

namespace {

std::vector<DString> PathsOf(FolderListingWorker::ItemList const &items) {
    std::vector<DString> paths;
    for (RefItemPtr<DataSourceItem> const &item : items)
        paths.push_back(item == nullptr ? DString() : item->GetPath());
    return paths;
}

} // namespace

void FolderListingWorker::SetMode(FolderListMode mode) {
    m_lastMode = m_mode;
    m_mode = mode;
}

void FolderListingWorker::SetSort(ListingSort sort, bool ascending) {
    m_sort = sort;
    m_ascending = ascending;
}

void FolderListingWorker::Stop(bool wait) {
    m_cancelled = true;
    if (wait && m_running)
        Wait(std::chrono::milliseconds::max());
}

void FolderListingWorker::Begin(bool same) {
    // Where rows are folded a new file can change those that are there.
    if (!same || m_request.folding.IsAny()) {
        // A cold recursive listing appears as it arrives, whatever the header shows.
        bool const unsorted = (m_mode == FolderListMode::Recursive && !same) || m_sort == ListingSort::None;
        m_content.BeginCold(unsorted ? ListingSort::None : m_sort, unsorted || m_ascending);
        return;
    }
    m_content.BeginWarm(m_sort, m_ascending, [this](RefItemPtr<DataSourceItem> const &item) {
        // What a driver could not tell in time is asked again.
        return item != nullptr && PathMatchSpec(item->GetName(), m_request.fileFilter) && !IsUnclassified(*item);
    });
}

void FolderListingWorker::Run() {
    m_running = true;
    m_cancelled = false;
    m_interrupted = false;
    m_cutShort = false;
    RequestScope scope(RequestKind::List, [this] { return IsCanceled(); });
    scope.together = m_request.together;
    std::optional<std::chrono::milliseconds> const left = scope.TimeLeft();
    m_deadline = left ? std::optional(RequestScope::Clock::now() + *left) : std::nullopt;
    std::vector<DString> rootPaths = PathsOf(m_request.roots);
    bool const same = m_lastMode == m_mode && !rootPaths.empty() && !m_savedRootPaths.empty() &&
                      CoversRoots(m_savedRootPaths, rootPaths) && m_savedFolding == m_request.folding;
    m_savedFolding = m_request.folding;
    Begin(same);
    m_savedRootPaths = std::move(rootPaths);

    ListingWalk walk({.recursive = m_mode == FolderListMode::Recursive,
                      .filter = m_request.fileFilter,
                      .driverId = m_request.formatId,
                      .nodeMask = m_request.bdiFilter,
                      .purpose = m_request.dlgTemplate,
                      .cancel = this,
                      .folding = m_request.folding});
    for (RefItemPtr<DataSourceItem> const &root : m_request.roots) {
        if (IsCanceled())
            break;
        if (root != nullptr)
            walk.Through(root, [this](RefItemPtr<DataSourceItem> child) { return Take(std::move(child)); });
    }
    m_content.Publish();
    m_cutShort = m_cutShort || (m_deadline && scope.IsUnanswered());
    if (m_cutShort)
        scope.SetUnanswered();
    m_running = false;
    m_cancelled = false;
    m_isEnough = false;
    m_lastMode = m_mode;
}

bool FolderListingWorker::Take(RefItemPtr<DataSourceItem> child) {
    if (m_cancelled || m_isEnough) // an interrupt keeps what is there
        return false;
    // A folder can both be entered and be picked, as far as its kind says so.
    if (m_mode == FolderListMode::Folders ? child->IsFolder() : child->IsFile(m_request.bdiFilter))
        m_content.Add(std::move(child));
    return true;
}

} // namespace zelvar
