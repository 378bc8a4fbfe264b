// What other people's libraries do is not ours to mend: those behind two formats lose memory of their own when a file
// is damaged, fontconfig the pattern of a font that it finds for a sign, and GDAL takes its own locks in changing
// order. Our code is checked as anywhere else.
#include "zelvar/base/Export.h"

// NOLINTBEGIN(bugprone-reserved-identifier): the names are the sanitizers'
#if defined(__SANITIZE_ADDRESS__)
extern "C" ZELVAR_API char const *__lsan_default_suppressions();
extern "C" char const *__lsan_default_suppressions() {
    return "leak:libnetcdf.so\nleak:libhdf5_serial.so\nleak:libfontconfig.so\n";
}
#endif
#if defined(__SANITIZE_THREAD__)
extern "C" ZELVAR_API char const *__tsan_default_suppressions();
extern "C" char const *__tsan_default_suppressions() { return "deadlock:libgdal.so\n"; }
#endif
// NOLINTEND(bugprone-reserved-identifier)
