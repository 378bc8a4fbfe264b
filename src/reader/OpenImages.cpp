#include "zelvar/reader/OpenImages.h"

#include "zelvar/data/RDIDriverMngr.h"

namespace zelvar::reader {

OpenImages::Image::~Image() {
    constexpr bool discardChanges = true;
    if (handle != nullptr)
        driver->CloseFile(handle, discardChanges);
}

bool OpenImages::Image::HasChannel(int channel) const { return channel >= 0 && channel < driver->GetNumChnl(handle); }

std::unique_ptr<wire::ChannelT> OpenImages::Image::Describe(int channel) const {
    auto facts = std::make_unique<wire::ChannelT>();
    RDIGeoCoo const geo = driver->GetChnlGeoCode(handle, channel);
    facts->sizeX = driver->GetChnlSizeX(handle, channel);
    facts->sizeY = driver->GetChnlSizeY(handle, channel);
    facts->dataType = driver->GetChnlDataType(handle, channel);
    facts->slices = geo.numSlices;
    facts->timeFrames = geo.numTimeFrames;
    return facts;
}

OpenImages::Image *OpenImages::Find(wire::ImageSpecT const &spec, DError &error) {
    if (Image *const open = m_images.Find(spec.id); open != nullptr)
        return open;
    auto image = std::make_unique<Image>();
    image->driver = RDIDriverMngr::Instance()->GetDriver(spec.driver.c_str());
    if (image->driver == nullptr) {
        error.Set("no raster driver " + spec.driver, DError::Cause::NotSupported);
        return nullptr;
    }
    error.Clear();
    BDIMoniker const moniker(spec.moniker, nullptr);
    RDIDriver &asked = *image->driver;
    image->handle = spec.family ? asked.OpenFileInFamily(moniker, &image->driver, m_stop, &error)
                                : asked.OpenFile(moniker, m_stop, &error);
    if (image->handle == nullptr) {
        if (!error.IsSet())
            error.Set(spec.driver + " does not open " + spec.moniker);
        return nullptr;
    }
    return m_images.Add(spec.id, std::move(image));
}

} // namespace zelvar::reader
