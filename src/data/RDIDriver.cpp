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

std::vector<DString> RDIDriver::FindInFamily(char const *path) const {
    return IsMyFile(path) == 1 ? std::vector{GetId()} : std::vector<DString>();
}

bool RDIDriver::ReadChannelsRsmpl(void *handle, int channel, int count, double x, double y, double width, double height,
                                  void *buffer, int outWidth, int outHeight, int resampling, bool usePyramid,
                                  bool clip) {
    if (outWidth < 1 || outHeight < 1)
        return false;
    int const type = GetChnlDataType(handle, channel);
    std::size_t const size = static_cast<std::size_t>(outWidth) * static_cast<std::size_t>(outHeight) *
                             static_cast<std::size_t>(RDIGetDTSize(type));
    auto *plane = static_cast<unsigned char *>(buffer);
    for (int i = channel; i < channel + count; ++i, plane += size)
        if (GetChnlDataType(handle, i) != type ||
            !ReadBlockRsmpl(handle, i, x, y, width, height, plane, outWidth, outHeight, resampling, usePyramid, clip))
            return false;
    return true;
}

} // namespace zelvar
