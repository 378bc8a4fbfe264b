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
    if (child.kind == ShellKind::File)
        m_files.push_back(static_cast<std::uint32_t>(m_children.size()));
    m_names += child.name;
    m_children.push_back({std::move(child.id), child.kind, child.link, child.file, m_names.size()});
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

void FolderFolding::Finish(IsStopped const &isStopped, std::function<void(Row &)> const &takeRow,
                           std::function<void(SeriesRow &&)> const &takeSeries) {
    std::vector<std::string_view> names;
    std::vector<bool> isWanted;
    names.reserve(m_files.size());
    isWanted.reserve(m_files.size());
    std::size_t nameBegin = 0;
    for (Kept const &child : m_children) {
        if (child.kind == ShellKind::File) {
            names.push_back(std::string_view(m_names).substr(nameBegin, child.nameEnd - nameBegin));
            isWanted.push_back(NtwDataSourceItemItr::IsListed(names.back(), m_mask));
        }
        nameBegin = child.nameEnd;
    }
    DataSetPlan plan = PlanDataSets(names, isWanted, m_folding);
    auto const file = [&](std::uint32_t place) -> Kept const & { return m_children[m_files[place]]; };
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
    Row row;                // one for all, so that its text keeps its memory
    nameBegin = 0;
    for (Kept &child : m_children) {
        if (isStopped())
            return;
        std::string_view const name = std::string_view(m_names).substr(nameBegin, child.nameEnd - nameBegin);
        nameBegin = child.nameEnd;
        bool const isFile = child.kind == ShellKind::File;
        std::uint32_t const place = isFile ? next++ : 0;
        if (isFile && (!isWanted[place] || plan.masters[place] != place || plan.isMember[place]))
            continue;
        row.child.id = std::move(child.id);
        row.child.name.assign(name);
        row.child.kind = child.kind;
        row.child.link = child.link;
        row.child.file = child.file;
        row.beside = isFile ? beside[place] : 0;
        row.data = isFile ? std::nullopt : LookInto(row.child);
        takeRow(row);
    }
    for (SeriesRow &series : all)
        if (!isStopped())
            takeSeries(std::move(series));
    m_children.clear();
    m_names.clear();
    m_files.clear();
}

} // namespace zelvar
