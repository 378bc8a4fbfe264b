#include "zelvar/thematic/ThematicItem.h"

#include "zelvar/platform/ui/PaletteColors.h"
#include "zelvar/platform/ui/SystemColor.h"

namespace zelvar {

namespace {

constexpr int kUpPicture = 3;
constexpr int kDownPicture = 0;
constexpr int kRemoveSide = 18; // pixels
constexpr int kIconRoom = 33;

} // namespace

ThematicItem::ThematicItem(DString const &text, std::uint64_t data, bool editable)
    : ThematicElement(data), m_upButton(kThematicUp, kUpPicture), m_downButton(kThematicDown, kDownPicture),
      m_removeButton(kThematicRemove, false, platform::SystemColor(COLOR_WINDOW)), m_text(text.c_str()),
      m_readOnly(!editable) {
    m_removeButton.SetEnabled(editable);
    m_upButton.SetEnabled(editable);
    m_downButton.SetEnabled(editable);
    AddChild(m_removeButton);
    AddChild(m_text);
    AddChild(m_upButton);
    AddChild(m_downButton);
    AddChild(m_iconRight);
    AddChild(m_iconLeft);
}

ThematicItem *ThematicItem::Create(DString const &text, int iconId, std::uint64_t data, bool editable) {
    auto item = std::make_unique<ThematicItem>(text, data, editable);
    item->SetIconLeft(iconId);
    return item.release();
}

ThematicItem *ThematicItem::Create(DString const &text, char const *iconFile, std::uint64_t data, bool editable) {
    auto item = std::make_unique<ThematicItem>(text, data, editable);
    item->SetIconLeft(iconFile);
    return item.release();
}

void ThematicItem::EnableMoves(bool up, bool down) {
    m_upButton.SetEnabled(up && !m_readOnly);
    m_downButton.SetEnabled(down && !m_readOnly);
}

void ThematicItem::Draw(QPainter &painter, bool look3D) const {
    if (!IsVisible())
        return;
    ColorRef const grey = platform::ToColorRef(platform::Themed(kItemGrey));
    DrawBack(painter, GetRect(), look3D ? platform::ToColorRef(platform::Themed(Qt::white)) : grey, grey, true);
    DrawChildren(painter, look3D);
}

bool ThematicItem::HitTest(Point const &point, ThematicHit *hit) {
    if (!GetRect().Contains(point))
        return false;
    hit->item = this;
    if (ThematicDrawElement *const child = ChildAt(point))
        hit->element = child;
    return true;
}

void ThematicItem::RepositionElmts() {
    auto const [left, top, right, bottom] = Mirrored(GetRect());
    constexpr Size arrow = ThematicBitmapButton::sizeImage;
    m_iconLeft.SetRect(Mirrored({left + 1, top, left + kIconRoom, bottom}));
    int edge = right - 1 - arrow.cx;
    m_upButton.SetRect(Mirrored({edge, top + 2, right - 1, top + 2 + arrow.cy}));
    m_downButton.SetRect(Mirrored({edge, bottom - 2 - arrow.cy, right - 1, bottom - 2}));
    // A disabled button keeps the rectangle it had.
    if (m_removeButton.IsEnabled()) {
        int const buttonTop = top + (bottom - top - kRemoveSide) / 2;
        m_removeButton.SetRect(Mirrored({edge - kRemoveSide - 2, buttonTop, edge - 2, buttonTop + kRemoveSide}));
        edge = Mirrored(m_removeButton.GetRect()).left;
    }
    if (m_iconRight.IsEnabled()) {
        m_iconRight.SetRect(Mirrored({edge - kIconRoom, top, edge - 1, bottom}));
        edge = Mirrored(m_iconRight.GetRect()).left;
    }
    if (m_text.IsEnabled())
        m_text.SetRect(Mirrored({left + kIconRoom, top, edge, bottom}));
}

} // namespace zelvar
