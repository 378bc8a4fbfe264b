#pragma once

#include "zelvar/base/DString.h"

#include <functional>
#include <optional>

class QWidget;

namespace zelvar {

/// Where a table goes.
struct TableTarget {
    DString path;
    DString formatId; ///< as `ADIFile` takes it; may be empty
};

/// Asks the user for it, in a modal dialog of that title over `parent`; nothing if he cancels. What asks stands above
/// the lists, so `library/` brings it in.
using SaveTargetProvider = std::function<std::optional<TableTarget>(QWidget *parent, char const *title)>;
/// Null for nobody: then no list is saved. User-interface thread.
ZELVAR_API void SetSaveTargetProvider(SaveTargetProvider provider);
/// Asks; nothing where there is nobody who could.
[[nodiscard]] ZELVAR_API std::optional<TableTarget> AskSaveTarget(QWidget *parent, char const *title);

} // namespace zelvar
