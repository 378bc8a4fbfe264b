#pragma once

#include "zelvar/lists/CZelListCtrlVirtual.h"
#include "zelvar/lists/core/CellCache.h"

#include <QtCore/QBasicTimer>

#include <chrono>
#include <limits>
#include <memory>
#include <tuple>
#include <unordered_map>
#include <vector>

namespace zelvar {

class IAttrData;
class IRowStore;
class StoredRows;

/// Attribute table list: a virtual list over a table, whose rows it reads as they are asked for, keeps as texts and
/// sorts by a column. It adds the reading to `CZelListCtrlVirtual`: the number of rows is an estimate, which the owner
/// begins (`SetNumRow`), which doubles each time its end is reached and is right once the table has ended. The source
/// is closed then.
///
/// A source that fails (`IAttrData::HasFailed`: stopped, late, lost) has not ended. What was read stays, nothing is
/// said, and the same row is asked for again: at once by `ReadAllRows` and `Sort`, else when a cell is asked for after
/// a pause, a second at first and longer from one failure to the next. While rows are read for long outside of
/// painting, windows are painted and Escape stops it, which counts as such a failure.
///
/// Of a large table whose rows can be read again by their numbers (`IAttrData::GetRowStore`) only the first ones are
/// kept as texts; the others are counted, sorted where they are and read as they are seen, so that the place behind the
/// source stays in use after the source is closed. A class that filters rows, or an application that takes entries of
/// cells before that, has all rows kept.
///
/// Painting reads at most for `kPaintPatience`: what is missing then follows by and by, as far as rows are seen.
class ZELVAR_API CADIListCtrl : public CZelListCtrlVirtual {
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds kPaintPatience{80};

    /// Takes over `source`, which may be null for no rows.
    explicit CADIListCtrl(IAttrData *source, QWidget *parent = nullptr);
    ~CADIListCtrl() override;

    /// A column "ID" and one for each column of the table that `OnFilterCol` keeps. Once, before the first row is read:
    /// nothing afterwards.
    void AddAllColumns();
    void ReadAllRows() { std::ignore = ReadRows(std::numeric_limits<int>::max()); }
    /// Rows that have been read and kept.
    [[nodiscard]] int GetCacheRows() const { return m_cache.Rows(); }
    /// The entry of a cell by the row's id and the column without "ID". The text is the list's; an entry that is made
    /// to point elsewhere shows a text that stays its owner's and must outlive the list. The entry of a cell that is
    /// not there belongs to none.
    [[nodiscard]] char const *&GetCacheItem(int row, int col);
    /// The id of the row at a place of the list, the number at which it was read; -1 for none.
    [[nodiscard]] int GetID(int position) const { return m_cache.IdAt(position); }
    /// Whether no more rows can come: the table has ended and is closed.
    [[nodiscard]] bool IsReadThrough() const { return m_source == nullptr; }

    using CZelListCtrlVirtual::Sort;
    /// Reads all rows and orders them, see `core/CellOrder.h`: ascending, numbers and ids go from large to small and
    /// texts from A to Z. Nothing is selected afterwards. If that is stopped the order and the selection stay.
    void Sort(int col, bool ascending) override;
    /// Whether the last sort came to its end.
    [[nodiscard]] bool IsSorted() const { return m_isSorted; }
    DString OnGetItemText(int position, int col) override;

    // For derived classes. They are asked while a row of the source is read, and must not ask for rows themselves.
    virtual bool OnFilterRow(int row); ///< whether to keep the row of the source: yes
    /// Whether to show the column of the source: yes. `name` may be changed.
    virtual bool OnFilterCol(int col, DString &name);
    /// A cell of a row that is kept is about to be read, of every column of the source. Does nothing.
    virtual void OnValue(int row, int col, int cacheRow);

protected:
    /// Reads on until so many rows more are kept. True if the table has not ended: there may be more.
    bool ReadRows(int count);

    bool OnColumnClick(int col) override;
    void paintEvent(QPaintEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    using Clock = std::chrono::steady_clock;
    using StopQuestion = CellCache::StopQuestion;
    enum class ReadEnd { Count, Stopped, Failed, Table };

    [[nodiscard]] ReadEnd Read(int count, StopQuestion const &isStopped);
    [[nodiscard]] ReadEnd Step(int count);
    [[nodiscard]] bool KeepRow();
    [[nodiscard]] bool KeepStoredRows();
    [[nodiscard]] bool HasAlteredEntries() const;
    void StoreIfLarge(int count);
    [[nodiscard]] ReadEnd ReadWatched(int count);
    void ReadForPaint(int position);
    void ReadWhatIsSeen();
    void ReadFor(int position);
    [[nodiscard]] int RowsToRead(int position) const;
    [[nodiscard]] bool MayRead() const;
    void ReadAgainLater();
    void GrowEstimate();
    bool SortAll(int col, bool ascending);
    [[nodiscard]] bool SortRows(int col, bool ascending, StopQuestion const &isStopped);
    [[nodiscard]] bool FetchSeen(int first, int last);
    void FetchFor(int position);
    [[nodiscard]] char const *TextAt(int position, int col);

    std::unique_ptr<IAttrData> m_source;          ///< null once it is read through
    std::shared_ptr<IRowStore> m_store;           ///< of the source; null if it has none, or all rows are kept
    std::unique_ptr<StoredRows> m_stored;         ///< once not all rows are kept
    std::unique_ptr<StoredRows> m_formerlyStored; ///< its texts that were handed out
    CellCache m_cache;
    std::unordered_map<char const **, char const *> m_handedOut; ///< entries of kept rows, beside others, as they were
    std::vector<int> m_columns;                                  ///< of the source, for each one shown
    int m_sourceRow = -1;                                        ///< the last one asked for
    bool m_isReading = false;
    bool m_isPainting = false;
    bool m_isSlow = false;         ///< the source, so that painting does not wait for it
    Clock::time_point m_stepBegin; ///< of the step to a row that is under way
    Clock::time_point m_paintEnd;
    Clock::time_point m_retryAt;
    int m_failures = 0; ///< in a row
    int m_fetched = -1; ///< block of rows that was fetched last
    int m_blocks = 1;   ///< that are fetched together
    bool m_isSorted = false;
    QBasicTimer m_readTimer;
};

} // namespace zelvar
