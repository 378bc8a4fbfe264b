#include "zelvar/controls/CGrpCtrl.h"

#include "zelvar/platform/ui/Text.h"

#include <QtGui/QKeyEvent>
#include <QtWidgets/QAccessibleWidget>
#include <QtWidgets/QApplication>
#include <QtWidgets/QProxyStyle>
#include <QtWidgets/QStyleOptionGroupBox>
#include <QtWidgets/QStylePainter>
#include <QtWidgets/QVBoxLayout>

#include <algorithm>

namespace zelvar {

namespace {

constexpr int kBelowTitle = 2; // pixels left under the title of a folded group

/// Draws the check box of a group that folds as an arrow.
class ArrowStyle final : public QProxyStyle {
public:
    void drawPrimitive(PrimitiveElement element, QStyleOption const *option, QPainter *painter,
                       QWidget const *widget) const override {
        auto const *const group = qobject_cast<CGrpCtrl const *>(widget);
        if (element != PE_IndicatorCheckBox || group == nullptr || group->GetMode() != CGrpCtrl::Mode::Folds) {
            QProxyStyle::drawPrimitive(element, option, painter, widget);
            return;
        }
        bool const mirrored = option->direction == Qt::RightToLeft;
        PrimitiveElement const closed = mirrored ? PE_IndicatorArrowLeft : PE_IndicatorArrowRight;
        QProxyStyle::drawPrimitive(group->IsFolded() ? closed : PE_IndicatorArrowDown, option, painter, widget);
    }
};

class GroupAccessible final : public QAccessibleWidget {
public:
    explicit GroupAccessible(CGrpCtrl &group) : QAccessibleWidget(&group, QAccessible::Grouping) {}
    [[nodiscard]] QAccessible::Role role() const override {
        return Group().GetMode() == CGrpCtrl::Mode::Enables ? QAccessible::CheckBox : QAccessible::Grouping;
    }
    [[nodiscard]] QString text(QAccessible::Text kind) const override {
        QString const own = QAccessibleWidget::text(kind);
        return own.isEmpty() && kind == QAccessible::Name ? Group().title().remove(u'&') : own;
    }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        bool const folds = Group().GetMode() == CGrpCtrl::Mode::Folds;
        state.checkable = Group().GetMode() == CGrpCtrl::Mode::Enables;
        state.checked = state.checkable && Group().GetCheck();
        state.expandable = folds;
        state.collapsed = Group().IsFolded();
        state.expanded = folds && !Group().IsFolded();
        return state;
    }
    [[nodiscard]] QStringList actionNames() const override {
        return Group().isCheckable() ? QStringList{toggleAction()} + QAccessibleWidget::actionNames()
                                     : QAccessibleWidget::actionNames();
    }
    void doAction(QString const &name) override {
        if (name == toggleAction() && Group().GetMode() == CGrpCtrl::Mode::Folds)
            Group().SetFolded(!Group().IsFolded());
        else if (name == toggleAction())
            Group().SetCheck(!Group().GetCheck());
        else
            QAccessibleWidget::doAction(name);
    }

private:
    [[nodiscard]] CGrpCtrl &Group() const { return *static_cast<CGrpCtrl *>(widget()); }
};

QAccessibleInterface *MakeInterface(QString const &, QObject *object) {
    auto *const group = qobject_cast<CGrpCtrl *>(object);
    return group == nullptr ? nullptr : new GroupAccessible(*group);
}

} // namespace

CGrpCtrl::CGrpCtrl(QWidget *parent) : QGroupBox(parent), m_content(new QWidget), m_unfolded(sizePolicy()) {
    static bool const installed = (QAccessible::installFactory(MakeInterface), true);
    static_cast<void>(installed);
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_content);
    auto *const arrows = new ArrowStyle;
    arrows->setParent(this);
    setStyle(arrows);
    connect(this, &QGroupBox::toggled, this, &CGrpCtrl::OnToggled);
}

DString CGrpCtrl::GetWindowText() const { return platform::ToDString(title()); }
void CGrpCtrl::SetWindowText(DString const &text) { setTitle(platform::ToQString(text)); }

void CGrpCtrl::SetMode(Mode mode) {
    if (mode == m_mode)
        return;
    setChecked(true);
    m_mode = mode;
    setCheckable(mode != Mode::Plain);
    updateGeometry();
    update();
}

void CGrpCtrl::SetCheck(bool checked) {
    if (m_mode == Mode::Enables)
        setChecked(checked);
}

void CGrpCtrl::SetFolded(bool folded) {
    if (m_mode != Mode::Folds)
        return;
    // What has the focus loses it with the content; it is not to go to whatever comes next.
    if (QWidget const *const focus = QApplication::focusWidget();
        folded && focus != nullptr && m_content->isAncestorOf(focus))
        setFocus(Qt::OtherFocusReason);
    setChecked(!folded);
}

void CGrpCtrl::OnToggled(bool on) {
    if (m_mode == Mode::Enables)
        Q_EMIT CheckChanged(on);
    if (m_mode != Mode::Folds)
        return;
    if (!on)
        m_unfolded = sizePolicy();
    m_content->setVisible(on);
    // A folded group takes no more height than its title, however much there is.
    QSizePolicy policy = m_unfolded;
    if (!on)
        policy.setVerticalPolicy(QSizePolicy::Fixed);
    setSizePolicy(policy);
    updateGeometry();
    Q_EMIT FoldChanged(!on);
}

QSize CGrpCtrl::FoldedHint(QSize const &hint) const {
    QStyleOptionGroupBox option;
    initStyleOption(&option);
    auto const part = [&](QStyle::SubControl which) {
        return style()->subControlRect(QStyle::CC_GroupBox, &option, which, this);
    };
    QRect const title = part(QStyle::SC_GroupBoxLabel).united(part(QStyle::SC_GroupBoxCheckBox));
    QMargins const frame = contentsMargins();
    int const width = m_content->minimumSizeHint().width() + frame.left() + frame.right();
    return {std::max(hint.width(), width), title.bottom() + 1 + kBelowTitle};
}

QSize CGrpCtrl::sizeHint() const {
    QSize const hint = QGroupBox::sizeHint();
    return IsFolded() ? FoldedHint(hint) : hint;
}

QSize CGrpCtrl::minimumSizeHint() const {
    QSize const hint = QGroupBox::minimumSizeHint();
    return IsFolded() ? FoldedHint(hint) : hint;
}

void CGrpCtrl::paintEvent(QPaintEvent *) {
    QStylePainter painter(this);
    QStyleOptionGroupBox option;
    initStyleOption(&option);
    if (IsFolded())
        option.subControls &= ~QStyle::SC_GroupBoxFrame;
    painter.drawComplexControl(QStyle::CC_GroupBox, option);
}

void CGrpCtrl::keyPressEvent(QKeyEvent *event) {
    bool const mirrored = layoutDirection() == Qt::RightToLeft;
    int const opens = mirrored ? Qt::Key_Left : Qt::Key_Right;
    int const closes = mirrored ? Qt::Key_Right : Qt::Key_Left;
    if (m_mode == Mode::Folds && (event->key() == opens || event->key() == Qt::Key_Plus))
        SetFolded(false);
    else if (m_mode == Mode::Folds && (event->key() == closes || event->key() == Qt::Key_Minus))
        SetFolded(true);
    else
        QGroupBox::keyPressEvent(event);
}

} // namespace zelvar
