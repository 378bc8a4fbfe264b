#pragma once

#include "zelvar/thumbnails/ThumbnailMaker.h"
#include "zelvar/thumbnails/ThumbnailStore.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace zelvar {

/// Threads that bring the thumbnails of what is in sight: one looks for those that are kept, some make those that are
/// not. They work on what was wanted last; what is not wanted any more is dropped, or stopped where it takes long.
///
/// Whoever asks and the threads share this object: `Release` lets go of it and waits for nothing, and the threads end
/// by themselves. Any thread may call.
class ZELVAR_API ThumbnailReader : public std::enable_shared_from_this<ThumbnailReader> {
public:
    struct Wish {
        DString name{};     ///< by which the answer is known
        DString moniker{};  ///< of the item
        DString driverId{}; ///< raster driver; may be empty
    };
    struct Answer {
        DString name{};
        DCanvas picture{}; ///< fitted; empty for none
        int side = 0;      ///< that it was wanted for
    };
    /// What has been done so far.
    struct Counts {
        int looked = 0; ///< looked for among those that are kept
        int found = 0;
        int opened = 0; ///< items that were read
        int made = 0;   ///< of those, the ones that have a thumbnail
    };

    /// `onAnswer` is called by the threads when there is something to take, and not again before it was taken.
    [[nodiscard]] static std::shared_ptr<ThumbnailReader> Create(ThumbnailStore store, TablePainter paintTable,
                                                                 std::function<void()> onAnswer);
    ~ThumbnailReader() = default;
    ThumbnailReader(ThumbnailReader const &) = delete;
    ThumbnailReader &operator=(ThumbnailReader const &) = delete;

    /// What is wanted from now on, the most urgent first, each fitted into a square of `side` pixels. What was taken
    /// before and is wanted again is read again: who asks keeps the answers.
    void Want(std::vector<Wish> wishes, int side);
    /// Moves out what has come since the last call.
    [[nodiscard]] std::vector<Answer> Take();
    [[nodiscard]] Counts GetCounts() const;
    /// Whether something that is wanted is still to come, or was not taken.
    [[nodiscard]] bool IsBusy() const;
    /// Nothing is wanted any more, and nobody is told of anything. Does not wait.
    void Release();

private:
    enum class Stage { New, Looking, Missing, Making };
    struct Entry {
        Wish wish{};
        int side = 0;
        Stage stage = Stage::New;
        std::optional<ThumbnailKey> key{}; ///< once it was looked for
        std::shared_ptr<StopSignal> stop{};
        std::chrono::steady_clock::time_point since{}; ///< of its stage
        bool isWanted = true;
    };
    using EntryPtr = std::shared_ptr<Entry>;

    ThumbnailReader(ThumbnailStore store, TablePainter paintTable, std::function<void()> onAnswer);
    void Start();
    void Work(Stage from, Stage to);
    [[nodiscard]] EntryPtr TakeNext(Stage from, Stage to);
    void LookFor(EntryPtr const &entry);
    void Make(EntryPtr const &entry);
    /// `picture` is empty where there is none.
    void Finish(EntryPtr const &entry, DCanvas const &picture);
    void StopLate();
    /// Sees to the room that our own thumbnails take, now and then, once something was kept there.
    void PruneSometimes();

    ThumbnailStore const m_store;
    TablePainter const m_paintTable;

    mutable std::mutex m_mutex; ///< guards all below
    std::condition_variable m_changed;
    std::function<void()> m_onAnswer;
    std::vector<EntryPtr> m_entries; ///< most urgent first; those that are not wanted and not done stand last
    std::vector<Answer> m_answers;
    Counts m_counts;
    bool m_isEnding = false;
    bool m_hasThreads = false;
    std::chrono::steady_clock::time_point m_nextPrune{}; ///< whether it is time for that is asked then
};

} // namespace zelvar
