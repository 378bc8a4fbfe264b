#pragma once

#include "zelvar/model/DataSourceItem.h"

#include <list>
#include <vector>

namespace zelvar {

class DSListCtrl;

/// The name without some of its options, as it may be called in a list: the whole first, then without the last option
/// and so on, down to what stands before "?".
[[nodiscard]] std::vector<DString> WithFewerOptions(DString const &moniker);

/// A row that is to be selected once it is listed, which on a server is behind the window. What the user selects there
/// meanwhile goes before. User-interface thread.
class WantedRow {
public:
    /// Of the item that the moniker opens, which may have options behind its path. The place that it lies in was asked
    /// for, or is about to be.
    void Want(DString const &moniker, DSListCtrl const &list);
    /// To be called a few times a second. `mayCome`: rows of the place are still to come.
    void Update(DSListCtrl &list, bool mayCome);

private:
    using ItemList = std::list<RefItemPtr<DataSourceItem>>;
    std::vector<DString> m_names; ///< empty for none
    ItemList m_before;            ///< whose children were listed when it was wanted
    ItemList m_looked;            ///< whose rows were looked through last
    int m_rows = -1;              ///< how many these were
    int m_quiet = 0;              ///< how often in turn no more rows were to come
};

} // namespace zelvar
