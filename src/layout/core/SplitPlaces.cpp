#include "zelvar/layout/core/SplitPlaces.h"

#include <algorithm>
#include <functional>
#include <numeric>

namespace zelvar {

namespace {

using Indices = std::vector<std::size_t>;

/// The areas by the stretches of an axis that no two of them share.
std::vector<Indices> Stretches(std::vector<Rect> const &areas, Indices of, bool upright) {
    auto const near = [&](std::size_t i) { return upright ? areas[i].top : areas[i].left; };
    auto const far = [&](std::size_t i) { return upright ? areas[i].bottom : areas[i].right; };
    std::ranges::stable_sort(of, std::less<>(), near);
    std::vector<Indices> stretches;
    int end = 0;
    for (std::size_t const i : of) {
        if (stretches.empty() || near(i) >= end) {
            stretches.emplace_back();
            end = far(i);
        }
        stretches.back().push_back(i);
        end = std::max(end, far(i));
    }
    return stretches;
}

// `wasOne`: nor does the other axis part these.
void Number(std::vector<Rect> const &areas, Indices const &of, bool upright, bool wasOne,
            std::vector<SplitPlace> &places) {
    std::vector<Indices> stretches = Stretches(areas, of, upright);
    if (stretches.size() == 1 && wasOne && of.size() > 1) {
        stretches.clear();
        for (std::size_t const i : of)
            stretches.push_back({i});
    }
    for (std::size_t number = 0; number < stretches.size(); ++number) {
        for (std::size_t const i : stretches[number])
            places[i].push_back(static_cast<int>(number));
        if (stretches[number].size() > 1)
            Number(areas, stretches[number], !upright, stretches.size() == 1, places);
    }
}

} // namespace

std::vector<SplitPlace> SplitPlaces(std::vector<Rect> const &areas, bool upright) {
    std::vector<SplitPlace> places(areas.size());
    Indices all(areas.size());
    std::iota(all.begin(), all.end(), 0U);
    Number(areas, all, upright, false, places);
    return places;
}

} // namespace zelvar
