// How a report view draws itself, and its tool tips.
#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/SystemColor.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/views/ReportPainter.h"
#include "zelvar/views/ReportView.h"

#include <QtGui/QHelpEvent>
#include <QtGui/QPainter>
#include <QtWidgets/QToolTip>

namespace zelvar {

void ReportView::EraseBackground(QPainter &painter, Rect const &area) const {
    painter.fillRect(platform::ToQRect(area), palette().color(QPalette::Base));
}

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
    DrawGroupHeaders(painter, top, bottom);
    bool const marksSelection = hasFocus() || (m_style & LVS_SHOWSELALWAYS) != 0;
    unsigned const shownStates = (marksSelection ? LVIS_SELECTED : 0U) | (hasFocus() ? LVIS_FOCUSED : 0U);
    DrawItemStruct item{.painter = painter,
                        .textColor = platform::ToColorRef(palette().color(QPalette::Text)),
                        .bkColor = platform::ToColorRef(palette().color(QPalette::Base))};
    for (int position = geometry.FirstPositionBelow(top);
         position < geometry.RowCount() && geometry.PositionTop(position) < bottom; ++position) {
        item.itemID = geometry.RowAtPosition(position);
        item.rcItem = GetItemRect(item.itemID);
        item.state = m_selection.State(item.itemID) & shownStates;
        item.itemData = GetItemWord(item.itemID);
        painter.save();
        DrawItem(item);
        painter.restore();
    }
}

void ReportView::DrawGroupHeaders(QPainter &painter, std::int64_t top, std::int64_t bottom) const {
    RowGeometry const &geometry = Geometry();
    for (RowGeometry::Span const &span : geometry.Spans()) {
        if (span.group < 0 || span.rowsTop <= top || span.headerTop >= bottom)
            continue;
        int const y = static_cast<int>(span.headerTop - ContentTop());
        QRect const line(4, y, viewport()->width() - 8, geometry.GroupHeaderHeight() - 2);
        QString const text = platform::ToQString(m_groups[static_cast<std::size_t>(span.group)].header);
        QColor const ink = palette().color(QPalette::Highlight).darker(120);
        painter.save();
        QFont bold = font();
        bold.setBold(true);
        painter.setFont(bold);
        painter.setPen(ink);
        int const flags = platform::ReadingFlags(text, Qt::AlignLeft | Qt::AlignVCenter, layoutDirection());
        painter.drawText(line, flags | Qt::TextSingleLine,
                         painter.fontMetrics().elidedText(text, Qt::ElideRight, line.width()));
        Rect const rule{line.left() + painter.fontMetrics().horizontalAdvance(text) + 8, line.center().y(),
                        line.right() + 1, line.center().y() + 1};
        if (rule.left < rule.right)
            painter.fillRect(platform::ToQRect(Mirrored(rule)), palette().color(QPalette::Mid));
        painter.restore();
    }
}

Rect ReportView::PictureRect(Rect const &row) const {
    Rect place = Mirrored(row);
    place.right = place.left + platform::kSmallPicture;
    return Mirrored(place);
}

void ReportView::DrawRowPicture(DrawItemStruct const &item) const {
    Rect const place = PictureRect(item.rcItem);
    DrawListPicture(item.painter, {place.left, place.top}, m_images, GetItemImage(item.itemID),
                    (item.state & LVIS_SELECTED) != 0);
}

void ReportView::DrawItem(DrawItemStruct const &item) {
    bool const selected = (item.state & LVIS_SELECTED) != 0;
    ColorRef const text = selected ? platform::SystemColor(COLOR_HIGHLIGHTTEXT) : item.textColor;
    item.painter.fillRect(platform::ToQRect(item.rcItem),
                          platform::ToQColor(selected ? platform::SystemColor(COLOR_HIGHLIGHT) : item.bkColor));
    item.painter.setPen(platform::ToQColor(text));
    DrawRowPicture(item);
    for (int const col : GetColumnOrderArray()) {
        ReportColumn column;
        std::ignore = GetColumn(col, column);
        Rect cell = GetSubItemRect(item.itemID, col, LVIR_LABEL);
        ++cell.left, --cell.right;
        DrawCellText(item.painter, cell, GetItemText(item.itemID, column.subItem), column.format, CellPlace::Top);
    }
    if ((item.state & LVIS_FOCUSED) != 0)
        DrawFocusRect(item.painter, item.rcItem, text);
}

bool ReportView::ShowLabelTip(Point point, QPoint screenPoint) {
    ReportHit const hit = SubItemHitTest(point);
    if (hit.row < 0)
        return false;
    Rect const cell = GetSubItemRect(hit.row, hit.col, LVIR_LABEL);
    QString const text = ShownText(hit.row, hit.col);
    bool const clipped = fontMetrics().horizontalAdvance(text) + 2 > cell.Intersected(GetClientRect()).Width();
    if (clipped)
        QToolTip::showText(screenPoint, platform::ToToolTip(text), viewport(), platform::ToQRect(cell));
    return clipped;
}

bool ReportView::viewportEvent(QEvent *event) {
    if (event->type() == QEvent::ToolTip && (m_extendedStyle & LVS_EX_LABELTIP) != 0) {
        auto const *const help = static_cast<QHelpEvent const *>(event);
        if (ShowLabelTip({help->pos().x(), help->pos().y()}, help->globalPos()))
            return true;
        QToolTip::hideText();
    }
    return ColumnArea::viewportEvent(event);
}

} // namespace zelvar
