#pragma once

#include "zelvar/base/DString.h"

#include <string_view>

namespace zelvar {

/// Takes comma-separated values apart where they lie, in memory: the records are those of `CsvReader`, in UTF-8, and
/// nothing is copied that need not be.
class CsvScan {
public:
    /// `text` begins where a record may begin and ends where one ends; it outlives this.
    CsvScan(std::string_view text, char separator)
        : m_at(text.data()), m_end(text.data() + text.size()), m_separator(separator) {}

    /// Steps to the next record, over what is left of the last one; false if there is none.
    [[nodiscard]] bool Next();
    /// The next field of the record, valid until the next call; an empty one behind the last.
    [[nodiscard]] std::string_view Field();
    /// Steps over so many fields.
    void Skip(std::size_t fields);

    /// Where the record ends that begins at `text`'s beginning or behind blank lines, its line end included; `npos` if
    /// the text ends before. `isWhole`: the text's end ends a record too.
    [[nodiscard]] static std::size_t RecordEnd(std::string_view text, char separator, bool isWhole);

private:
    /// The end of its text, before what ends it.
    char const *SkipField();

    char const *m_at;
    char const *m_end;
    char m_separator;
    bool m_hasField = false; ///< the record goes on
    DString m_joined;        ///< a field that does not lie in one piece
};

} // namespace zelvar
