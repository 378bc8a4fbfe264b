#pragma once

#include "zelvar/base/Export.h"

class QAccessibleEvent;

namespace zelvar::platform {

/// Tells screen readers. The toolkit drops it on a platform without any.
ZELVAR_API void Announce(QAccessibleEvent &event);
/// From now on it goes there instead; null for the toolkit.
ZELVAR_API void AnnounceThrough(void (*sink)(QAccessibleEvent *));

} // namespace zelvar::platform
