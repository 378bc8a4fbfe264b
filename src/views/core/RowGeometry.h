#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace zelvar {

/// Where the rows of a list and the headers of its groups stand: the one answer for painting, hit testing, scrolling
/// and the keyboard. Heights in pixels from the top of the content.
///
/// A list without groups costs nothing per row. With groups, rows stand below the header of their group, in the order
/// of the groups; a group without rows shows no header, and rows of no group come first. Rows may stand as tiles, some
/// of them side by side in a line: they follow each other as a text is read, and cost nothing per row either.
class RowGeometry {
public:
    void SetRowHeight(int height) { m_rowHeight = height; }
    void SetGroupHeaderHeight(int height) { m_groupHeaderHeight = height; }
    [[nodiscard]] int RowHeight() const { return m_rowHeight; }
    [[nodiscard]] int GroupHeaderHeight() const { return m_groupHeaderHeight; }

    /// `count` rows, one below the other.
    void SetRows(int count);
    /// As many rows as `rowGroups` has entries, each an index into the `groupCount` groups or -1 for none.
    void SetGroupedRows(std::vector<int> const &rowGroups, int groupCount);
    /// `count` rows as tiles of that height, `perLine` of them side by side.
    void SetTiles(int count, int perLine, int height);

    [[nodiscard]] int RowCount() const { return m_rowCount; }
    [[nodiscard]] bool IsGrouped() const { return !m_spans.empty(); }
    [[nodiscard]] bool IsTiled() const { return m_tileHeight > 0; }
    [[nodiscard]] int PerLine() const { return m_perLine; }
    /// From the top of a row to that of the row, or line of tiles, below.
    [[nodiscard]] int LineHeight() const { return IsTiled() ? m_tileHeight : m_rowHeight; }
    [[nodiscard]] std::int64_t ContentHeight() const;

    // A position is the number of a row counted from the top as seen.
    [[nodiscard]] int RowAtPosition(int position) const;
    [[nodiscard]] int PositionOfRow(int row) const;

    [[nodiscard]] std::int64_t RowTop(int row) const;
    [[nodiscard]] std::int64_t PositionTop(int position) const;
    /// The row at this height, of tiles the first of its line; nothing on a header or below the last row.
    [[nodiscard]] std::optional<int> RowAt(std::int64_t y) const;
    /// The first position whose lower edge lies below `y`, the first of its line; the number of rows when there is
    /// none.
    [[nodiscard]] int FirstPositionBelow(std::int64_t y) const;

    /// The rows of one group and the header above them.
    struct Span {
        int group = -1;             ///< index of the group, -1 for the rows of none, which have no header
        int firstPosition = 0;      ///< prefix sum of the rows before
        int rows = 0;               ///< at least 1
        std::int64_t headerTop = 0; ///< prefix sum of the heights before
        std::int64_t rowsTop = 0;
    };
    /// Empty without groups.
    [[nodiscard]] std::vector<Span> const &Spans() const { return m_spans; }

private:
    [[nodiscard]] Span const &SpanOfPosition(int position) const;

    int m_rowHeight = 18;
    int m_groupHeaderHeight = 26;
    int m_rowCount = 0;
    int m_perLine = 1;
    int m_tileHeight = 0;         ///< 0 for rows
    std::vector<Span> m_spans;    ///< only those with rows
    std::vector<int> m_order;     ///< position to row; empty without groups
    std::vector<int> m_positions; ///< row to position; empty without groups
};

} // namespace zelvar
