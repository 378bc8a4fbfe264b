#pragma once

#include "zelvar/data/StopSignal.h"
#include "zelvar/model/OpenOutcome.h"

namespace zelvar {

/// What a reader is asked to open.
struct OpenSubject {
    DString path{};
    DString driverId{}; ///< of the raster driver; may be empty
    DString options{};  ///< what stands behind "?"
    friend bool operator==(OpenSubject const &, OpenSubject const &) = default;
};

/// Takes what reading the properties has found: an image, or why there is none. Looks on where that is not all: whether
/// it is a table, if one is wished for, and whether the user may read a document. Any thread; `stop` may be null.
[[nodiscard]] OpenFacts CompleteFacts(OpenSubject const &subject, OpenWish const &wish, std::optional<ImageInfo> image,
                                      DError error, StopSignal const *stop);
/// The same for one whose properties nobody has read.
[[nodiscard]] OpenFacts ReadOpenFacts(OpenSubject const &subject, OpenWish const &wish, StopSignal const *stop);

/// Ids of the raster drivers that open it, the one that does by itself in front; empty if that is the only one. Each
/// of the others is tried.
[[nodiscard]] std::vector<DString> FindOpeningDrivers(OpenSubject const &subject, StopSignal const *stop);

} // namespace zelvar
