#pragma once

#include "zelvar/base/Containers.h"
#include "zelvar/base/DFileFrmt.h"
#include "zelvar/base/ICheck.h"

namespace zelvar {

/// Data plug-in: what every driver tells about itself.
class ZELVAR_API DIOPlugin {
public:
    virtual ~DIOPlugin() = default;
    [[nodiscard]] virtual DString GetId() const = 0;
    /// What a caller that wants this very plug-in asks for.
    [[nodiscard]] virtual DString GetName() const { return GetId(); }
    /// Appends the formats that it reads (`mode` 0) or writes (1) of the data types wanted (`BDINodeType` bits), but
    /// for those that `check` (may be null) declines by their id. The descriptors become the list's owner's.
    virtual void BuildFrmtList(int mode, unsigned dataType, ICheck<DString> const *check, DList<DFileFrmt *> &formats) {
        static_cast<void>(mode), static_cast<void>(dataType), static_cast<void>(check), static_cast<void>(formats);
    }
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
