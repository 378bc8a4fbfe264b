#include "zelvar/dialogs/core/MessageBoxSet.h"

namespace zelvar {

namespace {

constexpr MessageBoxButton kOk[] = {{IDOK, "OK"}};
constexpr MessageBoxButton kOkCancel[] = {{IDOK, "OK"}, {IDCANCEL, "Cancel"}};
constexpr MessageBoxButton kAbortRetryIgnore[] = {{IDABORT, "&Abort"}, {IDRETRY, "&Retry"}, {IDIGNORE, "&Ignore"}};
constexpr MessageBoxButton kYesNoCancel[] = {{IDYES, "&Yes"}, {IDNO, "&No"}, {IDCANCEL, "Cancel"}};
constexpr MessageBoxButton kYesNo[] = {{IDYES, "&Yes"}, {IDNO, "&No"}};
constexpr MessageBoxButton kRetryCancel[] = {{IDRETRY, "&Retry"}, {IDCANCEL, "Cancel"}};
// Callers go by these numbers, whatever they mean elsewhere.
constexpr MessageBoxButton kFileExists[] = {
    {2, "Keep existing", 100}, {3, "Override existing", 100}, {1, "Keep both"}, {4, "Keep recent"}};
constexpr MessageBoxButton kContinueAbort[] = {{IDTRYAGAIN, "&Continue"}, {IDABORT, "&Abort"}};

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
