#pragma once

#include "zelvar/data/tables/CsvScan.h"
#include "zelvar/data/tables/CsvWindow.h"
#include "zelvar/data/tables/TableTexts.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace zelvar {

/// Where the rows of a file of comma-separated values lie: the places of every eighth row, found in one pass, with a
/// sum of the bytes of each run of eight, by which a run that is read again proves to be what it was. 12 bytes a run.
///
/// The file is read through a function that any thread may call. A record of more bytes than a row may have ends the
/// table.
class CsvIndex {
public:
    static constexpr std::int64_t kRowsPerRun = 8;

    /// `begin`: of the first row. `bytes` of the file: for the progress.
    CsvIndex(CsvReader::Read read, char separator, std::uint64_t begin, std::uint64_t bytes)
        : m_read(std::move(read)), m_separator(separator), m_bytes(bytes), m_begins{begin} {}

    [[nodiscard]] std::int64_t Rows() const { return m_rows; }
    /// Whether no more rows come. It stays so, whatever becomes of the file.
    [[nodiscard]] bool IsEnd() const { return m_isEnd; }
    /// Of all rows that are known.
    [[nodiscard]] std::uint64_t Bytes() const { return m_begins.back() - m_begins.front(); }
    [[nodiscard]] std::size_t RunCount() const { return m_sums.size(); }
    [[nodiscard]] char Separator() const { return m_separator; }
    /// Goes on until so many rows are known, or the end is, or so many bytes have been looked at. False if it is
    /// stopped; what was found counts. A file that has grown since `mostInAll` bytes of rows were all of them ends
    /// there.
    [[nodiscard]] bool Extend(std::int64_t rows, std::uint64_t mostBytes, StopPoll &stop,
                              std::uint64_t mostInAll = CsvWindow::kToTheEnd);
    /// A sum over the first `rows`, as many as were known at some time.
    [[nodiscard]] std::uint64_t DigestOf(std::int64_t rows) const;

    /// Reads runs again. One a thread.
    class RunReader;

private:
    [[nodiscard]] static std::uint32_t SumOf(std::string_view bytes);

    CsvReader::Read m_read;
    char m_separator;
    std::uint64_t m_bytes;
    std::int64_t m_rows = 0;
    bool m_isEnd = false;
    std::vector<std::uint64_t> m_begins; ///< of each run, and the end of the last
    std::vector<std::uint32_t> m_sums;   ///< of each run
};

class CsvIndex::RunReader {
public:
    explicit RunReader(CsvIndex const &index) : m_index(&index), m_window(index.m_read, index.m_separator) {}

    /// Shows the records of runs from `first` up to `last` to `visit(row, scan)`, which may take fields from the scan.
    /// False, before the rows of a run that is not what it was, if the file has changed.
    template <class Visit>
    [[nodiscard]] bool ForEach(std::size_t first, std::size_t last, Visit &&visit) {
        std::vector<std::uint64_t> const &begins = m_index->m_begins;
        m_window.GoTo(begins[first], begins[last]);
        for (std::size_t run = first; run < last; ++run) {
            std::string_view const bytes = m_window.Bytes(static_cast<std::size_t>(begins[run + 1] - begins[run]));
            if (SumOf(bytes) != m_index->m_sums[run])
                return false;
            CsvScan scan(bytes, m_index->m_separator);
            for (std::int64_t row = static_cast<std::int64_t>(run) * kRowsPerRun; scan.Next(); ++row)
                visit(row, scan);
        }
        return true;
    }

private:
    CsvIndex const *m_index; ///< not owned
    CsvWindow m_window;
};

} // namespace zelvar
