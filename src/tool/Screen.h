#pragma once

namespace zelvar::tool {

/// Chooses where windows go, before the application object is made: off screen, with a word on stderr, where there is
/// no display. True if a person can work a dialog.
bool ChoosePlatform();
/// Behind the application object: the name and picture that desktops know the command by, and letters of their own
/// widths where few fonts are installed and the toolkit's first choice is one of fixed pitch.
void DressApplication();
/// Words to the user go to stderr, where nobody could close a box.
void SpeakOnStderr();

} // namespace zelvar::tool
