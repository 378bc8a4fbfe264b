#include "zelvar/opends/FavoriteFinder.h"

#include "zelvar/model/DataSourceCollector.h"

#include <utility>

namespace zelvar {

std::shared_ptr<FavoriteFinder> FavoriteFinder::Start(std::vector<DString> paths) {
    std::shared_ptr<FavoriteFinder> finder(new FavoriteFinder(std::move(paths)));
    finder->m_self = finder;
    if (finder->DThread::Start())
        return finder;
    finder->m_self.reset();
    return nullptr;
}

void FavoriteFinder::TakeItems(std::list<RefItemPtr<DataSourceItem>> &items) {
    DSingleLock const lock(m_lock);
    items.splice(items.end(), m_found);
}

void FavoriteFinder::Release() {
    m_stop = true;
    Abandon(); // the thread holds this object until it has ended
}

void FavoriteFinder::Run() {
    // The last owner may be this thread.
    std::shared_ptr<FavoriteFinder> const self = std::move(m_self);
    for (DString const &path : m_paths) {
        if (m_stop)
            break;
        RefItemPtr<DataSourceItem> item = MakeFavorite(path);
        if (item == nullptr)
            continue;
        static_cast<void>(item->GetIconIndex()); // looked up here, not while the list paints
        DSingleLock const lock(m_lock);
        m_found.push_back(std::move(item));
    }
    m_running = false;
}

} // namespace zelvar
