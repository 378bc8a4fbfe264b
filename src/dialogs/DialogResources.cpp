#include "zelvar/dialogs/DialogResources.h"

#include <QtCore/QtGlobal>

// The macro must stand outside a namespace.
static void InitDialogResources() { Q_INIT_RESOURCE(dialogs); }

namespace zelvar {

void UseDialogResources() {
    static bool const initialised = [] {
        InitDialogResources();
        return true;
    }();
    static_cast<void>(initialised);
}

} // namespace zelvar
