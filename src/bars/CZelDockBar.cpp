#include "zelvar/bars/CZelDockBar.h"

#include "zelvar/bars/DockState.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/Convert.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/xml/XMLNode.h"

#include <QtGui/QKeyEvent>
#include <QtGui/QShortcut>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMainWindow>

#include <algorithm>
#include <array>

namespace zelvar {

namespace {

constexpr char kKeysName[] = "zelvarDockBarKeys";

QMainWindow *MainWindowOf(QWidget const &bar) {
    for (QWidget *parent = bar.parentWidget(); parent != nullptr; parent = parent->parentWidget())
        if (auto *const window = qobject_cast<QMainWindow *>(parent))
            return window;
    return nullptr;
}

bool TakesFocus(QWidget const &widget) {
    return (widget.focusPolicy() & Qt::TabFocus) != 0 && widget.isVisible() && widget.isEnabled();
}

/// The part of an area that had the focus last, or the first that can have it; of a bar its caption's buttons come
/// last.
QWidget *FocusTarget(QWidget &area) {
    if (QWidget *const last = area.focusWidget(); last != nullptr && last->isVisible() && last->isEnabled())
        return last;
    auto const *const bar = qobject_cast<CZelDockBar const *>(&area);
    if (bar != nullptr && bar->widget() != nullptr)
        if (QWidget *const within = FocusTarget(*bar->widget()))
            return within;
    if (TakesFocus(area))
        return &area;
    for (QWidget *const part : area.findChildren<QWidget *>())
        if (TakesFocus(*part))
            return part;
    return nullptr;
}

/// The window's areas that F6 walks: its middle, the sides in turn, what floats.
QList<QWidget *> Areas(QMainWindow const &window) {
    QByteArray const layout = window.saveState();
    auto const rank = [&](CZelDockBar *bar) {
        constexpr std::array kSides{Qt::LeftDockWidgetArea, Qt::TopDockWidgetArea, Qt::RightDockWidgetArea,
                                    Qt::BottomDockWidgetArea};
        auto const side = std::ranges::find(kSides, window.dockWidgetArea(bar)) - kSides.begin();
        return std::tuple(bar->isFloating(), side, PlaceIn(layout, *bar));
    };
    QList<CZelDockBar *> bars = CZelDockBar::BarsOf(window);
    bars.removeIf([](CZelDockBar const *bar) { return bar->isHidden(); });
    std::ranges::stable_sort(bars, [&](CZelDockBar *a, CZelDockBar *b) { return rank(a) < rank(b); });
    QList<QWidget *> areas;
    if (QWidget *const middle = window.centralWidget())
        areas.append(middle);
    for (CZelDockBar *const bar : std::as_const(bars))
        areas.append(bar);
    return areas;
}

} // namespace

CZelDockBar::CZelDockBar(DString const &title, int id, QWidget *parent)
    : QDockWidget(platform::ToQString(title), parent) {
    setObjectName(title.empty() ? QStringLiteral("bar-%1").arg(id) : platform::ToQString(title));
    setAccessibleName(platform::ToQString(title));
    platform::SetDlgCtrlID(*this, id);
    for (QAbstractButton *const button : findChildren<QAbstractButton *>(QString(), Qt::FindDirectChildrenOnly))
        button->setFocusPolicy(Qt::TabFocus); // or the caption could be reached by the mouse only
    EnableKeys();
}

int CZelDockBar::GetId() const { return platform::GetDlgCtrlID(*this); }

void CZelDockBar::Dock(QMainWindow &window, Qt::DockWidgetArea side) {
    bool const shown = !isHidden();
    window.addDockWidget(side, this);
    setFloating(false);
    if (shown)
        show();
}

void CZelDockBar::Float(Rect const &rect) {
    QSize const least = minimumSizeHint().expandedTo(minimumSize());
    Rect const place = BringOntoScreen({rect.left, rect.top, std::max(rect.right, rect.left + least.width()),
                                        std::max(rect.bottom, rect.top + least.height())},
                                       ScreenRects());
    m_floatingRect = place;
    setFloating(true);
    setGeometry(place.left, place.top, place.Width(), place.Height());
}

bool CZelDockBar::AttachToTabWnd(CZelDockBar &other) {
    QMainWindow *const window = MainWindowOf(other);
    if (window == nullptr || &other == this || other.isFloating())
        return false;
    window->addDockWidget(window->dockWidgetArea(&other), this);
    setFloating(false);
    window->tabifyDockWidget(&other, this);
    show();
    return true;
}

void CZelDockBar::ShowControlBar(bool show, bool activate) {
    setVisible(show);
    if (!show || !activate)
        return;
    raise();
    if (isFloating())
        activateWindow();
    if (QWidget *const target = FocusTarget(*this))
        target->setFocus(Qt::OtherFocusReason);
}

QList<CZelDockBar *> CZelDockBar::BarsOf(QMainWindow const &window) {
    QList<CZelDockBar *> bars = window.findChildren<CZelDockBar *>();
    bars.removeIf([&window](CZelDockBar const *bar) { return MainWindowOf(*bar) != &window; });
    return bars;
}

std::unique_ptr<XMLNode> CZelDockBar::SaveState(QMainWindow const &window) { return SaveDockState(window); }

bool CZelDockBar::LoadState(QMainWindow &window, XMLNode const &root) { return LoadDockState(window, root); }

void CZelDockBar::FocusNextBar(QMainWindow &window, bool forward) {
    QList<QWidget *> const areas = Areas(window);
    QWidget const *const focus = QApplication::focusWidget();
    auto const holds = [focus](QWidget const *area) {
        return focus != nullptr && (area == focus || area->isAncestorOf(focus));
    };
    auto const at = std::ranges::find_if(areas, holds) - areas.begin();
    auto const count = areas.size();
    bool const nowhere = at == count;
    for (qsizetype step = 1; step <= count; ++step) {
        qsizetype const next =
            nowhere ? (forward ? step - 1 : count - step) : (at + (forward ? step : count - step)) % count;
        auto *const bar = qobject_cast<CZelDockBar *>(areas[next]);
        if (bar != nullptr)
            bar->raise(); // to the front of its tabs, where its parts can be seen
        QWidget *const target = FocusTarget(*areas[next]);
        if (target == nullptr)
            continue;
        target->window()->activateWindow();
        target->setFocus(Qt::OtherFocusReason);
        return;
    }
}

/// Where the window is docked in for the first time, its keys are made.
void CZelDockBar::EnableKeys() {
    QMainWindow *const window = MainWindowOf(*this);
    if (window == nullptr || window->findChild<QShortcut *>(kKeysName, Qt::FindDirectChildrenOnly) != nullptr)
        return;
    for (bool const forward : {true, false}) {
        QKeySequence const keys = forward ? QKeySequence(Qt::Key_F6) : QKeySequence(Qt::SHIFT | Qt::Key_F6);
        auto *const shortcut = new QShortcut(keys, window);
        shortcut->setObjectName(kKeysName);
        shortcut->setContext(Qt::WidgetWithChildrenShortcut); // the window may stand in another one
        connect(shortcut, &QShortcut::activated, window, [window, forward] { FocusNextBar(*window, forward); });
    }
}

void CZelDockBar::keyPressEvent(QKeyEvent *event) {
    // While it floats it is a window of its own, which the main window's keys do not reach.
    QMainWindow *const window = MainWindowOf(*this);
    if (event->key() == Qt::Key_F6 && isFloating() && window != nullptr)
        FocusNextBar(*window, !event->modifiers().testFlag(Qt::ShiftModifier));
    else
        QDockWidget::keyPressEvent(event);
}

void CZelDockBar::Remember() {
    if (isHidden())
        return;
    if (isFloating()) {
        if (isVisible())
            m_floatingRect = platform::ToRect(geometry());
    } else if (x() + width() > 0 && y() + height() > 0 && isVisible()) { // a tab at the back is parked outside
        m_dockedRect = platform::ToRect(geometry());
    }
}

bool CZelDockBar::event(QEvent *event) {
    bool const result = QDockWidget::event(event);
    switch (event->type()) {
    case QEvent::ParentChange:
        EnableKeys();
        break;
    case QEvent::Move:
    case QEvent::Resize:
    case QEvent::Show:
        Remember();
        break;
    default:
        break;
    }
    return result;
}

} // namespace zelvar
