#include "zelvar/reader/ImageRequests.h"

#include <algorithm>
#include <cmath>

namespace zelvar::reader {

namespace {

constexpr int kChannelsTold = 4;    // with an image that is opened
constexpr int kMostChannels = 4096; // of one request

/// Whether a driver may be asked for these pixels at all: places are cast to int in many a driver.
bool IsSound(wire::ReadPixelsT const &asked) {
    constexpr double farthest = 2147483648.0;
    auto const isPlace = [](double at) { return std::abs(at) <= farthest; }; // a NaN is none
    auto const isSize = [](double size) { return size > 0 && size <= farthest; };
    return isPlace(asked.x) && isPlace(asked.y) && isSize(asked.width) && isSize(asked.height) && asked.outWidth > 0 &&
           asked.outHeight > 0 && asked.channels > 0 && asked.channels <= kMostChannels &&
           asked.resampling >= RDIDriver::Nearest && asked.resampling <= RDIDriver::AsStored;
}

} // namespace

Answer ImageRequests::Open(wire::OpenImageT const &asked) {
    return With(m_images, asked.image, [&](OpenImages::Image const &image) {
        wire::ImageOpenedT opened;
        opened.driver = image.driver->GetId();
        opened.numChannels = std::max(0, image.driver->GetNumChnl(image.handle));
        for (int channel = 0; channel < std::min(kChannelsTold, opened.numChannels); ++channel)
            opened.channels.push_back(image.Describe(channel));
        opened.info = image.driver->GetAttrString("RDI_Drvr_Info", image.handle, 0);
        if (opened.numChannels > 0) {
            opened.pyramid = image.driver->GetAttrInt("RDI_Drvr_Sppt_Intrnl_RslPrmd", image.handle, 0);
            opened.palette = image.driver->GetAttrInt("RDI_Drvr_Palette", image.handle, 0);
        }
        return Say(std::move(opened));
    });
}

Answer ImageRequests::DescribeChannel(wire::DescribeChannelT const &asked) {
    return With(m_images, asked.image, [&](OpenImages::Image const &image) {
        if (!image.HasChannel(asked.channel))
            return Failure("no such channel");
        wire::ChannelDescribedT described;
        described.channel = image.Describe(asked.channel);
        return Say(std::move(described));
    });
}

Answer ImageRequests::GetAttribute(wire::GetAttributeT const &asked) {
    return With(m_images, asked.image, [&](OpenImages::Image const &image) {
        if (!image.HasChannel(asked.channel))
            return Failure("no such channel");
        wire::AttributeT attribute;
        if (asked.isText)
            attribute.text = image.driver->GetAttrString(asked.name.c_str(), image.handle, asked.channel);
        else
            attribute.number = image.driver->GetAttrInt(asked.name.c_str(), image.handle, asked.channel);
        return Say(std::move(attribute));
    });
}

Answer ImageRequests::ReadPixels(wire::ReadPixelsT const &asked) {
    return With(m_images, asked.image, [&](OpenImages::Image const &image) {
        int const channel = asked.palette ? 0 : asked.channel;
        if (!IsSound(asked) || !image.HasChannel(channel) || !image.HasChannel(channel + (asked.channels - 1)))
            return Failure("no such pixels");
        constexpr int bytesOfColor = 3;
        int const bytesEach = asked.palette
                                  ? bytesOfColor
                                  : asked.channels * RDIGetDTSize(image.driver->GetChnlDataType(image.handle, channel));
        // Two sizes below 2^31: their product fits, one with the bytes of a pixel might not.
        std::uint64_t const pixels =
            static_cast<std::uint64_t>(asked.outWidth) * static_cast<std::uint64_t>(asked.outHeight);
        if (bytesEach == 0 || m_pixels == nullptr ||
            pixels > std::min<std::uint64_t>(asked.bytes, m_pixels->Size()) / static_cast<std::uint64_t>(bytesEach))
            return Failure("no memory for the pixels");
        wire::PixelsReadT read;
        bool const isRead =
            asked.salvage ? Salvage(asked, image, read)
            : asked.palette
                ? image.driver->ReadPaletteRsmpl(image.handle, asked.x, asked.y, asked.width, asked.height,
                                                 m_pixels->Data(), asked.outWidth, asked.outHeight)
                : image.driver->ReadChannelsRsmpl(image.handle, channel, asked.channels, asked.x, asked.y, asked.width,
                                                  asked.height, m_pixels->Data(), asked.outWidth, asked.outHeight,
                                                  asked.resampling, asked.usePyramid, asked.clip);
        if (isRead)
            return Say(read);
        DError const error = image.driver->GetReadError(image.handle);
        return error.IsSet() && !m_stop->load() ? Failure(error)
                                                : Failure(m_stop->load() ? kStopped : "the pixels cannot be read");
    });
}

bool ImageRequests::Salvage(wire::ReadPixelsT const &asked, OpenImages::Image const &image, wire::PixelsReadT &read) {
    RDIWindow const window{asked.x, asked.y, asked.width, asked.height, asked.outWidth, asked.outHeight};
    RDIRowsRead rows;
    if (!image.driver->SalvageRsmpl(image.handle, asked.palette ? 0 : asked.channel, asked.palette ? 0 : asked.channels,
                                    window, m_pixels->Data(), rows))
        return false;
    read.rows = rows.rows;
    read.wanted = rows.all;
    return true;
}

} // namespace zelvar::reader
