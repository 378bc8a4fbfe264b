#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/SystemTime.h"

#include <cstdint>
#include <vector>

namespace zelvar {

/// What a listing is ordered by. The numbers are those of the list's columns plus one.
enum class ListingSort : std::int32_t {
    None = 0, ///< in order of arrival
    Name = 1,
    Size = 2,
    Date = 3,
};

/// What ordering has to know of an item; only what the sort key asks for needs to be filled in.
struct ListingFacts {
    DString name{};
    bool isFileSystem = false; ///< the others come first in size and date order, as they arrived
    std::int64_t size = -1;    ///< bytes, -1 if unknown
    bool hasTime = false;
    SystemTime time{};
};

/// A row and the number of the item that belongs there at the moment of its insertion.
struct PlacedItem {
    std::int32_t row = 0;
    std::uint32_t item = 0;

    friend bool operator==(PlacedItem const &, PlacedItem const &) = default;
};

/// Keeps the items of a listing in order and tells their rows.
///
/// Items are numbered as they arrive. Keys are made once an item; a batch of arrivals is sorted by itself and merged in
/// one pass, so a listing costs one sort, whatever its size. Among equals a later arrival comes behind the earlier
/// ones; descending is the same order counted from its end. One thread at a time.
class ZELVAR_API ListingOrder {
public:
    /// Forgets all items.
    void Reset(ListingSort sort, bool ascending);
    /// Numbers from 0 on.
    void Add(ListingFacts const &facts);
    /// Appends the rows of the items added since the last call. Inserted one after the other, each at its row, they
    /// stand where they belong among those placed before.
    void Place(std::vector<PlacedItem> &out);

    [[nodiscard]] std::size_t Count() const { return m_count; }
    [[nodiscard]] std::size_t WaitingCount() const { return m_count - m_order.size(); }
    [[nodiscard]] ListingSort Sort() const { return m_sort; }
    /// Numbers of all items in ascending order, whatever the direction; those not placed yet are placed.
    [[nodiscard]] std::vector<std::uint32_t> const &AscendingOrder();

private:
    /// Where an item's key lies: a number, or bytes in the pool.
    struct Key {
        std::uint64_t number = 0; ///< the key itself, or the offset in `m_pool`
        std::uint32_t length = 0; ///< bytes in `m_pool`
    };
    [[nodiscard]] std::string_view Bytes(std::uint32_t item) const;
    [[nodiscard]] bool Less(std::uint32_t a, std::uint32_t b) const;
    void SortArrivals(std::vector<std::uint32_t> &arrivals) const;
    void SortByBytes(std::vector<std::uint32_t> &arrivals) const;
    /// Merges `arrivals` into `m_order` and yields their positions in it, ascending.
    std::vector<std::uint32_t> Merge(std::vector<std::uint32_t> const &arrivals);

    ListingSort m_sort = ListingSort::None;
    bool m_ascending = true;
    std::size_t m_count = 0;
    std::vector<Key> m_keys;            ///< by number; empty without a sort key
    std::string m_pool;                 ///< name keys, one behind the other
    std::vector<std::uint32_t> m_order; ///< numbers in ascending order
};

} // namespace zelvar
