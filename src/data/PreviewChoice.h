#pragma once

namespace zelvar {

/// Which part of an image a picture shows, and how bright. For looking only: it is no part of what names the image.
struct PreviewChoice {
    /// In place of a channel: the palette's colours, or the first three channels as red, green and blue, or the first.
    static constexpr int kComposition = -1;
    enum class Stretch {
        Usual, ///< bytes as they are, wider samples by `ScaleDataBuf`
        Full,  ///< from the least to the largest sample
        Most,  ///< the same without the 2 % at either end
    };

    int channel = kComposition; ///< from 0 on, as the other two; alone it is grey
    int slice = 0;
    int frame = 0;
    Stretch stretch = Stretch::Usual; ///< but for a palette's colours

    [[nodiscard]] bool operator==(PreviewChoice const &) const = default;
};

} // namespace zelvar
