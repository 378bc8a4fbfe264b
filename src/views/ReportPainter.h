#pragma once

#include "zelvar/base/Color.h"
#include "zelvar/base/Geometry.h"
#include "zelvar/base/ImageList.h"
#include "zelvar/platform/ui/Convert.h"
#include "zelvar/platform/ui/Reading.h"

#include <QtCore/QRect>
#include <QtGui/QFontMetrics>

#include <array>
#include <string_view>

class QPainter;

namespace zelvar {

/// `LVCFMT_...` as an alignment.
[[nodiscard]] Qt::Alignment AlignmentOf(int format);

/// How `DrawCellText` places a text from top to bottom.
enum class CellPlace { Top, Centered };

/// One line of text in a cell, cut with an ellipsis where it does not fit; what follows a line end is not drawn.
/// `format` is one of `LVCFMT_...`, meant from the edge where the painter's layout direction begins. Uses the painter's
/// pen and font.
void DrawCellText(QPainter &painter, Rect const &cell, std::string_view text, int format, CellPlace place,
                  platform::Reading reading = platform::Reading::ByScript);

/// A picture of a list at the top left corner of `cell`, at the painter's pixel ratio; `selected` mixes it with the
/// highlight colour. Nothing for a null list or an index outside it.
void DrawListPicture(QPainter &painter, Point corner, HIMAGELIST list, int index, bool selected);

/// The dotted frame of the row that has the focus.
void DrawFocusRect(QPainter &painter, Rect const &rect, ColorRef color);

/// Widths of very many texts: those of plain ASCII are summed up letter by letter instead of being laid out. Kerning,
/// which that leaves out, makes texts narrower rather than wider.
class TextMeasure {
public:
    explicit TextMeasure(QFont const &font);

    /// Pixels.
    [[nodiscard]] int Width(std::string_view text) const;

private:
    QFontMetricsF m_metrics;
    std::array<qreal, 128> m_advances{}; ///< of the ASCII characters
};

} // namespace zelvar
