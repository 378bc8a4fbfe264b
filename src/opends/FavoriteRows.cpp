#include "zelvar/opends/FavoriteRows.h"

#include "zelvar/base/Translation.h"
#include "zelvar/opends/DataSourceList.h"
#include "zelvar/opends/TextQuestion.h"
#include "zelvar/platform/ui/ModalLoop.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/views/RowDrag.h"

#include <QtCore/QPointer>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QMenu>

#include <algorithm>
#include <utility>

namespace zelvar {

namespace {

/// Null for a row that is none.
RefItemPtr<FavoriteItem> FavoriteAt(DataSourceList const &list, int row) {
    return RefItemPtr<FavoriteItem>(dynamic_cast<FavoriteItem *>(list.ItemAt(row).get()));
}

} // namespace

/// A line of the menu, and its key.
struct FavoriteRows::Entry {
    char const *text;
    QKeySequence key; ///< empty for none
    void (*run)(FavoriteRows &rows, Favorite const &favorite);
};

std::vector<FavoriteRows::Entry> const &FavoriteRows::Entries() {
    using Rows = FavoriteRows;
    static std::vector<Entry> const entries{
        {Mark("Open"),
         {},
         [](Rows &rows, Favorite const &) {
             if (!rows.Activate())
                 rows.m_list.ResetSelectedItems();
         }},
        {Mark("Open Containing Folder"),
         {},
         [](Rows &rows, Favorite const &favorite) { rows.m_actions.openFolder(favorite); }},
        {Mark("Rename..."), Qt::Key_F2, [](Rows &rows, Favorite const &favorite) { rows.Rename(favorite); }},
        {Mark("Group..."), {}, [](Rows &rows, Favorite const &favorite) { rows.ChangeGroup(favorite); }},
        {Mark("Move Up"), Qt::ALT | Qt::Key_Up,
         [](Rows &rows, Favorite const &favorite) { rows.Move(favorite, false); }},
        {Mark("Move Down"), Qt::ALT | Qt::Key_Down,
         [](Rows &rows, Favorite const &favorite) { rows.Move(favorite, true); }},
        {Mark("Delete Favorite"), Qt::Key_Delete, [](Rows &rows, Favorite const &favorite) { rows.Remove(favorite); }},
    };
    return entries;
}

FavoriteRows::FavoriteRows(DataSourceList &list, FavoriteActions actions)
    : m_list(list), m_actions(std::move(actions)),
      m_drag(std::make_unique<RowDrag>(
          list, RowDrag::Rule{.isMovable = [this](int row) { return FavoriteAt(m_list, row) != nullptr; },
                              .nameOf = [this](int row) { return m_list.ItemAt(row)->GetPath(); },
                              .drop = [this](int row, int beside, bool behind) { Drop(row, beside, behind); }})) {}

FavoriteRows::~FavoriteRows() = default;

std::vector<RefItemPtr<FavoriteItem>> FavoriteRows::Items() {
    std::vector<RefItemPtr<FavoriteItem>> items;
    for (Favorite &favorite : FavoriteBook::Read()) {
        auto const former = std::find_if(m_items.begin(), m_items.end(), [&](RefItemPtr<FavoriteItem> const &item) {
            return item->Entry().IsOf(favorite);
        });
        if (former != m_items.end()) {
            (*former)->SetEntry(std::move(favorite));
            items.push_back(*former);
        } else {
            items.emplace_back(new FavoriteItem(std::move(favorite)));
        }
    }
    m_items = items;
    return items;
}

RefItemPtr<FavoriteItem> FavoriteRows::Selected() const {
    return FavoriteAt(m_list, m_list.GetNextItem(-1, LVNI_SELECTED));
}

bool FavoriteRows::RunMenu(QPoint screenPoint) {
    RefItemPtr<FavoriteItem> const item = Selected();
    if (item == nullptr)
        return false;
    QMenu menu(&m_list);
    std::vector<QAction *> actions;
    for (Entry const &entry : Entries()) {
        bool const retries = item->IsDead() && &entry == &Entries().front();
        actions.push_back(menu.addAction(platform::Shown(retries ? Mark("Retry") : entry.text)));
        actions.back()->setShortcut(entry.key);
        actions.back()->setShortcutVisibleInContextMenu(true);
    }
    QPointer<FavoriteRows> const self(this);
    auto const chosen = std::find(actions.begin(), actions.end(), platform::RunMenu(menu, screenPoint));
    if (chosen != actions.end() && !self.isNull())
        Entries()[static_cast<std::size_t>(chosen - actions.begin())].run(*this, Favorite(item->Entry()));
    return true;
}

bool FavoriteRows::OnKey(QKeyEvent const &key) {
    RefItemPtr<FavoriteItem> const item = Selected();
    if (item == nullptr)
        return false;
    Qt::KeyboardModifiers const modifiers = key.modifiers() & ~Qt::KeypadModifier;
    QKeySequence const pressed(QKeyCombination(modifiers, static_cast<Qt::Key>(key.key())));
    auto const entry = std::find_if(Entries().begin(), Entries().end(),
                                    [&](Entry const &known) { return !known.key.isEmpty() && known.key == pressed; });
    if (entry == Entries().end())
        return false;
    entry->run(*this, Favorite(item->Entry()));
    return true;
}

bool FavoriteRows::Activate() {
    RefItemPtr<FavoriteItem> const item = Selected();
    if (item == nullptr || item->IsFolder())
        return false;
    QMetaObject::invokeMethod(
        this, [this, favorite = item->Entry()] { m_actions.open(favorite); }, Qt::QueuedConnection);
    return true;
}

void FavoriteRows::Add(Favorite favorite) {
    FavoriteBook::Add(std::move(favorite));
    m_list.ListFavoritesAgain();
}

void FavoriteRows::SetDead(Favorite const &favorite, bool dead) {
    for (RefItemPtr<FavoriteItem> const &item : m_items)
        if (item->Entry().IsOf(favorite))
            item->SetDead(dead);
    m_list.viewport()->update();
}

void FavoriteRows::Rename(Favorite const &favorite) {
    QPointer<FavoriteRows> const self(this);
    std::optional<DString> const name =
        AskForText(m_list.window(), Mark("Rename Favorite"), Mark("Name (empty for its own)"), favorite.ShownName());
    if (!name || self.isNull())
        return;
    Favorite const unnamed{favorite.kind, favorite.target};
    FavoriteBook::Change(favorite, *name == unnamed.ShownName() ? DString() : *name, favorite.group);
    m_list.ListFavoritesAgain();
}

void FavoriteRows::ChangeGroup(Favorite const &favorite) {
    std::vector<DString> groups;
    for (RefItemPtr<FavoriteItem> const &item : m_items)
        if (DString const &group = item->Entry().group; std::find(groups.begin(), groups.end(), group) == groups.end())
            groups.push_back(group);
    if (groups.empty() || !groups.front().empty())
        groups.insert(groups.begin(), DString());
    QPointer<FavoriteRows> const self(this);
    std::optional<DString> const group = AskForText(m_list.window(), Mark("Group of the Favorite"),
                                                    Mark("Group (empty for none)"), favorite.group, groups);
    if (!group || self.isNull())
        return;
    FavoriteBook::Change(favorite, favorite.name, *group);
    m_list.ListFavoritesAgain();
}

void FavoriteRows::Move(Favorite const &favorite, bool down) {
    std::vector<Favorite> group; // those under the same heading
    for (RefItemPtr<FavoriteItem> const &item : m_items)
        if (item->Entry().group == favorite.group && item->Entry().ofProject == favorite.ofProject)
            group.push_back(item->Entry());
    auto const at =
        std::find_if(group.begin(), group.end(), [&](Favorite const &other) { return other.IsOf(favorite); });
    auto const row = at - group.begin();
    auto const count = static_cast<std::ptrdiff_t>(group.size());
    if (down ? row + 1 >= count : row == 0)
        return;
    std::ptrdiff_t const next = down ? row + 2 : row - 1;
    MoveBefore(favorite, next < count ? std::optional(group[static_cast<std::size_t>(next)]) : std::nullopt);
}

void FavoriteRows::MoveBefore(Favorite const &favorite, std::optional<Favorite> const &next) {
    FavoriteBook::MoveBefore(favorite, next);
    m_list.ListFavoritesAgain();
}

/// Among the favourites of another heading it becomes one of them.
void FavoriteRows::Drop(int row, int beside, bool behind) {
    RefItemPtr<FavoriteItem> const item = FavoriteAt(m_list, row);
    RefItemPtr<FavoriteItem> const mark = FavoriteAt(m_list, beside);
    if (item == nullptr || mark == nullptr || item == mark)
        return;
    Favorite const favorite = item->Entry();
    Favorite const place = mark->Entry();
    std::optional<Favorite> next;
    if (!behind)
        next = place;
    bool isPassed = false;
    for (RefItemPtr<FavoriteItem> const &other : m_items) {
        if (behind && isPassed && !next && other->Entry().group == place.group && other != item)
            next = other->Entry();
        isPassed = isPassed || other == mark;
    }
    if (!next && place.group != favorite.group && place.ofProject == favorite.ofProject)
        FavoriteBook::Change(favorite, favorite.name, place.group);
    MoveBefore(favorite, next);
}

void FavoriteRows::Remove(Favorite const &favorite) {
    FavoriteBook::Remove(favorite);
    m_list.ListFavoritesAgain();
}

} // namespace zelvar
