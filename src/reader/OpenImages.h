#pragma once

#include "zelvar/data/RDIDriver.h"
#include "zelvar/reader/RecentlyUsed.h"

#include <Messages_generated.h>

namespace zelvar::reader {

/// The images that are open in this reader, as `OpenTrees`.
class OpenImages {
public:
    struct Image {
        RDIDriver *driver = nullptr; ///< that opened it
        void *handle = nullptr;

        Image() = default;
        Image(Image const &) = delete;
        Image &operator=(Image const &) = delete;
        ~Image();
        [[nodiscard]] bool HasChannel(int channel) const;
        /// A channel that it has.
        [[nodiscard]] std::unique_ptr<wire::ChannelT> Describe(int channel) const;
    };

    /// `stop` is handed to the drivers and outlives all images.
    explicit OpenImages(StopSignal const &stop) : m_stop(&stop) {}
    /// Null, with the reason in `error`, if it does not open.
    Image *Find(wire::ImageSpecT const &spec, DError &error);
    void Close(std::uint64_t id) { m_images.Remove(id); }

private:
    StopSignal const *m_stop;
    RecentlyUsed<Image> m_images;
};

} // namespace zelvar::reader
