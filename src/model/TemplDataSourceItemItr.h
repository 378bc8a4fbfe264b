#pragma once

#include "zelvar/model/DataSourceItem.h"

namespace zelvar {

class TemplDataSourceItem;

/// Template data source item iterator: the children of a driver's node.
class TemplDataSourceItemItr : public DataSourceItemItr {
public:
    /// Lists containers, folders and what has a bit of `nodeMask`. False if the tree is not open.
    bool Fill(TemplDataSourceItem const &parent, DataSourceItem::ICancel *cancel, int nodeMask);
};

} // namespace zelvar
