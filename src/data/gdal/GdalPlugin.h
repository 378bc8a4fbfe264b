#pragma once

#include "zelvar/data/FormatPlugin.h"

namespace zelvar::gdal {

/// One of GDAL's formats as a plug-in. All of them are one family.
class GdalPlugin final : public FormatPlugin {
public:
    using FormatPlugin::FormatPlugin;

    [[nodiscard]] DString GetFamily() const override { return "GDAL"; }
    [[nodiscard]] DriverOptionLists GetOptions() const override;
    [[nodiscard]] DString TellFormat(BDIMoniker const &moniker) const override;
};

} // namespace zelvar::gdal
