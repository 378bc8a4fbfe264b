#pragma once

#include "zelvar/controls/CZelButton.h"

#include <QtCore/QRect>

namespace zelvar {

inline constexpr int kContentGap = 4; ///< pixels between picture and text

/// Where picture and text of a button stand; the one answer for every button that draws its content itself.
struct ContentPlaces {
    QRect image{};
    QRect text{};

    friend bool operator==(ContentPlaces const &, ContentPlaces const &) = default;
};

/// Either size may be empty. What does not fit is cut from the text.
[[nodiscard]] ContentPlaces LayOutContent(QRect const &area, QSize const &image, QSize const &text,
                                          CZelButton::ImageSide side, CZelButton::Align align,
                                          Qt::LayoutDirection direction);

} // namespace zelvar
