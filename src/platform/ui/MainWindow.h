#pragma once

#include "zelvar/base/Export.h"

#include <functional>

class QDialog;
class QWidget;

namespace zelvar::platform {

/// Names the application's main window; null for the default. Forgotten when the window dies. User-interface thread.
ZELVAR_API void SetMainWindow(QWidget *window);
/// The window named, else the active `QMainWindow`, else the first visible one, else the first. Null without one.
[[nodiscard]] ZELVAR_API QWidget *MainWindow();
/// Whether `window` is a frame window (`QMainWindow`) or stands in one.
[[nodiscard]] ZELVAR_API bool HasFrame(QWidget const *window);
/// Whether the calling thread is the one that windows live on.
[[nodiscard]] ZELVAR_API bool IsWindowThread();
/// Has the windows' thread make the call and waits until it is made. False if there is no such thread, or if it has
/// ended first. Not on that thread itself.
[[nodiscard]] ZELVAR_API bool CallOnWindowThread(std::function<void()> call);

/// A dialog without a parent stays in front of the modal dialog that is up, or of the main window, and comes up in its
/// middle unless it has a place of its own. One that is larger than the screen shrinks, and where it cannot, shows its
/// lower right corner, where the buttons are. To be called before it is shown.
void StandOverMainWindow(QDialog &dialog);

} // namespace zelvar::platform
