#include "zelvar/opends/WantedRow.h"

#include "zelvar/opends/DSListCtrl.h"

#include <algorithm>

namespace zelvar {

std::vector<DString> WithFewerOptions(DString const &moniker) {
    std::vector<DString> names{moniker};
    std::size_t const first = moniker.find('?');
    for (std::size_t end = moniker.find_last_of("?&"); end != DString::npos && end >= first && end > 0;
         end = moniker.find_last_of("?&", end - 1))
        names.push_back(moniker.substr(0, end));
    return names;
}

namespace {

/// How well a row's path fits what is wanted: the place in the names of the one that it is, behind them all where it
/// has options behind the whole name, as an image of a table has that was named without its column, and more for
/// another.
std::size_t FitOf(DString const &path, std::vector<DString> const &names) {
    auto const fit = static_cast<std::size_t>(std::find(names.begin(), names.end(), path) - names.begin());
    bool const isLonger = path.starts_with(names.front() + (names.size() > 1 ? '&' : '?'));
    return fit == names.size() && !isLonger ? names.size() + 1 : fit;
}

} // namespace

void WantedRow::Want(DString const &moniker, DSListCtrl const &list) {
    m_names = WithFewerOptions(moniker);
    list.GetRootItems(m_before);
    m_rows = -1;
    m_quiet = 0;
}

void WantedRow::Update(DSListCtrl &list, bool mayCome) {
    if (m_names.empty())
        return;
    ItemList roots;
    list.GetRootItems(roots);
    bool const isOthers = roots != m_before && list.GetNumSlct() > 0; // the user has gone on
    int const rows = list.GetNumRow();
    std::size_t best = m_names.size() + 1;
    DString path;
    bool const isNew = rows != m_rows || roots != m_looked;
    for (int row = 0; row < rows && isNew && !isOthers; ++row)
        if (RefItemPtr<DataSourceItem> const item = list.ItemAt(row); item != nullptr)
            if (std::size_t const fit = FitOf(item->GetPath(), m_names); fit < best) {
                best = fit;
                path = item->GetPath();
            }
    m_rows = rows;
    m_looked = roots;
    // Between the answer of a server and its listing nothing is under way for a moment, longer beside busy programs.
    constexpr int kPatience = 10; // a second and more
    m_quiet = mayCome ? 0 : m_quiet + 1;
    if (!path.empty())
        list.SelectPaths({path});
    if (!path.empty() || isOthers || m_quiet > kPatience) {
        m_names.clear();
        m_before.clear();
        m_looked.clear();
    }
}

} // namespace zelvar
