#pragma once

#include "zelvar/base/Containers.h"
#include "zelvar/base/DFileFrmt.h"

namespace zelvar {

// The custom imports of the workspace as file formats.

/// Appends a new descriptor for each import that tells its files.
void AppendCustomImports(DList<DFileFrmt *> &formats);
/// The id of the driver for the images of a format: that of the first layer of the import of that name, else the
/// format's own.
[[nodiscard]] DString ImageDriverOf(DFileFrmt const &format);

} // namespace zelvar
