#pragma once

#include <QtGui/QImage>

#include <functional>

namespace zelvar::test {

/// Where a picture has pixels of a kind.
struct Ink {
    int count = 0;
    QRect place; ///< the smallest around them
};

inline Ink InkOf(QImage const &picture, std::function<bool(QColor const &)> const &isInk) {
    Ink ink;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            if (isInk(picture.pixelColor(x, y))) {
                ++ink.count;
                ink.place |= QRect(x, y, 1, 1);
            }
    return ink;
}

} // namespace zelvar::test
