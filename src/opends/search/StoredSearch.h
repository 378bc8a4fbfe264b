#pragma once

#include "zelvar/opends/search/SearchDraft.h"

#include <vector>

namespace zelvar {

/// A search that is kept, to be run again: what was filled in, and below which places. Ages are ages still. A value.
struct StoredSearch {
    std::vector<DString> places{}; ///< paths of folders, containers or addresses; never none
    SearchDraft draft{};

    /// For settings; nothing for a text that is none.
    [[nodiscard]] DString ToText() const;
    [[nodiscard]] static std::optional<StoredSearch> FromText(DString const &text);
    /// What it is called while nobody gives it a name, in the user's language.
    [[nodiscard]] DString InWords() const;
};

} // namespace zelvar
