#pragma once

#include "zelvar/data/OpenImage.h"
#include "zelvar/data/SeriesPlace.h"

#include <chrono>

namespace zelvar {

/// What all members of a series must have in common to be one image.
struct SeriesMemberFacts {
    int channels = 0; ///< 0 for a member that does not open
    int width = 0;    ///< of a channel, pixels
    int height = 0;   ///< of a channel, pixels
    int dataType = RDI_None;

    friend bool operator==(SeriesMemberFacts const &, SeriesMemberFacts const &) = default;
};

/// Members that are alike.
struct SeriesGroup {
    SeriesMemberFacts facts;
    std::uint64_t count = 0;
    std::vector<std::uint64_t> slots{}; ///< the first few of them, ascending

    static constexpr std::size_t kMostSlots = 3;
    void Add(std::uint64_t slot);
};

/// How far a look at the members of a series has come, and what it has found.
struct SeriesCheck {
    std::uint64_t looked = 0;
    std::uint64_t members = 0;
    std::vector<SeriesGroup> groups; ///< those of the most members first; the least ones may be left out

    static constexpr std::size_t kMostGroups = 8;
    void Add(std::uint64_t slot, SeriesMemberFacts const &facts);
    /// As numbers, and back; a text that is none of this kind gives nothing.
    [[nodiscard]] DString ToText() const;
    [[nodiscard]] static std::optional<SeriesCheck> FromText(std::string_view text);
};

/// Attributes that the driver of series knows besides the usual ones: "118 of 120, missing 17, 64"; and the state of
/// the look at the members, which each question takes on by some 100 ms.
inline constexpr char kSeriesMembers[] = "RDI_Drvr_Series_Members";
inline constexpr char kSeriesCheck[] = "RDI_Drvr_Series_Check";

/// Opens members of the series one by one and compares them, in an order that comes everywhere soon, until all were
/// looked at, `budget` is over or `stop`, which may be null, is set. A member that is being opened then is waited for.
[[nodiscard]] ZELVAR_API SeriesCheck CheckSeries(OpenImage const &series, std::chrono::milliseconds budget,
                                                 StopSignal const *stop);
/// The same for what the moniker names; nothing looked at if that does not open.
[[nodiscard]] ZELVAR_API SeriesCheck CheckSeries(BDIMoniker const &moniker, std::chrono::milliseconds budget,
                                                 StopSignal const *stop = nullptr);

/// What differs, in the user's language: "s017.tif is 512 x 512, the others are 1024 x 1024", and if not all members
/// were looked at how many. Empty if all are alike.
[[nodiscard]] ZELVAR_API DString DifferencesOf(SeriesPlace const &place, SeriesCheck const &check);

} // namespace zelvar
