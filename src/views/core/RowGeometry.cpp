#include "zelvar/views/core/RowGeometry.h"

#include <algorithm>
#include <iterator>

namespace zelvar {

namespace {
std::size_t Index(int value) { return static_cast<std::size_t>(value); }
} // namespace

void RowGeometry::SetRows(int count) {
    m_rowCount = count;
    m_perLine = 1;
    m_tileHeight = 0;
    m_spans.clear();
    m_order.clear();
    m_positions.clear();
}

void RowGeometry::SetTiles(int count, int perLine, int height) {
    SetRows(count);
    m_perLine = std::max(perLine, 1);
    m_tileHeight = std::max(height, 1);
}

void RowGeometry::SetGroupedRows(std::vector<int> const &rowGroups, int groupCount) {
    SetRows(static_cast<int>(rowGroups.size()));
    // Counting sort: how many rows each group has, where each begins, then every row to its place.
    auto const slot = [groupCount](int group) { return group < 0 || group >= groupCount ? 0 : Index(group + 1); };
    std::vector<int> counts(Index(groupCount + 1), 0);
    for (int const group : rowGroups)
        ++counts[slot(group)];

    std::vector<int> next(counts.size(), 0);
    std::int64_t top = 0;
    int position = 0;
    for (std::size_t i = 0; i < counts.size(); ++i) {
        next[i] = position;
        if (counts[i] == 0)
            continue;
        std::int64_t const rowsTop = top + (i == 0 ? 0 : m_groupHeaderHeight);
        m_spans.push_back({static_cast<int>(i) - 1, position, counts[i], top, rowsTop});
        position += counts[i];
        top = rowsTop + static_cast<std::int64_t>(counts[i]) * m_rowHeight;
    }

    m_order.resize(rowGroups.size());
    m_positions.resize(rowGroups.size());
    for (std::size_t row = 0; row < rowGroups.size(); ++row) {
        int const at = next[slot(rowGroups[row])]++;
        m_order[Index(at)] = static_cast<int>(row);
        m_positions[row] = at;
    }
}

std::int64_t RowGeometry::ContentHeight() const {
    if (m_spans.empty())
        return (static_cast<std::int64_t>(m_rowCount) + m_perLine - 1) / m_perLine * LineHeight();
    return m_spans.back().rowsTop + static_cast<std::int64_t>(m_spans.back().rows) * m_rowHeight;
}

int RowGeometry::RowAtPosition(int position) const { return m_order.empty() ? position : m_order[Index(position)]; }

int RowGeometry::PositionOfRow(int row) const { return m_positions.empty() ? row : m_positions[Index(row)]; }

std::int64_t RowGeometry::RowTop(int row) const { return PositionTop(PositionOfRow(row)); }

RowGeometry::Span const &RowGeometry::SpanOfPosition(int position) const {
    auto const behind = std::upper_bound(m_spans.begin(), m_spans.end(), position,
                                         [](int value, Span const &span) { return value < span.firstPosition; });
    return *std::prev(behind);
}

std::int64_t RowGeometry::PositionTop(int position) const {
    if (m_spans.empty())
        return static_cast<std::int64_t>(position / m_perLine) * LineHeight();
    Span const &span = SpanOfPosition(position);
    return span.rowsTop + static_cast<std::int64_t>(position - span.firstPosition) * m_rowHeight;
}

std::optional<int> RowGeometry::RowAt(std::int64_t y) const {
    int const position = FirstPositionBelow(y);
    if (y < 0 || position >= m_rowCount || PositionTop(position) > y)
        return std::nullopt;
    return RowAtPosition(position);
}

int RowGeometry::FirstPositionBelow(std::int64_t y) const {
    auto const rowsDown = [this](std::int64_t distance, int rows) {
        return distance < 0 ? 0 : static_cast<int>(std::min<std::int64_t>(distance / m_rowHeight, rows));
    };
    if (IsTiled())
        return y < 0 ? 0 : static_cast<int>(std::min<std::int64_t>(y / m_tileHeight * m_perLine, m_rowCount));
    if (m_spans.empty())
        return rowsDown(y, m_rowCount);
    auto const behind = std::upper_bound(m_spans.begin(), m_spans.end(), y,
                                         [](std::int64_t value, Span const &span) { return value < span.headerTop; });
    if (behind == m_spans.begin())
        return 0;
    Span const &span = *std::prev(behind);
    return span.firstPosition + rowsDown(y - span.rowsTop, span.rows);
}

} // namespace zelvar
