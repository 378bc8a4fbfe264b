#pragma once

#include "zelvar/data/StopSignal.h"
#include "zelvar/model/DataSourceItem.h"
#include "zelvar/search/FactsStore.h"

#include <functional>
#include <vector>

namespace zelvar {

/// Something that was found.
struct SearchHit {
    RefItemPtr<DataSourceItem> item;
    std::optional<ItemFacts> facts{}; ///< where the query needed them
};

/// How far a search has come.
struct SearchProgress {
    std::int64_t folders = 0; ///< that were read, and containers that were looked into
    std::int64_t asked = 0;   ///< files that were opened, or whose facts were known
    std::int64_t hits = 0;
    std::int64_t unread = 0;     ///< folders that could not be read, or not to their end
    DString firstUnread{};       ///< path of the first of them
    std::error_code firstWhy{};  ///< and why
    std::int64_t leftRemote = 0; ///< places on a network that were not entered
};

/// Searches below a place, breadth first: folders by the names in them, files that a query by facts means by readers,
/// several at once, or by what a `FactsStore` knows. A folder that a link leads to is entered once; one that is a data
/// set is found like a file and not entered. Items that are told are not touched by the search any more. A file that
/// was found counts as a plain one until somebody asks what lies in it, unless the query looks into containers.
class ZELVAR_API Search {
public:
    using OnHit = std::function<void(SearchHit &&)>;
    using OnProgress = std::function<void(SearchProgress const &)>;

    /// `store` may be null, is not owned and must outlive this.
    Search(SearchQuery query, FactsStore *store);

    /// Returns when all was searched, or soon after `stop` was set. `onHit` is called from several threads, one at a
    /// time; `onProgress`, which may be empty, on this one, folder by folder. Not on a window's thread.
    [[nodiscard]] SearchProgress Run(RefItemPtr<DataSourceItem> const &place, StopSignal const &stop,
                                     OnHit const &onHit, OnProgress const &onProgress = {}) const;
    /// The same below several places, one level of all of them after the other. Null places are passed over.
    [[nodiscard]] SearchProgress Run(std::vector<RefItemPtr<DataSourceItem>> const &places, StopSignal const &stop,
                                     OnHit const &onHit, OnProgress const &onProgress = {}) const;

private:
    SearchQuery m_query;
    FactsStore *m_store;
};

} // namespace zelvar
