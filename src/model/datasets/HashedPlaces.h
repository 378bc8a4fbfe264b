#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace zelvar {

/// Places by the hash of what is there: a table in one piece, for the hundred thousand names of one question.
class HashedPlaces {
public:
    using Place = std::uint32_t;
    static constexpr Place kNone = ~Place{0};

    /// For at most that many different keys.
    explicit HashedPlaces(std::size_t most) : m_slots(std::bit_ceil(2 * most + 1)) {}

    /// The place that is kept for a key, `kNone` if there is none. `isSame` tells of a place with such a hash whether
    /// it is kept for the key.
    template <class IsSame>
    [[nodiscard]] Place Find(std::uint64_t hash, IsSame const &isSame) const {
        return m_slots[SlotOf(hash, isSame)].place;
    }
    /// The same, to be written; a new key must be.
    template <class IsSame>
    [[nodiscard]] Place &At(std::uint64_t hash, IsSame const &isSame) {
        Slot &slot = m_slots[SlotOf(hash, isSame)];
        slot.tag = TagOf(hash);
        return slot.place;
    }

private:
    struct Slot {
        std::uint32_t tag = 0; ///< of the key's hash, so that others are passed without a look at their names
        Place place = kNone;
    };
    static std::uint32_t TagOf(std::uint64_t hash) { return static_cast<std::uint32_t>(hash >> 32U); }

    template <class IsSame>
    [[nodiscard]] std::size_t SlotOf(std::uint64_t hash, IsSame const &isSame) const {
        std::size_t const last = m_slots.size() - 1;
        std::size_t at = static_cast<std::size_t>(hash) & last;
        while (m_slots[at].place != kNone && !(m_slots[at].tag == TagOf(hash) && isSame(m_slots[at].place)))
            at = (at + 1) & last;
        return at;
    }

    std::vector<Slot> m_slots;
};

} // namespace zelvar
