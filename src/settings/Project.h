#pragma once

#include "zelvar/base/DString.h"

namespace zelvar {

// What the user works on: folders, formats, histories and favourites are kept for it beside what is kept for kinds of
// documents, and come first while it is set. Any thread.

/// A name or path of the application's choice, the same whenever the project is opened; empty for none.
ZELVAR_API void SetProject(DString project);
[[nodiscard]] ZELVAR_API DString GetProject();
/// What stands under `key` of the present project is kept under this one; empty without a project.
[[nodiscard]] ZELVAR_API DString KeyOfProject(DString const &key);

} // namespace zelvar
