#pragma once

#include "zelvar/data/IAttrData.h"
#include "zelvar/data/RDIDriver.h"
#include "zelvar/pixels/DHstg.h"

#include <optional>
#include <string_view>

namespace zelvar {

/// Counts the samples of a channel (counted from 0) in slots over their own range, all of them at full resolution, in
/// strips of a few MiB. NaN, infinities and nodata are left out. Samples of up to 16 bits are read once, others twice:
/// their range comes first.
///
/// False, with the reason in `*error` (may be null), if it is no image, has no such channel, cannot be read or was
/// stopped; an image of nothing but nodata has no slots. `driverId` may be empty, `stop` null. Any thread.
[[nodiscard]] ZELVAR_API bool ReadHistogram(BDIMoniker const &moniker, DString const &driverId, int channel,
                                            int numSlots, StopSignal const *stop, DHstg &histogram, DError *error);

/// The same for the cells of a table's column that hold finite numbers, from the first row to the last.
[[nodiscard]] ZELVAR_API bool ReadHistogram(IAttrData &table, int col, int numSlots, StopSignal const *stop,
                                            DHstg &histogram);

/// The number that all of a text is, blanks around it left out; nothing for another text and for one that is not
/// finite.
[[nodiscard]] ZELVAR_API std::optional<double> NumberOf(std::string_view text);

} // namespace zelvar
