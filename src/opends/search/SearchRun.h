#pragma once

#include "zelvar/base/DThread.h"
#include "zelvar/search/Search.h"

#include <memory>
#include <mutex>
#include <vector>

namespace zelvar {

/// One search, on a thread of its own, whose hits come as they are found.
///
/// It lives as long as its thread: a window that closes, or searches for something else, lets go of it and does not
/// wait. `Run` belongs to the thread, all else to the user-interface thread.
class SearchRun final : public DThread, public std::enable_shared_from_this<SearchRun> {
public:
    using Items = std::vector<RefItemPtr<DataSourceItem>>;
    struct Order {
        SearchQuery query{};
        Items places{};
        int nodeMask = 0; ///< of what can be picked, see `DataSourceItem::IsFile`; what else is found can be entered
    };
    /// More are not wanted: the search ends with them.
    static constexpr std::int64_t kMostHits = 1'000'000;

    /// Null if no thread is to be had.
    static std::shared_ptr<SearchRun> Start(Order order);
    ~SearchRun() override = default;
    SearchRun(SearchRun const &) = delete;
    SearchRun &operator=(SearchRun const &) = delete;

    /// What was found since the last call and not taken, at most so many, first come first.
    [[nodiscard]] Items TakeHits(std::size_t most);
    /// Whether more can be taken now.
    [[nodiscard]] bool HasHits() const;
    /// `hits` are those that can be taken, or were.
    [[nodiscard]] SearchProgress Progress() const;
    /// Until nothing more will be found.
    [[nodiscard]] bool IsAtWork() const { return m_isAtWork; }
    /// What has been found stays. Does not wait.
    void Stop() { m_stop = true; }
    [[nodiscard]] bool IsStopped() const { return m_stop; }
    /// Nobody wants it any more. Does not wait.
    void Release();

    void Run() override;

private:
    explicit SearchRun(Order order) : m_order(std::move(order)) {}
    void Take(SearchHit &&hit);

    Order m_order;
    StopSignal m_stop{false};
    std::atomic<bool> m_isAtWork{true};
    mutable std::mutex m_mutex; ///< guards the three below
    Items m_hits;
    std::size_t m_taken = 0; ///< of those in `m_hits`
    SearchProgress m_progress;
    std::shared_ptr<SearchRun> m_self; ///< while the thread is at work; its own, once that has begun
};

} // namespace zelvar
