#include "zelvar/opends/places/FavoriteItem.h"

#include "zelvar/model/DataSourceCollector.h"
#include "zelvar/model/NtwDataSourceItem.h"

#include <utility>

namespace zelvar {

namespace {

constexpr int kPictures = 4;

/// One picture a kind, in the order of `Favorite::Kind`.
ImageList &Pictures() {
    static ImageList &pictures = *[] {
        auto *const list = new ImageList;
        for (char const *const name : {"folder", "image", "basket", "recursive"})
            list->Add({.kind = ImageDescription::Kind::Strip, .name = name, .fallback = ""});
        return list;
    }();
    return pictures;
}

} // namespace

FavoriteItem::FavoriteItem(Favorite favorite) : m_favorite(std::move(favorite)) {
    static_assert(static_cast<int>(Favorite::Kind::Search) == kPictures - 1);
    SetOwnIcon(&Pictures(), static_cast<int>(m_favorite.kind));
}

RefItemPtr<DataSourceItem> FavoriteItem::Resolve() {
    if (m_favorite.kind != Favorite::Kind::Place || (m_target != nullptr && !m_isDead))
        return m_target;
    m_target = MakeFavorite(m_favorite.target);
    auto const *const place = dynamic_cast<NtwDataSourceItem const *>(m_target.get());
    m_isDead = m_target == nullptr || (place != nullptr && place->IsUnreachable());
    if (m_isDead)
        m_target.reset();
    return m_target;
}

RefItemPtr<DataSourceItem> FavoriteItem::Clone() {
    RefItemPtr<FavoriteItem> clone(new FavoriteItem(m_favorite));
    clone->m_target = m_target;
    clone->m_isDead = m_isDead;
    return clone;
}

} // namespace zelvar
