#include "zelvar/drawing/OffscreenSurface.h"
#include "zelvar/platform/ui/PaletteColors.h"
#include "zelvar/platform/ui/SystemColor.h"
#include "zelvar/thematic/ThematicAccessible.h"
#include "zelvar/thematic/TmtcListCtrl.h"

#include <QtGui/QKeyEvent>
#include <QtGui/QMouseEvent>
#include <QtGui/QPainter>

#include <algorithm>

namespace zelvar {

namespace {

Point PlaceOf(QMouseEvent const &event) { return {event.pos().x(), event.pos().y()}; }

} // namespace

void TmtcListCtrl::paintEvent(QPaintEvent *) {
    QPainter target(this);
    OffscreenSurface surface;
    surface.Resize(&target, width(), height());
    QPainter *const painter = surface.GetDC();
    if (painter == nullptr)
        return;
    painter->fillRect(rect(), platform::ToQColor(platform::SystemColor(COLOR_BTNFACE)));
    painter->setFont(m_font);
    painter->setLayoutDirection(layoutDirection());
    painter->setPen(QPen(platform::ToQColor(platform::SystemColor(COLOR_3DSHADOW)), 1));
    RepositionItems();
    Rect const client{0, 0, width(), height()};
    for (Elmt const *const elmt : m_elements) {
        if (!elmt->IsVisible() || elmt->GetRect().Intersected(client).IsEmpty())
            continue;
        if (auto const *const group = dynamic_cast<Group const *>(elmt))
            group->DrawPart(*painter, Get3DLook(), client);
        else
            elmt->Draw(*painter, Get3DLook());
    }
    if (Elmt const *const focus = GetFocusElmt(); m_isKeyboardOn && hasFocus() && focus != nullptr) {
        auto const *const group = dynamic_cast<Group const *>(focus);
        Rect const at = group == nullptr ? focus->GetRect() : group->StripRect();
        painter->setPen(QPen(platform::Themed(Qt::black), 1, Qt::DotLine));
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(at.left + 2, at.top + 2, at.Width() - 6, at.Height() - 5);
    }
    surface.CopyTo(&target, 0, 0);
}

bool TmtcListCtrl::ProcessMouseEvent(EMouseEvnt event, Point const &point) {
    bool changed = false;
    for (Elmt *const elmt : m_elements)
        changed = elmt->MouseEvent(event, point) || changed;
    if (changed)
        update();
    return changed;
}

void TmtcListCtrl::SetCursorAt(Point const &point) {
    HITTEST hit;
    HitTest(point, &hit);
    auto const *const button = dynamic_cast<ThematicButtonBase const *>(hit.element);
    if (button != nullptr && button->IsAvailable())
        setCursor(Qt::PointingHandCursor);
    else
        unsetCursor();
}

void TmtcListCtrl::mouseMoveEvent(QMouseEvent *event) {
    ProcessMouseEvent(MouseEvntMove, PlaceOf(*event));
    SetCursorAt(PlaceOf(*event));
}

void TmtcListCtrl::leaveEvent(QEvent *) { ProcessMouseEvent(MouseEvntLeave, {}); }

void TmtcListCtrl::mousePressEvent(QMouseEvent *event) {
    if (event->button() == Qt::RightButton)
        SlctItem(PlaceOf(*event));
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    if (!ProcessMouseEvent(MouseEvntLDown, PlaceOf(*event)))
        SlctItem(PlaceOf(*event));
}

// The second press of two quick ones is a press like the first.
void TmtcListCtrl::mouseDoubleClickEvent(QMouseEvent *event) { mousePressEvent(event); }

void TmtcListCtrl::mouseReleaseEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton) {
        QWidget::mouseReleaseEvent(event);
        return;
    }
    ProcessMouseEvent(MouseEvntLUp, PlaceOf(*event));
    HITTEST hit;
    HitTest(PlaceOf(*event), &hit);
    auto const *const button = dynamic_cast<ThematicButtonBase const *>(hit.element);
    if (button == nullptr)
        return;
    Elmt *const target = hit.item != nullptr ? static_cast<Elmt *>(hit.item) : hit.group;
    Perform(static_cast<ThematicCommand>(button->GetID()), target);
}

bool TmtcListCtrl::Perform(ThematicCommand command, Elmt *elmt) {
    auto *const item = dynamic_cast<Item *>(elmt);
    auto *const itsGroup = item == nullptr ? dynamic_cast<Group *>(elmt) : FindGroup(item);
    switch (command) {
    case kThematicAdd: {
        if (item != nullptr || itsGroup == nullptr || !itsGroup->GetEnblAdd())
            return false;
        Item *const added = OnAddToGroup(itsGroup);
        if (added != nullptr && FindGroup(added) == nullptr &&
            std::find(m_elements.begin(), m_elements.end(), added) == m_elements.end())
            itsGroup->AddTail(added);
        update();
        return added != nullptr;
    }
    case kThematicRemove:
        if (item == nullptr || !item->RemoveButton().IsEnabled())
            return false;
        RemoveAndFocus(itsGroup, *item);
        return true;
    case kThematicUp:
    case kThematicDown:
        return item != nullptr && !item->GetReadOnly() && OnMoveItem(itsGroup, item, command == kThematicUp);
    }
    return false;
}

/// The focus goes on to what comes into the item's place.
void TmtcListCtrl::RemoveAndFocus(Group *group, Item &item) {
    bool const hadFocus = GetFocusElmt() == &item;
    std::vector<Elmt *> const order = InOrder();
    auto const at = std::find(order.begin(), order.end(), &item);
    Elmt *next = nullptr;
    if (at != order.end())
        next = at + 1 != order.end() ? *(at + 1) : at != order.begin() ? *(at - 1) : nullptr;
    Watched nextLife;
    Watch(nextLife, next);
    OnRmvItem(group, &item);
    if (!hadFocus || GetFocusElmt() != nullptr)
        return;
    Watch(m_focus, Of(nextLife));
    ThematicAccessible::FocusMoved(*this);
}

void TmtcListCtrl::Select(Elmt *elmt) {
    bool const changes = elmt != nullptr && (IsItem(elmt) || m_enblGrpSlct);
    if (changes && elmt != GetSlctElmt())
        OnSlctChng(GetSlctElmt(), elmt);
    if (elmt != nullptr)
        Watch(m_focus, elmt);
    update();
}

void TmtcListCtrl::SlctItem(Point const &point) {
    HITTEST hit;
    HitTest(point, &hit);
    Select(hit.item != nullptr ? static_cast<Elmt *>(hit.item) : hit.group);
}

void TmtcListCtrl::FocusOn(Elmt *elmt) {
    Select(elmt);
    ThematicAccessible::FocusMoved(*this);
}

void TmtcListCtrl::MoveFocus(int steps) {
    std::vector<Elmt *> const order = InOrder();
    if (order.empty())
        return;
    auto const at = std::find(order.begin(), order.end(), GetFocusElmt());
    auto const last = static_cast<std::ptrdiff_t>(order.size()) - 1;
    std::ptrdiff_t const from = at != order.end() ? at - order.begin() : steps > 0 ? -1 : last + 1;
    FocusOn(order[static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(from + steps, 0, last))]);
}

void TmtcListCtrl::keyPressEvent(QKeyEvent *event) {
    if (!m_isKeyboardOn) {
        QWidget::keyPressEvent(event);
        return;
    }
    constexpr int all = 1 << 20;
    bool const control = event->modifiers() == Qt::ControlModifier;
    Elmt *const focus = GetFocusElmt();
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down: {
        bool const up = event->key() == Qt::Key_Up;
        if (control)
            Perform(up ? kThematicUp : kThematicDown, focus);
        else
            MoveFocus(up ? -1 : 1);
        break;
    }
    case Qt::Key_Home:
        MoveFocus(-all);
        break;
    case Qt::Key_End:
        MoveFocus(all);
        break;
    case Qt::Key_Delete:
        Perform(kThematicRemove, dynamic_cast<Item *>(focus));
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        Perform(kThematicAdd, focus);
        break;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    update();
}

void TmtcListCtrl::focusInEvent(QFocusEvent *) {
    if (GetFocusElmt() == nullptr)
        Watch(m_focus, GetSlctElmt());
    ThematicAccessible::FocusEntered(*this);
    update();
}

void TmtcListCtrl::focusOutEvent(QFocusEvent *) { update(); }

} // namespace zelvar
