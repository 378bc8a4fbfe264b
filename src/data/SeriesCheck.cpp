#include "zelvar/data/SeriesCheck.h"

#include "zelvar/base/Translation.h"
#include "zelvar/data/RequestScope.h"

#include <algorithm>
#include <charconv>

namespace zelvar {

namespace {

/// Takes the next number of a line of numbers; false at its end.
template <class Number>
bool Take(std::string_view &line, Number &number) {
    auto const [end, error] = std::from_chars(line.data(), line.data() + line.size(), number);
    if (error != std::errc{})
        return false;
    line.remove_prefix(static_cast<std::size_t>(end - line.data()));
    line.remove_prefix(line.starts_with(' ') ? 1 : 0);
    return true;
}

DString SizeOf(SeriesMemberFacts const &facts) { return Format("%d x %d", facts.width, facts.height); }

/// "s017.tif", "s017.tif, s018.tif and 5 more".
DString NamesOf(SeriesPlace const &place, SeriesGroup const &group) {
    DString names;
    for (std::uint64_t const slot : group.slots)
        names.append(names.empty() ? "" : ", ").append(place.MemberName(slot));
    std::uint64_t const more = group.count - std::min<std::uint64_t>(group.count, group.slots.size());
    return more == 0 ? names
                     : Format(Translated("%s and %llu more"), names.c_str(), static_cast<unsigned long long>(more));
}

/// How a group differs from the members that most are like.
DString Difference(SeriesPlace const &place, SeriesGroup const &group, SeriesMemberFacts const &usual) {
    DString const names = NamesOf(place, group);
    auto const count = static_cast<long long>(group.count);
    SeriesMemberFacts const &facts = group.facts;
    auto const isOther = [&](DString const &own, DString const &others) {
        return Format(Translated("%s is %s, the others are %s", "%s are %s, the others are %s", count), names.c_str(),
                      own.c_str(), others.c_str());
    };
    if (facts.channels == 0)
        return Format(Translated("%s cannot be read", "%s cannot be read", count), names.c_str());
    if (usual.channels == 0)
        return Format(Translated("%s can be read, the others cannot", "%s can be read, the others cannot", count),
                      names.c_str());
    if (facts.width != usual.width || facts.height != usual.height)
        return isOther(SizeOf(facts), SizeOf(usual));
    if (facts.dataType != usual.dataType)
        return isOther(RDIGetDTName(facts.dataType), RDIGetDTName(usual.dataType));
    return Format(Translated("%s has channels: %d, the others: %d", "%s have channels: %d, the others: %d", count),
                  names.c_str(), facts.channels, usual.channels);
}

} // namespace

void SeriesGroup::Add(std::uint64_t slot) {
    ++count;
    slots.insert(std::lower_bound(slots.begin(), slots.end(), slot), slot);
    slots.resize(std::min(slots.size(), kMostSlots));
}

void SeriesCheck::Add(std::uint64_t slot, SeriesMemberFacts const &facts) {
    ++looked;
    auto at =
        std::find_if(groups.begin(), groups.end(), [&](SeriesGroup const &group) { return group.facts == facts; });
    if (at == groups.end()) {
        if (groups.size() >= kMostGroups)
            return;
        at = groups.insert(at, SeriesGroup{.facts = facts});
    }
    at->Add(slot);
    for (; at != groups.begin() && std::prev(at)->count < at->count; --at)
        std::iter_swap(at, std::prev(at));
}

DString SeriesCheck::ToText() const {
    DString text =
        Format("%llu %llu", static_cast<unsigned long long>(looked), static_cast<unsigned long long>(members));
    for (auto const &[facts, count, slots] : groups) {
        text += Format("\n%d %d %d %d %llu", facts.channels, facts.width, facts.height, facts.dataType,
                       static_cast<unsigned long long>(count));
        for (std::uint64_t const slot : slots)
            text.append(" ").append(std::to_string(slot));
    }
    return text;
}

std::optional<SeriesCheck> SeriesCheck::FromText(std::string_view text) {
    std::vector<DString> const lines = Split(text, '\n');
    std::string_view line = lines.front();
    SeriesCheck check;
    if (!Take(line, check.looked) || !Take(line, check.members) || lines.size() > kMostGroups + 1)
        return std::nullopt;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        line = lines[i];
        SeriesGroup group;
        SeriesMemberFacts &facts = group.facts;
        if (!Take(line, facts.channels) || !Take(line, facts.width) || !Take(line, facts.height) ||
            !Take(line, facts.dataType) || !Take(line, group.count))
            return std::nullopt;
        for (std::uint64_t slot = 0; group.slots.size() < SeriesGroup::kMostSlots && Take(line, slot);)
            group.slots.push_back(slot);
        check.groups.push_back(std::move(group));
    }
    return check;
}

SeriesCheck CheckSeries(OpenImage const &series, std::chrono::milliseconds budget, StopSignal const *stop) {
    auto const begin = RequestScope::Clock::now();
    SeriesCheck check;
    for (;;) {
        DString const text = series.Driver().GetAttrString(kSeriesCheck, series.Handle(), 0);
        std::optional<SeriesCheck> next = SeriesCheck::FromText(text);
        // One that has not come further lost what it knew, or never will.
        if (!next || next->looked <= check.looked)
            return check;
        check = *std::move(next);
        if (check.looked >= check.members || RequestScope::Clock::now() - begin >= budget ||
            (stop != nullptr && stop->load()))
            return check;
    }
}

SeriesCheck CheckSeries(BDIMoniker const &moniker, std::chrono::milliseconds budget, StopSignal const *stop) {
    RequestScope const scope(RequestKind::Properties);
    OpenImage const series(moniker, kSeriesDriver, stop);
    return series.IsOpen() ? CheckSeries(series, budget, stop) : SeriesCheck();
}

DString DifferencesOf(SeriesPlace const &place, SeriesCheck const &check) {
    DString text;
    for (std::size_t i = 1; i < check.groups.size(); ++i)
        text.append(text.empty() ? "" : "; ").append(Difference(place, check.groups[i], check.groups[0].facts));
    if (check.looked < check.members)
        text.append(text.empty() ? "" : "; ")
            .append(Format(Translated("%llu of %llu files looked at"), static_cast<unsigned long long>(check.looked),
                           static_cast<unsigned long long>(check.members)));
    return text;
}

} // namespace zelvar
