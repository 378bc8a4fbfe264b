#include "zelvar/data/reader/RemoteCertificate.h"

#include "zelvar/data/DriverProvider.h"
#include "zelvar/data/reader/AnswerReading.h"
#include "zelvar/data/reader/Readers.h"

#include <algorithm>

namespace zelvar {

std::optional<ServerCertificate> CertificateByReader(DString const &address) {
    EnsureDrivers(); // they have time of their own
    Readers::Call const call{.kind = RequestKind::List, .what = "certificate", .address = address};
    Readers::Answer const answer = Readers::Instance().Ask(call, wire::ReadCertificateT());
    auto const *const read = BodyOf<wire::CertificateReadT>(answer.message.get());
    std::optional<DString> fingerprint = read == nullptr ? std::nullopt : FingerprintIn(read->fingerprint);
    if (!fingerprint)
        return std::nullopt;
    constexpr auto last = static_cast<std::uint32_t>(ServerCertificate::Fault::Expired);
    return ServerCertificate{.issuer = EscapeControlBytes(ToValidUtf8(read->issuer)),
                             .fingerprint = *std::move(fingerprint),
                             .fault = static_cast<ServerCertificate::Fault>(std::min(read->fault, last))};
}

} // namespace zelvar
