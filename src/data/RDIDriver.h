#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/DIOPlugin.h"
#include "zelvar/data/RDIWindow.h"
#include "zelvar/data/StopSignal.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace zelvar {

/// Raster data interface, geo code: slices lie one under the other and time frames side by side in the channel.
struct RDIGeoCoo {
    int numSlices = 1;
    int numTimeFrames = 1;
};

/// Sample types of channels.
enum RDIDataType {
    RDI_None = 0,
    RDI_UInt8 = 1,
    RDI_UInt16 = 2,
    RDI_Int16 = 4,
    RDI_UInt32 = 8,
    RDI_Int32 = 16,
    RDI_Float32 = 32,
};
/// "8 bit unsigned" and so on; empty for another number.
[[nodiscard]] ZELVAR_API DString RDIGetDTName(int type);
/// Bytes of a sample; 0 for another number.
[[nodiscard]] constexpr int RDIGetDTSize(int type) {
    return type == RDI_UInt8                                                ? 1
           : type == RDI_UInt16 || type == RDI_Int16                        ? 2
           : type == RDI_UInt32 || type == RDI_Int32 || type == RDI_Float32 ? 4
                                                                            : 0;
}

/// Raster data interface driver: reads channels of images.
///
/// A handle belongs to the thread that opened it.
class ZELVAR_API RDIDriver : public DIOPlugin {
public:
    /// 1 if this driver reads the file; cheap, as `BDIDrvr::CanReadPath`.
    [[nodiscard]] virtual int IsMyFile(char const *path) const = 0;
    /// Which of the files is the first that this driver reads; nothing if it is none of them, or once `stop` is set.
    [[nodiscard]] virtual std::optional<std::size_t> FindMyFile(std::vector<DString> const &paths,
                                                                StopSignal const &stop) const;
    /// Ids of those of this one's family that take the file for theirs, the one that opens it without being named in
    /// front; as cheap as `IsMyFile`.
    [[nodiscard]] virtual std::vector<DString> FindInFamily(char const *path) const;
    /// Null if it does not open. `stop` may be null and must outlive the handle.
    virtual void *OpenFile(BDIMoniker const &moniker, StopSignal const *stop, DError *error) = 0;
    virtual void CloseFile(void *handle, bool discardChanges) = 0;
    /// The same for a whole family (`GetFamily`): whichever of its drivers reads the data opens, and is set in
    /// `*opener`.
    virtual void *OpenFileInFamily(BDIMoniker const &moniker, RDIDriver **opener, StopSignal const *stop,
                                   DError *error) {
        *opener = this;
        return OpenFile(moniker, stop, error);
    }

    [[nodiscard]] virtual int GetNumChnl(void *handle) const = 0;
    [[nodiscard]] virtual int GetChnlSizeX(void *handle, int channel) const = 0;
    [[nodiscard]] virtual int GetChnlSizeY(void *handle, int channel) const = 0;
    [[nodiscard]] virtual int GetChnlDataType(void *handle, int channel) const = 0;
    [[nodiscard]] virtual RDIGeoCoo GetChnlGeoCode(void *handle, int channel) const = 0;

    /// "RDI_Drvr_Info": the driver's description of the file; may be empty.
    /// "RDI_Drvr_Extent": where on the earth a map lies; empty for none.
    /// "RDI_Drvr_NoData": the sample that stands for no data, as a number; empty for none.
    [[nodiscard]] virtual DString GetAttrString(char const *name, void *handle, int channel) const = 0;
    /// "RDI_Drvr_Sppt_Intrnl_RslPrmd": 1 if the file holds a resolution pyramid.
    /// "RDI_Drvr_Palette": 1 if the one channel is shown through a palette, see `ReadPaletteRsmpl`.
    [[nodiscard]] virtual int GetAttrInt(char const *name, void *handle, int channel) const = 0;

    /// Resampling methods.
    /// `AsStored` picks pixels as `Nearest` does, but gives them as they are: NaN, infinities and nodata too.
    enum Resampling { Nearest = 0, Average = 1, Bilinear = 2, Cubic = 3, AsStored = 4 };
    /// Reads the window (`x`, `y`, `width`, `height`, pixels of the channel) into `outWidth` * `outHeight` samples of
    /// the channel's type, rows packed. NaN, infinities and nodata arrive as zeros, but for `AsStored`. With
    /// `usePyramid` overviews are read where they serve; with `clip` a window that leaves the channel is filled with
    /// zeros there. False if it fails or was stopped.
    virtual bool ReadBlockRsmpl(void *handle, int channel, double x, double y, double width, double height,
                                void *buffer, int outWidth, int outHeight, int resampling, bool usePyramid,
                                bool clip) = 0;
    /// The same for `count` channels from `channel` on that have one type: one plane of samples behind the other. What
    /// a file keeps side by side is then decoded once and not once a channel.
    virtual bool ReadChannelsRsmpl(void *handle, int channel, int count, double x, double y, double width,
                                   double height, void *buffer, int outWidth, int outHeight, int resampling,
                                   bool usePyramid, bool clip);
    /// The same for a channel with a palette: `outWidth` * `outHeight` * 3 bytes red, green, blue. False without a
    /// palette.
    virtual bool ReadPaletteRsmpl(void *handle, double x, double y, double width, double height, void *rgb,
                                  int outWidth, int outHeight) {
        static_cast<void>(handle), static_cast<void>(x), static_cast<void>(y), static_cast<void>(width);
        static_cast<void>(height), static_cast<void>(rgb), static_cast<void>(outWidth), static_cast<void>(outHeight);
        return false;
    }

    /// Why pixels could not be read the last time; not set where the driver does not say.
    [[nodiscard]] virtual DError GetReadError(void *handle) const {
        static_cast<void>(handle);
        return {};
    }
    /// For an image that is damaged (`GetReadError`): a window inside it as `ReadChannelsRsmpl` with `Cubic`, a pyramid
    /// and all, or with a `count` of 0 as `ReadPaletteRsmpl`, as far as it goes. What cannot be read is zeros, and
    /// `read` says how many rows of the window came. It may take some seconds longer. False if none came, it was
    /// stopped, or the driver has no such means.
    virtual bool SalvageRsmpl(void *handle, int channel, int count, RDIWindow const &window, void *buffer,
                              RDIRowsRead &read) {
        static_cast<void>(handle), static_cast<void>(channel), static_cast<void>(count), static_cast<void>(window);
        static_cast<void>(buffer), static_cast<void>(read);
        return false;
    }
};

} // namespace zelvar
