#include "zelvar/lists/core/CellCache.h"

#include "zelvar/lists/core/CellOrder.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace zelvar {

namespace {

constexpr std::size_t kFirstBlock = std::size_t{16} << 10U;
constexpr std::size_t kLargestBlock = std::size_t{1} << 20U;
constexpr char kEmpty[] = "";
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

} // namespace

char *TextArena::Room(std::size_t bytes) {
    if (bytes > m_left) {
        m_nextBlock = std::clamp(m_nextBlock * 2, kFirstBlock, kLargestBlock);
        // A text that fills much of a block by itself gets one of its own, and the rest of the present one is still
        // used.
        if (bytes > m_nextBlock / 8) {
            m_blocks.emplace_back(new char[bytes]);
            return m_blocks.back().get();
        }
        m_blocks.emplace_back(new char[m_nextBlock]);
        m_free = m_blocks.back().get();
        m_left = m_nextBlock;
    }
    m_left -= bytes;
    return std::exchange(m_free, m_free + bytes);
}

char const *TextArena::Keep(std::string_view text) {
    auto const ends = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\0'));
    char *const kept = Room(text.size() + ends * (kReplacement.size() - 1) + 1);
    char *out = kept;
    for (; ends > 0 && !text.empty(); text.remove_prefix(1))
        out = text.front() == '\0' ? std::copy(kReplacement.begin(), kReplacement.end(), out)
                                   : std::fill_n(out, 1, text.front());
    out = std::copy(text.begin(), text.end(), out);
    *out = '\0';
    return kept;
}

void CellCache::AddCell(std::string_view text) {
    char const *const above = m_cells.size() >= m_stride ? m_cells[m_cells.size() - m_stride] : nullptr;
    if (text.empty())
        m_cells.push_back(kEmpty);
    else if (above != nullptr && std::strncmp(above, text.data(), text.size()) == 0 &&
             text.find('\0') == std::string_view::npos && above[text.size()] == '\0')
        m_cells.push_back(above);
    else
        m_cells.push_back(m_texts.Keep(text));
}

void CellCache::DropRow() {
    m_order.pop_back();
    m_cells.resize(std::min(m_cells.size(), m_order.size() * m_stride));
}

char const *&CellCache::Cell(int id, int col) {
    bool const isThere = id >= 0 && id < Rows() && col >= 0 && static_cast<std::size_t>(col) < m_stride;
    std::size_t const index = isThere ? static_cast<std::size_t>(id) * m_stride + static_cast<std::size_t>(col) : 0;
    if (isThere && index < m_cells.size())
        return m_cells[index];
    m_noCell = kEmpty;
    return m_noCell;
}

bool CellCache::Sort(int col, bool ascending, StopQuestion const &isStopped) {
    if (col >= 0 && static_cast<std::size_t>(col) >= m_stride)
        return false;
    if (col < 0) {
        // Ids have no gaps: from the highest to the lowest, or as they were read.
        for (std::size_t i = 0; i < m_order.size(); ++i)
            m_order[i] = static_cast<int>(ascending ? m_order.size() - 1 - i : i);
        return true;
    }
    std::vector<CellKey> keys;
    keys.reserve(m_order.size());
    for (int const id : m_order)
        keys.push_back(
            {.text = m_cells[static_cast<std::size_t>(id) * m_stride + static_cast<std::size_t>(col)], .id = id});
    return OrderByCells(std::move(keys), ascending, isStopped, m_order);
}

} // namespace zelvar
