#pragma once

#include "zelvar/views/ReportTypes.h"

#include <QtCore/QPoint>

#include <cstdint>

class QPainter;
class QRect;

namespace zelvar {

class ReportRows;
class ReportView;
class RowGeometry;

/// What a report view shows unless a derived class draws it: rows, their pictures, the headers of groups, and tips for
/// cells whose text is cut.
class ReportRowPainter {
public:
    /// What of the content is painted, in pixels of the content.
    struct Seen {
        std::int64_t above = 0; ///< where the viewport begins
        std::int64_t top = 0;
        std::int64_t bottom = 0;
    };

    explicit ReportRowPainter(ReportView const &view) : m_view(view) {}

    void DrawRow(DrawItemStruct const &item) const;
    /// In the corner of the row where one begins to read.
    [[nodiscard]] Rect PictureRect(Rect const &row) const;
    void DrawPicture(DrawItemStruct const &item) const;
    /// Those that are seen.
    void DrawGroupHeaders(QPainter &painter, ReportRows const &rows, RowGeometry const &geometry, Seen seen) const;
    /// False where there is no cell, or one that shows its whole text.
    [[nodiscard]] bool ShowTip(Point point, QPoint screenPoint) const;

private:
    void DrawGroupHeader(QPainter &painter, DString const &header, QRect const &line) const;

    ReportView const &m_view;
};

} // namespace zelvar
