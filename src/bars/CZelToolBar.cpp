#include "zelvar/bars/CZelToolBar.h"

#include "zelvar/bars/CZelToolbarComboBoxButton.h"
#include "zelvar/bars/ToolBarDialog.h"
#include "zelvar/controls/CZelImageList.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/ModalLoop.h"
#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/xml/XMLNode.h"

#include <QtGui/QActionEvent>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QMenu>
#include <QtWidgets/QToolButton>

#include <algorithm>
#include <limits>

namespace zelvar {

namespace {

constexpr int kLargePicture = 32;
constexpr char kStyle[] = "zelvarButtonStyle";
constexpr char kMoreButton[] = "qt_toolbar_ext_button"; ///< Qt's own, for what has no room
constexpr char kTip[] = "zelvarButtonTip";

/// The command of an element; 0 for a separator.
int IdOf(QAction const &action) { return action.data().toInt(); }

bool IsInGroup(QAction const &action) {
    return (action.property(kStyle).toUInt() & CZelToolBar::TBBS_CHECKGROUP) == CZelToolBar::TBBS_CHECKGROUP;
}

/// What has the keyboard's focus of an element.
QWidget *StopOf(QWidget *widget) {
    while (widget != nullptr && widget->focusProxy() != nullptr)
        widget = widget->focusProxy();
    return widget;
}

} // namespace

CZelToolBar::CZelToolBar(DString const &title, int id, QWidget *parent) : QToolBar(platform::ToQString(title), parent) {
    setObjectName(title.empty() ? QStringLiteral("bar-%1").arg(id) : platform::ToQString(title));
    setAccessibleName(platform::ToQString(title));
    platform::SetDlgCtrlID(*this, id);
    setIconSize(QSize(platform::kSmallPicture, platform::kSmallPicture));
    if (auto *const more = findChild<QToolButton *>(kMoreButton)) {
        more->setAccessibleName(platform::Shown("More buttons"));
        more->setToolTip(more->accessibleName());
        more->installEventFilter(this);
    }
    connect(this, &QToolBar::orientationChanged, this, [this](Qt::Orientation orientation) {
        for (QAction *const action : actions())
            if (auto *const combo = qobject_cast<CZelToolbarComboBoxButton *>(action))
                combo->ShowAsButton(orientation == Qt::Vertical);
        UpdateReach();
    });
}

CZelToolBar::~CZelToolBar() = default;

QAction *CZelToolBar::InsertButton(int id, int image, DString const &text, DString const &tip, int index) {
    if (GetButton(id) != nullptr)
        return nullptr;
    auto *const button = new QAction(platform::ToQString(text), this);
    button->setData(id);
    button->setProperty(kTip, platform::ToQString(tip));
    if (m_images != nullptr && image >= 0)
        button->setIcon(m_images->ExtractIcon(image));
    connect(button, &QAction::triggered, this, [this, button] {
        if (IsInGroup(*button))
            Press(*button, true); // a radio button stays down
        OnCommand(IdOf(*button));
    });
    Dress(*button);
    insertAction(index < 0 ? nullptr : actions().value(index), button);
    return button;
}

bool CZelToolBar::AddComboBox(CZelToolbarComboBoxButton *combo) {
    if (combo == nullptr || GetButton(combo->GetId()) != nullptr)
        return false;
    combo->setParent(this);
    combo->ShowAsButton(orientation() == Qt::Vertical);
    connect(combo, &CZelToolbarComboBoxButton::Command, this, &CZelToolBar::OnCommand);
    addAction(combo);
    return true;
}

bool CZelToolBar::RemoveButton(int id) {
    QAction *const button = GetButton(id);
    if (button == nullptr)
        return false;
    removeAction(button);
    button->deleteLater(); // it may be the one whose command is being carried out
    return true;
}

bool CZelToolBar::MoveButton(int id, int index) {
    QAction *const button = GetButton(id);
    if (button == nullptr)
        return false;
    removeAction(button);
    insertAction(index < 0 ? nullptr : actions().value(index), button);
    return true;
}

QAction *CZelToolBar::GetButton(int id) const {
    for (QAction *const action : actions())
        if (!action->isSeparator() && IdOf(*action) == id)
            return action;
    return nullptr;
}

int CZelToolBar::CommandToIndex(int id) const {
    QAction *const button = GetButton(id);
    return button == nullptr ? -1 : static_cast<int>(actions().indexOf(button));
}

int CZelToolBar::GetItemID(int index) const {
    QAction const *const action = actions().value(index);
    return action == nullptr ? 0 : IdOf(*action);
}

void CZelToolBar::SetButtonStyle(int id, unsigned style) {
    if (QAction *const button = GetButton(id)) {
        button->setProperty(kStyle, style);
        button->setCheckable((style & TBBS_CHECKBOX) != 0);
        Press(*button, button->isChecked()); // in a group it is the only one now
    }
}

unsigned CZelToolBar::GetButtonStyle(int id) const {
    QAction const *const button = GetButton(id);
    return button == nullptr ? 0 : button->property(kStyle).toUInt();
}

void CZelToolBar::Press(QAction &button, bool press) {
    button.setChecked(press);
    if (!press || !IsInGroup(button))
        return;
    QList<QAction *> const all = actions();
    auto const at = all.indexOf(&button);
    for (auto i = at - 1; i >= 0 && IsInGroup(*all[i]); --i)
        all[i]->setChecked(false);
    for (auto i = at + 1; i < all.size() && IsInGroup(*all[i]); ++i)
        all[i]->setChecked(false);
}

void CZelToolBar::PressButton(int id, bool press) {
    if (QAction *const button = GetButton(id))
        Press(*button, press);
}

bool CZelToolBar::IsButtonPressed(int id) const {
    QAction const *const button = GetButton(id);
    return button != nullptr && button->isChecked();
}

void CZelToolBar::EnableButton(int id, bool enable) {
    if (QAction *const button = GetButton(id))
        button->setEnabled(enable);
}

bool CZelToolBar::IsButtonEnabled(int id) const {
    QAction const *const button = GetButton(id);
    return button != nullptr && button->isEnabled();
}

void CZelToolBar::ShowButton(int id, bool show) {
    if (QAction *const button = GetButton(id))
        button->setVisible(show);
}

bool CZelToolBar::IsButtonShown(int id) const {
    QAction const *const button = GetButton(id);
    return button != nullptr && button->isVisible();
}

void CZelToolBar::SetButtonShortcut(int id, QKeySequence const &shortcut) {
    if (QAction *const button = GetButton(id)) {
        button->setShortcut(shortcut);
        Dress(*button);
    }
}

void CZelToolBar::Dress(QAction &button) {
    QString tip = button.property(kTip).toString();
    if (tip.isEmpty())
        tip = button.iconText();
    if (QString const keys = button.shortcut().toString(QKeySequence::NativeText); !keys.isEmpty())
        tip += QStringLiteral(" (%1)").arg(keys);
    button.setToolTip(platform::ToToolTip(tip));
}

void CZelToolBar::EnableLargeIcons(bool large) {
    int const side = large ? kLargePicture : platform::kSmallPicture;
    setIconSize(QSize(side, side));
}

void CZelToolBar::SetTextPlace(TextPlace place) {
    setToolButtonStyle(place == TextPlace::Below    ? Qt::ToolButtonTextUnderIcon
                       : place == TextPlace::Beside ? Qt::ToolButtonTextBesideIcon
                                                    : Qt::ToolButtonIconOnly);
}

void CZelToolBar::OnCommand(int id) { Q_EMIT Command(id); }

void CZelToolBar::SaveButtons(XMLNode &bar) const {
    for (QAction const *const action : actions()) {
        XMLNode *const element = bar.AddChld(action->isSeparator() ? "SEPARATOR" : "BUTTON");
        if (action->isSeparator())
            continue;
        element->SetAttrInt("id", IdOf(*action));
        element->SetAttrBool("visible", action->isVisible());
    }
}

/// What "Reset" brings back.
void CZelToolBar::KeepDesign() {
    if (m_design)
        return;
    m_design = std::make_unique<XMLNode>("TOOLBAR");
    SaveButtons(*m_design);
}

bool CZelToolBar::Customize() {
    KeepDesign();
    QPointer<CZelToolBar> const alive(this);
    ToolBarDialog dialog(*this, *m_design, window());
    if (platform::RunModal(dialog) != QDialog::Accepted || alive.isNull())
        return false;
    XMLNode chosen("TOOLBAR");
    dialog.SaveButtons(chosen);
    LoadButtons(chosen);
    EnableLargeIcons(dialog.WantsLargeIcons());
    return true;
}

void CZelToolBar::contextMenuEvent(QContextMenuEvent *event) {
    if (!m_customizable)
        return QToolBar::contextMenuEvent(event);
    // With what the window around offers for all its bars.
    auto *const frame = qobject_cast<QMainWindow *>(parentWidget());
    std::unique_ptr<QMenu> menu(frame == nullptr ? nullptr : frame->createPopupMenu());
    if (!menu)
        menu = std::make_unique<QMenu>();
    else
        menu->setParent(nullptr, menu->windowFlags());
    if (!menu->isEmpty())
        menu->addSeparator();
    QAction const *const customize = menu->addAction(platform::Shown("&Customize..."));
    QPointer<CZelToolBar> const alive(this);
    if (platform::RunMenu(*menu, event->globalPos()) == customize && !alive.isNull())
        Customize();
}

void CZelToolBar::LoadButtons(XMLNode const &bar) {
    KeepDesign();
    QList<QAction *> left = actions();
    QList<QAction *> order;
    auto const take = [&](auto const &fits) -> QAction * {
        auto const found = std::ranges::find_if(left, fits);
        if (found == left.end())
            return nullptr;
        QAction *const action = *found;
        left.erase(found);
        order.append(action);
        return action;
    };
    for (XMLNode const *element = bar.GetFirstChild(); element != nullptr && !left.isEmpty();
         element = element->GetNext()) {
        if (element->GetName() == "SEPARATOR")
            std::ignore = take([](QAction const *action) { return action->isSeparator(); }); // there may be fewer now
        if (element->GetName() != "BUTTON")
            continue;
        long long const id = element->GetAttrInt("id", std::numeric_limits<long long>::max());
        QAction *const button = take([id](QAction const *a) { return !a->isSeparator() && IdOf(*a) == id; });
        if (button != nullptr)
            button->setVisible(element->GetAttrBool("visible", button->isVisible()));
    }
    order += left;
    if (order == actions())
        return;
    for (QAction *const action : std::as_const(order))
        removeAction(action);
    addActions(order);
}

void CZelToolBar::actionEvent(QActionEvent *event) {
    QToolBar::actionEvent(event);
    if (event->type() == QEvent::ActionAdded)
        if (QWidget *const stop = StopOf(widgetForAction(event->action()))) {
            if (qobject_cast<QToolButton *>(stop) != nullptr)
                stop->setAccessibleName(event->action()->iconText());
            widgetForAction(event->action())->installEventFilter(this);
            stop->installEventFilter(this);
        }
    UpdateReach();
}

/// What the arrows walk over, in order.
QList<QWidget *> CZelToolBar::Stops() const {
    QList<QWidget *> stops;
    for (QAction *const action : actions())
        if (QWidget *const stop = StopOf(widgetForAction(action)); stop != nullptr && !action->isSeparator())
            stops.append(stop);
    stops.append(findChild<QToolButton *>(kMoreButton));
    stops.removeIf([this](QWidget const *stop) {
        return stop == nullptr || !stop->isVisibleTo(this) || !stop->isEnabledTo(this);
    });
    return stops;
}

/// Just one button can be reached by Tab; a combo box always can.
void CZelToolBar::UpdateReach() {
    QList<QWidget *> buttons = Stops();
    buttons.removeIf([](QWidget const *stop) { return qobject_cast<QToolButton const *>(stop) == nullptr; });
    if (!buttons.contains(m_reach.data()))
        m_reach = buttons.value(0);
    for (QAction *const action : actions())
        if (auto *const button = qobject_cast<QToolButton *>(StopOf(widgetForAction(action))))
            button->setFocusPolicy(button == m_reach ? Qt::TabFocus : Qt::NoFocus);
    if (auto *const more = findChild<QToolButton *>(kMoreButton))
        more->setFocusPolicy(more == m_reach ? Qt::TabFocus : Qt::NoFocus);
}

bool CZelToolBar::Walk(QWidget *from, int key) {
    QList<QWidget *> const stops = Stops();
    auto const at = stops.indexOf(from);
    bool const across = orientation() == Qt::Horizontal;
    bool const mirrored = across && isRightToLeft();
    int const back = across ? (mirrored ? Qt::Key_Right : Qt::Key_Left) : Qt::Key_Up;
    int const on = across ? (mirrored ? Qt::Key_Left : Qt::Key_Right) : Qt::Key_Down;
    QWidget *to = nullptr;
    if (key == back || key == on)
        to = stops.value(at + (key == on ? 1 : -1));
    else if (key == Qt::Key_Home)
        to = stops.value(0);
    else if (key == Qt::Key_End)
        to = stops.isEmpty() ? nullptr : stops.last();
    else // the other two arrows would go on to the next control
        return qobject_cast<QToolButton *>(from) != nullptr && key >= Qt::Key_Left && key <= Qt::Key_Down;
    if (to != nullptr)
        to->setFocus(Qt::TabFocusReason);
    return true;
}

bool CZelToolBar::eventFilter(QObject *object, QEvent *event) {
    auto *const widget = qobject_cast<QWidget *>(object);
    switch (event->type()) {
    case QEvent::FocusIn:
        if (qobject_cast<QToolButton *>(object) != nullptr) {
            m_reach = widget;
            UpdateReach();
        }
        break;
    case QEvent::Show:
    case QEvent::Hide:
    case QEvent::EnabledChange:
        UpdateReach();
        break;
    case QEvent::KeyPress: {
        auto const *const combo = qobject_cast<QComboBox *>(object);
        auto const *const key = static_cast<QKeyEvent *>(event);
        bool const combosOwn = combo != nullptr && (combo->isEditable() || key->key() == Qt::Key_Home ||
                                                    key->key() == Qt::Key_End || orientation() == Qt::Vertical);
        if (!combosOwn && (key->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier && Walk(widget, key->key()))
            return true;
        break;
    }
    default:
        break;
    }
    return QToolBar::eventFilter(object, event);
}

} // namespace zelvar
