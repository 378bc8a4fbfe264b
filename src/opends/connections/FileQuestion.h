#pragma once

#include "zelvar/base/DString.h"

#include <functional>
#include <optional>

class QWidget;

namespace zelvar {

/// A file of definitions to write or to read: its path, or nothing if the user cancels. Modal over `parent`. What asks
/// stands above the open dialog, so `library/` brings it in.
using DefinitionFileProvider = std::function<std::optional<DString>(QWidget *parent, char const *title, bool saves)>;
/// Null for nobody: then nothing is exported or imported. User-interface thread.
ZELVAR_API void SetDefinitionFileProvider(DefinitionFileProvider provider);
[[nodiscard]] std::optional<DString> AskDefinitionFile(QWidget *parent, char const *title, bool saves);

} // namespace zelvar
