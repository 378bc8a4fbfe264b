#include "zelvar/views/core/ReportRows.h"

#include <unordered_map>

namespace zelvar {

namespace {
std::size_t Index(int value) { return static_cast<std::size_t>(value); }
} // namespace

ReportRows::Row const *ReportRows::Find(int row) const {
    return row >= 0 && Index(row) < m_rows.size() ? &m_rows[Index(row)] : nullptr;
}

ReportRows::Row *ReportRows::Find(int row) { return const_cast<Row *>(std::as_const(*this).Find(row)); }

DString ReportRows::Text(int row, int subItem) const {
    Row const *const found = Find(row);
    bool const has = found != nullptr && subItem >= 0 && Index(subItem) < found->texts.size();
    return has ? found->texts[Index(subItem)] : DString{};
}

bool ReportRows::SetText(int row, int subItem, DString const &text) {
    Row *const found = Find(row);
    if (found == nullptr)
        return false;
    if (Index(subItem) >= found->texts.size())
        found->texts.resize(Index(subItem) + 1);
    found->texts[Index(subItem)] = text;
    return true;
}

void ReportRows::Insert(int at, Row row) { m_rows.insert(m_rows.begin() + at, std::move(row)); }

bool ReportRows::Erase(int row) {
    if (Find(row) == nullptr)
        return false;
    m_rows.erase(m_rows.begin() + row);
    return true;
}

void ReportRows::InsertTexts(int subItem) {
    for (Row &row : m_rows)
        if (Index(subItem) < row.texts.size())
            row.texts.insert(row.texts.begin() + subItem, DString{});
}

void ReportRows::EraseTexts(int subItem) {
    for (Row &row : m_rows)
        if (Index(subItem) < row.texts.size())
            row.texts.erase(row.texts.begin() + subItem);
}

std::vector<int> ReportRows::Arrange(std::vector<int> const &order) {
    std::vector<Row> sorted;
    sorted.reserve(m_rows.size());
    std::vector<int> newRows(m_rows.size());
    for (int const old : order) {
        newRows[Index(old)] = static_cast<int>(sorted.size());
        sorted.push_back(std::move(m_rows[Index(old)]));
    }
    m_rows = std::move(sorted);
    return newRows;
}

std::vector<int> ReportRows::GroupOfRows() const {
    std::unordered_map<int, int> places;
    for (int index = 0; index < GroupCount(); ++index)
        places.emplace(m_groups[Index(index)].id, index);
    std::vector<int> groups;
    groups.reserve(m_rows.size());
    for (Row const &row : m_rows) {
        auto const place = places.find(row.group);
        groups.push_back(place == places.end() ? -1 : place->second);
    }
    return groups;
}

} // namespace zelvar
