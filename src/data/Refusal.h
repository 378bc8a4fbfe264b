#pragma once

#include "zelvar/base/Export.h"

namespace zelvar {

/// A driver that knows data and must not open it says so on its thread, beside the reason that it gives: such a reason
/// is told where "no driver reads it" is passed over in silence.
ZELVAR_API void NoteRefusal();
/// Whether that was said on this thread since the last question.
[[nodiscard]] ZELVAR_API bool TakeRefusal();

} // namespace zelvar
