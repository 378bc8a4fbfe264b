#include "zelvar/model/datasets/DataSetPlan.h"

#include "zelvar/base/Aside.h"
#include "zelvar/model/datasets/Sidecars.h"

#include <numeric>
#include <optional>

namespace zelvar {

DataSetPlan PlanDataSets(std::span<std::string_view const> files, std::vector<bool> const &isWanted,
                         DataSetFolding folding) {
    constexpr std::size_t kMany = 10'000;
    DataSetPlan plan;
    plan.isMember.resize(files.size());
    std::optional<SeriesFinder> series;
    std::future<void> aside; // Of many names those that belong to others are found meanwhile.
    auto const takeApart = [&] { series.emplace(files); };
    if (folding.series && files.size() >= kMany)
        aside = DoAside(takeApart);
    else if (folding.series)
        takeApart();
    if (folding.sidecars) {
        plan.masters = FindMasters(files);
    } else {
        plan.masters.resize(files.size());
        std::iota(plan.masters.begin(), plan.masters.end(), 0U);
    }
    if (aside.valid())
        aside.get();
    std::vector<bool> standsAlone(files.size());
    for (std::uint32_t i = 0; i < files.size(); ++i) {
        if (!isWanted[plan.masters[i]])
            plan.masters[i] = i;
        standsAlone[i] = plan.masters[i] == i && isWanted[i];
    }
    if (series)
        plan.series = series->Find(standsAlone);
    for (FoundSeries const &found : plan.series)
        for (std::uint32_t const member : found.members)
            plan.isMember[member] = true;
    return plan;
}

} // namespace zelvar
