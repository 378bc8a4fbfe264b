#pragma once

namespace zelvar {

/// A static library's resources are linked only if something names them: to be called before one is used.
void UseDialogResources();

} // namespace zelvar
