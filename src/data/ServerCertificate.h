#pragma once

#include "zelvar/base/DString.h"

#include <optional>
#include <string_view>

namespace zelvar {

/// The certificate by which a server names itself, as its users tell one from another. A value; but for the
/// fingerprint its words are its maker's and prove nothing.
struct ServerCertificate {
    /// What stands in the way even where it is accepted.
    enum class Fault { None, OtherName, NotYetValid, Expired };

    DString issuer{};      ///< who has signed it, by name; valid UTF-8 without control characters
    DString fingerprint{}; ///< of SHA-256: "SHA256:AB:CD:..."
    Fault fault = Fault::None;
};

/// The fingerprint in a text that somebody has typed, as `ServerCertificate` writes it: the word in front, the colons
/// and the case do not matter. Nothing if it is none of SHA-256.
[[nodiscard]] ZELVAR_API std::optional<DString> FingerprintIn(std::string_view text);
/// The fingerprint that stands for so many bytes of a digest.
[[nodiscard]] ZELVAR_API DString FingerprintOf(std::string_view digest);

/// Asks the server of a connection's address for its certificate, trusted or not; nothing is sent but the greeting of
/// TLS. Nothing if there is no answer, or nobody to ask: readers do it. Waits as a request does (`RequestScope`).
[[nodiscard]] ZELVAR_API std::optional<ServerCertificate> ReadServerCertificate(DString const &address);

/// Who is asked; null for nobody. At the start of a program.
using CertificateQuestion = std::optional<ServerCertificate> (*)(DString const &address);
ZELVAR_API void SetCertificateQuestion(CertificateQuestion question);

} // namespace zelvar
