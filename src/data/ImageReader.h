#pragma once

#include "zelvar/data/PreviewChoice.h"
#include "zelvar/data/PreviewValues.h"
#include "zelvar/data/RDIDriver.h"
#include "zelvar/pixels/DCanvas.h"

namespace zelvar {

/// What the properties of an image tell.
struct ImageInfo {
    int width = 0;  ///< of one slice at one time, pixels
    int height = 0; ///< of one slice at one time, pixels
    int channels = 0;
    int slices = 0;
    int timeFrames = 0;
    int dataType = RDI_None;
    bool isOfAnyResolution = false; ///< of a map that is drawn as it is asked for: its size means nothing
    DString extent{};               ///< of a map: where on the earth it lies, "10, 50 - 13, 52 (EPSG:4326)"
    DString driver{};               ///< the driver's description of the file, or its id
    DString members{};              ///< of a series of files: "118 of 120, missing 17, 64"
    DString differences{};          ///< between them, as far as there was time to look, see `DifferencesOf`
    bool differs = false;           ///< members were found that are not like the others
};

/// Reads the properties of the image behind a moniker. False, and `info` unchanged, if it is no image; `*error` then
/// says why. `driverId` may be empty; `stop` and `error` may be null. Any thread.
[[nodiscard]] ZELVAR_API bool ReadImageInfo(BDIMoniker const &moniker, DString const &driverId, StopSignal const *stop,
                                            ImageInfo &info, DError *error = nullptr);

/// Whether a picture of an image smaller than the picture is larger than the image.
enum class Enlarge { No, Yes };

/// Reads the picture of the image's first slice, its longer side 1024 pixels: three channels as red, green and blue,
/// fewer as grey from the first, one with a palette in the palette's colours. Samples wider than 8 bits are reduced by
/// `ScaleDataBuf`. Another `choice` shows another part, or the same brighter or darker; what is no data is black then.
///
/// A damaged image is shown as far as it can be read, and black below: true, `*error` is `Damaged` and says "damaged:
/// 37 of 120 rows read", and `*read` the same in numbers, else zeros.
///
/// False, and `picture` empty, if it is no image, was stopped, or has 33,587,208 pixels or more without a pyramid: that
/// would take too long, and `*error` says nothing then. `error` and `read` may be null. Any thread.
[[nodiscard]] ZELVAR_API bool ReadPreview(BDIMoniker const &moniker, DString const &driverId, StopSignal const *stop,
                                          DCanvas &picture, Enlarge enlarge = Enlarge::Yes, DError *error = nullptr,
                                          RDIRowsRead *read = nullptr, PreviewChoice const &choice = {});

/// Reads a small picture of the image, its longer side `side` pixels and never enlarged, as `ReadPreview` shows it, in
/// the background (`RequestScope::IsInBackground`). A large image without a pyramid has one too: of its rows and
/// columns some are picked, and the others are not read. False, and `picture` empty, if it is no image, or was stopped;
/// `error` and `stop` may be null. Any thread.
[[nodiscard]] ZELVAR_API bool ReadThumbnail(BDIMoniker const &moniker, DString const &driverId, StopSignal const *stop,
                                            int side, DCanvas &picture, DError *error = nullptr);

/// Reads the values that a picture shows, one for each of its pixels and of the image's, or fewer where they would take
/// more than `PreviewValues::kMostBytes`. False, and `values` empty, where there is no picture either, and of a damaged
/// image. Any thread.
[[nodiscard]] ZELVAR_API bool ReadPreviewValues(BDIMoniker const &moniker, DString const &driverId,
                                                StopSignal const *stop, PreviewChoice const &choice,
                                                PreviewValues &values);

} // namespace zelvar
