#pragma once

#include "zelvar/model/listing/ListingOrder.h"
#include "zelvar/model/listing/PaneState.h"
#include "zelvar/model/listing/RowPlan.h"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <tuple>
#include <utility>
#include <vector>

namespace zelvar {

/// What a listing has found, between the worker that finds it and the list that shows it.
///
/// The worker begins a run, adds items and publishes them in batches; the list takes what is pending. What a run has
/// found is kept for the next one. Any thread: every operation takes the lock by itself.
///
/// `Traits` tells of a `Handle`: `static ListingFacts Facts(Handle const &, ListingSort)` and
/// `static DString Path(Handle const &)`.
template <class Handle, class Traits>
class ListingContent {
public:
    /// A run that begins from nothing.
    void BeginCold(ListingSort sort, bool ascending) {
        std::lock_guard const lock(m_mutex);
        m_pending.clear();
        m_known.Clear();
        m_items.clear();
        m_order.Reset(sort, ascending);
        m_lastPublished = Clock::now();
    }

    /// A run that keeps the items for which `keep` is true; they are pending at once and will not be added again.
    template <class Keep>
    void BeginWarm(ListingSort sort, bool ascending, Keep const &keep) {
        std::lock_guard const lock(m_mutex);
        std::vector<Handle> former;
        former.swap(m_items);
        // In the order of the run before, so that equals keep their places from run to run.
        std::vector<std::uint32_t> const order = m_order.AscendingOrder();
        m_pending.clear();
        m_known.Clear();
        m_known.Reserve(former.size());
        m_order.Reset(sort, ascending);
        for (std::uint32_t const number : order) {
            Handle &item = former[number];
            if (!keep(item))
                continue;
            if (DString path = Traits::Path(item); !path.empty())
                m_known.Add(std::move(path));
            m_order.Add(Traits::Facts(item, sort));
            m_items.push_back(std::move(item));
        }
        PublishLocked();
    }

    /// False, and nothing added, if the run has kept an item of that path.
    bool Add(Handle item) {
        std::lock_guard const lock(m_mutex);
        if (!m_known.IsEmpty() && m_known.Contains(Traits::Path(item)))
            return false;
        m_order.Add(Traits::Facts(item, m_order.Sort()));
        m_items.push_back(std::move(item));
        return true;
    }

    /// True if enough has come together, or enough time has passed, for a batch. Batches grow with the listing, so that
    /// merging them costs no more than the listing.
    [[nodiscard]] bool IsPublishDue() const {
        constexpr std::size_t kSmallestBatch = 1024;
        constexpr std::chrono::milliseconds kLongestWait{100};
        std::lock_guard const lock(m_mutex);
        std::size_t const waiting = m_order.WaitingCount();
        return waiting >= std::max(kSmallestBatch, m_order.Count() / 4) ||
               (waiting > 0 && Clock::now() - m_lastPublished >= kLongestWait);
    }
    /// Makes what was added pending.
    void Publish() {
        std::lock_guard const lock(m_mutex);
        PublishLocked();
    }

    /// What is pending, in order of insertion; nothing is pending then.
    [[nodiscard]] std::vector<PendingRow<Handle>> TakePending() {
        std::lock_guard const lock(m_mutex);
        return std::exchange(m_pending, {});
    }
    void ClearPending() { std::ignore = TakePending(); }
    [[nodiscard]] std::size_t Count() const {
        std::lock_guard const lock(m_mutex);
        return m_items.size();
    }

private:
    using Clock = std::chrono::steady_clock;

    void PublishLocked() {
        std::vector<PlacedItem> placed;
        m_order.Place(placed);
        m_pending.reserve(m_pending.size() + placed.size());
        for (PlacedItem const &place : placed)
            m_pending.push_back({place.row, m_items[place.item]});
        m_lastPublished = Clock::now();
    }

    mutable std::mutex m_mutex;
    std::vector<Handle> m_items; ///< by number
    ListingOrder m_order;
    std::vector<PendingRow<Handle>> m_pending;
    PathSet m_known; ///< paths of the items kept from the run before
    Clock::time_point m_lastPublished{};
};

} // namespace zelvar
