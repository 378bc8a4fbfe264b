#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/dialogs/core/MessageBoxFlags.h"

#include <functional>

class QWidget;

namespace zelvar {

/// Extended message box: adds to the platform's message box a check box "Don't ask me again", two more sets of buttons,
/// and a button for the help file named after the program.
///
/// `type` joins `MessageBoxFlags`. The answer is the id of the button, and `MB_DONTASKAGAIN` besides if the check box
/// was shown and is checked; what that means is the caller's affair, nothing is kept. Without a button that cancels,
/// neither Escape nor the frame closes the box; with one they are that button. Control+C copies the whole box as text,
/// or what is selected of it.
///
/// All texts may be null. Without a caption it is the application's title: its display name if one was set, that is, if
/// it is not the name of the program's file; else "Error". Markup in texts is shown as it is written. The stop sign on
/// top of all windows (`MB_ICONHAND | MB_SYSTEMMODAL`) is the platform's own message box: no check box, no help, and
/// the sets that it does not know are a lone "OK".
///
/// User-interface thread. A box may be asked for while another one is up. 2 if its parent dies meanwhile, or if there
/// is no memory for it.
ZELVAR_API int XMessageBox(QWidget *parent, char const *text, char const *caption, unsigned type,
                           char const *checkText = nullptr, unsigned helpId = 0);

/// Where the help button leads.
struct MessageBoxHelp {
    /// The file whose ending is replaced by ".html"; empty for the program's own. A name without "." has no help.
    DString module{};
    /// Shows the help file; `helpId` 0 for its contents. Without one the desktop opens a file that exists, at the
    /// anchor of that number.
    std::function<void(DString const &file, unsigned helpId)> open{};
};
ZELVAR_API void SetMessageBoxHelp(MessageBoxHelp help);
/// Whether the help button would lead anywhere: there is a help file, or `open` that gets its name.
[[nodiscard]] ZELVAR_API bool HasMessageBoxHelp();

} // namespace zelvar
