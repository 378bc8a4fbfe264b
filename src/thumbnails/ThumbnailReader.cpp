#include "zelvar/thumbnails/ThumbnailReader.h"

#include "zelvar/data/PlaceCheck.h"
#include "zelvar/pixels/CubicResize.h"
#include "zelvar/pixels/ImageFit.h"
#include "zelvar/thumbnails/ThumbnailPruner.h"

#include <algorithm>
#include <optional>
#include <system_error>
#include <thread>
#include <tuple>
#include <utility>

#include <sys/resource.h>
#include <unistd.h>

namespace zelvar {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kMakers = 2; // as many as there are readers for them
constexpr int kNiceness = 10;
constexpr std::chrono::hours kPruneEvery{1};
constexpr std::chrono::milliseconds kPatience{200}; // with what is under way and not wanted any more

/// The picture in a square of `side` pixels, never enlarged.
DCanvas Fitted(DCanvas const &picture, int side) {
    if (std::max(picture.GetWidth(), picture.GetHeight()) <= side)
        return picture;
    Size const size = FitInto({picture.GetWidth(), picture.GetHeight()}, {side, side});
    DCanvas fitted;
    ResizeCubic(picture, std::max(size.cx, 1), std::max(size.cy, 1), fitted);
    return fitted;
}

} // namespace

std::shared_ptr<ThumbnailReader> ThumbnailReader::Create(ThumbnailStore store, TablePainter paintTable,
                                                         std::function<void()> onAnswer) {
    return std::shared_ptr<ThumbnailReader>(
        new ThumbnailReader(std::move(store), std::move(paintTable), std::move(onAnswer)));
}

ThumbnailReader::ThumbnailReader(ThumbnailStore store, TablePainter paintTable, std::function<void()> onAnswer)
    : m_store(std::move(store)), m_paintTable(std::move(paintTable)), m_onAnswer(std::move(onAnswer)) {}

void ThumbnailReader::Start() {
    if (std::exchange(m_hasThreads, true))
        return;
    try {
        for (int thread = 0; thread <= kMakers; ++thread)
            std::thread([self = shared_from_this(), isFinder = thread == 0] {
                // Of the readers that it starts, too. Where it is not allowed all stays as it is.
                std::ignore = setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), kNiceness);
                if (isFinder)
                    self->Work(Stage::New, Stage::Looking);
                else
                    self->Work(Stage::Missing, Stage::Making);
            }).detach();
    } catch (std::system_error const &) {
        // Without threads there are no thumbnails.
    }
}

void ThumbnailReader::Want(std::vector<Wish> wishes, int side) {
    std::lock_guard const lock(m_mutex);
    if (m_isEnding)
        return;
    std::vector<EntryPtr> former = std::exchange(m_entries, {});
    for (EntryPtr const &entry : former)
        entry->isWanted = false;
    for (Wish &wish : wishes) {
        // Its answer is there and only has to be taken.
        if (std::ranges::any_of(m_answers,
                                [&](Answer const &answer) { return answer.name == wish.name && answer.side == side; }))
            continue;
        auto const at = std::ranges::find_if(former, [&](EntryPtr const &entry) {
            return entry != nullptr && entry->wish.name == wish.name && entry->side == side;
        });
        EntryPtr entry = at == former.end() ? std::make_shared<Entry>() : std::exchange(*at, nullptr);
        if (at == former.end())
            *entry = {.wish = std::move(wish), .side = side};
        entry->isWanted = true;
        m_entries.push_back(std::move(entry));
    }
    // What is under way ends by itself where that does not take long.
    for (EntryPtr &entry : former)
        if (entry != nullptr && entry->stage == Stage::Making)
            m_entries.push_back(std::move(entry));
    StopLate();
    if (!m_entries.empty())
        Start();
    m_changed.notify_all();
}

void ThumbnailReader::StopLate() {
    Clock::time_point const now = Clock::now();
    for (EntryPtr const &entry : m_entries)
        if (!entry->isWanted && entry->stop != nullptr && now - entry->since >= kPatience)
            *entry->stop = true;
}

std::vector<ThumbnailReader::Answer> ThumbnailReader::Take() {
    std::lock_guard const lock(m_mutex);
    return std::exchange(m_answers, {});
}

ThumbnailReader::Counts ThumbnailReader::GetCounts() const {
    std::lock_guard const lock(m_mutex);
    return m_counts;
}

bool ThumbnailReader::IsBusy() const {
    std::lock_guard const lock(m_mutex);
    return !m_answers.empty() || std::ranges::any_of(m_entries, [](EntryPtr const &entry) { return entry->isWanted; });
}

void ThumbnailReader::Release() {
    std::lock_guard const lock(m_mutex);
    m_isEnding = true;
    m_onAnswer = {};
    m_answers.clear();
    for (EntryPtr const &entry : m_entries)
        if (entry->stop != nullptr)
            *entry->stop = true;
    m_entries.clear();
    m_changed.notify_all();
}

ThumbnailReader::EntryPtr ThumbnailReader::TakeNext(Stage from, Stage to) {
    std::unique_lock lock(m_mutex);
    for (;;) {
        if (m_isEnding)
            return nullptr;
        auto const at = std::ranges::find_if(
            m_entries, [from](EntryPtr const &entry) { return entry->isWanted && entry->stage == from; });
        if (at != m_entries.end()) {
            (*at)->stage = to;
            (*at)->since = Clock::now();
            (*at)->stop = std::make_shared<StopSignal>(false);
            return *at;
        }
        // One that is late and not wanted keeps a thread from what is.
        bool const isStale =
            std::ranges::any_of(m_entries, [](EntryPtr const &entry) { return !entry->isWanted && !*entry->stop; });
        if (isStale)
            m_changed.wait_for(lock, kPatience);
        else
            m_changed.wait(lock);
        StopLate();
    }
}

void ThumbnailReader::Work(Stage from, Stage to) {
    while (EntryPtr const entry = TakeNext(from, to)) {
        if (to == Stage::Looking)
            LookFor(entry);
        else
            Make(entry);
    }
}

void ThumbnailReader::LookFor(EntryPtr const &entry) {
    std::optional<ThumbnailKey> key;
    std::optional<DCanvas> kept;
    bool isNone = !DoesPlaceAnswer(entry->wish.moniker);
    if (!isNone)
        key = m_store.KeyOf(entry->wish.moniker);
    if (key) {
        kept = m_store.Find(*key, entry->side);
        isNone = !kept && m_store.HasFailed(*key);
    }
    {
        std::lock_guard const lock(m_mutex);
        ++m_counts.looked;
        m_counts.found += kept || isNone ? 1 : 0;
        entry->key = key;
        if (!kept && !isNone)
            entry->stage = Stage::Missing;
        m_changed.notify_all();
    }
    if (kept || isNone)
        Finish(entry, kept ? Fitted(*kept, entry->side) : DCanvas());
}

void ThumbnailReader::Make(EntryPtr const &entry) {
    {
        std::lock_guard const lock(m_mutex);
        ++m_counts.opened;
    }
    DCanvas picture;
    int const side = ThumbnailStore::KeptSide(entry->side);
    ThumbnailOutcome const outcome =
        MakeThumbnail(entry->wish.moniker, entry->wish.driverId, side, entry->stop.get(), m_paintTable, picture);
    // A file that has changed meanwhile is another one.
    if (entry->key && outcome != ThumbnailOutcome::NotNow)
        if (auto const now = m_store.KeyOf(entry->wish.moniker);
            now && now->modified == entry->key->modified && now->size == entry->key->size) {
            if (outcome == ThumbnailOutcome::Made)
                m_store.Keep(*now, side, picture);
            else
                m_store.KeepFailure(*now);
        }
    {
        std::lock_guard const lock(m_mutex);
        m_counts.made += outcome == ThumbnailOutcome::Made ? 1 : 0;
    }
    bool const isOwn = entry->key && !entry->key->isShared;
    Finish(entry, outcome == ThumbnailOutcome::Made ? Fitted(picture, entry->side) : DCanvas());
    if (isOwn)
        PruneSometimes();
}

void ThumbnailReader::PruneSometimes() {
    {
        std::lock_guard const lock(m_mutex);
        if (Clock::now() < m_nextPrune)
            return;
        m_nextPrune = Clock::now() + kPruneEvery;
    }
    std::ignore = PruneThumbnails(m_store.OwnFolder(), {}, [this] {
        std::lock_guard const lock(m_mutex);
        return m_isEnding;
    });
}

void ThumbnailReader::Finish(EntryPtr const &entry, DCanvas const &picture) {
    std::lock_guard const lock(m_mutex);
    std::erase(m_entries, entry);
    m_changed.notify_all();
    // What was stopped because nobody wanted it has no answer.
    if (m_isEnding || *entry->stop)
        return;
    m_answers.push_back({entry->wish.name, picture, entry->side});
    if (m_answers.size() == 1 && m_onAnswer)
        m_onAnswer();
}

} // namespace zelvar
