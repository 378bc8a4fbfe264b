#pragma once

#include "zelvar/data/wire/SharedMemory.h"
#include "zelvar/reader/Answers.h"
#include "zelvar/reader/OpenImages.h"

namespace zelvar::reader {

/// Requests about images, their facts and their pixels.
class ImageRequests {
public:
    explicit ImageRequests(StopSignal const &stop) : m_stop(&stop), m_images(stop) {}

    [[nodiscard]] Answer Open(wire::OpenImageT const &asked);
    [[nodiscard]] Answer DescribeChannel(wire::DescribeChannelT const &asked);
    [[nodiscard]] Answer GetAttribute(wire::GetAttributeT const &asked);
    [[nodiscard]] Answer ReadPixels(wire::ReadPixelsT const &asked);
    void Close(wire::CloseImageT const &asked) { m_images.Close(asked.id); }
    /// What other requests share with the application, too.
    [[nodiscard]] wire::SharedMemory const *Pixels() const { return m_pixels.get(); }
    /// Where pixels go from now on; null for nowhere.
    void SetPixels(std::unique_ptr<wire::SharedMemory> pixels) { m_pixels = std::move(pixels); }

private:
    [[nodiscard]] bool Salvage(wire::ReadPixelsT const &asked, OpenImages::Image const &image, wire::PixelsReadT &read);

    StopSignal const *m_stop;
    OpenImages m_images;
    std::unique_ptr<wire::SharedMemory> m_pixels;
};

} // namespace zelvar::reader
