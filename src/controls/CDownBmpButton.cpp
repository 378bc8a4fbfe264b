#include "zelvar/controls/CDownBmpButton.h"

#include "zelvar/controls/ControlIcons.h"
#include "zelvar/platform/ui/ModalLoop.h"
#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QKeyEvent>
#include <QtWidgets/QMenu>
#include <QtWidgets/QStyleOption>
#include <QtWidgets/QStylePainter>

namespace zelvar {

namespace {

constexpr int kPadding = 5; // pixels around the picture

ImageDescription Named(DString const &name) { return {.name = name, .fallback = name}; }

std::optional<ImageDescription> NamedIfAny(DString const &name) {
    return name.empty() ? std::nullopt : std::optional(Named(name));
}

} // namespace

CDownBmpButton::CDownBmpButton(QWidget *parent) : QAbstractButton(parent), m_side(platform::kSmallPicture) {
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void CDownBmpButton::LoadBitmaps(DString const &up, DString const &down, DString const &focused,
                                 DString const &disabled) {
    SetBitmaps(Named(up), NamedIfAny(down), NamedIfAny(focused), NamedIfAny(disabled));
}

void CDownBmpButton::SetBitmaps(ImageDescription const &up, std::optional<ImageDescription> const &down,
                                std::optional<ImageDescription> const &focused,
                                std::optional<ImageDescription> const &disabled) {
    m_up = up;
    m_down = down;
    m_focused = focused;
    m_disabled = disabled;
    update();
}

void CDownBmpButton::SetPictureSide(int pixels) {
    m_side = std::max(1, pixels);
    updateGeometry();
    update();
}

void CDownBmpButton::SetTooltip(DString const &text) {
    setToolTip(platform::ToToolTip(platform::ToQString(text)));
    setAccessibleName(platform::ToQString(text));
}

void CDownBmpButton::SetMenu(QMenu *menu) {
    m_menu = menu;
    SetDropDown(menu != nullptr);
}

void CDownBmpButton::SetDropDown(bool shown) {
    m_dropDown = shown;
    updateGeometry();
    update();
}

QRect CDownBmpButton::ArrowRect() const {
    if (!m_dropDown)
        return {};
    int const zone = style()->pixelMetric(QStyle::PM_MenuButtonIndicator, nullptr, this) + 2;
    return QStyle::visualRect(layoutDirection(), rect(), QRect(width() - zone, 0, zone, height()));
}

QSize CDownBmpButton::sizeHint() const {
    int const least = fontMetrics().height() + kPadding;
    int const side = std::max(m_side + 2 * kPadding, least);
    return {side + ArrowRect().width(), side};
}

QPixmap CDownBmpButton::PresentPicture() const {
    auto const picture = [this](ImageDescription const &description) {
        return platform::Picture(description, devicePixelRatioF(), m_side);
    };
    if (!isEnabled())
        return m_disabled ? picture(*m_disabled) : WashedOut(picture(m_up));
    if (m_down && (isDown() || isChecked() || m_dropped))
        return picture(*m_down);
    return picture(m_focused && hasFocus() ? *m_focused : m_up);
}

void CDownBmpButton::paintEvent(QPaintEvent *) {
    QStylePainter painter(this);
    bool const down = isDown() || isChecked() || m_dropped;
    QStyleOption option;
    option.initFrom(this);
    option.state |= down ? QStyle::State_Sunken : QStyle::State_Raised;
    if (isEnabled() && underMouse())
        option.state |= QStyle::State_MouseOver;
    painter.drawPrimitive(QStyle::PE_PanelButtonCommand, option);

    QRect const arrow = ArrowRect();
    QRect const rest(layoutDirection() == Qt::RightToLeft ? arrow.right() + 1 : 0, 0, width() - arrow.width(),
                     height());
    int const pushed = down && !m_down ? 1 : 0;
    painter.drawPixmap(rest.left() + (rest.width() - m_side) / 2 + pushed, (height() - m_side) / 2 + pushed,
                       PresentPicture());
    if (!arrow.isEmpty()) {
        int const line = layoutDirection() == Qt::RightToLeft ? arrow.right() : arrow.left();
        painter.setPen(palette().color(QPalette::Mid));
        painter.drawLine(line, arrow.top() + kPadding, line, arrow.bottom() - kPadding);
        QStyleOption sign = option;
        int const side = std::min(arrow.width(), arrow.height()) - 6;
        sign.rect = QRect(0, 0, side, side);
        sign.rect.moveCenter(arrow.center());
        painter.drawPrimitive(QStyle::PE_IndicatorArrowDown, sign);
    }
    if (hasFocus() && !m_focused) {
        QStyleOptionFocusRect frame;
        frame.initFrom(this);
        frame.rect = rest.adjusted(3, 3, -3, -3);
        painter.drawPrimitive(QStyle::PE_FrameFocusRect, frame);
    }
}

void CDownBmpButton::mousePressEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton && m_dropDown && (m_whole || ArrowRect().contains(event->pos())))
        ShowDropDown();
    else
        QAbstractButton::mousePressEvent(event);
}

void CDownBmpButton::keyPressEvent(QKeyEvent *event) {
    bool const enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    bool const opens = event->key() == Qt::Key_F4 ||
                       (event->key() == Qt::Key_Down && event->modifiers().testFlag(Qt::AltModifier)) ||
                       (m_whole && (enter || event->key() == Qt::Key_Space));
    if (m_dropDown && opens)
        ShowDropDown();
    else if (enter)
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

void CDownBmpButton::ShowDropDown() {
    if (m_dropped || !isEnabled())
        return;
    if (m_menu.isNull()) {
        Q_EMIT DropDown();
        return;
    }
    QPointer<CDownBmpButton> const alive(this);
    m_dropped = true;
    update();
    m_menu->installEventFilter(this);
    m_menu->setAttribute(Qt::WA_NoMouseReplay, false);
    m_menu->setMinimumWidth(width());
    bool const rightToLeft = layoutDirection() == Qt::RightToLeft;
    int const left = rightToLeft ? width() - m_menu->sizeHint().width() : 0;
    platform::RunMenu(*m_menu, mapToGlobal(QPoint(left, height())));
    if (alive.isNull())
        return; // what was picked may have closed the window
    if (!m_menu.isNull())
        m_menu->removeEventFilter(this);
    m_dropped = false;
    update();
}

bool CDownBmpButton::event(QEvent *event) {
    // A dialog must not take these for its own.
    if (event->type() == QEvent::ShortcutOverride) {
        auto const *const key = static_cast<QKeyEvent const *>(event);
        if (m_dropDown && key->key() == Qt::Key_F4 && key->modifiers() == Qt::NoModifier)
            event->accept();
    }
    return QAbstractButton::event(event);
}

bool CDownBmpButton::eventFilter(QObject *watched, QEvent *event) {
    // The press that closes the menu would open it again if it came to the button too.
    if (watched == m_menu && event->type() == QEvent::MouseButtonPress) {
        QPoint const at = static_cast<QMouseEvent const *>(event)->globalPosition().toPoint();
        m_menu->setAttribute(Qt::WA_NoMouseReplay, rect().contains(mapFromGlobal(at)));
    }
    return QAbstractButton::eventFilter(watched, event);
}

} // namespace zelvar
