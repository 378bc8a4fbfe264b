#pragma once

#include "zelvar/model/datasets/SeriesName.h"

#include <cstdint>
#include <functional>
#include <system_error>

namespace zelvar {

class BDIMoniker;

/// Id of the raster driver that reads a series of files as one image.
inline constexpr char kSeriesDriver[] = "Series";

/// Where a series of files lies: a folder, a path or `smb://` address, and the name of the series in it. A plain value.
struct ZELVAR_API SeriesPlace {
    DString folder; ///< empty for the current one
    SeriesName name;

    /// What a path or `smb://` address names, by its text alone; nothing if that is no series.
    [[nodiscard]] static std::optional<SeriesPlace> Of(std::string_view path);
    [[nodiscard]] DString Path() const;
    [[nodiscard]] DString MemberName(std::uint64_t slot) const;
    [[nodiscard]] DString MemberPath(std::uint64_t slot) const;

    friend bool operator==(SeriesPlace const &, SeriesPlace const &) = default;
};

/// The series that a moniker names. A file that is called just so stays that file: the disk is looked at where the text
/// names a series, and nowhere else.
[[nodiscard]] ZELVAR_API std::optional<SeriesPlace> SeriesOf(BDIMoniker const &moniker);

/// The members of a series that are there.
struct SeriesListing {
    std::vector<std::uint64_t> slots; ///< of the name, ascending
    std::int64_t size = 0;            ///< bytes of all, if they were weighed
    std::int64_t modified = 0;        ///< nanoseconds since 1970 UTC, of the newest; 0 if they were not weighed
    std::error_code error;            ///< the folder's
};

/// Whether sizes and times are read as well: that asks the system once a member.
enum class Weigh { No, Yes };

/// Reads the folder once. Plain files are members, also through links; nothing is opened. `isStopped` may be empty;
/// what was found until it says so comes back with the error `operation_canceled`. Keeps eight bytes a member, whatever
/// the numbers in the name promise; a name with more slots than there are numbers is the error `value_too_large`.
[[nodiscard]] ZELVAR_API SeriesListing ListSeries(SeriesPlace const &place, Weigh weigh,
                                                  std::function<bool()> const &isStopped = {});
/// Whether any member is there; the first is asked for before the folder is read.
[[nodiscard]] ZELVAR_API bool HasMembers(SeriesPlace const &place);

} // namespace zelvar
