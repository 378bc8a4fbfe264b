#include "zelvar/data/stack/SeriesDriver.h"

#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/data/stack/SeriesImage.h"

#include <cstring>
#include <new>

namespace zelvar {

namespace {

SeriesImage &Of(void *handle) { return *static_cast<SeriesImage *>(handle); }

} // namespace

DString SeriesDriver::GetId() const { return kSeriesDriver; }

int SeriesDriver::IsMyFile(char const *path) const {
    auto const place = SeriesOf({path == nullptr ? "" : path, nullptr});
    return place && HasMembers(*place) ? 1 : 0;
}

void *SeriesDriver::OpenFile(BDIMoniker const &moniker, StopSignal const *stop, DError *error) {
    DError reason;
    std::unique_ptr<SeriesImage> image;
    try {
        image = SeriesImage::Open(moniker, stop, reason);
    } catch (std::bad_alloc const &) {
        reason.Set("no memory for \"" + moniker.GetText() + "\"");
    }
    if (image == nullptr && error != nullptr)
        *error = reason;
    return image.release();
}

void SeriesDriver::CloseFile(void *handle, bool) { delete static_cast<SeriesImage *>(handle); }

int SeriesDriver::GetNumChnl(void *handle) const { return Of(handle).Channels(); }

int SeriesDriver::GetChnlSizeX(void *handle, int channel) const {
    return GetChnlDataType(handle, channel) == RDI_None ? 0 : Of(handle).SizeX();
}

int SeriesDriver::GetChnlSizeY(void *handle, int channel) const {
    return GetChnlDataType(handle, channel) == RDI_None ? 0 : Of(handle).SizeY();
}

int SeriesDriver::GetChnlDataType(void *handle, int channel) const { return Of(handle).DataType(channel); }

RDIGeoCoo SeriesDriver::GetChnlGeoCode(void *handle, int) const { return Of(handle).GeoCode(); }

DString SeriesDriver::GetAttrString(char const *name, void *handle, int channel) const {
    SeriesImage &image = Of(handle);
    if (std::strcmp(name, "RDI_Drvr_Info") == 0) {
        DString const members = image.TextOf(name, channel);
        return members + (members.empty() ? "" : ", ") + "series of " + std::to_string(image.MemberCount()) + " files";
    }
    if (std::strcmp(name, kSeriesMembers) == 0)
        return image.Summary();
    if (std::strcmp(name, kSeriesCheck) == 0)
        return image.TakeOnCheck().ToText();
    return image.TextOf(name, channel);
}

int SeriesDriver::GetAttrInt(char const *name, void *handle, int channel) const {
    // One channel with a palette may be one of several here.
    bool const isPalette = std::strcmp(name, "RDI_Drvr_Palette") == 0;
    return isPalette && Of(handle).Channels() != 1 ? 0 : Of(handle).NumberOf(name, channel);
}

bool SeriesDriver::ReadBlockRsmpl(void *handle, int channel, double x, double y, double width, double height,
                                  void *buffer, int outWidth, int outHeight, int resampling, bool usePyramid,
                                  bool clip) {
    return ReadChannelsRsmpl(handle, channel, 1, x, y, width, height, buffer, outWidth, outHeight, resampling,
                             usePyramid, clip);
}

bool SeriesDriver::ReadChannelsRsmpl(void *handle, int channel, int count, double x, double y, double width,
                                     double height, void *buffer, int outWidth, int outHeight, int resampling,
                                     bool usePyramid, bool clip) {
    try {
        return buffer != nullptr &&
               Of(handle).Read(channel, count,
                               {{x, y, width, height, outWidth, outHeight}, resampling, usePyramid, clip},
                               static_cast<unsigned char *>(buffer));
    } catch (std::bad_alloc const &) {
        return false;
    }
}

DError SeriesDriver::GetReadError(void *handle) const { return Of(handle).LastError(); }

bool SeriesDriver::SalvageRsmpl(void *handle, int channel, int count, RDIWindow const &window, void *buffer,
                                RDIRowsRead &read) {
    return buffer != nullptr && Of(handle).Salvage(channel, count, window, buffer, read);
}

bool SeriesDriver::ReadPaletteRsmpl(void *handle, double x, double y, double width, double height, void *rgb,
                                    int outWidth, int outHeight) {
    SeriesWindow const window{{x, y, width, height, outWidth, outHeight}};
    return rgb != nullptr && Of(handle).ReadPalette(window, static_cast<unsigned char *>(rgb));
}

void RegisterSeriesDriver() {
    RDIDriverMngr &rasters = *RDIDriverMngr::Instance();
    if (!rasters.Drivers().empty())
        rasters.Add(std::make_unique<SeriesDriver>());
}

} // namespace zelvar
