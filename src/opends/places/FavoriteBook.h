#pragma once

#include "zelvar/base/DString.h"

#include <optional>
#include <vector>

namespace zelvar {

/// Something that the user wants to come back to. A value.
struct Favorite {
    enum class Kind {
        Place,  ///< folder, container, connection or address: what is in it is listed
        Data,   ///< file, node or table: it is selected where it lies
        Basket, ///< a file of monikers
        Search,
    };
    Kind kind = Kind::Place;
    DString target{};       ///< path or moniker; of a search its words
    DString name{};         ///< that the user gave it; empty for what the target is called
    DString group{};        ///< heading that it stands under; empty for that of all favourites
    bool ofProject = false; ///< kept for the present project alone

    /// What a list shows. No place is touched for it.
    [[nodiscard]] DString ShownName() const;
    /// The same thing, whatever it is called, and kept for the same.
    [[nodiscard]] bool IsOf(Favorite const &other) const;
    [[nodiscard]] bool IsSameThing(Favorite const &other) const;
    friend bool operator==(Favorite const &, Favorite const &) = default;
};

/// The user's favourites of all kinds, in their order, those of the present project before all others. What is added
/// while a project is set is kept for it. The other places among them are those of `Favorites`, which other
/// programs read and write: what one of these adds stands at the end here, what it removes is gone. Names, groups,
/// order and all else stand beside. Each call reads the settings anew and writes in one transaction.
class FavoriteBook {
public:
    [[nodiscard]] static std::vector<Favorite> Read();
    /// At the end; nothing if it is there.
    static void Add(Favorite favorite);
    static void Remove(Favorite const &favorite);
    /// Gives it another name and group.
    static void Change(Favorite const &favorite, DString const &name, DString const &group);
    /// Makes it stand before `next`, in the group of that, or with nothing at the end of all, in its own.
    static void MoveBefore(Favorite const &favorite, std::optional<Favorite> const &next);
};

} // namespace zelvar
