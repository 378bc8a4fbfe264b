#include "zelvar/platform/ui/SystemColor.h"

#include <QtGui/QGuiApplication>
#include <QtGui/QPalette>

namespace zelvar::platform {

ColorRef SystemColor(int index) {
    QPalette const palette = QGuiApplication::palette();
    switch (index) {
    case COLOR_WINDOW:
        return ToColorRef(palette.color(QPalette::Base));
    case COLOR_WINDOWTEXT:
        return ToColorRef(palette.color(QPalette::Text));
    case COLOR_HIGHLIGHT:
        return ToColorRef(palette.color(QPalette::Highlight));
    case COLOR_HIGHLIGHTTEXT:
        return ToColorRef(palette.color(QPalette::HighlightedText));
    case COLOR_BTNFACE:
        return ToColorRef(palette.color(QPalette::Window)); // the face of dialogs
    case COLOR_3DSHADOW:
        return ToColorRef(palette.color(QPalette::Dark));
    case COLOR_3DHIGHLIGHT:
        return ToColorRef(palette.color(QPalette::Light));
    case COLOR_BTNTEXT:
        return ToColorRef(palette.color(QPalette::WindowText));
    default:
        return 0;
    }
}

} // namespace zelvar::platform
