#include "zelvar/layout/SplitterBar.h"

#include "zelvar/layout/DSplitterWnd.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QKeyEvent>
#include <QtGui/QPainter>
#include <QtWidgets/QAccessibleWidget>
#include <QtWidgets/QApplication>

#include <algorithm>

namespace zelvar {

namespace {

constexpr int kStep = 10;    // pixels an arrow key moves a bar
constexpr int kFineStep = 1; // with Shift
constexpr int kFarAway = 1 << 24;

/// A bar as screen readers see it: a splitter with a value that they may set.
class BarAccessible final : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit BarAccessible(SplitterBar &bar) : QAccessibleWidget(&bar, QAccessible::Splitter) {}

    void *interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface *>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.focusable = true; // though Tab does not stop here
        return state;
    }
    [[nodiscard]] QVariant currentValue() const override { return Bar().Position(); }
    void setCurrentValue(QVariant const &value) override { Bar().MoveTo(value.toInt()); }
    [[nodiscard]] QVariant minimumValue() const override { return Bar().MinPosition(); }
    [[nodiscard]] QVariant maximumValue() const override { return Bar().MaxPosition(); }
    [[nodiscard]] QVariant minimumStepSize() const override { return kFineStep; }

private:
    [[nodiscard]] SplitterBar &Bar() const { return *static_cast<SplitterBar *>(widget()); }
};

/// Those of the splitter itself first, then those of the splitters inside it.
std::vector<SplitterBar *> SeenBars(DSplitterWnd const &splitter) {
    std::vector<SplitterBar *> bars;
    auto const add = [&bars](DSplitterWnd const &part) {
        for (SplitterBar *bar : part.findChildren<SplitterBar *>(Qt::FindDirectChildrenOnly))
            if (bar->isVisible())
                bars.push_back(bar);
    };
    add(splitter);
    for (DSplitterWnd const *inner : splitter.findChildren<DSplitterWnd *>())
        add(*inner);
    return bars;
}

QAccessibleInterface *MakeInterface(QString const &, QObject *object) {
    auto *const bar = qobject_cast<SplitterBar *>(object);
    return bar == nullptr ? nullptr : new BarAccessible(*bar);
}

} // namespace

SplitterBar::SplitterBar(DSplitterWnd &splitter, Qt::Orientation orientation, int before)
    : QWidget(&splitter), m_orientation(orientation), m_before(before), m_splitter(&splitter) {
    static bool const installed = (QAccessible::installFactory(MakeInterface), true);
    static_cast<void>(installed);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    setAccessibleName(orientation == Qt::Vertical ? platform::Shown("Bar between columns")
                                                  : platform::Shown("Bar between rows"));
    setAccessibleDescription(
        platform::Shown("Arrow keys move it, F8 leads to the next one, Enter keeps, Escape puts back."));
}

int SplitterBar::Position() const { return m_splitter->BarPosition(m_orientation, m_before); }
int SplitterBar::MinPosition() const { return m_splitter->BarLimits(m_orientation, m_before).first; }
int SplitterBar::MaxPosition() const { return m_splitter->BarLimits(m_orientation, m_before).second; }

void SplitterBar::MoveTo(int position) {
    int const former = Position();
    m_splitter->MoveBar(m_orientation, m_before, position);
    if (Position() == former)
        return;
    QAccessibleValueChangeEvent event(this, Position());
    QAccessible::updateAccessibility(&event);
}

// ------------------------------------------------------------------------------------------------- one after another

std::vector<SplitterBar *> SplitterBar::Ring() const {
    QWidget *outermost = m_splitter;
    for (QWidget *at = m_splitter; at != nullptr; at = at->parentWidget())
        if (qobject_cast<DSplitterWnd *>(at) != nullptr)
            outermost = at;
    return SeenBars(*static_cast<DSplitterWnd *>(outermost));
}

bool SplitterBar::Enter(DSplitterWnd &splitter) {
    std::vector<SplitterBar *> const bars = SeenBars(splitter);
    if (bars.empty())
        return false;
    QWidget *const former = QApplication::focusWidget();
    for (SplitterBar *bar : bars.front()->Ring())
        bar->Begin(former);
    bars.front()->setFocus(Qt::ShortcutFocusReason);
    return true;
}

void SplitterBar::Begin(QWidget *former) {
    m_former = former;
    m_positionAtBegin = Position();
}

bool SplitterBar::focusNextPrevChild(bool next) {
    std::vector<SplitterBar *> const ring = Ring();
    auto const at = std::find(ring.begin(), ring.end(), this);
    if (at == ring.end())
        return false;
    std::size_t const index = static_cast<std::size_t>(at - ring.begin());
    ring[(index + (next ? 1 : ring.size() - 1)) % ring.size()]->setFocus(Qt::TabFocusReason);
    return true;
}

void SplitterBar::Leave() {
    if (!m_former.isNull() && m_former->isVisible())
        m_former->setFocus(Qt::OtherFocusReason);
    else
        clearFocus();
}

// ------------------------------------------------------------------------------------------------------------ events

bool SplitterBar::event(QEvent *event) {
    // The window's own short cuts for these keys wait while a bar is moved.
    if (event->type() == QEvent::ShortcutOverride) {
        event->accept();
        return true;
    }
    return QWidget::event(event);
}

void SplitterBar::keyPressEvent(QKeyEvent *event) {
    int const step = (event->modifiers() & Qt::ShiftModifier) != 0 ? kFineStep : kStep;
    bool const sideways = m_orientation == Qt::Vertical;
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
        if (sideways)
            MoveTo(Position() + (event->key() == Qt::Key_Left ? -step : step));
        break;
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (!sideways)
            MoveTo(Position() + (event->key() == Qt::Key_Up ? -step : step));
        break;
    case Qt::Key_Home:
        MoveTo(0);
        break;
    case Qt::Key_End:
        MoveTo(kFarAway);
        break;
    case Qt::Key_F8:
        focusNextPrevChild((event->modifiers() & Qt::ShiftModifier) == 0);
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        Leave();
        break;
    case Qt::Key_Escape:
        for (SplitterBar *bar : Ring())
            if (bar->Position() != bar->m_positionAtBegin)
                bar->MoveTo(bar->m_positionAtBegin);
        Leave();
        break;
    default:
        event->ignore();
        return;
    }
    event->accept();
}

void SplitterBar::focusInEvent(QFocusEvent *event) {
    QWidget::focusInEvent(event);
    update();
}

void SplitterBar::focusOutEvent(QFocusEvent *event) {
    QWidget::focusOutEvent(event);
    update();
}

void SplitterBar::paintEvent(QPaintEvent *) {
    if (hasFocus())
        QPainter(this).fillRect(rect(), palette().color(QPalette::Highlight));
}

} // namespace zelvar
