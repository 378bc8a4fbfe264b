#pragma once

#include "zelvar/model/DataSourceItem.h"
#include "zelvar/opends/places/FavoriteBook.h"

namespace zelvar {

/// The row of a favourite. It touches no place before somebody wants what it stands for, and remembers when that was
/// not there. It holds nothing itself: lists show its target. User-interface thread.
class FavoriteItem final : public DataSourceItem {
public:
    explicit FavoriteItem(Favorite favorite);

    [[nodiscard]] Favorite const &Entry() const { return m_favorite; }
    void SetEntry(Favorite favorite) { m_favorite = std::move(favorite); }
    /// What a place stands for, looked for at the first call and after a failure; null if it is not there. May take as
    /// long as the place does, a connection to a server excepted, which is opened by whoever needs it. Null for all
    /// that is no place.
    [[nodiscard]] RefItemPtr<DataSourceItem> Resolve();
    /// What `Resolve` has found; null before.
    [[nodiscard]] RefItemPtr<DataSourceItem> const &Target() const { return m_target; }
    [[nodiscard]] bool IsDead() const { return m_isDead; }
    void SetDead(bool dead) { m_isDead = dead; }

    void SetName(DString const &) override {}
    [[nodiscard]] DString GetName() const override { return m_favorite.ShownName(); }
    [[nodiscard]] DString GetPath() const override { return m_favorite.target; }
    DataSourceItemItr *CreateIterator(ICancel *, char const *, char const *, int, DLGTemplate) override {
        return nullptr;
    }
    void DeleteIterator(DataSourceItemItr *itr) override { delete itr; }
    RefItemPtr<DataSourceItem> GetParent() override { return nullptr; }
    RefItemPtr<DataSourceItem> Clone() override;
    [[nodiscard]] bool IsFolder() const override { return m_favorite.kind == Favorite::Kind::Place; }
    [[nodiscard]] bool IsFile(int) const override { return false; }
    [[nodiscard]] DataSourceType GetDataSourceType() const override { return DST_UNKNOWN; }

private:
    Favorite m_favorite;
    RefItemPtr<DataSourceItem> m_target;
    bool m_isDead = false;
};

} // namespace zelvar
