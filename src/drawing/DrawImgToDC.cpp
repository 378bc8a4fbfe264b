#include "zelvar/drawing/DrawImgToDC.h"

#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/drawing/OffscreenSurface.h"
#include "zelvar/pixels/DCanvas.h"
#include "zelvar/pixels/ImageFit.h"
#include "zelvar/pixels/ScaleDataBuf.h"

#include <QtGui/QPainter>

#include <algorithm>
#include <cmath>
#include <new>

namespace zelvar {

namespace {

/// One channel as bytes; black where it cannot be read.
std::vector<unsigned char> ReadChannel(RDIDriver &driver, void *handle, int channel, Size image, Size picture) {
    int const type = driver.GetChnlDataType(handle, channel);
    auto const pixels = static_cast<std::size_t>(picture.cx) * static_cast<std::size_t>(picture.cy);
    std::vector<unsigned char> samples(pixels * static_cast<std::size_t>(std::max(RDIGetDTSize(type), 1)));
    if (RDIGetDTSize(type) > 0 && driver.ReadBlockRsmpl(handle, channel, 0.0, 0.0, image.cx, image.cy, samples.data(),
                                                        picture.cx, picture.cy, RDIDriver::Cubic, true, true))
        ScaleDataBuf(type, samples.data(), picture.cx, picture.cy);
    samples.resize(pixels);
    return samples;
}

void ReadPicture(RDIDriver &driver, void *handle, Size image, DCanvas &canvas) {
    int const count = driver.GetNumChnl(handle) < 3 ? 1 : 3;
    for (int channel = 0; channel < count; ++channel) {
        std::vector<unsigned char> const samples =
            ReadChannel(driver, handle, channel, image, {canvas.GetWidth(), canvas.GetHeight()});
        unsigned char *out = canvas.Row(0);
        for (unsigned char const sample : samples) {
            if (count == 1)
                std::fill_n(out, 3, sample);
            else
                out[channel] = sample;
            out += 3;
        }
    }
}

/// The size of one slice at one moment.
Size LogicalSize(RDIDriver const &driver, void *handle) {
    RDIGeoCoo const geo = driver.GetChnlGeoCode(handle, 0);
    return {driver.GetChnlSizeX(handle, 0) / std::max(geo.numTimeFrames, 1),
            driver.GetChnlSizeY(handle, 0) / std::max(geo.numSlices, 1)};
}

} // namespace

bool DrawImgToDC(char const *file, QPainter *dc, Rect const &rect) {
    if (file == nullptr || dc == nullptr || dc->device() == nullptr)
        return false;
    RDIDriver *driver = nullptr;
    void *handle = nullptr;
    DError error;
    if (!RDIDriverMngr::Instance()->OpenFile({file, nullptr}, &driver, &handle, "", &error, ""))
        return false;
    Size const image = LogicalSize(*driver, handle);
    Size const fitted = FitInto(image, {rect.Width(), rect.Height()});
    // Read with the pixels of the device, so that nothing is enlarged on a fine screen.
    qreal const ratio = dc->device()->devicePixelRatioF();
    DCanvas canvas;
    try {
        canvas.SetSize(static_cast<int>(std::lround(fitted.cx * ratio)),
                       static_cast<int>(std::lround(fitted.cy * ratio)));
        if (canvas.HasData())
            ReadPicture(*driver, handle, image, canvas);
    } catch (std::bad_alloc const &) {
        canvas.Clear();
    }
    driver->CloseFile(handle, true);
    if (!canvas.HasData())
        return false;
    dc->drawImage(QRect(rect.left + (rect.Width() - fitted.cx) / 2, rect.top + (rect.Height() - fitted.cy) / 2,
                        fitted.cx, fitted.cy),
                  ImageOver(canvas));
    return true;
}

} // namespace zelvar
