#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/base/FileDescriptor.h"

namespace zelvar {

/// Held while definitions are read, changed and written back, so that of several processes none loses what another has
/// written. A lock of the directory of definitions, which is made for it; it goes with the process.
class ZELVAR_API DefinitionsLock {
public:
    /// Waits a few seconds for another process.
    DefinitionsLock();

    /// Without it nothing is to be written: another process holds it, or nothing can be written there.
    [[nodiscard]] bool IsHeld() const { return m_isHeld; }

private:
    FileDescriptor m_file;
    bool m_isHeld = false;
};

} // namespace zelvar
