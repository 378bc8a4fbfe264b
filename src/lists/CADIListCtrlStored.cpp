// The part of the attribute table list that deals with rows which it does not keep.
#include "zelvar/data/IAttrData.h"
#include "zelvar/data/IRowStore.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/lists/CADIListCtrl.h"
#include "zelvar/lists/StoredRows.h"
#include "zelvar/platform/ui/EscapeWatch.h"

#include <QtCore/QScopedValueRollback>

#include <algorithm>
#include <new>

namespace zelvar {

namespace {

constexpr std::size_t kKeptBytes = std::size_t{16} << 20U; // of texts, of a table whose rows can be read again
constexpr std::size_t kMostColumns = 1024;                 // of such a table: a row is read as a whole
constexpr int kManyRows = 50'000;                          // that may be more than that
constexpr int kBlock = 64;                                 // rows that are fetched together
constexpr int kMostBlocks = 64;                            // the same, for who goes on and on

} // namespace

/// Rows are kept no more, but read again when they are seen, from where the kept ones are enough.
void CADIListCtrl::StoreIfLarge(int count) {
    bool const isWhole = m_cache.Rows() == m_sourceRow + 1; // no row was filtered out
    if (m_store == nullptr || m_stored != nullptr || !isWhole || m_columns.size() > kMostColumns)
        return;
    bool isLarge = m_cache.Bytes() >= kKeptBytes;
    if (!isLarge && count >= kManyRows) {
        // What there is to be read at once is counted first.
        std::ignore = m_store->CountOn(std::int64_t{m_sourceRow} + 1 + count, nullptr);
        isLarge = m_store->Known().bytes >= static_cast<std::int64_t>(kKeptBytes);
    }
    if (isLarge)
        m_stored = std::make_unique<StoredRows>(m_store, m_columns, m_source->GetNumCols());
}

/// All rows as texts after all. False if they cannot be read, or not be held; then it can be tried again.
bool CADIListCtrl::KeepStoredRows() {
    try {
        std::vector<int> batch;
        while (m_cache.FullRows() < m_cache.Rows()) {
            batch.clear();
            for (int row = m_cache.FullRows(); row < m_cache.Rows() && batch.size() < kBlock * kMostBlocks; ++row)
                batch.push_back(row);
            if (!m_stored->Fetch(batch))
                return false;
            for (int const row : batch) {
                for (int col = 0; static_cast<std::size_t>(col) < m_columns.size(); ++col)
                    m_cache.AddCell(*m_stored->Text(row, col));
                std::vector<char const *> const *const entries = m_stored->HandedOut(row);
                for (int col = 0; entries != nullptr && static_cast<std::size_t>(col) < entries->size(); ++col)
                    m_cache.Cell(row, col) = (*entries)[static_cast<std::size_t>(col)];
            }
        }
    } catch (std::bad_alloc const &) {
        return false;
    }
    m_formerlyStored = std::move(m_stored);
    m_store.reset();
    return true;
}

char const *&CADIListCtrl::GetCacheItem(int row, int col) {
    // What is done to entries counts in a sort.
    if (m_stored == nullptr) {
        m_store.reset();
        return m_cache.Cell(row, col);
    }
    if (row >= m_cache.FullRows() && row < m_cache.Rows() && !m_isReading)
        if (char const **const entry = m_stored->HandOut(row, col))
            return *entry;
    char const *&kept = m_cache.Cell(row, col);
    m_handedOut.emplace(&kept, kept);
    return kept;
}

bool CADIListCtrl::HasAlteredEntries() const {
    return m_stored->IsAltered() ||
           std::ranges::any_of(m_handedOut, [](auto const &entry) { return *entry.first != entry.second; });
}

/// Has the rows at these places of the list at hand. Nothing is read while a read is under way: painting shows what is
/// there.
bool CADIListCtrl::FetchSeen(int first, int last) {
    if (m_isReading)
        return true;
    QScopedValueRollback const reading(m_isReading, true);
    std::vector<int> rows;
    for (int position = std::max(first, 0); position <= std::min(last, m_cache.Rows() - 1); ++position)
        if (int const id = GetID(position); id >= m_cache.FullRows())
            rows.push_back(id);
    return m_stored->Fetch(rows);
}

/// The block of rows around a place; for who goes on from block to block more of them.
void CADIListCtrl::FetchFor(int position) {
    if (m_isReading || Clock::now() < m_retryAt)
        return;
    int const block = position / kBlock;
    if (m_isPainting && (m_isSlow || Clock::now() >= m_paintEnd)) {
        m_readTimer.start(0, this);
        return;
    }
    m_blocks = block == m_fetched + 1 && !m_isPainting ? std::min(m_blocks * 2, kMostBlocks) : 1;
    m_fetched = block + m_blocks - 1;
    std::int64_t const end = (std::int64_t{block} + m_blocks) * kBlock;
    int const last = static_cast<int>(std::min<std::int64_t>(end, GetCacheRows())) - 1;
    if (!m_isPainting) {
        platform::EscapeWatch watch;
        RequestScope const scope(RequestKind::Properties, [&watch] { return watch.IsPressed(); });
        if (!FetchSeen(block * kBlock, last))
            ReadAgainLater();
        return;
    }
    m_stepBegin = Clock::now();
    auto const isLate = [this] { return Clock::now() >= m_stepBegin + kPaintPatience; };
    RequestScope const scope(RequestKind::Properties, isLate);
    if (FetchSeen(block * kBlock, last))
        return;
    m_isSlow = isLate();
    if (m_isSlow)
        m_readTimer.start(0, this);
    else
        ReadAgainLater();
}

/// Null for a text that is not at hand.
char const *CADIListCtrl::TextAt(int position, int col) {
    int const id = GetID(position);
    if (m_stored == nullptr || id < m_cache.FullRows())
        return m_cache.Cell(id, col);
    if (std::vector<char const *> const *const entries = m_stored->HandedOut(id))
        return static_cast<std::size_t>(col) < entries->size() ? (*entries)[static_cast<std::size_t>(col)] : nullptr;
    DString const *text = m_stored->Text(id, col);
    if (text == nullptr) {
        FetchFor(position);
        text = m_stored->Text(id, col);
    }
    return text == nullptr ? nullptr : text->c_str();
}

} // namespace zelvar
