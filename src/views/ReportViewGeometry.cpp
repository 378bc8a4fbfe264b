// Where things stand in a report view, and how it scrolls.
#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/views/ReportAccessible.h"
#include "zelvar/views/ReportPainter.h"
#include "zelvar/views/ReportView.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QScrollBar>

#include <algorithm>
#include <unordered_map>

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
    if (!m_groupView || m_groups.empty() || IsVirtual()) {
        m_geometry.SetRows(GetItemCount());
        return m_geometry;
    }
    std::unordered_map<int, int> places;
    for (Group const &group : m_groups)
        places.emplace(group.id, static_cast<int>(places.size()));
    std::vector<int> rowGroups;
    rowGroups.reserve(m_rows.size());
    for (Row const &row : m_rows) {
        auto const place = places.find(row.group);
        rowGroups.push_back(place == places.end() ? -1 : place->second);
    }
    m_geometry.SetGroupedRows(rowGroups, static_cast<int>(m_groups.size()));
    return m_geometry;
}

// Without groups the bar counts rows, so that any number of them has a bar; with groups it counts pixels.
void ReportView::UpdateVerticalBar() {
    RowGeometry const &geometry = Geometry();
    QScrollBar &bar = *verticalScrollBar();
    int const page = geometry.IsGrouped() ? viewport()->height() : GetCountPerPage();
    int const all = geometry.IsGrouped() ? static_cast<int>(geometry.ContentHeight()) : geometry.RowCount();
    bar.setSingleStep(geometry.IsGrouped() ? geometry.RowHeight() : 1);
    bar.setPageStep(std::max(page, 1));
    bar.setRange(0, std::max(0, all - page));
}

std::int64_t ReportView::ContentTop() const {
    int const value = verticalScrollBar()->value();
    return Geometry().IsGrouped() ? value : Geometry().PositionTop(value);
}

int ReportView::GetCountPerPage() const { return viewport()->height() / m_geometry.RowHeight(); }

int ReportView::GetTopIndex() const {
    int const position = Geometry().FirstPositionBelow(ContentTop());
    return position < Geometry().RowCount() ? Geometry().RowAtPosition(position) : 0;
}

void ReportView::ShowPosition(int position) {
    UpdateVerticalBar();
    RowGeometry const &geometry = Geometry();
    QScrollBar &bar = *verticalScrollBar();
    if (!geometry.IsGrouped()) {
        int const page = std::max(GetCountPerPage(), 1);
        bar.setValue(std::clamp(bar.value(), position - page + 1, position));
        return;
    }
    // The first row of a group comes with its header.
    int top = static_cast<int>(geometry.PositionTop(position));
    int const bottom = top + geometry.RowHeight();
    for (RowGeometry::Span const &span : geometry.Spans())
        if (span.firstPosition == position)
            top = static_cast<int>(span.headerTop);
    bar.setValue(std::min(std::max(bar.value(), bottom - viewport()->height()), top));
}

void ReportView::EnsureVisible(int row, bool partialOk) {
    if (!HasRow(row))
        return;
    Rect const place = GetItemRect(row);
    if (partialOk && place.bottom > 0 && place.top < viewport()->height())
        return;
    ShowPosition(Geometry().PositionOfRow(row));
}

Rect ReportView::GetClientRect() const { return {0, 0, viewport()->width(), viewport()->height()}; }

Rect ReportView::GetItemRect(int row) const {
    if (!HasRow(row))
        return {};
    // Rows far away keep clear of the integers' ends.
    constexpr std::int64_t far = 1 << 28;
    int const top = static_cast<int>(std::clamp(Geometry().RowTop(row) - ContentTop(), -far, far));
    int const start = -horizontalScrollBar()->value();
    return Mirrored({start, top, start + ColumnsWidth(), top + RowHeight()});
}

int ReportView::LabelLeft(int row, int col) const {
    return col == 0 && m_images != nullptr && HasRow(row) ? platform::kSmallPicture : 0;
}

Rect ReportView::GetSubItemRect(int row, int col, int part) const {
    if (!HasRow(row))
        return {};
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
    int const col = ColumnAt(point.x);
    return row && col >= 0 ? ReportHit{*row, col} : ReportHit{};
}

void ReportView::RedrawItems(int first, int last) {
    if (m_layoutDue || Geometry().IsGrouped() || last - first > GetCountPerPage()) {
        viewport()->update();
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
    ColumnArea::resizeEvent(event);
    UpdateVerticalBar();
}

void ReportView::changeEvent(QEvent *event) {
    ColumnArea::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        UpdateRowHeight();
    else if (event->type() == QEvent::EnabledChange || event->type() == QEvent::PaletteChange)
        viewport()->update();
}

} // namespace zelvar
