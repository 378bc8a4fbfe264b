#pragma once

#include "zelvar/data/BDIDrvr.h"
#include "zelvar/model/DataSourceItem.h"

#include <memory>
#include <vector>

namespace zelvar {

class TemplDataSourceItem;

/// Template data source item iterator: the children of a driver's node. Where the driver gives them in parts so does
/// this: `Next` behind the last child of a part asks for the next one, and may wait for a server.
///
/// It ends before the item that it lists.
class TemplDataSourceItemItr : public DataSourceItemItr {
public:
    TemplDataSourceItemItr();
    ~TemplDataSourceItemItr() override;
    /// Lists containers, folders and what has a bit of `nodeMask`, up to the end of the first part. False if the tree
    /// is not open. `cancel` is asked between children and parts for as long as this lives; null for nobody. `names`: a
    /// mask that the driver may regard.
    bool Fill(TemplDataSourceItem const &parent, DataSourceItem::ICancel *cancel, int nodeMask, char const *names);
    void First() override;
    void Next() override;

private:
    struct Walk;
    void FetchPart();
    /// Until there is a child where the cursor stands, or none can come.
    void FetchToCursor();
    void Take(std::vector<BDINode *> const &nodes);

    std::unique_ptr<Walk> m_walk; ///< null at the end
};

} // namespace zelvar
