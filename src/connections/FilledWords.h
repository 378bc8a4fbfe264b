#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Translation.h"

#include <initializer_list>

namespace zelvar {

/// The marked text in the user's language with the values for each "%s", in turn: for texts that are picked at run
/// time.
[[nodiscard]] inline DString FilledWords(char const *words, std::initializer_list<DString> values) {
    DString text = Translated(words);
    std::size_t at = 0;
    for (DString const &value : values) {
        at = text.find("%s", at);
        if (at == DString::npos)
            break;
        text.replace(at, 2, value);
        at += value.size(); // a value may hold anything
    }
    return text;
}
[[nodiscard]] inline DString FilledWords(char const *words, DString const &value) {
    return FilledWords(words, {value});
}

} // namespace zelvar
