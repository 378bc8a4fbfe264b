#pragma once

class QWidget;

namespace zelvar::tool {

/// With ZELVAR_TRACE_FIRST_PAINT set: one line on stderr when the window has been painted for the first time, with the
/// milliseconds since the process began. For `make bench`.
void TraceFirstPaint(QWidget &window);

} // namespace zelvar::tool
