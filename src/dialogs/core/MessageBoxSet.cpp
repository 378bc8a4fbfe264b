#include "zelvar/dialogs/core/MessageBoxSet.h"

namespace zelvar {

namespace {

constexpr MessageBoxButton kOk[] = {{"OK", IDOK}};
constexpr MessageBoxButton kOkCancel[] = {{"OK", IDOK}, {"Cancel", IDCANCEL}};
constexpr MessageBoxButton kAbortRetryIgnore[] = {{"&Abort", IDABORT}, {"&Retry", IDRETRY}, {"&Ignore", IDIGNORE}};
constexpr MessageBoxButton kYesNoCancel[] = {{"&Yes", IDYES}, {"&No", IDNO}, {"Cancel", IDCANCEL}};
constexpr MessageBoxButton kYesNo[] = {{"&Yes", IDYES}, {"&No", IDNO}};
constexpr MessageBoxButton kRetryCancel[] = {{"&Retry", IDRETRY}, {"Cancel", IDCANCEL}};
// Callers go by these numbers, whatever they mean elsewhere.
constexpr MessageBoxButton kFileExists[] = {
    {"Keep existing", 2, 100}, {"Override existing", 3, 100}, {"Keep both", 1}, {"Keep recent", 4}};
constexpr MessageBoxButton kContinueAbort[] = {{"&Continue", IDTRYAGAIN}, {"&Abort", IDABORT}};

} // namespace

MessageBoxSet SetOfMessageBox(unsigned type) {
    switch (type & MB_TYPEMASK) {
    case MB_OK:
        return {.buttons = kOk, .counted = 1};
    case MB_OKCANCEL:
        return {.buttons = kOkCancel, .counted = 2, .allowsCancel = true};
    case MB_ABORTRETRYIGNORE:
        return {.buttons = kAbortRetryIgnore, .counted = 3};
    case MB_YESNOCANCEL:
        return {.buttons = kYesNoCancel, .counted = 3, .allowsCancel = true};
    case MB_YESNO:
        return {.buttons = kYesNo, .counted = 2};
    case MB_RETRYCANCEL:
        return {.buttons = kRetryCancel, .counted = 2, .allowsCancel = true};
    case MB_FILEEXISTS:
        return {.buttons = kFileExists, .counted = 4, .extra = 60, .allowsCancel = true};
    case MB_CONTINUEABORT:
        return {.buttons = kContinueAbort, .counted = 2};
    default:
        return {.buttons = kOk, .counted = 0};
    }
}

} // namespace zelvar
