#pragma once

#include "zelvar/data/RDIDriver.h"

namespace zelvar {

/// Raster driver over a numbered series of files, "folder/s[001-120].tif": one image, whose members whatever other
/// drivers of this process read. See `SeriesImage` and `SeriesLayout`; the option "SERIES=frames" lays the one number
/// out in time, "SERIES=slices" in depth, which it is without. Other options are the members'.
class SeriesDriver : public RDIDriver {
public:
    [[nodiscard]] DString GetId() const override;
    [[nodiscard]] DString GetInfo() const override { return "Numbered series of files"; }

    [[nodiscard]] int IsMyFile(char const *path) const override;
    void *OpenFile(BDIMoniker const &moniker, StopSignal const *stop, DError *error) override;
    void CloseFile(void *handle, bool discardChanges) override;

    [[nodiscard]] int GetNumChnl(void *handle) const override;
    [[nodiscard]] int GetChnlSizeX(void *handle, int channel) const override;
    [[nodiscard]] int GetChnlSizeY(void *handle, int channel) const override;
    [[nodiscard]] int GetChnlDataType(void *handle, int channel) const override;
    [[nodiscard]] RDIGeoCoo GetChnlGeoCode(void *handle, int channel) const override;
    /// "RDI_Drvr_Info": what the members are, how many of how many, and which are missing. See also `kSeriesMembers`.
    [[nodiscard]] DString GetAttrString(char const *name, void *handle, int channel) const override;
    [[nodiscard]] int GetAttrInt(char const *name, void *handle, int channel) const override;
    bool ReadBlockRsmpl(void *handle, int channel, double x, double y, double width, double height, void *buffer,
                        int outWidth, int outHeight, int resampling, bool usePyramid, bool clip) override;
    bool ReadChannelsRsmpl(void *handle, int channel, int count, double x, double y, double width, double height,
                           void *buffer, int outWidth, int outHeight, int resampling, bool usePyramid,
                           bool clip) override;
    bool ReadPaletteRsmpl(void *handle, double x, double y, double width, double height, void *rgb, int outWidth,
                          int outHeight) override;
    [[nodiscard]] DError GetReadError(void *handle) const override;
    bool SalvageRsmpl(void *handle, int channel, int count, RDIWindow const &window, void *buffer,
                      RDIRowsRead &read) override;
};

/// Adds the driver to the manager, behind the others, if there are others. To be called by a driver provider.
ZELVAR_API void RegisterSeriesDriver();

} // namespace zelvar
