#pragma once

#include <cstdint>

namespace zelvar {

/// What a message box shows: a set of buttons, an icon and a default button, joined with the single bits at the end.
enum MessageBoxFlags : unsigned {
    MB_OK = 0,
    MB_OKCANCEL = 1,
    MB_ABORTRETRYIGNORE = 2,
    MB_YESNOCANCEL = 3,
    MB_YESNO = 4,
    MB_RETRYCANCEL = 5,
    MB_FILEEXISTS = 6, ///< what to do with a file that exists; the ids are not those of their usual meaning
    MB_CONTINUEABORT = 8,
    MB_TYPEMASK = 0xF,

    MB_ICONHAND = 16, ///< the stop sign
    MB_ICONQUESTION = 32,
    MB_ICONEXCLAMATION = 48,
    MB_ICONASTERISK = 64, ///< the information sign
    MB_ICONMASK = 0xF0,

    MB_DEFBUTTON2 = 256,
    MB_DEFBUTTON3 = 512,
    MB_DEFBUTTON4 = 768,
    MB_DEFMASK = 0xF00,

    MB_SYSTEMMODAL = 0x1000,
    MB_HELP = 0x4000,
    MB_DONTASKAGAIN = 0x1000000, ///< shows the check box; in the answer: it is checked
};

/// Buttons by their customary numbers.
enum ButtonId : std::uint16_t {
    IDOK = 1,
    IDCANCEL = 2,
    IDABORT = 3,
    IDRETRY = 4,
    IDIGNORE = 5,
    IDYES = 6,
    IDNO = 7,
    IDTRYAGAIN = 10,
    IDCONTINUE = 11,
};

} // namespace zelvar
