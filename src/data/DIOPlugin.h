#pragma once

#include "zelvar/base/DString.h"

namespace zelvar {

/// Data plug-in: what every driver tells about itself.
class ZELVAR_API DIOPlugin {
public:
    virtual ~DIOPlugin() = default;
    [[nodiscard]] virtual DString GetId() const = 0;
    /// One line for the log and the property "Driver".
    [[nodiscard]] virtual DString GetInfo() const = 0;
    /// Masks of the files it reads, as "*.tif;*.tiff"; may be empty.
    [[nodiscard]] virtual DString GetExtensions() const { return {}; }
    /// The name shared by drivers of one library that find out by one look which of them reads a file: a manager then
    /// asks the first of them for all. Empty for a driver that stands alone.
    [[nodiscard]] virtual DString GetFamily() const { return {}; }

protected:
    DIOPlugin() = default;
    DIOPlugin(DIOPlugin const &) = default;
    DIOPlugin(DIOPlugin &&) = default;
    DIOPlugin &operator=(DIOPlugin const &) = default;
    DIOPlugin &operator=(DIOPlugin &&) = default;
};

} // namespace zelvar
