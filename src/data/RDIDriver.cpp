#include "zelvar/data/RDIDriver.h"

#include "zelvar/base/Translation.h"

namespace zelvar {

DString RDIGetDTName(int type) {
    switch (type) {
    case RDI_UInt8:
        return Translated("8 bit unsigned");
    case RDI_UInt16:
        return Translated("16 bit unsigned");
    case RDI_Int16:
        return Translated("16 bit signed");
    case RDI_UInt32:
        return Translated("32 bit unsigned");
    case RDI_Int32:
        return Translated("32 bit signed");
    case RDI_Float32:
        return Translated("32 bit float");
    default:
        return {};
    }
}

std::optional<std::size_t> RDIDriver::FindMyFile(std::vector<DString> const &paths, StopSignal const &stop) const {
    for (std::size_t i = 0; i < paths.size() && !stop; ++i)
        if (IsMyFile(paths[i].c_str()) == 1)
            return i;
    return std::nullopt;
}

} // namespace zelvar
