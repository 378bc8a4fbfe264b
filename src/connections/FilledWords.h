#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Translation.h"

namespace zelvar {

/// The marked text in the user's language with `value` for its "%s": for texts that are picked at run time.
[[nodiscard]] inline DString FilledWords(char const *words, DString const &value) {
    DString text = Translated(words);
    if (std::size_t const at = text.find("%s"); at != DString::npos)
        text.replace(at, 2, value);
    return text;
}

} // namespace zelvar
