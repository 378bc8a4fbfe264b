#include "zelvar/lists/RowPalette.h"

#include "zelvar/platform/ui/PaletteColors.h"
#include "zelvar/platform/ui/SystemColor.h"

namespace zelvar {

RowPalette RowPalette::Current() {
    using platform::Themed, platform::ToColorRef;
    QColor const accent = Themed(QColor(215, 200, 170)); // of the grounds the nearest to grey
    return {.text = platform::SystemColor(COLOR_WINDOWTEXT),
            .grey = ToColorRef(platform::ThemedInk(QColor(128, 128, 128), accent)),
            .window = platform::SystemColor(COLOR_WINDOW),
            .shaded = ToColorRef(Themed(QColor(230, 230, 215))),
            .accent = ToColorRef(accent),
            .greyShaded = ToColorRef(Themed(QColor(235, 235, 225)))};
}

ColorRef RowPalette::TextIn(RowPalette const &other, ColorRef color) const {
    return color == text ? other.text : color == grey ? other.grey : color;
}

ColorRef RowPalette::BackIn(RowPalette const &other, ColorRef color) const {
    for (auto const member :
         {&RowPalette::window, &RowPalette::text, &RowPalette::shaded, &RowPalette::accent, &RowPalette::greyShaded})
        if (color == this->*member)
            return other.*member;
    return color;
}

} // namespace zelvar
