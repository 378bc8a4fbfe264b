#pragma once

#include "zelvar/layout/cdxCDynamicWnd.h"

class QEvent;
class QWidget;

namespace zelvar {

/// Hands the events of a hosting window to its layout engine: what dialogs and pages have in common.
///
/// To be called behind the base class's own handling of the event.
void ForwardToEngine(cdxCDynamicWnd &engine, QWidget &window, QEvent &event);

/// Tells the window system what `window` may be resized to.
void ApplyTrackSizes(cdxCDynamicWnd const &engine, QWidget &window);

} // namespace zelvar
