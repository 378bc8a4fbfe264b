#pragma once

#include "zelvar/base/DThread.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/model/DataSourceItem.h"
#include "zelvar/model/ItemListing.h"
#include "zelvar/model/datasets/DataSetFolding.h"
#include "zelvar/model/listing/ListingContent.h"

#include <atomic>
#include <functional>
#include <list>
#include <optional>
#include <vector>

namespace zelvar {

/// What a folder list lists.
enum class FolderListMode : std::int32_t {
    Folders = 0,   ///< folders alone
    Recursive = 1, ///< what can be picked, in the roots and in every folder below
    Files = 2,     ///< what can be picked, in the roots alone
};

/// Lists the children of items into a queue of rows.
///
/// It has the equipment of a thread, yet `Run` is called directly and lists to its end on the calling thread: the list
/// takes the rows from the queue right behind the call. What a run has found is kept for the next one, which then asks
/// the source for new items only.
class FolderListingWorker final : public DThread, public DataSourceItem::ICancel {
public:
    using ItemList = std::list<RefItemPtr<DataSourceItem>>;
    using Pending = PendingRow<RefItemPtr<DataSourceItem>>;

    /// What a run is made from.
    struct Request {
        ItemList roots;
        DString fileFilter;
        DString formatId;
        DLGTemplate dlgTemplate = DT_DATA;
        int bdiFilter = 0;
        DataSetFolding folding{};
        std::uint64_t together = 0; ///< as `RequestScope::Together`
    };

    void SetMode(FolderListMode mode);
    void SetSort(ListingSort sort, bool ascending);
    void SetRequest(Request request) { m_request = std::move(request); }
    /// Asked often while a run goes on, on its thread: true ends the run, and what has been found stays. May be empty.
    void SetInterrupt(std::function<bool()> interrupt) { m_interrupt = std::move(interrupt); }
    /// From now on what is found can be taken while a run goes on, also while it waits for a server; else at its end.
    void PublishAsFound() { m_publishesAsFound = true; }
    void ClearRoots() { m_request.roots.clear(); }
    /// Tells a run to stop; with `wait` returns when it has.
    void Stop(bool wait);
    /// The run is to end with the next item that it finds. What is asked meanwhile is not stopped: other lists of the
    /// same place may share the answer.
    void Finish() { m_isEnough = true; }

    [[nodiscard]] std::vector<Pending> TakePending() { return m_content.TakePending(); }
    void ClearPending() { m_content.ClearPending(); }

    void Run() override;
    [[nodiscard]] bool IsCanceled() override {
        if (m_publishesAsFound && m_content.IsPublishDue())
            m_content.Publish();
        return m_cancelled || IsInterrupted();
    }
    /// Whether the last run had less time than it wanted, see `RequestScope`: its rows are not all there is.
    [[nodiscard]] bool IsCutShort() const { return m_cutShort; }

private:
    struct ItemTraits {
        static ListingFacts Facts(RefItemPtr<DataSourceItem> const &item, ListingSort sort) {
            return FactsOf(*item, sort);
        }
        static DString Path(RefItemPtr<DataSourceItem> const &item) { return item->GetPath(); }
    };

    void Begin(bool same);
    bool IsInterrupted() { return m_interrupted = m_interrupted || IsTimeOver() || (m_interrupt && m_interrupt()); }
    bool IsTimeOver() { return m_cutShort = m_cutShort || (m_deadline && RequestScope::Clock::now() >= *m_deadline); }
    bool Take(RefItemPtr<DataSourceItem> child);

    ListingContent<RefItemPtr<DataSourceItem>, ItemTraits> m_content;
    Request m_request;
    std::atomic<bool> m_running{false};
    std::atomic<bool> m_cancelled{false};
    std::atomic<bool> m_isEnough{false};
    std::function<bool()> m_interrupt;
    bool m_publishesAsFound = false;
    bool m_interrupted = false; ///< on the thread of the run, with the two below
    bool m_cutShort = false;
    std::optional<RequestScope::Clock::time_point> m_deadline;
    FolderListMode m_mode = FolderListMode::Folders;
    FolderListMode m_lastMode =
        FolderListMode::Folders; ///< of the last finished run, or the one that `SetMode` replaced
    ListingSort m_sort = ListingSort::None;
    bool m_ascending = true;
    std::vector<DString> m_savedRootPaths; ///< of the last run
    DataSetFolding m_savedFolding;
};

} // namespace zelvar
