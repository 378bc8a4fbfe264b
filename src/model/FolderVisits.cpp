#include "zelvar/model/FolderVisits.h"

#include "zelvar/model/NtwDataSourceItem.h"

namespace zelvar {

bool FolderVisits::Enter(DataSourceItem const &folder) {
    auto const *const item = dynamic_cast<NtwDataSourceItem const *>(&folder);
    if (item == nullptr || item->GetType() != NtwDataSourceItem::TYPE_FOLDER)
        return true;
    std::optional<platform::FolderIdentity> const identity =
        platform::ShellNamespace::Current().IdentityOf(item->GetId());
    return !identity || m_entered.insert(*identity).second || !(item->IsLink() || identity->mayBeLink);
}

} // namespace zelvar
