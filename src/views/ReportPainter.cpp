#include "zelvar/views/ReportPainter.h"

#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/SystemColor.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/views/ReportTypes.h"

#include <QtGui/QPainter>

#include <algorithm>
#include <cmath>

namespace zelvar {

namespace {

/// What can be seen of a text in `width` pixels: its first line, and no more bytes than could stand there. A text of
/// megabytes must not be laid out for a cell.
std::string_view Seen(std::string_view text, int width) {
    text = text.substr(0, text.find_first_of("\r\n"));
    std::size_t const most = 64 + static_cast<std::size_t>(std::max(width, 0)) * 4;
    return text.substr(0, most);
}

} // namespace

Qt::Alignment AlignmentOf(int format) {
    return (format & LVCFMT_CENTER) != 0  ? Qt::AlignHCenter
           : (format & LVCFMT_RIGHT) != 0 ? Qt::AlignRight
                                          : Qt::AlignLeft;
}

void DrawCellText(QPainter &painter, Rect const &cell, std::string_view text, int format, CellPlace place,
                  platform::Reading reading) {
    if (cell.IsEmpty() || text.empty())
        return;
    QString const shown = platform::ToQString(Seen(text, cell.Width()));
    Qt::Alignment const upDown = place == CellPlace::Top ? Qt::AlignTop : Qt::AlignVCenter;
    int const flags = platform::ReadingFlags(shown, AlignmentOf(format) | upDown, painter.layoutDirection(), reading);
    QString const fitting = painter.fontMetrics().elidedText(shown, Qt::ElideRight, cell.Width());
    painter.drawText(platform::ToQRect(cell), flags | Qt::TextSingleLine, fitting);
}

void DrawListPicture(QPainter &painter, Point corner, HIMAGELIST list, int index, bool selected) {
    QPixmap pixmap = platform::ListPicture(list, index, painter.device()->devicePixelRatio());
    if (pixmap.isNull())
        return;
    if (selected) {
        QPainter blend(&pixmap);
        blend.setCompositionMode(QPainter::CompositionMode_SourceAtop);
        QColor highlight = platform::ToQColor(platform::SystemColor(COLOR_HIGHLIGHT));
        highlight.setAlphaF(0.4F);
        blend.fillRect(pixmap.rect(), highlight);
    }
    painter.drawPixmap(corner.x, corner.y, pixmap);
}

void DrawFocusRect(QPainter &painter, Rect const &rect, ColorRef color) {
    QBrush const dots(platform::ToQColor(color), Qt::Dense4Pattern);
    QRect const frame = platform::ToQRect(rect);
    painter.fillRect(QRect(frame.left(), frame.top(), frame.width(), 1), dots);
    painter.fillRect(QRect(frame.left(), frame.bottom(), frame.width(), 1), dots);
    painter.fillRect(QRect(frame.left(), frame.top(), 1, frame.height()), dots);
    painter.fillRect(QRect(frame.right(), frame.top(), 1, frame.height()), dots);
}

TextMeasure::TextMeasure(QFont const &font) : m_metrics(font) {
    for (std::size_t i = 0; i < m_advances.size(); ++i)
        m_advances[i] = m_metrics.horizontalAdvance(QChar(static_cast<char16_t>(i)));
}

int TextMeasure::Width(std::string_view text) const {
    qreal sum = 0;
    for (char const c : text) {
        auto const byte = static_cast<unsigned char>(c);
        if (byte >= m_advances.size())
            return static_cast<int>(std::ceil(m_metrics.horizontalAdvance(platform::ToQString(text))));
        sum += m_advances[byte];
    }
    return static_cast<int>(std::ceil(sum));
}

} // namespace zelvar
