#pragma once

#include "zelvar/base/Geometry.h"

#include <QtGui/QColor>

class QPainter;

namespace zelvar {

class DataSourceItem;

/// Pixels at the left of a row for the item's picture. The band keeps the list's own background, so that a selected row
/// is marked to the right of it.
inline constexpr int kPictureBand = 18;

/// Colours of a row of items. They are fixed on a light palette and follow a dark one.
struct ItemColors {
    QColor background;
    QColor text;
};
[[nodiscard]] ItemColors ItemColorsOf(bool selected, bool listHasFocus);

/// The item's picture at the top left corner of the row; an item without one draws nothing.
void DrawItemPicture(QPainter &painter, Rect const &row, DataSourceItem const &item);
/// The same; what has no picture of its own gets that of its kind, if it is on a server.
void DrawItemOrKindPicture(QPainter &painter, Rect const &row, DataSourceItem const &item);

} // namespace zelvar
