#include "zelvar/thematic/ThematicElement.h"

#include "zelvar/drawing/RoundRectGradient.h"
#include "zelvar/platform/ui/PaletteColors.h"
#include "zelvar/platform/ui/SystemColor.h"

namespace zelvar {

ThematicElement::ThematicElement(std::uint64_t data)
    : m_data(data), m_life(std::make_shared<ThematicElement *const>(this)) {}

ThematicElement::~ThematicElement() = default;

Rect ThematicElement::Mirrored(Rect const &rect) const {
    return m_mirror == 0 ? rect : Rect{m_mirror - rect.right, rect.top, m_mirror - rect.left, rect.bottom};
}

bool ThematicElement::MouseEvent(EMouseEvnt event, Point const &point) {
    bool changed = false;
    for (ThematicDrawElement *const child : m_children)
        changed = child->MouseEvent(event, point) || changed;
    return changed;
}

void ThematicElement::DrawChildren(QPainter &painter, bool look3D) const {
    for (ThematicDrawElement const *const child : m_children)
        child->Draw(painter, look3D);
}

ThematicDrawElement *ThematicElement::ChildAt(Point const &point) const {
    ThematicDrawElement *hit = nullptr;
    for (ThematicDrawElement *const child : m_children)
        if (child->HitTest(point))
            hit = child;
    return hit;
}

void ThematicElement::DrawBack(QPainter &painter, Rect const &rect, ColorRef start, ColorRef end, bool vertical) const {
    constexpr int radius = 3;
    ColorRef const grey = platform::ToColorRef(platform::Themed(QColor(160, 160, 160)));
    constexpr ColorRef gold = Rgb(255, 215, 0);
    RoundRectGradient(&painter, rect, radius, start, end, vertical, m_selected ? 2 : 1, m_selected ? gold : grey);
}

} // namespace zelvar
