#pragma once

#include "zelvar/base/Export.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

namespace zelvar {

/// Keeps texts one behind the other, ended by a NUL each, in blocks that never move.
class TextArena {
public:
    /// Stays where it is as long as the arena. A NUL within the text becomes the replacement character: what stands
    /// behind it would be lost otherwise.
    char const *Keep(std::string_view text);
    [[nodiscard]] std::size_t Bytes() const { return m_bytes; }

private:
    [[nodiscard]] char *NewBlock(std::size_t bytes);
    [[nodiscard]] char *Room(std::size_t bytes);

    std::vector<std::unique_ptr<char[]>> m_blocks;
    char *m_free = nullptr;
    std::size_t m_bytes = 0;     ///< of all blocks
    std::size_t m_left = 0;      ///< at `m_free`
    std::size_t m_nextBlock = 0; ///< bytes of the next one; 0 before the first
};

/// The texts of those rows of a table that have been read, and the order in which they are shown. A row is known by its
/// id, the number at which it was read. A cell costs a pointer and its text; one that is empty, or the same as the cell
/// above it, costs the pointer alone. The cells of the last rows may be kept elsewhere: those rows cost nothing here
/// but their places in an order that is not the one in which they were read.
class ZELVAR_API CellCache {
public:
    /// Cells of a row; before the first row only.
    void SetStride(std::size_t cells) { m_stride = cells; }
    [[nodiscard]] std::size_t Stride() const { return m_stride; }
    [[nodiscard]] int Rows() const { return m_rows; }
    /// Those whose cells are here, the first ones.
    [[nodiscard]] int FullRows() const;
    /// What they take.
    [[nodiscard]] std::size_t Bytes() const { return m_cells.size() * sizeof(char const *) + m_texts.Bytes(); }

    /// Begins a row, whose `Stride` cells are added from the first to the last; cells that are left out may follow
    /// later, those of all such rows in their order.
    void AddRow();
    void AddCell(std::string_view text);
    /// Takes back the row added last, whole or not.
    void DropRow();

    /// The text of a cell, never null unless somebody made it so. Stays valid while the cache lives. An entry may be
    /// made to point elsewhere; what it points to stays its owner's and must outlive the cache. An entry for all takes
    /// the place of those that are not there.
    [[nodiscard]] char const *&Cell(int id, int col);
    /// The id at a place of the order, -1 for none.
    [[nodiscard]] int IdAt(int position) const {
        if (position < 0 || position >= m_rows)
            return -1;
        return m_order.empty() ? position : static_cast<int>(m_order[static_cast<std::size_t>(position)]);
    }

    using StopQuestion = std::function<bool()>;
    /// Sorts the order by a column, see `CellOrder.h`, by the ids where `col` is below 0. False, with the order as it
    /// was, if there is no such column or the question, which may be empty, is answered with yes.
    bool Sort(int col, bool ascending, StopQuestion const &isStopped);
    /// Takes all ids in the order that somebody else has sorted them in; `ties` has a bit for each that compares as
    /// equal to the one before it. Those stand then as they stood. False if stopped.
    bool TakeOrder(std::vector<std::uint32_t> ids, std::vector<std::uint64_t> const &ties,
                   StopQuestion const &isStopped);

private:
    std::size_t m_stride = 0;
    TextArena m_texts;
    std::deque<char const *> m_cells; ///< `m_stride` a row, by id
    int m_rows = 0;
    std::vector<std::uint32_t> m_order; ///< ids; empty while they stand as they were read
    char const *m_noCell = nullptr;
};

} // namespace zelvar
