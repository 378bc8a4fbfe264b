#pragma once

#include "zelvar/base/DString.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace zelvar {

/// The fields of one record.
struct CsvRecord {
    DString texts; ///< one behind the other, as the file has them, in UTF-8 where it was in UTF-16
    std::vector<std::size_t> ends;

    [[nodiscard]] std::size_t Count() const { return ends.size(); }
    [[nodiscard]] std::string_view Field(std::size_t i) const {
        std::size_t const begin = i == 0 ? 0 : ends[i - 1];
        return std::string_view(texts).substr(begin, ends[i] - begin);
    }
};

/// Takes comma-separated values apart, record by record: fields in quotes may hold separators, line ends and doubled
/// quotes; lines end in LF, CR LF or CR; blank lines are no records. Understands UTF-16 by its mark.
class ZELVAR_API CsvReader {
public:
    /// Reads up to `size` bytes at `offset`; 0 at the end.
    using Read = std::function<std::size_t(std::uint64_t offset, char *buffer, std::size_t size)>;

    explicit CsvReader(Read read);
    void SetSeparator(char separator) { m_separator = separator; }
    [[nodiscard]] char Separator() const { return m_separator; }

    enum class Result { Record, End, TooLong };
    Result Next(CsvRecord &record, std::size_t mostBytes);
    /// Whether a mark at its beginning says what the text is written in.
    [[nodiscard]] bool IsMarked() const { return m_mark != 0; }
    /// The bytes at the beginning of the text, at most so many, without going on.
    [[nodiscard]] std::string_view Peek(std::size_t bytes);

    /// Where the next record begins in the file; -1 where a text in another encoding hides it.
    [[nodiscard]] std::int64_t Position() const;
    /// Goes on from such a place, or, from -1, from the beginning.
    void GoTo(std::int64_t position);

private:
    enum class Encoding { Bytes, LittleEndian16, BigEndian16 };
    [[nodiscard]] bool Fill();
    void AppendUtf16(std::string_view bytes);
    [[nodiscard]] bool HasByte() { return m_at < m_text.size() || Fill(); }
    [[nodiscard]] bool ReadQuoted(CsvRecord &record, std::size_t mostBytes);
    [[nodiscard]] bool ReadPlain(CsvRecord &record, std::size_t mostBytes);

    Read m_read;
    Encoding m_encoding = Encoding::Bytes;
    std::size_t m_mark = 0;   ///< bytes of the mark of the encoding
    std::uint64_t m_file = 0; ///< offset of what is read next
    DString m_text;           ///< read, in UTF-8
    std::size_t m_at = 0;     ///< of it that is used up
    std::uint32_t m_high = 0; ///< first half of a character whose second is still to come
    DString m_raw;            ///< room to read into
    char m_separator = ',';
};

/// The separator that the first line speaks for; a comma where there is none.
[[nodiscard]] ZELVAR_API char GuessSeparator(std::string_view text);

} // namespace zelvar
