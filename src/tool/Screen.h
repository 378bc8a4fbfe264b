#pragma once

namespace zelvar::tool {

/// Chooses where windows go, before the application object is made: off screen, with a word on stderr, where there is
/// no display. True if a person can work a dialog.
bool ChoosePlatform();
/// Behind the application object: a font that can be read, and windows that screen readers know as such.
void PrepareWindows();
/// Words to the user go to stderr, where nobody could close a box.
void SpeakOnStderr();

} // namespace zelvar::tool
