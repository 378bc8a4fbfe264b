#pragma once

#include "zelvar/tool/CommandLine.h"

namespace zelvar::tool {

/// Chooses where windows go, before the application object is made: off screen, with a word on stderr, where there is
/// no display, and then in English unless ZELVAR_LANGUAGE says something else. True if a person can work a dialog.
bool ChoosePlatform();
/// Sets what all windows have in common, once the application object is made: the name and picture that desktops know
/// the command by, a readable font where few are installed, what screen readers take for a window, and the direction
/// that `arguments` ask for.
void PrepareWindows(Arguments const &arguments);
/// Words to the user go to stderr, where nobody could close a box.
void SpeakOnStderr();

} // namespace zelvar::tool
