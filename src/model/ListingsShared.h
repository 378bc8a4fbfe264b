#pragma once

#include "zelvar/model/DataSourceItem.h"
#include "zelvar/model/datasets/DataSetFolding.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace zelvar {

/// While one lives, on its thread: a folder of the file system that one walk has read to its end is not read again by
/// the next one with the same mask, driver and folding. Its children are then the same objects.
///
/// Of a folder on a server, whose listings go on behind the windows, see `Number`.
///
/// For several lists that show one folder: it lives as long as they are filled, not longer. Within another one it is
/// a part of that.
class ZELVAR_API ListingsShared {
public:
    struct Key {
        RefItemPtr<DataSourceItem> folder;
        DString filter;
        DString driverId;
        DataSetFolding folding{};
    };
    using Items = std::vector<RefItemPtr<DataSourceItem>>;

    ListingsShared();
    ~ListingsShared();
    ListingsShared(ListingsShared const &) = delete;
    ListingsShared &operator=(ListingsShared const &) = delete;

    /// The one of this thread, or null.
    [[nodiscard]] static ListingsShared *Current();
    /// What tells it from all others of this process, see `RequestScope::Together`; never 0.
    [[nodiscard]] std::uint64_t Number() const { return m_number; }
    /// Null if that has not been read.
    [[nodiscard]] Items const *Find(Key const &key) const;
    void Keep(Key key, Items items);

private:
    struct Listing {
        Key key;
        Items items;
    };
    std::vector<Listing> m_listings;
    bool m_isOuter;
    std::uint64_t m_number;
};

} // namespace zelvar
