#include "zelvar/views/ReportInput.h"

#include "zelvar/platform/ui/Convert.h"
#include "zelvar/views/ReportView.h"
#include "zelvar/views/core/RowNavigation.h"

#include <QtGui/QKeyEvent>
#include <QtGui/QMouseEvent>
#include <QtWidgets/QScrollBar>

#include <algorithm>
#include <optional>
#include <utility>

namespace zelvar {

namespace {

constexpr qint64 kTypingPause = 1000; // milliseconds after which a new word begins

HeldKeys Held(Qt::KeyboardModifiers modifiers) {
    return {.ctrl = (modifiers & Qt::ControlModifier) != 0, .shift = (modifiers & Qt::ShiftModifier) != 0};
}

std::optional<RowNavigation::Step> StepOf(int key) {
    switch (key) {
    case Qt::Key_Up:
        return RowNavigation::Step::Up;
    case Qt::Key_Down:
        return RowNavigation::Step::Down;
    case Qt::Key_PageUp:
        return RowNavigation::Step::PageUp;
    case Qt::Key_PageDown:
        return RowNavigation::Step::PageDown;
    case Qt::Key_Home:
        return RowNavigation::Step::First;
    case Qt::Key_End:
        return RowNavigation::Step::Last;
    case Qt::Key_Left:
        return RowNavigation::Step::Before;
    case Qt::Key_Right:
        return RowNavigation::Step::Behind;
    default:
        return std::nullopt;
    }
}

} // namespace

bool ReportInput::Press(QMouseEvent const &event) {
    bool const left = event.button() == Qt::LeftButton;
    if (!left && event.button() != Qt::RightButton)
        return false;
    m_pressed = true;
    m_clickModifiers = event.modifiers();
    ReportHit const hit = m_view.SubItemHitTest(platform::ToPoint(event.position()));
    if (hit.row < 0)
        return true;
    using Button = RowNavigation::Button;
    m_view.Navigation().Press(hit.row, Held(event.modifiers()), left ? Button::Select : Button::Menu);
    m_view.EnsureVisible(hit.row, true);
    return true;
}

bool ReportInput::Release(Point point) {
    return std::exchange(m_pressed, false) && m_view.GetClientRect().Contains(point);
}

bool ReportInput::Key(QKeyEvent const &event) {
    if (event.matches(QKeySequence::SelectAll)) {
        if ((m_view.GetStyle() & LVS_SINGLESEL) == 0)
            m_view.SetItemState(-1, LVIS_SELECTED, LVIS_SELECTED);
        return true;
    }
    if (MoveFocus(event) || ScrollSideways(event.key()))
        return true;
    bool const searching = m_typedAt.isValid() && m_typedAt.elapsed() < kTypingPause && !m_typed.isEmpty();
    if (event.key() != Qt::Key_Space || m_view.GetFocusRow() < 0 || searching)
        return false;
    m_view.Navigation().Press(m_view.GetFocusRow(), Held(event.modifiers()), RowNavigation::Button::Select);
    return true;
}

bool ReportInput::MoveFocus(QKeyEvent const &event) {
    std::optional<RowNavigation::Step> step = StepOf(event.key());
    bool const isSideways = step == RowNavigation::Step::Before || step == RowNavigation::Step::Behind;
    if (!step || (isSideways && !m_view.IsTiled()))
        return false;
    if (isSideways && m_view.isRightToLeft())
        step = step == RowNavigation::Step::Before ? RowNavigation::Step::Behind : RowNavigation::Step::Before;
    // Something of the former page stays in sight, but of a page that is one line of tiles.
    int const page = std::max(m_view.GetCountPerPage() - (m_view.IsTiled() ? 0 : 1), 1);
    std::optional<int> const position = m_view.Navigation().Target(*step, page);
    if (position)
        MoveTo(*position, event.modifiers());
    return position.has_value();
}

void ReportInput::MoveTo(int position, Qt::KeyboardModifiers modifiers) {
    int const row = m_view.Geometry().RowAtPosition(position);
    m_view.Navigation().MoveTo(position, Held(modifiers));
    m_view.EnsureVisible(row);
}

bool ReportInput::ScrollSideways(int key) {
    if (key != Qt::Key_Left && key != Qt::Key_Right)
        return false;
    bool const goesBack = (key == Qt::Key_Left) != m_view.isRightToLeft();
    m_view.horizontalScrollBar()->triggerAction(goesBack ? QAbstractSlider::SliderSingleStepSub
                                                         : QAbstractSlider::SliderSingleStepAdd);
    return true;
}

void ReportInput::Type(QChar character) {
    if (!m_typedAt.isValid() || m_typedAt.elapsed() >= kTypingPause)
        m_typed.clear();
    m_typedAt.start();
    m_typed += character;
    if (m_view.IsVirtual())
        return;
    RowGeometry const &geometry = m_view.Geometry();
    int const count = geometry.RowCount();
    int const start = m_view.Navigation().SearchStart(m_typed.size() > 1);
    for (int step = 0; step < count; ++step) {
        int const position = (start + step) % count;
        if (m_view.ShownText(geometry.RowAtPosition(position), 0).startsWith(m_typed, Qt::CaseInsensitive))
            return MoveTo(position, {});
    }
}

Point ReportInput::MenuPlace() const {
    Rect const row = m_view.GetItemRect(std::max(m_view.GetFocusRow(), 0));
    return {m_view.isRightToLeft() ? row.right - 4 : row.left + 4,
            std::clamp(row.bottom, 0, m_view.GetClientRect().bottom)};
}

} // namespace zelvar
