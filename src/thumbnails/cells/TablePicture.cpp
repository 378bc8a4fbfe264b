#include "zelvar/thumbnails/cells/TablePicture.h"

#include "zelvar/platform/ui/Reading.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QImage>
#include <QtGui/QPainter>

#include <algorithm>
#include <cstring>

namespace zelvar {

namespace {

constexpr int kLeastSide = 32; // pixels; smaller ones are drawn in that size, and the upper left of it is taken
constexpr int kSheetRows = 11; // lines of a sheet, the names included
constexpr int kMostShown = 3;  // columns, where they have room for a few letters
constexpr QRgb kRule = 0xFFC8CCD0;
constexpr QRgb kHeading = 0xFFE4E9EE;

class Sheet {
public:
    Sheet(QPainter &painter, TableGlimpse const &glimpse, int side)
        : m_painter(painter), m_glimpse(glimpse), m_line(std::max(side / kSheetRows, 6)),
          m_columns(std::clamp(static_cast<int>(glimpse.names.size()), 1, kMostShown)), m_side(side) {}

    void Draw() {
        QFont font = m_painter.font();
        font.setPixelSize(std::max(m_line * 3 / 4, 5));
        m_painter.setFont(font);
        m_painter.fillRect(0, 0, m_side, m_line, QColor::fromRgb(kHeading));
        DrawLine(0, m_glimpse.names);
        int line = 1;
        for (auto const &row : m_glimpse.rows)
            if (line * m_line < m_side)
                DrawLine(line++, row);
        m_painter.setPen(QColor::fromRgb(kRule));
        for (int y = m_line; y < m_side; y += m_line)
            m_painter.drawLine(0, y, m_side, y);
        for (int col = 1; col < m_columns; ++col)
            m_painter.drawLine(Left(col), 0, Left(col), m_side);
        m_painter.drawRect(0, 0, m_side - 1, m_side - 1);
    }

private:
    [[nodiscard]] int Left(int col) const { return col * m_side / m_columns; }
    void DrawLine(int line, std::vector<DString> const &cells) {
        m_painter.setPen(Qt::black);
        for (int col = 0; col < m_columns && col < static_cast<int>(cells.size()); ++col) {
            QRect const cell = QRect(Left(col), line * m_line, Left(col + 1) - Left(col), m_line).adjusted(2, 0, -2, 0);
            QString const text = platform::ToQString(cells[static_cast<std::size_t>(col)]);
            int const flags = platform::ReadingFlags(text, Qt::AlignLeft | Qt::AlignVCenter, Qt::LeftToRight);
            m_painter.drawText(cell, flags | Qt::TextSingleLine,
                               m_painter.fontMetrics().elidedText(text, Qt::ElideRight, cell.width()));
        }
    }

    QPainter &m_painter;
    TableGlimpse const &m_glimpse;
    int m_line; ///< pixels
    int m_columns;
    int m_side;
};

} // namespace

DCanvas DrawTablePicture(TableGlimpse const &glimpse, int side) {
    int const drawn = std::max(side, kLeastSide);
    QImage image(drawn, drawn, QImage::Format_RGB888);
    DCanvas canvas;
    if (image.isNull())
        return canvas;
    image.fill(Qt::white);
    {
        QPainter painter(&image);
        painter.setLayoutDirection(Qt::LeftToRight);
        Sheet(painter, glimpse, drawn).Draw();
    }
    canvas.SetSize(side, side);
    for (int y = 0; y < canvas.GetHeight(); ++y)
        std::memcpy(canvas.Row(y), image.constScanLine(y), static_cast<std::size_t>(canvas.GetWidth()) * 3);
    return canvas;
}

} // namespace zelvar
