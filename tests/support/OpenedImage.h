#pragma once

#include "support/TestFiles.h"
#include "zelvar/data/RDIDriverMngr.h"

#include <vector>

namespace zelvar::test {

/// An image opened by the manager of the drivers, closed at the end.
class OpenedImage : Pinned {
public:
    explicit OpenedImage(DString const &moniker, DString const &driverId = {}, StopSignal const *stop = nullptr) {
        RDIDriverMngr::Instance()->OpenFile({moniker, nullptr}, &driver, &handle, "", &error, driverId.c_str(), stop);
    }
    ~OpenedImage() {
        if (handle != nullptr)
            driver->CloseFile(handle, true);
    }
    explicit operator bool() const { return handle != nullptr; }

    /// Empty if they cannot be read.
    template <class Sample>
    [[nodiscard]] std::vector<Sample> Read(double x, double y, double width, double height, int outWidth, int outHeight,
                                           int resampling, int channel = 0) const {
        std::vector<Sample> samples(static_cast<std::size_t>(outWidth) * static_cast<std::size_t>(outHeight));
        if (!driver->ReadBlockRsmpl(handle, channel, x, y, width, height, samples.data(), outWidth, outHeight,
                                    resampling, true, true))
            samples.clear();
        return samples;
    }
    /// A channel of bytes as it is.
    [[nodiscard]] std::vector<unsigned char> Read(int channel) const {
        int const width = driver->GetChnlSizeX(handle, channel);
        int const height = driver->GetChnlSizeY(handle, channel);
        return Read<unsigned char>(0, 0, width, height, width, height, RDIDriver::Nearest, channel);
    }

    RDIDriver *driver = nullptr;
    void *handle = nullptr;
    DError error;
};

} // namespace zelvar::test
