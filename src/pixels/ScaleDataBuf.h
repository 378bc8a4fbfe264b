#pragma once

#include "zelvar/base/Export.h"

namespace zelvar {

/// Reduces the samples of one channel to bytes, in place: the bytes stand at the start of `buffer` afterwards. The
/// range of three standard deviations around the mean is spread over 0 to 255; zeros count as no data.
///
/// `dataType` is 1, 2, 4, 8, 16 or 32 as in `RDIDataType`; any other does nothing, and so do a null buffer and a size
/// below 1. A buffer of zeros stays as it is, byte for byte. Where all samples but zeros are equal, these become 255
/// and the byte of a zero is not written: with samples wider than 8 bits it keeps whatever the buffer held there.
///
/// The sums are those of a plain loop over doubles. They are added up in several lanes: up to 2 million samples of 8
/// and 16 bits they are exact either way; beyond that, and for wider samples, the last digits of the limits may differ
/// from a serial sum, which can move a sample that lies within 1e-9 of a step by one. NaN counts as below the range.
/// Touches nothing but its arguments. Any thread.
ZELVAR_API void ScaleDataBuf(int dataType, unsigned char *buffer, int width, int height);

/// The same with a range that is known, of samples of 8 bits too: `min` and what lies below it become 0, `max` and what
/// lies above it 255, and every sample is 255 where `max` is not larger. The bytes of all samples are written.
ZELVAR_API void ScaleDataBufTo(int dataType, unsigned char *buffer, int width, int height, double min, double max);

} // namespace zelvar
