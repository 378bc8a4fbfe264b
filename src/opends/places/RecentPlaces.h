#pragma once

#include "zelvar/opends/places/PlaceHistory.h"

namespace zelvar {

/// A place that the user picked something in, and how it was left. A value.
struct RecentPlace {
    DString path{};
    PlaceView view{};
    friend bool operator==(RecentPlace const &, RecentPlace const &) = default;
};

/// As a line for the settings, and back; nothing for a text that is no such line. Addresses go out without passwords.
[[nodiscard]] DString ToSettingsText(RecentPlace const &place);
[[nodiscard]] std::optional<RecentPlace> RecentPlaceFrom(DString const &text);

/// The recent places of one kind of document in the user's settings, the latest first.
class RecentPlaces {
public:
    static constexpr std::size_t kMost = 20;
    static constexpr std::size_t kMostSelected = 20; ///< paths that are kept of a place

    explicit RecentPlaces(DString kind) : m_kind(std::move(kind)) {}
    /// Those of the present project come before the others of the kind.
    [[nodiscard]] std::vector<RecentPlace> Read() const;
    /// Those go before the ones that are there; a place is kept once. For the present project, too.
    void Add(std::vector<RecentPlace> const &latest) const;

private:
    [[nodiscard]] static std::vector<RecentPlace> ReadFrom(DString const &key);
    static void AddTo(DString const &key, std::vector<RecentPlace> const &latest);

    DString m_kind;
};

} // namespace zelvar
