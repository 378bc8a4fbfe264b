#pragma once

#include "zelvar/data/tables/ADIDriver.h"

namespace zelvar {

/// Whether a long read should end: its stop signal, or in the application's own process the scope of whoever asks.
class ZELVAR_API StopPoll {
public:
    explicit StopPoll(StopSignal const *stop) : m_stop(stop) {}
    /// Cheap enough for each row.
    [[nodiscard]] bool IsStopped();

private:
    StopSignal const *m_stop; ///< not owned, may be null
    unsigned m_looks = 0;
};

/// Appends a text as valid UTF-8, cut where it is longer than `most` bytes.
ZELVAR_API void AppendText(DString &out, std::string_view text, std::size_t most);

/// Finds out what columns of plain text hold, cell by cell: numbers that keep all that is written as such, or texts.
class ZELVAR_API TypeSuggestion {
public:
    explicit TypeSuggestion(std::size_t columns) : m_types(columns, ADICol_None) {}
    void Look(std::size_t column, std::string_view text);
    /// A text where nothing was seen.
    [[nodiscard]] ADIColType Of(std::size_t column) const {
        return m_types[column] == ADICol_None ? ADICol_String : m_types[column];
    }

private:
    std::vector<ADIColType> m_types;
};
/// Of one text. A zero in front of a number, as of an article's, makes it a text.
[[nodiscard]] ZELVAR_API ADIColType SuggestedType(std::string_view text);

} // namespace zelvar
