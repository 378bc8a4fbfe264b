#pragma once

#include "zelvar/base/Export.h"

namespace zelvar {

/// Marks a text that users see and that is kept as a constant: it stays as it is written. Where it is shown,
/// `Translated` gives it in the user's language. tools/translations.sh finds what is marked here, or handed to
/// `Translated` and `platform::Shown` directly.
[[nodiscard]] constexpr char const *Mark(char const *text) { return text; }

/// `text` in the language that was chosen, or itself: without a language, and where the catalogue does not have it.
/// What stands for "%s" or "%1" in it is filled in afterwards; sentences are not pieced together. The result lives as
/// long as the process or `text` does. Any thread.
[[nodiscard]] ZELVAR_API char const *Translated(char const *text) __attribute__((format_arg(1)));
/// The form of a text for so many of something, as in "%d row" and "%d rows".
[[nodiscard]] ZELVAR_API char const *Translated(char const *one, char const *many, long long count)
    __attribute__((format_arg(1), format_arg(2)));

/// Looks a text up: `text` is what it was marked as, `english` its form for `count`, 1 for texts without a number. Null
/// if it is not known. The result lives as long as the process. Any thread.
using TranslationHook = char const *(*)(char const *text, char const *english, long long count);
/// Null for English as it stands, which is how it begins. Any thread.
ZELVAR_API void SetTranslationHook(TranslationHook hook);

} // namespace zelvar
