#include "zelvar/data/tables/CsvIndex.h"

#include "zelvar/data/RequestScope.h"

#include <array>
#include <cstring>

namespace zelvar {

namespace {

constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15U;

std::uint64_t Mixed(std::uint64_t sum, std::uint64_t word) {
    sum = (sum ^ word) * kFactor;
    return sum ^ sum >> 32U;
}

} // namespace

std::uint32_t CsvIndex::SumOf(std::string_view bytes) {
    // Two at a time, so that one need not wait for the other.
    std::uint64_t even = bytes.size();
    std::uint64_t odd = 0;
    std::array<std::uint64_t, 2> words{};
    for (; bytes.size() >= sizeof words; bytes.remove_prefix(sizeof words)) {
        std::memcpy(words.data(), bytes.data(), sizeof words);
        even = Mixed(even, words[0]);
        odd = Mixed(odd, words[1]);
    }
    words = {};
    if (!bytes.empty())
        std::memcpy(words.data(), bytes.data(), bytes.size());
    std::uint64_t const sum = Mixed(Mixed(even, words[0]), Mixed(odd, words[1]));
    return static_cast<std::uint32_t>(sum ^ sum >> 32U);
}

bool CsvIndex::Extend(std::int64_t rows, std::uint64_t mostBytes, StopPoll &stop, std::uint64_t mostInAll) {
    CsvWindow window(m_read, m_separator);
    std::uint64_t const begin = m_begins.back();
    window.GoTo(begin, mostInAll == CsvWindow::kToTheEnd ? mostInAll : m_begins.front() + mostInAll);
    while (!m_isEnd && m_rows < rows && m_begins.back() - begin < mostBytes) {
        if (stop.IsStopped())
            return false;
        RequestScope::NoteProgress(static_cast<double>(m_begins.back()), static_cast<double>(m_bytes));
        int count = 0;
        std::string_view const bytes = window.Next(static_cast<int>(kRowsPerRun), ADIDriver::kMostRowBytes, count);
        m_isEnd = count < kRowsPerRun;
        if (count == 0)
            break;
        m_rows += count;
        m_begins.push_back(window.Position());
        m_sums.push_back(SumOf(bytes));
    }
    return true;
}

std::uint64_t CsvIndex::DigestOf(std::int64_t rows) const {
    auto const runs = static_cast<std::size_t>((std::min(rows, m_rows) + kRowsPerRun - 1) / kRowsPerRun);
    std::uint64_t digest = m_begins[runs] - m_begins.front();
    for (std::size_t run = 0; run < runs; ++run)
        digest = Mixed(digest, m_sums[run]);
    return digest;
}

} // namespace zelvar
