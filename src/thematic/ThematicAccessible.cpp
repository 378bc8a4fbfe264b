#include "zelvar/thematic/ThematicAccessible.h"

#include "zelvar/platform/ui/Text.h"
#include "zelvar/thematic/TmtcListCtrl.h"

#include <unordered_map>

namespace zelvar {

namespace {

/// A group or an item. It may outlive it, and is no longer valid then.
class ElementAccessible final : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    ElementAccessible(ThematicAccessible const &list, ThematicElement &elmt) : m_list(list), m_life(elmt.Life()) {}

    [[nodiscard]] ThematicElement *Element() const {
        auto const life = m_life.lock();
        return life == nullptr ? nullptr : *life;
    }
    [[nodiscard]] ThematicGroup *Group() const { return dynamic_cast<ThematicGroup *>(Element()); }
    [[nodiscard]] ThematicItem *Item() const { return dynamic_cast<ThematicItem *>(Element()); }

    [[nodiscard]] bool isValid() const override { return Element() != nullptr; }
    [[nodiscard]] QObject *object() const override { return nullptr; }
    [[nodiscard]] QWindow *window() const override { return m_list.window(); }
    [[nodiscard]] QAccessibleInterface *parent() const override {
        ThematicGroup *const group = Item() == nullptr ? nullptr : m_list.List().FindGroup(Item());
        return group == nullptr ? const_cast<ThematicAccessible *>(&m_list) : m_list.Part(group);
    }
    [[nodiscard]] int childCount() const override { return Group() == nullptr ? 0 : Group()->GetNumItem(); }
    [[nodiscard]] QAccessibleInterface *child(int index) const override {
        return index >= 0 && index < childCount() ? m_list.Part(Group()->Get(index)) : nullptr;
    }
    [[nodiscard]] int indexOfChild(QAccessibleInterface const *child) const override {
        for (int i = 0; i < childCount(); ++i)
            if (this->child(i) == child)
                return i;
        return -1;
    }
    [[nodiscard]] QAccessibleInterface *childAt(int x, int y) const override {
        for (int i = 0; i < childCount(); ++i)
            if (QAccessibleInterface *const part = child(i); part != nullptr && part->rect().contains(x, y))
                return part;
        return nullptr;
    }
    [[nodiscard]] QString text(QAccessible::Text kind) const override {
        if (!isValid())
            return {};
        if (kind == QAccessible::Name)
            return platform::ToQString(Element()->GetText());
        bool const isEmptyGroup = Group() != nullptr && Group()->GetNumItem() == 0;
        return kind == QAccessible::Description && isEmptyGroup ? platform::ToQString(Group()->GetHyperlinkText())
                                                                : QString();
    }
    void setText(QAccessible::Text, QString const &) override {}
    [[nodiscard]] QRect rect() const override {
        if (!isValid() || !Element()->IsVisible())
            return {};
        Rect const &at = Element()->GetRect();
        return QRect(at.left, at.top, at.Width(), at.Height()).translated(m_list.List().mapToGlobal(QPoint()));
    }
    [[nodiscard]] QAccessible::Role role() const override {
        return Group() != nullptr ? QAccessible::Grouping : QAccessible::ListItem;
    }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state;
        if (!isValid()) {
            state.invalid = true;
            return state;
        }
        TmtcListCtrl const &list = m_list.List();
        state.disabled = !list.isEnabled();
        state.invisible = !Element()->IsVisible() || !list.isVisible();
        state.offscreen = !list.rect().intersects(rect().translated(-list.mapToGlobal(QPoint())));
        state.selectable = Item() != nullptr || list.GetEnblGrpSlct();
        state.selected = list.GetSlctElmt() == Element();
        state.focusable = list.focusPolicy() != Qt::NoFocus;
        state.focused = list.hasFocus() && list.GetFocusElmt() == Element();
        state.readOnly = Item() != nullptr && Item()->GetReadOnly();
        return state;
    }
    void *interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface *>(this) : nullptr;
    }

    [[nodiscard]] QStringList actionNames() const override {
        QStringList names;
        if (Group() != nullptr && Group()->GetEnblAdd())
            names << increaseAction();
        if (Item() != nullptr) {
            names << pressAction();
            if (Item()->RemoveButton().IsEnabled())
                names << RemoveAction();
            if (Item()->UpButton().IsEnabled())
                names << scrollUpAction();
            if (Item()->DownButton().IsEnabled())
                names << scrollDownAction();
        }
        return names;
    }
    [[nodiscard]] QString localizedActionName(QString const &name) const override {
        return name == increaseAction()     ? QStringLiteral("Add")
               : name == RemoveAction()     ? QStringLiteral("Remove")
               : name == scrollUpAction()   ? QStringLiteral("Move up")
               : name == scrollDownAction() ? QStringLiteral("Move down")
                                            : QAccessibleActionInterface::localizedActionName(name);
    }
    void doAction(QString const &name) override {
        TmtcListCtrl &list = m_list.List();
        if (!isValid() || !actionNames().contains(name))
            return;
        if (name == pressAction())
            list.Select(Element());
        else
            list.Perform(name == increaseAction()   ? kThematicAdd
                         : name == RemoveAction()   ? kThematicRemove
                         : name == scrollUpAction() ? kThematicUp
                                                    : kThematicDown,
                         Element());
    }
    [[nodiscard]] QStringList keyBindingsForAction(QString const &) const override { return {}; }

private:
    [[nodiscard]] static QString RemoveAction() { return QStringLiteral("Remove"); }

    ThematicAccessible const &m_list; ///< deletes its parts
    std::weak_ptr<ThematicElement *const> m_life;
};

QAccessibleInterface *MakeInterface(QString const &, QObject *object) {
    auto *const list = qobject_cast<TmtcListCtrl *>(object);
    return list == nullptr ? nullptr : new ThematicAccessible(*list);
}

/// The interfaces that were asked for.
std::unordered_map<TmtcListCtrl const *, ThematicAccessible *> &Known() {
    static std::unordered_map<TmtcListCtrl const *, ThematicAccessible *> known;
    return known;
}

ThematicAccessible *InterfaceOf(TmtcListCtrl const &list) {
    auto const at = Known().find(&list);
    return at == Known().end() ? nullptr : at->second;
}

} // namespace

ThematicAccessible::ThematicAccessible(TmtcListCtrl &list) : QAccessibleWidget(&list, QAccessible::List), m_list(list) {
    Known()[&list] = this;
}

ThematicAccessible::~ThematicAccessible() { DropParts(); }

void ThematicAccessible::DropParts() {
    Known().erase(&m_list);
    for (auto const &[elmt, made] : m_parts)
        QAccessible::deleteAccessibleInterface(made.id);
    m_parts.clear();
}

void ThematicAccessible::Install() {
    static bool const done = (QAccessible::installFactory(MakeInterface), true);
    static_cast<void>(done);
}

void ThematicAccessible::Forget(TmtcListCtrl &list) {
    // The parts ask the list, which is about to be no list any more.
    if (ThematicAccessible *const own = InterfaceOf(list))
        own->DropParts();
}

void ThematicAccessible::SelectionChanged(TmtcListCtrl &list, ThematicElement *elmt) {
    if (ThematicAccessible const *const own = InterfaceOf(list); own != nullptr && elmt != nullptr) {
        QAccessibleEvent event(own->Part(elmt), QAccessible::Selection);
        QAccessible::updateAccessibility(&event);
    }
}

void ThematicAccessible::FocusMoved(TmtcListCtrl &list, ThematicElement *elmt) {
    if (ThematicAccessible const *const own = InterfaceOf(list); own != nullptr && elmt != nullptr) {
        QAccessibleEvent event(own->Part(elmt), QAccessible::Focus);
        QAccessible::updateAccessibility(&event);
    }
}

QAccessibleInterface *ThematicAccessible::Part(ThematicElement *elmt) const {
    if (elmt == nullptr)
        return nullptr;
    Made &made = m_parts[elmt];
    if (made.id != 0 && made.life.expired()) {
        // Another element that lies where one was that is gone.
        QAccessible::deleteAccessibleInterface(made.id);
        made.id = 0;
    }
    if (made.id == 0) {
        made.life = elmt->Life();
        made.id = QAccessible::registerAccessibleInterface(new ElementAccessible(*this, *elmt));
    }
    return QAccessible::accessibleInterface(made.id);
}

int ThematicAccessible::childCount() const { return List().GetNumElmt(); }
QAccessibleInterface *ThematicAccessible::child(int index) const { return Part(List().Get(index)); }

int ThematicAccessible::indexOfChild(QAccessibleInterface const *child) const {
    for (int i = 0; i < childCount(); ++i)
        if (this->child(i) == child)
            return i;
    return -1;
}

QAccessibleInterface *ThematicAccessible::childAt(int x, int y) const {
    for (int i = 0; i < childCount(); ++i)
        if (QAccessibleInterface *const part = child(i); part->rect().contains(x, y))
            return part;
    return nullptr;
}

QAccessibleInterface *ThematicAccessible::focusChild() const {
    return List().hasFocus() ? Part(List().GetFocusElmt()) : nullptr;
}

} // namespace zelvar
