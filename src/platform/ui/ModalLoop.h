#pragma once

#include "zelvar/base/Export.h"

class QAction;
class QDialog;
class QEventLoop;
class QMenu;
class QPoint;

namespace zelvar::platform {

// Every nested event loop of the library runs here.
//
// A loop that is entered from the handler of a posted message would not see the messages already queued behind it until
// something else wakes the dispatcher; and not every window system gives the focus back to where it was. Both are seen
// to: the dispatcher is woken first, the window and the widget that had the focus get it again.
//
// A dialog or menu whose parent dies meanwhile ends as if it were cancelled and belongs to its caller alone from then
// on, who looks whether the rest of the world is still there.

/// `QDialog::exec`. The dialog is not deleted. A dialog that dies while it runs yields `QDialog::Rejected`.
ZELVAR_API int RunModal(QDialog &dialog);
/// `QMenu::exec` at a screen point; null if nothing was picked.
ZELVAR_API QAction *RunMenu(QMenu &menu, QPoint const &screenPoint);
/// `QEventLoop::exec`, for waits that stay stoppable.
ZELVAR_API int RunLoop(QEventLoop &loop);

} // namespace zelvar::platform
