#pragma once

#include "zelvar/base/Geometry.h"

#include <QtCore/QPointF>
#include <QtCore/QRect>

namespace zelvar::platform {

/// The same pixels in the toolkit's terms, and back.
[[nodiscard]] inline QRect ToQRect(Rect const &rect) { return {rect.left, rect.top, rect.Width(), rect.Height()}; }
[[nodiscard]] inline Rect ToRect(QRect const &rect) {
    return {rect.x(), rect.y(), rect.x() + rect.width(), rect.y() + rect.height()};
}
/// The pixel that a place lies in.
[[nodiscard]] inline Point ToPoint(QPointF const &place) {
    return {static_cast<int>(place.x()), static_cast<int>(place.y())};
}

} // namespace zelvar::platform
