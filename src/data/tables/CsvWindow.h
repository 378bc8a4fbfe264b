#pragma once

#include "zelvar/data/tables/CsvReader.h"

namespace zelvar {

/// Shows the records of a stretch of a file, some at a time, in one piece and with the blank lines before each.
class CsvWindow {
public:
    CsvWindow(CsvReader::Read const &read, char separator) : m_read(&read), m_separator(separator) {}

    static constexpr std::uint64_t kToTheEnd = ~std::uint64_t{0};
    /// Goes to a place where a record begins; `end` is one where a record ends, or `kToTheEnd`.
    void GoTo(std::uint64_t begin, std::uint64_t end);
    /// The next `most` records, or, before the end and before one of more than `mostBytes`, fewer; `count` of them.
    /// Valid until the next call.
    [[nodiscard]] std::string_view Next(int most, std::size_t mostBytes, int &count);
    /// The next bytes, all of them; fewer at the end of the file.
    [[nodiscard]] std::string_view Bytes(std::size_t count);
    /// Where the next record begins.
    [[nodiscard]] std::uint64_t Position() const { return m_file - (m_filled - m_at); }

private:
    [[nodiscard]] bool Fill(std::size_t least);

    CsvReader::Read const *m_read; ///< not owned
    char m_separator;
    std::uint64_t m_file = 0; ///< offset of what is read next
    std::uint64_t m_end = 0;
    DString m_bytes;          ///< room
    std::size_t m_filled = 0; ///< of it that holds bytes of the file
    std::size_t m_at = 0;     ///< of them that are used up
};

} // namespace zelvar
