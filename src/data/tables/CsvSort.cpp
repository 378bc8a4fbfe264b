#include "zelvar/data/tables/CsvSort.h"

#include "zelvar/base/CellNumber.h"
#include "zelvar/data/tables/CsvScan.h"
#include "zelvar/data/tables/KeySort.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstring>
#include <numeric>
#include <utility>

namespace zelvar {

namespace {

constexpr std::size_t kRunsPerPiece = 64;
constexpr std::size_t kHeldEach = 40; // beside the bytes of a text
constexpr std::size_t kStepsPerQuestion = 64;
constexpr std::size_t kPiecesPerSample = 32; // one of so many is looked at
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

bool IsPlain(std::string_view text) {
    return text.size() <= ADIDriver::kMostCellBytes &&
           std::all_of(text.begin(), text.end(), [](char c) { return static_cast<signed char>(c) > 0; });
}

} // namespace

CsvSort::CsvSort(CsvIndex const &index, CsvEncoding const &encoding, std::size_t column, bool ascending, StopPoll &stop,
                 std::size_t mostHeld)
    : m_index(&index), m_encoding(&encoding), m_column(column), m_ascending(ascending), m_mostHeld(mostHeld),
      m_work(stop) {}

std::size_t CsvSort::GroupEnd(std::size_t slot) const {
    do
        ++slot;
    while (slot < m_region.end && m_order->IsTied(slot));
    return slot;
}

void CsvSort::MarkTies(std::size_t begin, std::size_t end) {
    for (std::size_t slot = begin + 1; slot < end; ++slot)
        m_order->SetTied(slot, m_keys[slot] == m_keys[slot - 1]);
}

/// Shows the texts of the open rows, on several threads, as the list has them: in UTF-8, a NUL replaced.
bool CsvSort::ForEachText(VisitOpen const &visit, std::size_t piecesPerOne) {
    struct Worker {
        CsvIndex::RunReader runs;
        DString recoded;
    };
    std::vector<Worker> workers(m_work.Workers(), Worker{.runs = CsvIndex::RunReader(*m_index), .recoded = {}});
    std::size_t const open = OpenCount();
    auto const rows = static_cast<std::int64_t>(m_rows.size());
    auto const runs = static_cast<std::size_t>((rows + CsvIndex::kRowsPerRun - 1) / CsvIndex::kRowsPerRun);
    std::size_t const runsPerStep = kRunsPerPiece * piecesPerOne;
    std::atomic<bool> hasChanged{false};
    bool const isDone = m_work.Run((runs + runsPerStep - 1) / runsPerStep, [&](std::size_t number, std::size_t piece) {
        Worker &worker = workers[number];
        std::size_t const first = piece * runsPerStep;
        std::size_t const last = std::min(first + kRunsPerPiece, runs);
        auto const rowOf = [&](std::size_t i) { return static_cast<std::int64_t>(m_rows[OpenSlot(i)]); };
        // The open ones are in the order of their rows, too.
        std::size_t next = 0;
        for (std::size_t left = open; left > 0;) {
            std::size_t const half = left / 2;
            bool const isBefore = rowOf(next + half) < static_cast<std::int64_t>(first) * CsvIndex::kRowsPerRun;
            next += isBefore ? half + 1 : 0;
            left = isBefore ? left - half - 1 : half;
        }
        if (next == open || rowOf(next) >= static_cast<std::int64_t>(last) * CsvIndex::kRowsPerRun)
            return true;
        bool const isAsItWas = worker.runs.ForEach(first, last, [&](std::int64_t row, CsvScan &scan) {
            if (next == open || rowOf(next) != row)
                return;
            scan.Skip(m_column);
            std::string_view text = scan.Field();
            if (!IsPlain(text)) {
                std::unique_lock lock(m_encodingMutex, std::defer_lock);
                if (!m_encoding->IsForAnyThread())
                    lock.lock();
                worker.recoded.clear();
                m_encoding->Append(worker.recoded, text, ADIDriver::kMostCellBytes);
                for (std::size_t at = 0; (at = worker.recoded.find('\0', at)) != DString::npos;)
                    worker.recoded.replace(at, 1, kReplacement);
                text = worker.recoded;
            }
            visit(number, OpenSlot(next++), text);
        });
        if (!isAsItWas)
            hasChanged = true;
        return isAsItWas;
    });
    m_hasChanged = hasChanged;
    return isDone;
}

CsvSort::Result CsvSort::Run(RowOrder &order) {
    m_order = &order;
    m_rows = order.rows;
    std::iota(m_rows.begin(), m_rows.end(), 0U);
    std::fill(order.ties.begin(), order.ties.end(), 0U);
    m_keys = std::make_unique_for_overwrite<std::uint64_t[]>(m_rows.size());
    m_region = {0, m_rows.size()};
    TextFacts facts;
    bool const isDone = SortNumbers(facts) && (m_region.begin == m_region.end || SortTexts(std::move(facts)));
    return isDone ? Result::Done : m_hasChanged ? Result::Changed : Result::Stopped;
}

/// Where a sample of many rows shows nothing but texts, these are put into words while all are read the first time.
bool CsvSort::GuessCode() {
    if (m_rows.size() < kPiecesPerSample * kRunsPerPiece * CsvIndex::kRowsPerRun)
        return true;
    std::vector<TextFacts> found(m_work.Workers());
    std::atomic<bool> hasNumbers{false};
    m_work.SetStage(0, 0);
    bool const isRead = ForEachText(
        [&](std::size_t worker, std::size_t, std::string_view text) {
            found[worker].Look(text, 0);
            if (SortNumberOf(text) != 0)
                hasNumbers = true;
        },
        kPiecesPerSample);
    if (isRead && !hasNumbers) {
        TextFacts guessed;
        for (TextFacts const &each : found)
            guessed.Add(each);
        m_guess.emplace(guessed);
        // The shortest of all is hardly among those that were seen: where a word has room for that, texts may end
        // anywhere.
        guessed.shortest = 0;
        if (TextCode wide(guessed); wide.Places() == m_guess->Places())
            m_guess = std::move(wide);
    }
    return isRead;
}

/// Reads all texts once: the words of the numbers, or of the texts while there is a guess that holds, which is taken
/// back else.
bool CsvSort::ReadFirstTime(TextFacts &facts, std::size_t &texts) {
    std::uint64_t const zero = SortWordOf(0);
    std::vector<TextFacts> found(m_work.Workers());
    std::vector<std::size_t> zeros(m_work.Workers());
    std::atomic<bool> isWrong{false};
    m_work.SetStage(0, 0.4);
    auto const guess = [&](TextFacts &longest, std::size_t slot, std::string_view text) {
        std::optional<std::uint64_t> const word = m_guess->WordIfKnown(text);
        if (!word || SortNumberOf(text) != 0) {
            isWrong.store(true, std::memory_order_relaxed);
            return;
        }
        longest.longest = std::max(longest.longest, text.size());
        m_keys[slot] = OrderedWord(*word);
    };
    bool const isRead = ForEachText([&](std::size_t worker, std::size_t slot, std::string_view text) {
        if (m_guess) {
            if (!isWrong.load(std::memory_order_relaxed))
                guess(found[worker], slot, text);
            return;
        }
        double const number = SortNumberOf(text);
        m_keys[slot] = number == 0 ? zero : SortWordOf(m_ascending ? -number : number);
        if (number != 0)
            return;
        ++zeros[worker];
        found[worker].Look(text, 0);
    });
    if (isWrong && isRead) {
        m_guess.reset();
        return ReadFirstTime(facts, texts);
    }
    facts = {};
    for (TextFacts const &each : found)
        facts.Add(each);
    texts = m_guess ? m_rows.size() : std::accumulate(zeros.begin(), zeros.end(), std::size_t{0});
    return isRead;
}

/// Afterwards the region is that of what is 0 as a number, and `facts` are about its texts.
bool CsvSort::SortNumbers(TextFacts &facts) {
    std::uint64_t const zero = SortWordOf(0);
    std::size_t texts = 0;
    if (!GuessCode() || !ReadFirstTime(facts, texts))
        return false;
    if (texts == m_rows.size())
        return true;
    std::span const keys(m_keys.get(), m_rows.size());
    m_work.SetStage(0.4, 0.7);
    if (!SortByKeys(keys, m_rows, m_work))
        return false;
    MarkTies(0, m_rows.size());
    auto const [first, last] = std::equal_range(keys.begin(), keys.end(), zero);
    m_region = {static_cast<std::size_t>(first - keys.begin()), static_cast<std::size_t>(last - keys.begin())};
    return true;
}

bool CsvSort::SortTexts(TextFacts facts) {
    double done = 0.7;
    auto const beginHalfOfRest = [&] {
        double const begin = done;
        done += (1 - done) / 2;
        m_work.SetStage(begin, done);
    };
    for (std::size_t begin = 0;;) {
        // 1. A word of each text that is to be told apart.
        bool const isKnown = m_guess.has_value();
        TextCode const code = isKnown ? *std::exchange(m_guess, std::nullopt) : TextCode(facts);
        beginHalfOfRest();
        bool const isRead = isKnown || ForEachText([&](std::size_t, std::size_t slot, std::string_view text) {
                                m_keys[slot] = OrderedWord(code.WordOf(text, begin));
                            });
        beginHalfOfRest();
        if (!isRead || !SortGroups())
            return false;
        // 2. What is not told apart by now.
        begin += code.Places();
        bool const isWhole = code.Places() >= facts.longest;
        if (isWhole)
            return true;
        Collect();
        if (m_open.empty())
            return true;
        if (!FindFacts(begin, facts))
            return false;
        if (facts.longest == 0)
            return true;
        if (facts.bytes + m_open.size() * kHeldEach <= m_mostHeld)
            return SortRest();
    }
}

bool CsvSort::SortGroups() {
    std::span const keys(m_keys.get(), m_rows.size());
    if (m_isAllOpen) {
        std::size_t const count = m_region.end - m_region.begin;
        if (!SortByKeys(keys.subspan(m_region.begin, count), m_rows.subspan(m_region.begin, count), m_work))
            return false;
        MarkTies(m_region.begin, m_region.end);
        return true;
    }
    std::size_t steps = 0;
    for (std::size_t slot = m_region.begin; slot < m_region.end;) {
        std::size_t const end = GroupEnd(slot);
        if (end - slot > 1) {
            if (!SortByKeys(keys.subspan(slot, end - slot), m_rows.subspan(slot, end - slot), m_work))
                return false;
            MarkTies(slot, end);
        }
        slot = end;
        if (++steps % kStepsPerQuestion == 0 && m_work.IsStopped())
            return false;
    }
    return true;
}

/// Those that are tied with another one, by row.
void CsvSort::Collect() {
    constexpr std::uint32_t none = ~0U;
    std::vector<std::uint32_t> slotOf(m_rows.size(), none);
    for (std::size_t slot = m_region.begin; slot < m_region.end; ++slot)
        if (m_order->IsTied(slot) || (slot + 1 < m_region.end && m_order->IsTied(slot + 1)))
            slotOf[m_rows[slot]] = static_cast<std::uint32_t>(slot);
    std::erase(slotOf, none);
    m_open = std::move(slotOf);
    m_open.shrink_to_fit();
    m_isAllOpen = false;
}

bool CsvSort::FindFacts(std::size_t begin, TextFacts &facts) {
    std::vector<TextFacts> found(m_work.Workers());
    if (!ForEachText([&](std::size_t worker, std::size_t, std::string_view text) { found[worker].Look(text, begin); }))
        return false;
    facts = {};
    for (TextFacts const &each : found)
        facts.Add(each);
    return true;
}

/// Few are left: their texts are kept for once.
bool CsvSort::SortRest() {
    std::vector<std::vector<std::unique_ptr<char[]>>> kept(m_work.Workers());
    bool const isRead = ForEachText([&](std::size_t worker, std::size_t slot, std::string_view text) {
        kept[worker].push_back(std::make_unique_for_overwrite<char[]>(text.size() + 1));
        char *const copy = kept[worker].back().get();
        *std::transform(text.begin(), text.end(), copy, [](char c) { return static_cast<char>(SortByteOf(c)); }) = '\0';
        m_keys[slot] = std::bit_cast<std::uintptr_t>(copy);
    });
    if (!isRead)
        return false;
    struct Text {
        char const *text;
        std::uint32_t row;
    };
    std::vector<Text> group;
    std::size_t steps = 0;
    for (std::size_t slot = m_region.begin; slot < m_region.end;) {
        std::size_t const end = GroupEnd(slot);
        group.clear();
        for (std::size_t i = slot; i < end && end - slot > 1; ++i)
            group.push_back({std::bit_cast<char const *>(static_cast<std::uintptr_t>(m_keys[i])), m_rows[i]});
        std::sort(group.begin(), group.end(), [this](Text const &a, Text const &b) {
            int const order = m_ascending ? std::strcmp(a.text, b.text) : std::strcmp(b.text, a.text);
            return order != 0 ? order < 0 : a.row < b.row;
        });
        for (std::size_t i = 0; i < group.size(); ++i) {
            m_rows[slot + i] = group[i].row;
            if (i > 0)
                m_order->SetTied(slot + i, std::strcmp(group[i - 1].text, group[i].text) == 0);
        }
        slot = end;
        if (++steps % kStepsPerQuestion == 0 && m_work.IsStopped())
            return false;
    }
    return true;
}

} // namespace zelvar
