#include "zelvar/data/gdal/GdalPlugin.h"

#include "zelvar/data/gdal/OptionLists.h"
#include "zelvar/data/gdal/Source.h"

#include <gdal.h>

namespace zelvar::gdal {

DriverOptionLists GdalPlugin::GetOptions() const {
    return {.open = OpenOptionsOf(GetId()), .create = CreationOptionsOf(GetId())};
}

DString GdalPlugin::TellFormat(BDIMoniker const &moniker) const {
    std::optional<Source> const source = Resolve(moniker, nullptr);
    zelvar::gdal::Format const *const format =
        source ? Identify(*source, GDAL_OF_RASTER | GDAL_OF_VECTOR, nullptr) : nullptr;
    return format == nullptr ? DString() : format->id;
}

} // namespace zelvar::gdal
