#include "zelvar/lists/core/CellCache.h"

#include "zelvar/base/SortDistinct.h"
#include "zelvar/lists/core/CellOrder.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <utility>

namespace zelvar {

namespace {

constexpr std::size_t kFirstBlock = std::size_t{16} << 10U;
constexpr std::size_t kLargestBlock = std::size_t{1} << 20U;
constexpr char kEmpty[] = "";
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

} // namespace

char *TextArena::NewBlock(std::size_t bytes) {
    m_blocks.emplace_back(new char[bytes]);
    m_bytes += bytes;
    return m_blocks.back().get();
}

char *TextArena::Room(std::size_t bytes) {
    if (bytes > m_left) {
        m_nextBlock = std::clamp(m_nextBlock * 2, kFirstBlock, kLargestBlock);
        // A text that fills much of a block by itself gets one of its own, and the rest of the present one is still
        // used.
        if (bytes > m_nextBlock / 8)
            return NewBlock(bytes);
        m_free = NewBlock(m_nextBlock);
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

int CellCache::FullRows() const { return m_stride == 0 ? m_rows : static_cast<int>(m_cells.size() / m_stride); }

void CellCache::AddRow() {
    if (!m_order.empty())
        m_order.push_back(static_cast<std::uint32_t>(m_rows));
    ++m_rows;
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
    if (!m_order.empty())
        m_order.pop_back();
    --m_rows;
    m_cells.resize(std::min(m_cells.size(), static_cast<std::size_t>(m_rows) * m_stride));
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
    std::vector<std::uint32_t> ids(static_cast<std::size_t>(m_rows));
    if (col < 0) {
        // Ids have no gaps: from the highest to the lowest, or as they were read.
        std::iota(ids.rbegin(), ids.rend(), 0U);
        m_order = ascending ? std::move(ids) : std::vector<std::uint32_t>();
        return true;
    }
    std::vector<CellKey> keys;
    keys.reserve(ids.size());
    for (int position = 0; position < m_rows; ++position) {
        auto const id = static_cast<std::uint32_t>(IdAt(position));
        keys.push_back({.text = m_cells[id * m_stride + static_cast<std::size_t>(col)], .id = id});
    }
    if (!OrderByCells(std::move(keys), ascending, isStopped, ids))
        return false;
    m_order = std::move(ids);
    return true;
}

bool CellCache::TakeOrder(std::vector<std::uint32_t> ids, std::vector<std::uint64_t> const &ties,
                          StopQuestion const &isStopped) {
    constexpr std::size_t bits = 64;
    auto const isTied = [&](std::size_t place) { return (ties[place / bits] >> (place % bits) & 1U) != 0; };
    std::size_t next = 0; // place at which to ask
    auto const mustStop = [&](std::size_t place) {
        constexpr std::size_t stepsPerQuestion = std::size_t{1} << 17U;
        if (place < next)
            return false;
        next = place + stepsPerQuestion;
        return isStopped && isStopped();
    };
    if (!m_order.empty()) {
        // Where each id stands now, and in that order go those that are equal.
        std::vector<std::uint32_t> places(m_order.size());
        for (std::size_t place = 0; place < m_order.size(); ++place) {
            places[m_order[place]] = static_cast<std::uint32_t>(place);
            if (mustStop(place))
                return false;
        }
        next = 0;
        for (std::size_t begin = 0, end = 0; begin < ids.size(); begin = end) {
            for (end = begin + 1; end < ids.size() && isTied(end);)
                ++end;
            std::span const equal = std::span(ids).subspan(begin, end - begin);
            if (equal.size() > 1) {
                std::ranges::transform(equal, equal.begin(), [&](std::uint32_t id) { return places[id]; });
                SortDistinct(equal);
                std::ranges::transform(equal, equal.begin(), [&](std::uint32_t place) { return m_order[place]; });
            }
            if (mustStop(end))
                return false;
        }
    }
    m_order = std::move(ids);
    return true;
}

} // namespace zelvar
