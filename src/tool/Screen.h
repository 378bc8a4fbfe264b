#pragma once

namespace zelvar::tool {

/// Chooses where windows go, before the application object is made: off screen, with a word on stderr, where there is
/// no display. True if a person can work a dialog.
bool ChoosePlatform();
/// Where few fonts are installed the toolkit's first choice can be one of fixed pitch.
void AvoidTypewriter();
/// Words to the user go to stderr, where nobody could close a box.
void SpeakOnStderr();

} // namespace zelvar::tool
