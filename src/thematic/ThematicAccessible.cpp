#include "zelvar/thematic/ThematicAccessible.h"

#include "zelvar/platform/ui/Announce.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/thematic/TmtcListCtrl.h"

#include <algorithm>
#include <unordered_map>

namespace zelvar {

namespace {

constexpr unsigned kWhole = ThematicAccessible::kWhole;
constexpr unsigned kLink = ThematicAccessible::kLink;

/// What a command is called, of a button as of an element.
QString NameOf(unsigned command) {
    switch (command) {
    case kThematicAdd:
        return platform::Shown("Add");
    case kThematicRemove:
        return platform::Shown("Remove");
    case kThematicUp:
        return platform::Shown("Move up");
    case kThematicDown:
        return platform::Shown("Move down");
    default:
        return {};
    }
}

/// The buttons and links that a user sees in an element, whether they can be pressed or not.
std::vector<unsigned> PiecesOf(ThematicElement *elmt) {
    if (auto const *const item = dynamic_cast<ThematicItem const *>(elmt))
        return item->GetReadOnly() ? std::vector<unsigned>{}
                                   : std::vector<unsigned>{kThematicUp, kThematicDown, kThematicRemove};
    if (auto const *const group = dynamic_cast<ThematicGroup const *>(elmt))
        return group->GetNumItem() == 0 ? std::vector<unsigned>{kThematicAdd, kLink}
                                        : std::vector<unsigned>{kThematicAdd};
    return {};
}

/// Null for what the element does not have.
ThematicButtonBase const *PieceOf(ThematicElement *elmt, unsigned piece) {
    if (auto *const item = dynamic_cast<ThematicItem *>(elmt)) {
        if (piece == kThematicRemove)
            return &item->RemoveButton();
        return piece == kThematicUp ? &item->UpButton() : piece == kThematicDown ? &item->DownButton() : nullptr;
    }
    auto const *const group = dynamic_cast<ThematicGroup const *>(elmt);
    if (group == nullptr)
        return nullptr;
    if (piece == kLink)
        return &group->Link();
    return piece == kThematicAdd ? &group->AddButton() : nullptr;
}

QRect PlaceOnScreen(TmtcListCtrl const &list, Rect const &at) {
    return QRect(at.left, at.top, at.Width(), at.Height()).translated(list.mapToGlobal(QPoint()));
}

/// A button or a link in a group or an item. It may outlive that, and is no longer valid then.
class PieceAccessible final : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    PieceAccessible(ThematicAccessible const &list, ThematicElement &elmt, unsigned piece)
        : m_list(list), m_life(elmt.Life()), m_piece(piece) {}

    [[nodiscard]] bool isValid() const override {
        std::vector<unsigned> const pieces = PiecesOf(Element());
        return std::find(pieces.begin(), pieces.end(), m_piece) != pieces.end();
    }
    [[nodiscard]] QObject *object() const override { return nullptr; }
    [[nodiscard]] QWindow *window() const override { return m_list.window(); }
    [[nodiscard]] QAccessibleInterface *parent() const override { return m_list.Part(Element()); }
    [[nodiscard]] int childCount() const override { return 0; }
    [[nodiscard]] QAccessibleInterface *child(int) const override { return nullptr; }
    [[nodiscard]] int indexOfChild(QAccessibleInterface const *) const override { return -1; }
    [[nodiscard]] QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    [[nodiscard]] QString text(QAccessible::Text kind) const override {
        if (kind != QAccessible::Name || !isValid())
            return {};
        auto const *const link = dynamic_cast<ThematicHyperlink const *>(PieceOf(Element(), m_piece));
        return link == nullptr ? NameOf(m_piece) : platform::ToQString(link->GetText());
    }
    void setText(QAccessible::Text, QString const &) override {}
    [[nodiscard]] QRect rect() const override {
        return isValid() && Element()->IsVisible()
                   ? PlaceOnScreen(m_list.List(), PieceOf(Element(), m_piece)->GetRect())
                   : QRect();
    }
    [[nodiscard]] QAccessible::Role role() const override {
        return m_piece == kLink ? QAccessible::Link : QAccessible::Button;
    }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state;
        if (!isValid()) {
            state.invalid = true;
            return state;
        }
        state.disabled = !m_list.List().isEnabled() || !PieceOf(Element(), m_piece)->IsAvailable();
        state.invisible = !Element()->IsVisible() || !m_list.List().isVisible();
        return state;
    }
    void *interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface *>(this) : nullptr;
    }

    [[nodiscard]] QStringList actionNames() const override {
        return isValid() && !state().disabled ? QStringList{pressAction()} : QStringList{};
    }
    void doAction(QString const &name) override {
        if (actionNames().contains(name))
            m_list.List().Perform(static_cast<ThematicCommand>(PieceOf(Element(), m_piece)->GetID()), Element());
    }
    [[nodiscard]] QStringList keyBindingsForAction(QString const &) const override { return {}; }

private:
    [[nodiscard]] ThematicElement *Element() const {
        auto const life = m_life.lock();
        return life == nullptr ? nullptr : *life;
    }

    ThematicAccessible const &m_list; ///< deletes its parts
    std::weak_ptr<ThematicElement *const> m_life;
    unsigned m_piece;
};

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
    /// A group's items, then the pieces.
    [[nodiscard]] int childCount() const override { return NumItems() + static_cast<int>(PiecesOf(Element()).size()); }
    [[nodiscard]] QAccessibleInterface *child(int index) const override {
        if (index < 0 || index >= childCount())
            return nullptr;
        if (index < NumItems())
            return m_list.Part(Group()->Get(index));
        return m_list.Part(Element(), PiecesOf(Element())[static_cast<std::size_t>(index - NumItems())]);
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
        return isValid() && Element()->IsVisible() ? PlaceOnScreen(m_list.List(), Element()->GetRect()) : QRect();
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
        state.expandable = NumItems() > 0;
        state.expanded = Group() != nullptr && Group()->GetNumVsblItem() > 0;
        return state;
    }
    void *interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface *>(this) : nullptr;
    }

    [[nodiscard]] QStringList actionNames() const override {
        QStringList names;
        if (Item() != nullptr)
            names << pressAction();
        for (unsigned const piece : PiecesOf(Element()))
            if (piece != kLink && PieceOf(Element(), piece)->IsEnabled())
                names << NameOf(piece);
        return names;
    }
    void doAction(QString const &name) override {
        if (!isValid() || !actionNames().contains(name))
            return;
        if (name == pressAction())
            return m_list.List().Select(Element());
        for (ThematicCommand const command : {kThematicAdd, kThematicRemove, kThematicUp, kThematicDown})
            if (name == NameOf(command)) {
                m_list.List().Perform(command, Element());
                return;
            }
    }
    [[nodiscard]] QStringList keyBindingsForAction(QString const &) const override { return {}; }

private:
    [[nodiscard]] int NumItems() const { return Group() == nullptr ? 0 : Group()->GetNumItem(); }

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

void Tell(QAccessibleInterface *part, QAccessible::Event what) {
    if (part == nullptr)
        return;
    QAccessibleEvent event(part, what);
    platform::Announce(event);
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

void ThematicAccessible::SelectionChanged(TmtcListCtrl &list, ThematicElement *oldElmt, ThematicElement *newElmt) {
    ThematicAccessible const *const own = InterfaceOf(list);
    if (own == nullptr || oldElmt == newElmt)
        return;
    Tell(own->Part(oldElmt), QAccessible::SelectionRemove);
    Tell(own->Part(newElmt), QAccessible::Selection);
}

void ThematicAccessible::FocusMoved(TmtcListCtrl &list) {
    ThematicAccessible *const own = InterfaceOf(list);
    if (own == nullptr || !list.hasFocus())
        return;
    QAccessibleInterface *const part = own->Part(list.GetFocusElmt());
    Tell(part == nullptr ? own : part, QAccessible::Focus);
}

void ThematicAccessible::FocusEntered(TmtcListCtrl &list) {
    auto const tell = [&list] {
        if (list.GetFocusElmt() != nullptr)
            FocusMoved(list);
    };
    QMetaObject::invokeMethod(&list, tell, Qt::QueuedConnection);
}

void ThematicAccessible::Added(TmtcListCtrl &list, ThematicElement &elmt) {
    if (ThematicAccessible const *const own = InterfaceOf(list))
        Tell(own->Part(&elmt), QAccessible::ObjectCreated);
}

void ThematicAccessible::Leaving(TmtcListCtrl &list, ThematicElement &elmt) {
    if (ThematicAccessible const *const own = InterfaceOf(list))
        Tell(own->Part(&elmt), QAccessible::ObjectDestroyed);
}

void ThematicAccessible::ItemChanged(TmtcListCtrl &list, ThematicItem &item, ThematicGroup::ItemChange change) {
    using Change = ThematicGroup::ItemChange;
    ThematicAccessible *const own = InterfaceOf(list);
    if (own == nullptr)
        return;
    bool const hasFocus = list.GetFocusElmt() == &item;
    bool const isSelected = list.GetSlctElmt() == &item;
    if (change == Change::Leaving && isSelected)
        SelectionChanged(list, &item, nullptr);
    if (change != Change::Added)
        Leaving(list, item);
    if (change != Change::Leaving)
        Added(list, item);
    if (change == Change::Added && isSelected)
        SelectionChanged(list, nullptr, &item); // it comes from another group
    if (change == Change::Moved && hasFocus)
        FocusMoved(list); // readers took it for gone
    if (change != Change::Leaving || !hasFocus || std::exchange(own->m_isFocusDue, true))
        return;
    // Who takes it out may give the focus to another.
    auto const tell = [&list] {
        if (ThematicAccessible *const it = InterfaceOf(list))
            it->m_isFocusDue = false;
        if (list.GetFocusElmt() == nullptr)
            FocusMoved(list);
    };
    QMetaObject::invokeMethod(&list, tell, Qt::QueuedConnection);
}

QAccessibleInterface *ThematicAccessible::Part(ThematicElement *elmt, unsigned piece) const {
    if (elmt == nullptr)
        return nullptr;
    Made &made = m_parts[{elmt, piece}];
    if (made.id != 0 && made.life.expired()) {
        // Another element that lies where one was that is gone.
        QAccessible::deleteAccessibleInterface(made.id);
        made.id = 0;
    }
    if (made.id == 0) {
        made.life = elmt->Life();
        QAccessibleInterface *part = nullptr;
        if (piece == kWhole)
            part = new ElementAccessible(*this, *elmt);
        else
            part = new PieceAccessible(*this, *elmt, piece);
        made.id = QAccessible::registerAccessibleInterface(part);
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
