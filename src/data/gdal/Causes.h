#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/data/gdal/Source.h"

namespace zelvar::gdal {

/// What an error of the system stands for.
[[nodiscard]] DError::Cause CauseOfErrno(int error);

/// The first error that GDAL told the scope of, with the cause that its number and words stand for, and the byte or the
/// status of a server that one of them names; not set if there was none. Where the words say nothing else, data that a
/// format knows are `Damaged`. `source`: what was read, as its name may hold any words.
[[nodiscard]] DError ErrorOf(GdalScope const &scope, Source const &source);

/// Whether it told more than that it does not open.
[[nodiscard]] bool HasSaidWhy(GdalScope const &scope);

/// Asks the server of an address whether it gives the file; why not, or not set. Of a place on disk nothing is asked.
/// GDAL keeps the answer: who opens the file then asks no more. Inside a `GdalScope`.
[[nodiscard]] DError AskServer(Source const &source);

/// What GDAL says of a server that was asked for `subject`: a status, no connection, a certificate.
[[nodiscard]] DError ErrorOfServer(DString const &subject, DString const &said);
/// Of an object store: its own `code`, such as "NoSuchBucket", or where it named none what GDAL says.
[[nodiscard]] DError ErrorOfStore(DString const &subject, DString const &code, DString const &said);

/// What is known of a source that no format has opened.
struct OpenAttempt {
    Format const *known = nullptr; ///< the first format that knows its first bytes; null for none
    bool isOther = false;          ///< it opens as something else: layers, not a picture, or the other way round
    bool wouldWrite = false;       ///< a format that knows it would write beside it
};
/// Why it was not opened, asked of the file itself first. Inside the scope of the attempt.
[[nodiscard]] DError WhyNotOpened(Source const &source, OpenAttempt const &attempt, GdalScope const &scope);

} // namespace zelvar::gdal
