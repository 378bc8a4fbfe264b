#pragma once

#include "zelvar/opends/places/FavoriteItem.h"

#include <QtCore/QObject>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QKeyEvent;
class QPoint;

namespace zelvar {

class DataSourceList;
class RowDrag;

/// What the dialog does about a favourite.
struct FavoriteActions {
    std::function<void(Favorite const &)> open;       ///< one that is no place
    std::function<void(Favorite const &)> openFolder; ///< what it lies in
};

/// The favourites of the data source list where they may be anything: their rows, their menu and their keys. Rows of
/// places list what is in them when they are selected; a click or Return opens the others. User-interface thread.
class FavoriteRows : public QObject {
    Q_OBJECT

public:
    /// Lives at most as long as the list.
    FavoriteRows(DataSourceList &list, FavoriteActions actions);
    ~FavoriteRows() override;

    /// The rows as the settings have them now. What was known of one before stays known.
    [[nodiscard]] std::vector<RefItemPtr<FavoriteItem>> Items();
    /// The menu of the selected favourite; false if none is selected.
    bool RunMenu(QPoint screenPoint);
    /// Keys of the selected favourite: F2 changes the name, Delete removes it, Alt with an arrow moves it. False for
    /// any other key.
    bool OnKey(QKeyEvent const &key);
    /// Opens the selected one behind the present event if it is no place; false otherwise.
    bool Activate();
    void Add(Favorite favorite);
    /// What it stands for was not found, or was.
    void SetDead(Favorite const &favorite, bool dead);
    /// Makes one stand before another, or at the end of all.
    void MoveBefore(Favorite const &favorite, std::optional<Favorite> const &next);

private:
    struct Entry;
    [[nodiscard]] static std::vector<Entry> const &Entries();
    [[nodiscard]] RefItemPtr<FavoriteItem> Selected() const;
    void Rename(Favorite const &favorite);
    void ChangeGroup(Favorite const &favorite);
    void Move(Favorite const &favorite, bool down);
    void Drop(int row, int beside, bool behind);
    void Remove(Favorite const &favorite);

    DataSourceList &m_list;
    FavoriteActions m_actions;
    std::vector<RefItemPtr<FavoriteItem>> m_items; ///< as they were listed last
    std::unique_ptr<RowDrag> m_drag;
};

} // namespace zelvar
