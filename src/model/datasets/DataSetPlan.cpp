#include "zelvar/model/datasets/DataSetPlan.h"

#include "zelvar/model/datasets/Sidecars.h"

#include <numeric>

namespace zelvar {

DataSetPlan PlanDataSets(std::span<std::string_view const> files, std::vector<bool> const &isWanted,
                         DataSetFolding folding) {
    DataSetPlan plan;
    plan.isMember.resize(files.size());
    if (folding.sidecars) {
        plan.masters = FindMasters(files);
    } else {
        plan.masters.resize(files.size());
        std::iota(plan.masters.begin(), plan.masters.end(), 0U);
    }
    std::vector<std::string_view> names;
    std::vector<std::uint32_t> places;
    for (std::uint32_t i = 0; i < files.size(); ++i) {
        if (!isWanted[plan.masters[i]])
            plan.masters[i] = i;
        if (plan.masters[i] == i && isWanted[i] && folding.series) {
            names.push_back(files[i]);
            places.push_back(i);
        }
    }
    plan.series = FindSeries(names);
    for (FoundSeries &series : plan.series)
        for (std::uint32_t &member : series.members) {
            member = places[member];
            plan.isMember[member] = true;
        }
    return plan;
}

} // namespace zelvar
