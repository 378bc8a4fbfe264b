// What other people's libraries do is not ours to mend: fontconfig loses the pattern of the font that it finds for a
// sign which the dialog's font does not have, and GDAL takes its own locks in changing order. Our code is checked as
// anywhere else.
#include "zelvar/base/Export.h"

// NOLINTBEGIN(bugprone-reserved-identifier): the names are the sanitizers'
#if defined(__SANITIZE_ADDRESS__)
extern "C" ZELVAR_API char const *__lsan_default_suppressions();
extern "C" char const *__lsan_default_suppressions() { return "leak:libfontconfig.so\n"; }
#endif
#if defined(__SANITIZE_THREAD__)
extern "C" ZELVAR_API char const *__tsan_default_suppressions();
extern "C" char const *__tsan_default_suppressions() { return "deadlock:libgdal.so\n"; }
#endif
// NOLINTEND(bugprone-reserved-identifier)
