#include "zelvar/opends/NewConnectionItem.h"

#include "zelvar/base/Translation.h"

namespace zelvar {

DString NewConnectionItem::GetName() const { return Translated("New connection..."); }

RefItemPtr<DataSourceItem> NewConnectionItem::Clone() { return RefItemPtr<DataSourceItem>(new NewConnectionItem); }

bool IsNewConnection(DataSourceItem const *item) { return dynamic_cast<NewConnectionItem const *>(item) != nullptr; }

} // namespace zelvar
