#pragma once

#include "zelvar/base/DString.h"

namespace zelvar {

/// Chooses the language of the library's texts, and of the toolkit's where its own catalogue is installed: "de" or
/// "de_AT", "en" for English, "" for the user's. `ZelvarInit` chooses the user's unless an application has called this
/// before it. Windows that are there keep their texts. "x-pseudo" shows each text in brackets and 40 per cent longer,
/// for finding what is not translated or has too little room. User-interface thread, with a `QApplication` in place.
///
/// The user's is what LANGUAGE, LC_ALL, LC_MESSAGES and LANG say, as everywhere; ZELVAR_LANGUAGE goes before them.
ZELVAR_API void UseLanguage(DString const &language);

/// The user's, unless `UseLanguage` was called or there is no `QApplication`.
void BeginWithUsersLanguage();

} // namespace zelvar
