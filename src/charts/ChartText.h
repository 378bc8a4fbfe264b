#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Geometry.h"

#include <QtGui/QFont>

#include <cstdint>
#include <span>
#include <utility>

class QPainter;

namespace zelvar {

/// A font by its face and a size in tenths of a point, at 96 dots an inch: the rectangles of the labels are in pixels.
[[nodiscard]] QFont ChartFont(char const *face, int tenthsOfPoint);

enum class LabelAlign : std::uint8_t { Center, Right };
/// Draws a text at the top of a rectangle in the painter's font and pen. It is never cut there: what is larger than the
/// rectangle stands out of it, and is moved as far to the side as the picture's edges ask.
void DrawLabel(QPainter &painter, DString const &text, Rect const &rect, LabelAlign align);

/// Labels side by side in one row. The last one is drawn, and of the others, from left to right, each that does not
/// touch one drawn before.
void DrawLabelRow(QPainter &painter, std::span<std::pair<DString, Rect> const> labels);

/// Draws a text centred in a rectangle and turned against the clock by `degrees`, with the painter's font and pen.
void DrawRotatedText(QPainter &painter, DString const &text, Rect const &rect, double degrees);

} // namespace zelvar
