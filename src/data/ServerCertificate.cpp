#include "zelvar/data/ServerCertificate.h"

#include "zelvar/base/CaseFolding.h"
#include "zelvar/base/Hex.h"

#include <algorithm>
#include <atomic>

namespace zelvar {

namespace {

constexpr std::size_t kDigestBytes = 32;
constexpr std::string_view kWord = "SHA256";

std::atomic<CertificateQuestion> g_question{nullptr};

} // namespace

std::optional<DString> FingerprintIn(std::string_view text) {
    DString digits(Trimmed(text));
    // "SHA256:", "SHA256 Fingerprint=" or nothing
    if (StartsWithNoCase(digits, kWord))
        digits.erase(0, digits.find_first_of(":=") == DString::npos ? kWord.size() : digits.find_first_of(":=") + 1);
    // Where it was copied from it may have been wrapped.
    for (std::string_view const between : {":", " ", "\xE2\x80\x8B"})
        for (std::size_t at = 0; (at = digits.find(between, at)) != DString::npos;)
            digits.erase(at, between.size());
    std::optional<DString> const bytes = HexDecode(digits);
    return bytes && bytes->size() == kDigestBytes ? std::optional(FingerprintOf(*bytes)) : std::nullopt;
}

DString FingerprintOf(std::string_view digest) {
    DString text(kWord);
    for (char const &byte : digest)
        text.append(":").append(HexEncode({&byte, 1}));
    return text;
}

std::optional<ServerCertificate> ReadServerCertificate(DString const &address) {
    CertificateQuestion const question = g_question.load();
    return question == nullptr ? std::nullopt : question(address);
}

void SetCertificateQuestion(CertificateQuestion question) { g_question = question; }

} // namespace zelvar
