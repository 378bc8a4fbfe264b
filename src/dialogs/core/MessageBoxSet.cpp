#include "zelvar/dialogs/core/MessageBoxSet.h"

#include "zelvar/base/Translation.h"

namespace zelvar {

namespace {

constexpr MessageBoxButton kOk[] = {{Mark("OK"), IDOK}};
constexpr MessageBoxButton kOkCancel[] = {{Mark("OK"), IDOK}, {Mark("Cancel"), IDCANCEL}};
constexpr MessageBoxButton kAbortRetryIgnore[] = {
    {Mark("&Abort"), IDABORT}, {Mark("&Retry"), IDRETRY}, {Mark("&Ignore"), IDIGNORE}};
constexpr MessageBoxButton kYesNoCancel[] = {{Mark("&Yes"), IDYES}, {Mark("&No"), IDNO}, {Mark("Cancel"), IDCANCEL}};
constexpr MessageBoxButton kYesNo[] = {{Mark("&Yes"), IDYES}, {Mark("&No"), IDNO}};
constexpr MessageBoxButton kRetryCancel[] = {{Mark("&Retry"), IDRETRY}, {Mark("Cancel"), IDCANCEL}};
// Callers go by these numbers, whatever they mean elsewhere.
constexpr MessageBoxButton kFileExists[] = {{Mark("Keep existing"), 2, 100},
                                            {Mark("Override existing"), 3, 100},
                                            {Mark("Keep both"), 1},
                                            {Mark("Keep recent"), 4}};
constexpr MessageBoxButton kContinueAbort[] = {{Mark("&Continue"), IDTRYAGAIN}, {Mark("&Abort"), IDABORT}};

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
