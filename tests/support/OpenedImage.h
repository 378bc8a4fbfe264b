#pragma once

#include "support/RealDrivers.h"
#include "support/TestFiles.h"
#include "zelvar/data/RDIDriverMngr.h"

#include <vector>

namespace zelvar::test {

/// Opens one image with the real drivers.
class OpenedImage : Pinned {
public:
    explicit OpenedImage(DString const &moniker, DString const &driverId = {}, StopSignal const *stop = nullptr) {
        UseRealDrivers();
        RDIDriverMngr::Instance()->OpenFile({moniker, nullptr}, &driver, &handle, "", &error, driverId.c_str(), stop);
    }
    ~OpenedImage() {
        if (handle != nullptr)
            driver->CloseFile(handle, true);
    }
    explicit operator bool() const { return handle != nullptr; }

    template <class Sample>
    [[nodiscard]] std::vector<Sample> Read(double x, double y, double width, double height, int outWidth, int outHeight,
                                           int resampling, int channel = 0) const {
        std::vector<Sample> samples(static_cast<std::size_t>(outWidth) * static_cast<std::size_t>(outHeight));
        if (!driver->ReadBlockRsmpl(handle, channel, x, y, width, height, samples.data(), outWidth, outHeight,
                                    resampling, true, true))
            samples.clear();
        return samples;
    }

    RDIDriver *driver = nullptr;
    void *handle = nullptr;
    DError error;
};

} // namespace zelvar::test
