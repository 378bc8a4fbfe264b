#include "zelvar/thematic/TmtcListCtrl.h"

#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/thematic/ThematicAccessible.h"

#include <QtGui/QGuiApplication>

#include <algorithm>

namespace zelvar {

namespace {

constexpr int kLeft = 1; // pixels
constexpr int kTop = 2;
constexpr int kGap = 2;

} // namespace

TmtcListCtrl::TmtcListCtrl(QWidget *parent) : QWidget(parent), m_font(QGuiApplication::font()) {
    ThematicAccessible::Install();
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    setWindowTitle(platform::Shown("Thematic List Control"));
}

TmtcListCtrl::~TmtcListCtrl() {
    ThematicAccessible::Forget(*this);
    for (Elmt *const elmt : m_elements)
        delete elmt;
}

int TmtcListCtrl::Create(unsigned long style, Rect const &rect, QWidget *parent, unsigned id) {
    static_cast<void>(style);
    if (parent == nullptr)
        return 0;
    setParent(parent);
    setGeometry(rect.left, rect.top, rect.Width(), rect.Height());
    platform::SetDlgCtrlID(*this, static_cast<int>(id));
    show();
    return 1;
}

TmtcListCtrl::Elmt *TmtcListCtrl::Of(Watched const &watched) {
    auto const life = watched.lock();
    return life == nullptr ? nullptr : *life;
}

void TmtcListCtrl::Watch(Watched &watched, Elmt *elmt) { watched = elmt == nullptr ? Watched() : elmt->Life(); }

TmtcListCtrl::Elmt *TmtcListCtrl::GetSlctElmt() const { return Of(m_selected); }
TmtcListCtrl::Item *TmtcListCtrl::GetSlctItem() const { return dynamic_cast<Item *>(Of(m_selected)); }
TmtcListCtrl::Elmt *TmtcListCtrl::GetFocusElmt() const { return Of(m_focus); }
bool TmtcListCtrl::IsGroup(Elmt const *elmt) { return dynamic_cast<Group const *>(elmt) != nullptr; }
bool TmtcListCtrl::IsItem(Elmt const *elmt) { return dynamic_cast<Item const *>(elmt) != nullptr; }

void TmtcListCtrl::OnSlctChng(Elmt *oldElmt, Elmt *newElmt) {
    Watch(m_selected, newElmt);
    if (oldElmt != nullptr)
        oldElmt->SetSelected(false);
    if (newElmt != nullptr)
        newElmt->SetSelected(true);
    ThematicAccessible::SelectionChanged(*this, oldElmt, newElmt);
}

void TmtcListCtrl::OnRmvItem(Group *group, Item *item) {
    if (group == nullptr) {
        if (item == nullptr)
            return;
        if (item == GetSlctElmt())
            OnSlctChng(item, nullptr);
        Rmv(item);
        return;
    }
    if (item == nullptr)
        return;
    Elmt *next = group->FindRplcItem(item);
    if (next == nullptr && group->GetNumItem() > 1) {
        auto const at = std::find(m_elements.begin(), m_elements.end(), group);
        Elmt *const behind = at == m_elements.end() || at + 1 == m_elements.end() ? nullptr : *(at + 1);
        auto *const behindGroup = dynamic_cast<Group *>(behind);
        next = behindGroup == nullptr ? behind : behindGroup->FindRplcItem(nullptr);
    }
    if (auto *const nextItem = dynamic_cast<Item *>(next)) {
        nextItem->RemoveButton().SetState(ThematicButtonBase::kHovered);
        update();
        Watch(m_replacement, nextItem);
    } else if (Of(m_replacement) == item) {
        m_replacement.reset();
    }
    if (item == GetSlctElmt())
        OnSlctChng(item, nullptr);
    group->RmvItem(item, true);
    update();
}

TmtcListCtrl::Item *TmtcListCtrl::OnAddToGroup(Group *group) {
    static_cast<void>(group);
    return nullptr;
}

bool TmtcListCtrl::OnMoveItem(Group *group, Item *item, bool up) {
    if (group == nullptr || item == nullptr)
        return false;
    bool const moved = group->MoveItem(item, up);
    update();
    return moved;
}

void TmtcListCtrl::AddTail(Elmt *elmt) { AddPos(GetNumElmt(), elmt); }

void TmtcListCtrl::AddPos(int pos, Elmt *elmt) {
    if (elmt == nullptr)
        return;
    m_elements.insert(m_elements.begin() + std::clamp(pos, 0, GetNumElmt()), elmt);
    if (auto *const group = dynamic_cast<Group *>(elmt))
        group->WatchItems(
            [this](Item &item, Group::ItemChange change) { ThematicAccessible::ItemChanged(*this, item, change); });
    ThematicAccessible::Added(*this, *elmt);
    if (GetSlctElmt() == nullptr && IsItem(elmt)) {
        elmt->SetSelected(true);
        Watch(m_selected, elmt);
        OnSlctChng(nullptr, elmt);
    }
    update();
}

TmtcListCtrl::Elmt *TmtcListCtrl::Get(int index) const {
    return index >= 0 && index < GetNumElmt() ? m_elements[static_cast<std::size_t>(index)] : nullptr;
}

bool TmtcListCtrl::Holds(Elmt const *elmt, Elmt const *other) {
    auto const *const group = dynamic_cast<Group const *>(elmt);
    return elmt == other || (group != nullptr && group->HasItem(dynamic_cast<Item const *>(other)));
}

/// The selection never rests on what is not in the list.
void TmtcListCtrl::LetGoOf(Elmt *elmt) {
    Elmt *const selected = GetSlctElmt();
    if (selected == nullptr || !Holds(elmt, selected))
        return;
    m_selected.reset();
    OnSlctChng(IsItem(selected) ? selected : nullptr, nullptr);
}

TmtcListCtrl::Elmt *TmtcListCtrl::TakeOut(int index) {
    Elmt *const elmt = Get(index);
    if (elmt == nullptr)
        return nullptr;
    ThematicAccessible::Leaving(*this, *elmt);
    if (auto *const group = dynamic_cast<Group *>(elmt))
        group->WatchItems({});
    m_elements.erase(m_elements.begin() + index);
    LetGoOf(elmt);
    update();
    return elmt;
}

TmtcListCtrl::Elmt *TmtcListCtrl::RmvHead() { return TakeOut(0); }
TmtcListCtrl::Elmt *TmtcListCtrl::RmvTail() { return TakeOut(GetNumElmt() - 1); }

void TmtcListCtrl::Rmv(Elmt *elmt) {
    auto const at = std::find(m_elements.begin(), m_elements.end(), elmt);
    if (at != m_elements.end())
        delete TakeOut(static_cast<int>(at - m_elements.begin()));
}

TmtcListCtrl::Group *TmtcListCtrl::FindGroup(Item const *item) const {
    for (Elmt *const elmt : m_elements)
        if (auto *const group = dynamic_cast<Group *>(elmt); group != nullptr && group->HasItem(item))
            return group;
    return nullptr;
}

TmtcListCtrl::Group *TmtcListCtrl::FindGroup(DString const &id) const {
    for (Elmt *const elmt : m_elements)
        if (auto *const group = dynamic_cast<Group *>(elmt); group != nullptr && group->GetID() == id)
            return group;
    return nullptr;
}

TmtcListCtrl::Item *TmtcListCtrl::GetNextItem(Item const *item, bool visibleOnly, bool backward) const {
    std::vector<Item *> items;
    auto const add = [&](Item *candidate) {
        if (candidate != nullptr && (!visibleOnly || candidate->IsVisible() || candidate == item))
            items.push_back(candidate);
    };
    for (Elmt *const elmt : m_elements) {
        if (auto *const group = dynamic_cast<Group *>(elmt); group != nullptr)
            std::for_each(group->Items().begin(), group->Items().end(), add);
        else
            add(dynamic_cast<Item *>(elmt));
    }
    if (backward)
        std::reverse(items.begin(), items.end());
    if (item == nullptr)
        return backward || items.empty() ? nullptr : items.front();
    auto const at = std::find(items.begin(), items.end(), item);
    return at == items.end() || at + 1 == items.end() ? nullptr : *(at + 1);
}

bool TmtcListCtrl::MoveElmnt(Elmt *elmt, bool up) {
    auto const at = std::find(m_elements.begin(), m_elements.end(), elmt);
    if (at == m_elements.end() || !IsGroup(elmt) || (up ? at == m_elements.begin() : at + 1 == m_elements.end()))
        return false;
    auto const other = up ? at - 1 : at + 1;
    if (!IsGroup(*other))
        return false;
    std::iter_swap(at, other);
    return true;
}

// NOLINTNEXTLINE(readability-convert-member-functions-to-static): an operation of a list
void TmtcListCtrl::ShowElement(Elmt const *elmt, bool show) { static_cast<void>(elmt), static_cast<void>(show); }

void TmtcListCtrl::RepositionItems() {
    Rect r{kLeft, kTop, width(), height()};
    for (Elmt *const elmt : m_elements) {
        if (elmt->IsVisible())
            r.bottom = r.top + elmt->ComputeHeight();
        elmt->SetMirror(isRightToLeft() ? width() : 0);
        elmt->SetRect(elmt->Mirrored(r));
        elmt->RepositionElmts();
        if (elmt->IsVisible())
            r.top = r.bottom + kGap;
    }
}

int TmtcListCtrl::GetContentHeight() const {
    int bottom = kTop;
    for (Elmt const *const elmt : m_elements)
        bottom += elmt->IsVisible() ? elmt->ComputeHeight() + kGap : 0;
    return bottom;
}

bool TmtcListCtrl::HitTest(Point const &point, HITTEST *hit) const {
    *hit = {};
    return std::any_of(m_elements.begin(), m_elements.end(),
                       [&](Elmt *elmt) { return elmt->IsVisible() && elmt->HitTest(point, hit); });
}

void TmtcListCtrl::SetListFont(QFont const &font) {
    m_font = font;
    update();
}

void TmtcListCtrl::SetKeyboardControl(bool on) {
    m_isKeyboardOn = on;
    setFocusPolicy(on ? Qt::StrongFocus : Qt::NoFocus);
}

std::vector<TmtcListCtrl::Elmt *> TmtcListCtrl::InOrder() const {
    std::vector<Elmt *> order;
    for (Elmt *const elmt : m_elements) {
        if (!elmt->IsVisible())
            continue;
        order.push_back(elmt);
        if (auto const *const group = dynamic_cast<Group const *>(elmt))
            for (Item *const item : group->Items())
                if (item != nullptr && item->IsVisible())
                    order.push_back(item);
    }
    return order;
}

} // namespace zelvar
