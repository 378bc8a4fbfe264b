// Where things stand in a report view, how it scrolls and what of it is painted.
#include "zelvar/platform/ui/Convert.h"
#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/SystemColor.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/views/ReportAccessible.h"
#include "zelvar/views/ReportPainter.h"
#include "zelvar/views/ReportRowPainter.h"
#include "zelvar/views/ReportView.h"
#include "zelvar/views/core/ReportRows.h"
#include "zelvar/views/core/RowScroll.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>
#include <QtGui/QPaintEvent>
#include <QtGui/QPainter>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QScrollBar>

#include <algorithm>
#include <utility>

namespace zelvar {

namespace {
constexpr int kCellMargins = 8; // pixels around the text of a column that fits its content
}

void ReportView::UpdateRowHeight() {
    m_measure.reset();
    int const picture = m_images == nullptr ? 0 : platform::kSmallPicture;
    m_geometry.SetRowHeight(std::max(fontMetrics().height(), picture) + 2);
    m_geometry.SetGroupHeaderHeight(fontMetrics().height() + 10);
    RowsChanged();
}

void ReportView::RowsChanged() {
    ReportAccessible::RowsReset(*this);
    viewport()->update();
    if (std::exchange(m_layoutDue, true))
        return;
    // The scroll bar follows once for any number of rows.
    QCoreApplication::postEvent(this, new QEvent(QEvent::LayoutRequest));
}

RowGeometry const &ReportView::Geometry() const {
    if (!std::exchange(m_layoutDue, false))
        return m_geometry;
    if (IsTiled())
        m_geometry.SetTiles(GetItemCount(), TilesPerLine(), m_tile.cy);
    else if (m_groupView && m_rows->GroupCount() > 0 && !IsVirtual())
        m_geometry.SetGroupedRows(m_rows->GroupOfRows(), m_rows->GroupCount());
    else
        m_geometry.SetRows(GetItemCount());
    return m_geometry;
}

RowScroll ReportView::Scroll() const { return {Geometry(), viewport()->height()}; }

void ReportView::UpdateVerticalBar() {
    RowScroll const scroll = Scroll();
    QScrollBar &bar = *verticalScrollBar();
    bar.setSingleStep(scroll.Step());
    bar.setPageStep(scroll.Page());
    bar.setRange(0, scroll.Last());
}

std::int64_t ReportView::ContentTop() const { return Scroll().ContentTop(verticalScrollBar()->value()); }

int ReportView::GetCountPerPage() const {
    int const seen = RowScroll(IsTiled() ? Geometry() : m_geometry, viewport()->height()).RowsPerPage();
    return IsTiled() ? std::max(seen, Geometry().PerLine()) : seen;
}

int ReportView::GetTopIndex() const {
    int const position = Geometry().FirstPositionBelow(ContentTop());
    return position < Geometry().RowCount() ? Geometry().RowAtPosition(position) : 0;
}

std::pair<int, int> ReportView::GetSeenRows() const {
    std::int64_t const top = ContentTop();
    int const last = Geometry().FirstPositionBelow(top + std::max(viewport()->height(), 1) - 1);
    return {Geometry().FirstPositionBelow(top), std::min(last + Geometry().PerLine(), GetItemCount())};
}

void ReportView::EnsureVisible(int row, bool partialOk) {
    if (!HasRow(row))
        return;
    Rect const place = GetItemRect(row);
    if (partialOk && place.bottom > 0 && place.top < viewport()->height())
        return;
    UpdateVerticalBar();
    QScrollBar &bar = *verticalScrollBar();
    bar.setValue(Scroll().ValueToShow(Geometry().PositionOfRow(row), bar.value()));
}

Rect ReportView::GetClientRect() const { return {0, 0, viewport()->width(), viewport()->height()}; }

void ReportView::ShowTiles(Size tile) {
    bool const isSame = tile.cx == m_tile.cx && tile.cy == m_tile.cy;
    if (isSame)
        return;
    int const focus = GetFocusRow();
    bool const isFocusSeen = HasRow(focus) && !GetItemRect(focus).Intersected(GetClientRect()).IsEmpty();
    int const top = GetTopIndex();
    m_tile = tile.cx > 0 && tile.cy > 0 ? tile : Size{};
    RowsChanged();
    UpdateVerticalBar();
    UpdateHorizontalBar();
    ShowOnTop(top);
    if (isFocusSeen)
        EnsureVisible(focus);
}

void ReportView::ShowOnTop(int row) {
    if (HasRow(row))
        verticalScrollBar()->setValue(
            Scroll().ValueToShow(Geometry().PositionOfRow(row), verticalScrollBar()->maximum()));
}

int ReportView::TilesPerLine() const { return std::max(viewport()->width() / std::max(m_tile.cx, 1), 1); }

/// Tiles share what a line leaves.
Rect ReportView::TileRect(int row, int top) const {
    int const perLine = Geometry().PerLine();
    int const place = row % perLine;
    int const width = std::max(viewport()->width(), m_tile.cx);
    return Mirrored({place * width / perLine, top, (place + 1) * width / perLine, top + m_tile.cy});
}

int ReportView::RowOfTile(int first, int x) const {
    for (int row = first; row < std::min(first + Geometry().PerLine(), GetItemCount()); ++row)
        if (Rect const tile = TileRect(row, 0); x >= tile.left && x < tile.right)
            return row;
    return -1;
}

Rect ReportView::TilePartRect(int row, int col, int part) const {
    constexpr int kMargin = 4; // pixels around what stands in a tile
    Rect rect = GetItemRect(row);
    if (part == LVIR_BOUNDS && col == 0)
        return rect;
    int const line = fontMetrics().height() + 1;
    rect = {rect.left + kMargin, rect.top + kMargin, rect.right - kMargin, rect.bottom - kMargin};
    int const texts = std::max(rect.bottom - 2 * line, rect.top);
    if (part == LVIR_ICON)
        return {rect.left, rect.top, rect.right, texts};
    int const shown = std::min(col, 2); // the third is empty
    return {rect.left, std::min(texts + shown * line, rect.bottom), rect.right,
            std::min(texts + (shown + 1) * line, rect.bottom)};
}

Rect ReportView::GetItemRect(int row) const {
    if (!HasRow(row))
        return {};
    // Rows far away keep clear of the integers' ends.
    constexpr std::int64_t far = 1 << 28;
    int const top = static_cast<int>(std::clamp(Geometry().RowTop(row) - ContentTop(), -far, far));
    if (IsTiled())
        return TileRect(row, top);
    int const start = -horizontalScrollBar()->value();
    return Mirrored({start, top, start + ColumnsWidth(), top + RowHeight()});
}

int ReportView::LabelLeft(int row, int col) const {
    return col == 0 && m_images != nullptr && HasRow(row) ? platform::kSmallPicture : 0;
}

Rect ReportView::GetSubItemRect(int row, int col, int part) const {
    if (!HasRow(row))
        return {};
    if (IsTiled())
        return TilePartRect(row, col, part);
    Rect rect = GetItemRect(row);
    if (col == 0 && part == LVIR_BOUNDS)
        return rect;
    rect.left = ColumnStart(col);
    rect.right = rect.left + GetColumnWidth(col);
    int const label = std::min(rect.left + LabelLeft(row, col), rect.right);
    if (part == LVIR_LABEL)
        rect.left = label;
    else if (part == LVIR_ICON)
        rect.right = label;
    return Mirrored(rect);
}

ReportHit ReportView::SubItemHitTest(Point point) const {
    if (!GetClientRect().Contains(point))
        return {};
    std::optional<int> const row = Geometry().RowAt(ContentTop() + point.y);
    if (IsTiled()) {
        int const tile = row ? RowOfTile(*row, point.x) : -1;
        return tile < 0 ? ReportHit{} : ReportHit{tile, 0};
    }
    int const col = ColumnAt(point.x);
    return row && col >= 0 ? ReportHit{*row, col} : ReportHit{};
}

void ReportView::RedrawItems(int first, int last) {
    if (m_layoutDue || Geometry().IsGrouped() || last - first > GetCountPerPage()) {
        viewport()->update();
        return;
    }
    if (IsTiled()) {
        Rect const lines{0, GetItemRect(first).top, viewport()->width(), GetItemRect(last).bottom};
        viewport()->update(platform::ToQRect(lines.Intersected(GetClientRect())));
        return;
    }
    int const top = verticalScrollBar()->value();
    if (last < top || first > top + GetCountPerPage() + 1)
        return;
    int const y = (first - top) * RowHeight();
    viewport()->update(0, y, viewport()->width(), (last - first + 1) * RowHeight());
}

int ReportView::ContentWidth(int col) const {
    // A virtual list may hold millions of rows: those that are seen must do.
    int const first = IsVirtual() ? GetTopIndex() : 0;
    int const last = IsVirtual() ? std::min(first + GetCountPerPage() + 1, GetItemCount()) : GetItemCount();
    int widest = 0;
    for (int row = first; row < last; ++row)
        widest = std::max(widest, MeasureCell(row, col));
    return widest;
}

int ReportView::CellMargins(int row, int col) const { return LabelLeft(row, col) + kCellMargins; }

int ReportView::MeasureCell(int row, int col) const {
    if (!m_measure)
        m_measure.emplace(font());
    return m_measure->Width(GetItemText(row, GetColumnSubItem(col))) + CellMargins(row, col);
}

void ReportView::resizeEvent(QResizeEvent *event) {
    int const kept = IsTiled() ? GetTopIndex() : 0;
    bool const isNewLine = IsTiled() && Geometry().PerLine() != TilesPerLine();
    ColumnArea::resizeEvent(event);
    if (isNewLine)
        RowsChanged();
    UpdateVerticalBar();
    if (isNewLine)
        ShowOnTop(kept);
}

void ReportView::changeEvent(QEvent *event) {
    ColumnArea::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        UpdateRowHeight();
    else if (event->type() == QEvent::EnabledChange || event->type() == QEvent::PaletteChange)
        viewport()->update();
}

void ReportView::EraseBackground(QPainter &painter, Rect const &area) const {
    painter.fillRect(platform::ToQRect(area), palette().color(QPalette::Base));
}

Rect ReportView::PictureRect(Rect const &row) const { return ReportRowPainter(*this).PictureRect(row); }

void ReportView::DrawRowPicture(DrawItemStruct const &item) const { ReportRowPainter(*this).DrawPicture(item); }

void ReportView::DrawItem(DrawItemStruct const &item) { ReportRowPainter(*this).DrawRow(item); }

void ReportView::paintEvent(QPaintEvent *event) {
    UpdateVerticalBar();
    RowGeometry const &geometry = Geometry();
    QPainter painter(viewport());
    painter.setFont(font());
    painter.setLayoutDirection(layoutDirection()); // a painter begins with the application's
    EraseBackground(painter, GetClientRect());

    std::int64_t const above = ContentTop();
    std::int64_t const top = above + event->rect().top();
    std::int64_t const bottom = above + event->rect().bottom() + 1;
    ReportRowPainter(*this).DrawGroupHeaders(painter, *m_rows, geometry, {above, top, bottom});
    bool const marksSelection = hasFocus() || (m_style & LVS_SHOWSELALWAYS) != 0;
    unsigned const shownStates = (marksSelection ? LVIS_SELECTED : 0U) | (hasFocus() ? LVIS_FOCUSED : 0U);
    DrawItemStruct item{.painter = painter,
                        .textColor = platform::ToColorRef(palette().color(QPalette::Text)),
                        .bkColor = platform::ToColorRef(palette().color(QPalette::Base))};
    for (int position = geometry.FirstPositionBelow(top);
         position < geometry.RowCount() && geometry.PositionTop(position) < bottom; ++position) {
        item.itemID = geometry.RowAtPosition(position);
        item.rcItem = GetItemRect(item.itemID);
        if (IsTiled() && !event->rect().intersects(platform::ToQRect(item.rcItem)))
            continue;
        item.state = m_selection.State(item.itemID) & shownStates;
        item.itemData = GetItemWord(item.itemID);
        painter.save();
        DrawItem(item);
        painter.restore();
    }
    // Who comes by Tab sees where, also in a list without a current row or without rows.
    m_isFramed = hasFocus() && !HasRow(GetFocusRow()) && window()->testAttribute(Qt::WA_KeyboardFocusChange);
    if (m_isFramed) {
        painter.setPen(palette().color(QPalette::Highlight));
        painter.drawRect(viewport()->rect().adjusted(0, 0, -1, -1));
    }
}

} // namespace zelvar
