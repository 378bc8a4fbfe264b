#include "zelvar/lists/StoredRows.h"

#include "zelvar/data/IRowStore.h"

#include <algorithm>

namespace zelvar {

namespace {

constexpr std::size_t kMostRows = 16 * 1024; // at hand
constexpr std::size_t kMostBytes = std::size_t{8} << 20U;
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

} // namespace

StoredRows::Found StoredRows::Find(int row, std::int64_t wanted) {
    while (row >= m_store->Known().rows) {
        if (m_store->Known().isEnd)
            return Found::No;
        if (!m_store->CountOn(std::max<std::int64_t>(wanted, std::int64_t{row} + 1), nullptr))
            return Found::NotKnown;
    }
    return Found::Yes;
}

DString const *StoredRows::Text(int row, int col) {
    auto const found = m_byNumber.find(row);
    if (found == m_byNumber.end() || col < 0 || static_cast<std::size_t>(col) >= m_columns.size())
        return nullptr;
    m_rows.splice(m_rows.begin(), m_rows, found->second);
    return &found->second->cells[static_cast<std::size_t>(col)];
}

void StoredRows::Keep(int number, ADIRows const &rows, std::size_t row) {
    Row kept{.number = number, .bytes = sizeof(Row), .cells = {}};
    for (int const col : m_columns) {
        DString text(rows.Cell(row * static_cast<std::size_t>(m_tableColumns) + static_cast<std::size_t>(col)));
        for (std::size_t at = 0; (at = text.find('\0', at)) != DString::npos;)
            text.replace(at, 1, kReplacement);
        kept.bytes += sizeof text + text.size();
        kept.cells.push_back(std::move(text));
    }
    m_bytes += kept.bytes;
    m_rows.push_front(std::move(kept));
    m_byNumber[number] = m_rows.begin();
}

bool StoredRows::Fetch(std::vector<int> const &rows) {
    std::vector<std::int64_t> missing;
    for (int const row : rows)
        if (auto const found = m_byNumber.find(row); found == m_byNumber.end())
            missing.push_back(row);
        else
            m_rows.splice(m_rows.begin(), m_rows, found->second);
    std::size_t const wanted = rows.size() - missing.size(); // they stand in front, and stay
    while (m_rows.size() > wanted && (m_rows.size() + missing.size() > kMostRows || m_bytes > kMostBytes)) {
        m_bytes -= m_rows.back().bytes;
        m_byNumber.erase(m_rows.back().number);
        m_rows.pop_back();
    }
    while (!missing.empty()) {
        ADIRows read;
        if (!m_store->Read(missing, read, nullptr) || read.count < 1)
            return false;
        for (int i = 0; i < read.count; ++i)
            Keep(static_cast<int>(missing[static_cast<std::size_t>(i)]), read, static_cast<std::size_t>(i));
        missing.erase(missing.begin(), missing.begin() + read.count);
    }
    return true;
}

char const **StoredRows::HandOut(int row, int col) {
    auto found = m_entries.find(row);
    if (found == m_entries.end()) {
        if (!Fetch({row}))
            return nullptr;
        Entries entries;
        for (DString const &text : m_byNumber[row]->cells)
            entries.now.push_back(m_texts.Keep(text));
        entries.before = entries.now;
        found = m_entries.emplace(row, std::move(entries)).first;
    }
    bool const isThere = col >= 0 && static_cast<std::size_t>(col) < m_columns.size();
    return isThere ? &found->second.now[static_cast<std::size_t>(col)] : nullptr;
}

std::vector<char const *> *StoredRows::HandedOut(int row) {
    auto const found = m_entries.empty() ? m_entries.end() : m_entries.find(row);
    return found == m_entries.end() ? nullptr : &found->second.now;
}

bool StoredRows::IsAltered() const {
    return std::ranges::any_of(m_entries, [](auto const &entry) { return entry.second.now != entry.second.before; });
}

bool StoredRows::Sort(int col, bool ascending, RowOrder &order) {
    bool const isThere = col >= 0 && static_cast<std::size_t>(col) < m_columns.size();
    return isThere && m_store->Sort(m_columns[static_cast<std::size_t>(col)], ascending, order, nullptr);
}

} // namespace zelvar
