#pragma once

#include "zelvar/model/datasets/SeriesName.h"

#include <memory>
#include <span>
#include <vector>

namespace zelvar {

/// A series among the names of one folder.
struct FoundSeries {
    SeriesName name;
    std::vector<std::uint32_t> members; ///< their places among the names, in the order of their numbers
    std::vector<std::uint64_t> slots;   ///< of `name`, one a member, ascending
};

/// Finds the series among names that differ from each other: ten or more that agree in all but their numbers, where at
/// least half of the numbers between the first and the last are there. Names that cannot be told from the name of a
/// series, because they hold brackets, belong to none.
class ZELVAR_API SeriesFinder {
public:
    /// Takes the names apart. They outlive this.
    explicit SeriesFinder(std::span<std::string_view const> names);
    ~SeriesFinder();
    SeriesFinder(SeriesFinder const &) = delete;
    SeriesFinder &operator=(SeriesFinder const &) = delete;

    /// The series among those names that `isWanted` says. Takes time as sorting them does.
    [[nodiscard]] std::vector<FoundSeries> Find(std::vector<bool> const &isWanted) const;

private:
    struct Groups;
    std::unique_ptr<Groups> m_groups;
};

} // namespace zelvar
