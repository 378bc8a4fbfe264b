#pragma once

#include <QtGui/QColor>

namespace zelvar {

/// Colours of a chart, as they are on a light palette.
struct ChartColors {
    QColor ground = Qt::white;
    QColor ink = Qt::black; ///< of lines and texts
    QColor point{230, 0, 0};
    QColor selectedPoint{0, 0, 255};
    QColor bar{255, 0, 0};
    QColor selectedBar{0, 0, 200};

    /// Those that suit the desktop's present palette.
    [[nodiscard]] static ChartColors Current();
};

} // namespace zelvar
