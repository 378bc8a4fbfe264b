#include "zelvar/lists/CADIListCtrl.h"

#include "zelvar/base/Translation.h"
#include "zelvar/data/IAttrData.h"
#include "zelvar/data/IRowStore.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/lists/ReadProgress.h"
#include "zelvar/lists/StoredRows.h"
#include "zelvar/platform/ui/EscapeWatch.h"

#include <QtCore/QScopedValueRollback>
#include <QtCore/QTimerEvent>
#include <QtWidgets/QApplication>

#include <algorithm>
#include <cstring>
#include <new>
#include <optional>

namespace zelvar {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kSlice{50}; // of reading between two looks at the events
constexpr milliseconds kFirstPause{1000};
constexpr int kMostDoublings = 5; // of the pause
constexpr int kIdWidth = 50;      // pixels
constexpr int kWidth = 100;
constexpr std::size_t kShownBytes = 4096; // of a cell, when painting
constexpr int kMost = std::numeric_limits<int>::max();
constexpr int kRowsPerLook = 256;             // at the stop, where a row costs next to nothing
constexpr std::chrono::minutes kSortTime{30}; // for what says how far it has come
constexpr double kCountShare = 0.2;           // of a sort

class WaitCursor {
public:
    WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QApplication::restoreOverrideCursor(); }
    WaitCursor(WaitCursor const &) = delete;
    WaitCursor &operator=(WaitCursor const &) = delete;
};

} // namespace

CADIListCtrl::CADIListCtrl(IAttrData *source, QWidget *parent)
    : CZelListCtrlVirtual(parent), m_source(source), m_store(source == nullptr ? nullptr : source->GetRowStore()) {}

CADIListCtrl::~CADIListCtrl() = default;

bool CADIListCtrl::OnFilterRow(int) { return true; }

bool CADIListCtrl::OnFilterCol(int, DString &) { return true; }

void CADIListCtrl::OnValue(int, int, int) {}

void CADIListCtrl::AddAllColumns() {
    if (GetNumCol() > 0 || m_sourceRow >= 0)
        return;
    AddCol(Translated("ID"), ADICol_String, false, kIdWidth, LVCFMT_LEFT);
    int const count = m_source == nullptr ? 0 : m_source->GetNumCols();
    for (int col = 0; col < count; ++col) {
        DString name = m_source->GetColName(col);
        if (!OnFilterCol(col, name))
            continue;
        m_columns.push_back(col);
        // Line ends would make the headings as high as the window.
        std::replace_if(
            name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
        AddCol(name, ADICol_String, false, kWidth, LVCFMT_LEFT);
    }
    m_cache.SetStride(m_columns.size());
}

// --- reading ---

bool CADIListCtrl::KeepRow() {
    int const id = m_cache.Rows();
    m_cache.AddRow();
    try {
        int const count = m_source->GetNumCols();
        auto kept = m_columns.begin();
        for (int col = 0; col < count; ++col) {
            OnValue(m_sourceRow, col, id);
            if (kept == m_columns.end() || *kept != col)
                continue;
            m_cache.AddCell(m_source->GetText(col));
            ++kept;
        }
        return true;
    } catch (std::bad_alloc const &) {
        m_cache.DropRow();
        return false;
    }
}

/// To the next row of the source, which is kept or counted. `count` more are wanted.
CADIListCtrl::ReadEnd CADIListCtrl::Step(int count) {
    if (m_sourceRow == kMost)
        return ReadEnd::Table;
    ++m_sourceRow;
    if (m_stored == nullptr) {
        if (!m_source->SetRow(m_sourceRow))
            return m_source->HasFailed() ? ReadEnd::Failed : ReadEnd::Table;
        return !OnFilterRow(m_sourceRow) || KeepRow() ? ReadEnd::Count : ReadEnd::Failed;
    }
    StoredRows::Found const found = m_stored->Find(m_sourceRow, std::int64_t{m_sourceRow} + count);
    if (found != StoredRows::Found::Yes)
        return found == StoredRows::Found::No ? ReadEnd::Table : ReadEnd::Failed;
    if (!OnFilterRow(m_sourceRow))
        return KeepStoredRows() ? ReadEnd::Count : ReadEnd::Failed;
    int const id = m_cache.Rows();
    m_cache.AddRow();
    for (int col = 0, cols = m_source->GetNumCols(); col < cols; ++col)
        OnValue(m_sourceRow, col, id);
    return ReadEnd::Count;
}

CADIListCtrl::ReadEnd CADIListCtrl::Read(int count, StopQuestion const &isStopped) {
    WaitCursor const cursor;
    QScopedValueRollback const reading(m_isReading, true);
    int const before = m_cache.Rows();
    ReadEnd end = ReadEnd::Count;
    while (m_source != nullptr && end == ReadEnd::Count && count > 0) {
        StoreIfLarge(m_cache.Rows() == before ? count : 0);
        bool const looks = m_stored == nullptr || m_cache.Rows() % kRowsPerLook == 0;
        if (looks && isStopped && isStopped()) {
            end = ReadEnd::Stopped;
            break;
        }
        m_stepBegin = looks ? Clock::now() : m_stepBegin;
        int const kept = m_cache.Rows();
        end = Step(count);
        count -= m_cache.Rows() - kept;
    }
    if (m_cache.Rows() > before)
        m_failures = 0;
    if (m_source == nullptr)
        end = ReadEnd::Table;
    if (end == ReadEnd::Failed)
        --m_sourceRow; // the same row again
    if (end == ReadEnd::Table) {
        SetNumRow(m_cache.Rows(), 0);
        m_source.reset();
        if (m_stored == nullptr)
            m_store.reset();
    }
    return end;
}

CADIListCtrl::ReadEnd CADIListCtrl::ReadWatched(int count) {
    if (m_isPainting)
        return Read(count, {});
    platform::EscapeWatch watch;
    auto const isPressed = [&watch] { return watch.IsPressed(); };
    RequestScope const scope(RequestKind::Properties, isPressed);
    return Read(count, isPressed);
}

bool CADIListCtrl::ReadRows(int count) {
    if (m_isReading)
        return m_source != nullptr;
    ReadEnd const end = ReadWatched(count);
    if (end == ReadEnd::Stopped || end == ReadEnd::Failed)
        ReadAgainLater();
    return end != ReadEnd::Table;
}

/// As many rows as the list still promises behind `position`, and no fewer than reach it.
int CADIListCtrl::RowsToRead(int position) const {
    int const missing = position - m_cache.Rows();
    return std::max(GetNumRow() - position, missing == kMost ? kMost : missing + 1);
}

bool CADIListCtrl::MayRead() const { return m_source != nullptr && !m_isReading && Clock::now() >= m_retryAt; }

void CADIListCtrl::ReadAgainLater() {
    m_retryAt = Clock::now() + kFirstPause * (1 << std::min(m_failures++, kMostDoublings));
    // Where more may come the list goes on behind what is there, or nobody would ask for it.
    if (m_cache.Rows() >= GetNumRow())
        GrowEstimate();
}

void CADIListCtrl::GrowEstimate() {
    int const rows = std::max(m_cache.Rows(), 1);
    SetNumRow(std::max(GetNumRow(), rows > kMost / 2 ? kMost : rows * 2), 0);
}

void CADIListCtrl::ReadFor(int position) {
    if (m_isPainting) {
        ReadForPaint(position);
        return;
    }
    ReadEnd const end = ReadWatched(RowsToRead(position));
    if (end == ReadEnd::Count)
        GrowEstimate();
    else if (end != ReadEnd::Table)
        ReadAgainLater();
}

// Painting cannot be interrupted. So it waits a little, once, to find out how quick the source is: one that keeps it
// waiting is read between events from then on.
void CADIListCtrl::ReadForPaint(int position) {
    ReadEnd end = ReadEnd::Stopped;
    if (!m_isSlow && Clock::now() < m_paintEnd) {
        auto const isLate = [this] { return Clock::now() >= m_stepBegin + kPaintPatience; };
        RequestScope const scope(RequestKind::Properties, isLate);
        end = Read(RowsToRead(position), [this] { return Clock::now() >= m_paintEnd; });
        m_isSlow = end == ReadEnd::Failed && isLate();
    }
    if (end == ReadEnd::Count)
        GrowEstimate();
    else if (end == ReadEnd::Failed && !m_isSlow)
        ReadAgainLater();
    else if (end != ReadEnd::Table && position >= m_cache.Rows())
        m_readTimer.start(0, this);
}

void CADIListCtrl::ReadWhatIsSeen() {
    int const first = GetTopIndex();
    int const last = std::min(first + GetCountPerPage() + 1, GetNumRow()) - 1;
    if (!isVisible() || m_isReading || Clock::now() < m_retryAt)
        return;
    if (m_stored != nullptr) {
        platform::EscapeWatch watch;
        RequestScope const scope(RequestKind::Properties, [&watch] { return watch.IsPressed(); });
        if (!FetchSeen(first, last))
            ReadAgainLater();
        viewport()->update();
    }
    if (last < m_cache.Rows() || !MayRead())
        return;
    platform::EscapeWatch watch;
    RequestScope const scope(RequestKind::Properties, [&watch] { return watch.IsPressed(); });
    Clock::time_point const sliceEnd = Clock::now() + kSlice;
    ReadEnd const end =
        Read(last + 1 - m_cache.Rows(), [&watch, sliceEnd] { return watch.IsPressed() || Clock::now() >= sliceEnd; });
    if (end == ReadEnd::Count)
        GrowEstimate();
    else if (end == ReadEnd::Failed || watch.IsPressed())
        ReadAgainLater();
    else if (end == ReadEnd::Stopped)
        m_readTimer.start(0, this);
    if (m_cache.Rows() > first)
        viewport()->update();
}

void CADIListCtrl::timerEvent(QTimerEvent *event) {
    CZelListCtrlVirtual::timerEvent(event);
    if (event->timerId() != m_readTimer.timerId())
        return;
    m_readTimer.stop();
    ReadWhatIsSeen();
}

void CADIListCtrl::paintEvent(QPaintEvent *event) {
    QScopedValueRollback const painting(m_isPainting, true);
    m_paintEnd = Clock::now() + kPaintPatience;
    CZelListCtrlVirtual::paintEvent(event);
}

DString CADIListCtrl::OnGetItemText(int position, int col) {
    if (position >= m_cache.Rows() && MayRead())
        ReadFor(position);
    int const id = GetID(position);
    if (id < 0)
        return {};
    if (col == 0)
        return std::to_string(id);
    char const *const text = TextAt(position, col - 1);
    if (text == nullptr)
        return {};
    return m_isPainting ? DString(text, strnlen(text, kShownBytes)) : DString(text);
}

// --- sorting ---

bool CADIListCtrl::SortRows(int col, bool ascending, StopQuestion const &isStopped) {
    if (m_stored != nullptr && HasAlteredEntries() && !KeepStoredRows())
        return false;
    if (m_stored == nullptr || col < 0)
        return m_cache.Sort(col, ascending, isStopped);
    RequestScope const scope(RequestKind::Properties, isStopped, kSortTime);
    RowOrder order;
    return m_stored->Sort(col, ascending, order) && m_cache.TakeOrder(std::move(order.rows), order.ties, isStopped);
}

bool CADIListCtrl::SortAll(int col, bool ascending) {
    if (m_isReading)
        return false;
    WaitCursor const cursor;
    platform::EscapeWatch watch;
    ReadProgress progress(*viewport());
    auto const isPressed = [&watch, &progress] {
        if (RequestScope const *const current = RequestScope::Current())
            progress.Show(current->Progress());
        return watch.IsPressed();
    };
    progress.SetStage(0, kCountShare);
    {
        std::optional<std::chrono::milliseconds> time;
        if (m_store != nullptr)
            time = kSortTime;
        RequestScope const scope(RequestKind::Properties, isPressed, time);
        if (Read(kMost, isPressed) != ReadEnd::Table) {
            ReadAgainLater();
            return false;
        }
    }
    // The windows may be painted meanwhile: they show the order as it was.
    QScopedValueRollback const reading(m_isReading, true);
    progress.SetStage(kCountShare, 1);
    if (!SortRows(std::max(col, 0) - 1, ascending, isPressed))
        return false;
    if (int const row = GetCrntSlct(); row >= 0) {
        SetSlct(row, false);
        ClearSlct();
    }
    viewport()->update();
    return true;
}

void CADIListCtrl::Sort(int col, bool ascending) { m_isSorted = SortAll(col, ascending); }

// A sort that was stopped leaves the mark in the heading where it was, too; one that is switched off is remembered.
bool CADIListCtrl::OnColumnClick(int col) {
    LastSort const before = GetLastSort();
    if (!IsSortEnabled()) {
        GetLastSort() = LastSort(col, before.IsSortAscnd(col));
        return true;
    }
    m_isSorted = false;
    bool const isHandled = CZelListCtrlVirtual::OnColumnClick(col);
    if (!m_isSorted) {
        GetLastSort() = before;
        SetSortMark(before.GetCol(), before.IsSortedAscnd());
    }
    return isHandled;
}

} // namespace zelvar
