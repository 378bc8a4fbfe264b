#include "zelvar/data/tables/CsvWindow.h"

#include "zelvar/data/tables/CsvScan.h"

#include <algorithm>
#include <cstring>

namespace zelvar {

namespace {

constexpr std::size_t kBlock = std::size_t{256} << 10U;

} // namespace

void CsvWindow::GoTo(std::uint64_t begin, std::uint64_t end) {
    m_file = begin;
    m_end = end;
    m_filled = 0;
    m_at = 0;
}

/// More bytes behind those that are left, `least` of them or more; false at the end.
bool CsvWindow::Fill(std::size_t least) {
    std::size_t const left = m_filled - m_at;
    auto const wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(m_end - m_file, std::max({kBlock, left, least})));
    if (m_at > 0)
        std::memmove(m_bytes.data(), m_bytes.data() + m_at, left);
    m_at = 0;
    m_filled = left;
    if (m_bytes.size() < left + wanted)
        m_bytes.resize(left + wanted);
    std::size_t const count = wanted == 0 ? 0 : std::min((*m_read)(m_file, m_bytes.data() + left, wanted), wanted);
    m_file += count;
    m_filled += count;
    return count > 0;
}

std::string_view CsvWindow::Next(int most, std::size_t mostBytes, int &count) {
    std::size_t used = 0;
    bool isWhole = false;
    for (count = 0; count < most;) {
        std::string_view const left(m_bytes.data() + m_at + used, m_filled - m_at - used);
        std::size_t const end = CsvScan::RecordEnd(left, m_separator, isWhole);
        if (end <= mostBytes) {
            used += end;
            ++count;
            continue;
        }
        if (end != std::string_view::npos || isWhole || left.size() > mostBytes)
            break;
        isWhole = !Fill(0);
    }
    m_at += used;
    return {m_bytes.data() + m_at - used, used};
}

std::string_view CsvWindow::Bytes(std::size_t count) {
    while (m_filled - m_at < count && Fill(count - (m_filled - m_at))) {
    }
    std::string_view const bytes(m_bytes.data() + m_at, std::min(count, m_filled - m_at));
    m_at += bytes.size();
    return bytes;
}

} // namespace zelvar
