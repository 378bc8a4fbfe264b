#include "zelvar/views/ReportRowPainter.h"

#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/SystemColor.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/views/ReportPainter.h"
#include "zelvar/views/ReportView.h"
#include "zelvar/views/core/ReportRows.h"

#include <QtGui/QPainter>
#include <QtWidgets/QStyle>
#include <QtWidgets/QToolTip>

namespace zelvar {

void ReportRowPainter::DrawRow(DrawItemStruct const &item) const {
    bool const selected = (item.state & LVIS_SELECTED) != 0;
    ColorRef const text = selected ? platform::SystemColor(COLOR_HIGHLIGHTTEXT) : item.textColor;
    item.painter.fillRect(platform::ToQRect(item.rcItem),
                          platform::ToQColor(selected ? platform::SystemColor(COLOR_HIGHLIGHT) : item.bkColor));
    item.painter.setPen(platform::ToQColor(text));
    DrawPicture(item);
    for (int const col : m_view.GetColumnOrderArray()) {
        ReportColumn column;
        std::ignore = m_view.GetColumn(col, column);
        Rect cell = m_view.GetSubItemRect(item.itemID, col, LVIR_LABEL);
        ++cell.left, --cell.right;
        DrawCellText(item.painter, cell, m_view.GetItemText(item.itemID, column.subItem), column.format,
                     CellPlace::Top);
    }
    if ((item.state & LVIS_FOCUSED) != 0)
        DrawFocusRect(item.painter, item.rcItem, text);
}

Rect ReportRowPainter::PictureRect(Rect const &row) const {
    int const left = m_view.isRightToLeft() ? row.right - platform::kSmallPicture : row.left;
    return {left, row.top, left + platform::kSmallPicture, row.bottom};
}

void ReportRowPainter::DrawPicture(DrawItemStruct const &item) const {
    Rect const place = PictureRect(item.rcItem);
    DrawListPicture(item.painter, {place.left, place.top}, m_view.GetImageList(), m_view.GetItemImage(item.itemID),
                    (item.state & LVIS_SELECTED) != 0);
}

void ReportRowPainter::DrawGroupHeaders(QPainter &painter, ReportRows const &rows, RowGeometry const &geometry,
                                        Seen seen) const {
    for (RowGeometry::Span const &span : geometry.Spans()) {
        if (span.group < 0 || span.rowsTop <= seen.top || span.headerTop >= seen.bottom)
            continue;
        int const top = static_cast<int>(span.headerTop - seen.above);
        DrawGroupHeader(painter, rows.GroupHeader(span.group),
                        QRect(4, top, m_view.viewport()->width() - 8, geometry.GroupHeaderHeight() - 2));
    }
}

void ReportRowPainter::DrawGroupHeader(QPainter &painter, DString const &header, QRect const &line) const {
    QString const text = platform::ToQString(header);
    painter.save();
    QFont bold = m_view.font();
    bold.setBold(true);
    painter.setFont(bold);
    painter.setPen(m_view.palette().color(QPalette::Highlight).darker(120));
    int const flags =
        platform::ReadingFlags(text, Qt::AlignLeft | Qt::AlignVCenter, m_view.layoutDirection()) | Qt::TextSingleLine;
    painter.drawText(line, flags, painter.fontMetrics().elidedText(text, Qt::ElideRight, line.width()));
    QRect rule = line.adjusted(painter.fontMetrics().horizontalAdvance(text) + 8, 0, 0, 0);
    rule.setTop(line.center().y());
    rule.setHeight(1);
    if (rule.isValid())
        painter.fillRect(QStyle::visualRect(m_view.layoutDirection(), line, rule),
                         m_view.palette().color(QPalette::Mid));
    painter.restore();
}

bool ReportRowPainter::ShowTip(Point point, QPoint screenPoint) const {
    ReportHit const hit = m_view.SubItemHitTest(point);
    if (hit.row < 0)
        return false;
    Rect const cell = m_view.GetSubItemRect(hit.row, hit.col, LVIR_LABEL);
    QString const text = m_view.ShownText(hit.row, hit.col);
    int const needed = m_view.fontMetrics().horizontalAdvance(text) + 2;
    if (needed <= cell.Intersected(m_view.GetClientRect()).Width())
        return false;
    QToolTip::showText(screenPoint, platform::ToToolTip(text), m_view.viewport(), platform::ToQRect(cell));
    return true;
}

} // namespace zelvar
