#pragma once

#include "zelvar/search/Search.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace zelvar {

/// Types of nodes in containers and on servers: every bit but those of containers and folders.
inline constexpr int kAllData = 0xEE;

/// Threads that open the files of a search: each takes some, asks the store for all of them, and readers for those that
/// it does not know.
class FactsReader {
public:
    /// A file, or a folder that is a data set, whose name and state match.
    struct Candidate {
        RefItemPtr<DataSourceItem> item;
        DString path;
        FileState state{};
        bool matchesName = true; ///< else only what lies in it is looked at
    };
    /// `query`, `store` (may be null) and `stop` are not owned. `onHit` is called by the threads, one at a time.
    FactsReader(SearchQuery const &query, FactsStore *store, StopSignal const &stop, Search::OnHit onHit);
    /// Waits for the threads, which leave what they have not begun.
    ~FactsReader();
    FactsReader(FactsReader const &) = delete;
    FactsReader &operator=(FactsReader const &) = delete;

    /// Waits while many are waiting already.
    void Add(Candidate &&candidate);
    /// Returns when all that was added is done with, or the search was stopped.
    void Finish();
    /// Of what needs no opening, too.
    void Tell(RefItemPtr<DataSourceItem> item, std::optional<ItemFacts> facts);
    [[nodiscard]] std::int64_t CountAsked() const { return m_asked; }

private:
    using Candidates = std::vector<Candidate>;
    void Run();
    [[nodiscard]] Candidates Take();
    void Ask(Candidates &candidates);
    void LookInside(Candidate const &candidate, std::vector<FactsStore::Known> &fresh);
    [[nodiscard]] ItemFacts FactsOf(DString const &path, DString const &driverId, FileState const &state,
                                    std::vector<FactsStore::Known> &fresh);

    SearchQuery const &m_query;
    FactsStore *m_store;
    StopSignal const &m_stop;
    Search::OnHit m_onHit;
    std::mutex m_hitMutex; ///< held while somebody hears of a hit
    std::atomic<std::int64_t> m_asked{0};

    std::mutex m_mutex; ///< guards those below
    std::condition_variable m_changed;
    std::deque<Candidate> m_waiting;
    int m_busy = 0; ///< threads
    bool m_isEnding = false;
    std::vector<std::thread> m_threads; ///< of this object's own thread
};

} // namespace zelvar
