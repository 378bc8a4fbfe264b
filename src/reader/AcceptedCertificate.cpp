#include "zelvar/reader/AcceptedCertificate.h"

#include "zelvar/reader/TlsGreeting.h"

#include <array>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zelvar::reader {

namespace {

constexpr char const *kOfTheSystem = "/etc/ssl/certs/ca-certificates.crt";

struct Accepted {
    bool isNeeded = false; ///< one is accepted
    FileDescriptor file{-1};
    ConnectionTerms terms{};
    bool isFilled = false;
};
Accepted &TheAccepted() {
    static Accepted accepted;
    return accepted;
}

bool WriteAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        ssize_t const count = write(file, bytes.data(), bytes.size());
        if (count <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

/// The certificates of authorities, which hold for other servers. What cannot be read is left out: then there is less
/// that is trusted.
void Append(int to, char const *path) {
    FileDescriptor const from(open(path, O_RDONLY | O_CLOEXEC));
    std::array<char, 65536> part{};
    for (ssize_t size = 0; from.IsOpen() && (size = read(from.Get(), part.data(), part.size())) > 0;)
        if (!WriteAll(to, {part.data(), static_cast<std::size_t>(size)}))
            return;
}

} // namespace

int AcceptedCertificate::Prepare(ConnectionTerms &terms) {
    Accepted &accepted = TheAccepted();
    if (!terms.options.contains("fingerprint") || !terms.options.contains("server"))
        return -1;
    accepted.isNeeded = true;
    accepted.file = FileDescriptor(memfd_create("zelvar", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (!accepted.file.IsOpen() || fchmod(accepted.file.Get(), S_IRUSR | S_IWUSR) != 0)
        return -1; // no request will be done
    if (terms.options["others"] == "yes")
        terms.options["authorities"] = terms.options.contains("ca") ? terms.options["ca"] : kOfTheSystem;
    accepted.terms = terms;
    terms.options["ca"] = "/proc/self/fd/" + std::to_string(accepted.file.Get());
    return accepted.file.Get();
}

DError AcceptedCertificate::Ensure(StopSignal const &stop) {
    Accepted &accepted = TheAccepted();
    DError error;
    if (!accepted.isNeeded || accepted.isFilled)
        return error;
    std::optional<ShownCertificate> const shown = GreetServer(accepted.terms, stop, error);
    if (!shown)
        return error;
    if (shown->facts.fingerprint != FingerprintIn(accepted.terms.options["fingerprint"])) {
        error.Set("the certificate of " + accepted.terms.options["server"] +
                      " is not the one that was accepted (its fingerprint is " + shown->facts.fingerprint + ")",
                  DError::Cause::Untrusted);
        return error;
    }
    bool const isWritten = accepted.file.IsOpen() && WriteAll(accepted.file.Get(), shown->pem);
    if (auto const others = accepted.terms.options.find("authorities");
        isWritten && others != accepted.terms.options.end())
        Append(accepted.file.Get(), others->second.c_str());
    bool const isSealed = isWritten && fcntl(accepted.file.Get(), F_ADD_SEALS,
                                             F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL) == 0;
    bool const isTaken = isSealed && (accepted.terms.kind != ConnectionKind::PostgreSql || TrustListedCertificates());
    if (!isTaken)
        error.Set("the certificate that was accepted cannot be used here", DError::Cause::Untrusted);
    accepted.isFilled = isTaken;
    return error;
}

} // namespace zelvar::reader
