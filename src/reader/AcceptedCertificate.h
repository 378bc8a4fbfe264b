#pragma once

#include "zelvar/base/FileDescriptor.h"
#include "zelvar/base/Report.h"
#include "zelvar/data/Connection.h"
#include "zelvar/data/StopSignal.h"

namespace zelvar::reader {

/// The certificate that the user has accepted for the server of this reader's connection, where there is one: its terms
/// tell the fingerprint, as "fingerprint". It stands in place of the certificates of authorities, in memory without a
/// name that libraries read as a file. The certificate itself is the server's to show: before the first request it is
/// asked for it, and it is taken only if the fingerprint is right.
///
/// `Prepare` while there is one thread, the rest for the thread that does requests.
class AcceptedCertificate {
public:
    /// Names the memory as the "ca" of the terms, so that whoever is told of that reads it; the descriptor, to be kept
    /// open, or -1 if no certificate is accepted. With "others" in the terms other servers are spoken to as well: what
    /// holds for them is the "ca" of before, or the system's, named as "authorities" then.
    [[nodiscard]] static int Prepare(ConnectionTerms &terms);
    /// Fills the memory unless that is done. Why the server is not to be spoken to; not set if it is, or none is
    /// accepted.
    [[nodiscard]] static DError Ensure(StopSignal const &stop);
};

} // namespace zelvar::reader
