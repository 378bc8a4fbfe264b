#include "zelvar/model/FolderFolding.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/model/NtwDataSourceItemItr.h"
#include "zelvar/platform/os/MountTable.h"

#include <algorithm>

namespace zelvar {

using platform::ShellChild;
using platform::ShellKind;

namespace {

/// Folders whose names say that they hold data.
constexpr std::string_view kTellingNames = "*.zarr;*.gdb;*.safe";

} // namespace

FolderFolding::FolderFolding(platform::ShellNamespace const &shell, platform::ShellId const &folder,
                             DataSetFolding folding, std::string_view mask)
    : m_shell(shell), m_folding(folding), m_mask(mask), m_maySlow(platform::MayBlockAt(shell.Path(folder))) {}

void FolderFolding::Add(ShellChild &&child) {
    if (child.kind == ShellKind::File) {
        m_names += child.name;
        m_nameEnds.push_back(m_names.size());
        m_files.push_back(static_cast<std::uint32_t>(m_children.size()));
    }
    m_children.push_back(std::move(child));
}

std::optional<DataFolder> FolderFolding::LookInto(ShellChild const &child) {
    constexpr std::chrono::milliseconds kForAll{100};
    constexpr std::chrono::milliseconds kForTellingNames{1000};
    bool const tells = PathMatchSpec(child.name, kTellingNames);
    if (!m_folding.folders || child.kind != ShellKind::Directory || (m_maySlow && !tells) ||
        m_looked >= (tells ? kForTellingNames : kForAll))
        return std::nullopt;
    DString const path = m_shell.Path(child.id);
    if (!path.starts_with('/'))
        return std::nullopt;
    Clock::time_point const begin = Clock::now();
    std::optional<FoundDataFolder> const found = LookForDataFolder(path);
    m_looked += Clock::now() - begin;
    return found ? std::optional(found->kind) : std::nullopt;
}

void FolderFolding::Finish(IsStopped const &isStopped, std::function<void(Row &&)> const &takeRow,
                           std::function<void(SeriesRow &&)> const &takeSeries) {
    std::vector<std::string_view> names;
    std::vector<bool> isWanted;
    names.reserve(m_files.size());
    isWanted.reserve(m_files.size());
    std::size_t begin = 0;
    for (std::size_t const end : m_nameEnds) {
        names.push_back(std::string_view(m_names).substr(begin, end - begin));
        isWanted.push_back(NtwDataSourceItemItr::IsListed(names.back(), m_mask));
        begin = end;
    }
    DataSetPlan plan = PlanDataSets(names, isWanted, m_folding);
    auto const file = [&](std::uint32_t place) -> ShellChild & { return m_children[m_files[place]]; };
    std::vector<std::int64_t> beside(m_files.size());
    for (std::uint32_t i = 0; i < m_files.size(); ++i)
        if (plan.masters[i] != i)
            beside[plan.masters[i]] += std::max<std::int64_t>(file(i).file.size, 0);

    std::vector<SeriesRow> all;
    for (FoundSeries &series : plan.series) {
        SeriesRow row{.series = std::move(series)};
        for (std::uint32_t const member : row.series.members) {
            row.size += std::max<std::int64_t>(file(member).file.size, 0) + beside[member];
            row.modified = std::max(row.modified, file(member).file.modified);
        }
        all.push_back(std::move(row));
    }
    std::uint32_t next = 0; // file
    for (ShellChild &child : m_children) {
        if (isStopped())
            return;
        if (child.kind != ShellKind::File) {
            std::optional<DataFolder> const data = LookInto(child);
            takeRow({std::move(child), 0, data});
            continue;
        }
        std::uint32_t const place = next++;
        if (isWanted[place] && plan.masters[place] == place && !plan.isMember[place])
            takeRow({std::move(child), beside[place]});
    }
    for (SeriesRow &row : all)
        if (!isStopped())
            takeSeries(std::move(row));
    m_children.clear();
    m_names.clear();
    m_nameEnds.clear();
    m_files.clear();
}

} // namespace zelvar
