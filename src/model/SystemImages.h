#pragma once

#include "zelvar/base/ImageList.h"

namespace zelvar {

/// The one list of small pictures that all items of the shell namespace share. Any thread.
[[nodiscard]] ImageList &SystemImages();

} // namespace zelvar
