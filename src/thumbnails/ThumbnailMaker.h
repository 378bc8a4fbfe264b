#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Export.h"
#include "zelvar/data/StopSignal.h"
#include "zelvar/pixels/DCanvas.h"

#include <functional>
#include <vector>

namespace zelvar {

/// The first cells of a table, valid UTF-8.
struct TableGlimpse {
    static constexpr int kMostColumns = 6;
    static constexpr int kMostRows = 16;
    static constexpr std::size_t kLongest = 48; ///< bytes of a cell, about

    std::vector<DString> names{};             ///< of the columns
    std::vector<std::vector<DString>> rows{}; ///< each as long as `names`
};
/// Draws it `side` pixels wide and high. Called on the thread that makes the thumbnail.
using TablePainter = std::function<DCanvas(TableGlimpse const &glimpse, int side)>;

/// What came of making one.
enum class ThumbnailOutcome {
    Made,
    None,   ///< the data have none, now and later: they are no image, damaged, or end the reader that opens them
    NotNow, ///< stopped, late, or a place did not answer: another time there may be one
};

/// Makes the thumbnail of what `moniker` names: a picture of an image as the preview shows it, of a container its first
/// image, of a table its first cells. The longer side is `side` pixels, 1024 at most, and no image is enlarged.
///
/// Whatever it asks drivers for it asks in the background, with a time limit, see `RequestKind::Thumbnail`. `driverId`
/// names the raster driver, and may be empty; `stop` may be null. Without a painter tables have none. Any thread.
[[nodiscard]] ZELVAR_API ThumbnailOutcome MakeThumbnail(DString const &moniker, DString const &driverId, int side,
                                                        StopSignal const *stop, TablePainter const &paintTable,
                                                        DCanvas &picture);

} // namespace zelvar
