#pragma once

#include "zelvar/library/ZelvarInit.h"

namespace zelvar {

/// The library, started as long as this object lives: made behind the `QApplication` and before the first window of the
/// library, so that it ends after the last of them. One in a program, on the thread of the windows.
class [[nodiscard]] Library {
public:
    Library() { ZelvarInit(); }
    ~Library() { ZelvarShutdown(); }
    Library(Library const &) = delete;
    Library &operator=(Library const &) = delete;
};

} // namespace zelvar
