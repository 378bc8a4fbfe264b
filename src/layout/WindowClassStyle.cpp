#include "zelvar/layout/WindowClassStyle.h"

#include <QtCore/QVariant>

namespace zelvar {

namespace {
constexpr char kProperty[] = "zelvarClassStyle";
constexpr std::uint32_t kDialogStyle = 0x808; // double clicks are told, what lies below is saved; no redraw bits
} // namespace

std::uint32_t GetClassStyle(QWidget const &window) {
    QVariant const style = window.property(kProperty);
    return style.isValid() ? style.toUInt() : kDialogStyle;
}

void SetClassStyle(QWidget &window, std::uint32_t style) { window.setProperty(kProperty, style); }

} // namespace zelvar
