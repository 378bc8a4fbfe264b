// The columns of a row-and-column list: adding, fitting, saved widths.
#include "zelvar/lists/CZelListCtrl.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QTimerEvent>

#include <cstdint>

namespace zelvar {

namespace {

constexpr int kFitTimer = 16061970;
constexpr int kFitDelay = 100; // milliseconds after the last change of size
constexpr std::size_t kCaptionBytes = 1023;

/// No painting while columns change several times. Hiding the list would lose the focus.
class PaintLock {
public:
    explicit PaintLock(QWidget &window) : m_window(window), m_locked(window.updatesEnabled()) {
        if (m_locked)
            m_window.setUpdatesEnabled(false);
    }
    PaintLock(PaintLock const &) = delete;
    PaintLock &operator=(PaintLock const &) = delete;
    ~PaintLock() {
        if (m_locked)
            m_window.setUpdatesEnabled(true);
    }

private:
    QWidget &m_window;
    bool m_locked;
};

} // namespace

int CZelListCtrl::WidthOf(DString const &sample) const {
    return fontMetrics().horizontalAdvance(platform::ToQString(sample));
}

void CZelListCtrl::AddCol(DString const &caption, ADIColType type, bool editable, int width, int format) {
    if (m_boldFont == nullptr) {
        m_mediumFont = std::make_unique<QFont>(font());
        m_mediumFont->setWeight(QFont::Medium);
        m_boldFont = std::make_unique<QFont>(font());
        m_boldFont->setWeight(QFont::Bold);
    }
    InsertColumn(m_numCol, type, caption, editable, format, width, m_numCol);
    ++m_numCol;
}

void CZelListCtrl::AddCol(DString const &caption, DString const &sample, ADIColType type, int format, bool editable) {
    AddCol(caption, type, editable, WidthOf(sample), format);
}

DString CZelListCtrl::GetColCaption(int col) const {
    ReportColumn column;
    return GetColumn(col, column) ? column.caption.substr(0, kCaptionBytes) : DString{};
}

void CZelListCtrl::RmvAllCol() {
    CListCtrlFlex::RmvAllCol();
    m_numCol = 0;
}

void CZelListCtrl::FitAll(int how) {
    PaintLock const lock(*this);
    for (int col = 0; col < m_numCol; ++col)
        SetColumnWidth(col, how);
    m_fitCol = -1;
}

void CZelListCtrl::ResizeColToFit() { FitAll(LVSCW_AUTOSIZE); }

void CZelListCtrl::ResizeColToFitUseHeader() { FitAll(LVSCW_AUTOSIZE_USEHEADER); }

void CZelListCtrl::ResizeColToFit(int col) {
    PaintLock const lock(*this);
    SetColumnWidth(col, LVSCW_AUTOSIZE);
    if (col == m_fitCol)
        m_fitCol = -1;
}

void CZelListCtrl::EnlargeCol(int col, bool) {
    PaintLock const lock(*this);
    int room = GetClientRect().Width();
    SetColumnWidth(col, LVSCW_AUTOSIZE);
    for (int other = 0; other < m_numCol; ++other)
        room -= other == col ? 0 : GetColumnWidth(other);
    if (room > GetColumnWidth(col))
        SetColumnWidth(col, room & 0xFFFF);
    m_fitCol = col;
}

DString CZelListCtrl::ColumnKey(int col) const {
    DString const caption = GetColCaption(col);
    return caption.empty() ? std::to_string(col) : caption;
}

void CZelListCtrl::SaveColWidth() {
    for (int col = 0; col < m_numCol; ++col)
        m_savedWidths[ColumnKey(col)] = GetColumnWidth(col);
}

void CZelListCtrl::RestoreColWidth() {
    PaintLock const lock(*this);
    for (int col = 0; col < m_numCol; ++col) {
        auto const saved = m_savedWidths.find(ColumnKey(col));
        if (saved != m_savedWidths.end() && saved->second > 0)
            SetColWidth(col, saved->second);
    }
}

void CZelListCtrl::resizeEvent(QResizeEvent *event) {
    CListCtrlFlex::resizeEvent(event);
    if (isVisible())
        m_timers.Set(kFitTimer, kFitDelay);
}

void CZelListCtrl::timerEvent(QTimerEvent *event) {
    CListCtrlFlex::timerEvent(event);
    if (!m_timers.Expired(kFitTimer, *event))
        return;
    m_timers.Kill(kFitTimer);
    if (m_fitCol >= 0)
        EnlargeCol(m_fitCol, false);
}

} // namespace zelvar
