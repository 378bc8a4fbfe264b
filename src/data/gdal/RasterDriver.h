#pragma once

#include "zelvar/data/RDIDriver.h"
#include "zelvar/data/gdal/Formats.h"

namespace zelvar::gdal {

/// Raster driver over one of GDAL's formats. All of them are one family.
class RasterDriver : public RDIDriver {
public:
    explicit RasterDriver(Format const &format) : m_format(format) {}

    [[nodiscard]] DString GetId() const override { return m_format.id; }
    [[nodiscard]] DString GetInfo() const override { return m_format.name; }
    [[nodiscard]] DString GetExtensions() const override { return m_format.extensions; }
    [[nodiscard]] DString GetFamily() const override;

    [[nodiscard]] int IsMyFile(char const *path) const override;
    [[nodiscard]] std::vector<DString> FindInFamily(char const *path) const override;
    void *OpenFile(BDIMoniker const &moniker, StopSignal const *stop, DError *error) override;
    void *OpenFileInFamily(BDIMoniker const &moniker, RDIDriver **opener, StopSignal const *stop,
                           DError *error) override;
    void CloseFile(void *handle, bool discardChanges) override;

    [[nodiscard]] int GetNumChnl(void *handle) const override;
    [[nodiscard]] int GetChnlSizeX(void *handle, int channel) const override;
    [[nodiscard]] int GetChnlSizeY(void *handle, int channel) const override;
    [[nodiscard]] int GetChnlDataType(void *handle, int channel) const override;
    /// More than 1 and 1 for netCDF variables with dimensions of time or height; other formats give slices and moments
    /// as channels or as images of their own.
    [[nodiscard]] RDIGeoCoo GetChnlGeoCode(void *handle, int channel) const override;
    /// "RDI_Drvr_Info": the format and its compression, as "GeoTIFF, LZW".
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

private:
    Format const &m_format; ///< the catalogue's
};

} // namespace zelvar::gdal
