#include "zelvar/reader/TlsGreeting.h"

#include "zelvar/base/FileDescriptor.h"
#include "zelvar/base/LateLibrary.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string_view>

#include <arpa/inet.h>
#include <netdb.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>
#include <poll.h>
#include <sys/socket.h>

namespace zelvar::reader {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using Fault = ServerCertificate::Fault;

constexpr milliseconds kPatience{10'000};
constexpr milliseconds kLook{20}; // between two looks at the stop signal

/// The functions of OpenSSL that are used.
struct OpenSsl {
    decltype(&::TLS_client_method) method = nullptr;
    decltype(&::SSL_CTX_new) newContext = nullptr;
    decltype(&::SSL_CTX_free) freeContext = nullptr;
    decltype(&::SSL_CTX_set_security_level) setSecurityLevel = nullptr;
    decltype(&::SSL_new) newSession = nullptr;
    decltype(&::SSL_free) freeSession = nullptr;
    decltype(&::SSL_set_fd) setFile = nullptr;
    decltype(&::SSL_ctrl) control = nullptr;
    decltype(&::SSL_connect) connect = nullptr;
    decltype(&::SSL_get_error) getError = nullptr;
    decltype(&::SSL_get1_peer_certificate) getCertificate = nullptr;
    decltype(&::X509_free) freeCertificate = nullptr;
    decltype(&::X509_digest) digest = nullptr;
    decltype(&::EVP_sha256) sha256 = nullptr;
    decltype(&::X509_get_issuer_name) issuer = nullptr;
    decltype(&::X509_NAME_get_text_by_NID) nameText = nullptr;
    decltype(&::X509_check_host) checkHost = nullptr;
    decltype(&::X509_check_ip_asc) checkNumber = nullptr;
    decltype(&::X509_get0_notBefore) notBefore = nullptr;
    decltype(&::X509_get0_notAfter) notAfter = nullptr;
    decltype(&::X509_cmp_current_time) compareToNow = nullptr;
    decltype(&::BIO_new) newBuffer = nullptr;
    decltype(&::BIO_s_mem) inMemory = nullptr;
    decltype(&::BIO_read) readBuffer = nullptr;
    decltype(&::BIO_free) freeBuffer = nullptr;
    decltype(&::PEM_write_bio_X509) writePem = nullptr;
    decltype(&::X509_VERIFY_PARAM_new) newRules = nullptr;
    decltype(&::X509_VERIFY_PARAM_set1_name) setRulesName = nullptr;
    decltype(&::X509_VERIFY_PARAM_set_flags) setRulesFlags = nullptr;
    decltype(&::X509_VERIFY_PARAM_set_depth) setRulesDepth = nullptr;
    decltype(&::X509_VERIFY_PARAM_add0_table) addRules = nullptr;

    /// Null if the library or one of the functions is missing.
    static OpenSsl const *Get() {
        static OpenSsl library;
        static bool const isLoaded = library.Load();
        return isLoaded ? &library : nullptr;
    }

private:
    bool Load() {
        LateLibrary const library("libssl.so.3"); // with libcrypto below it
        auto const find = [&library](char const *name, auto &function) { return library.Find(name, function); };
        return find("TLS_client_method", method) && find("SSL_CTX_new", newContext) &&
               find("SSL_CTX_free", freeContext) && find("SSL_CTX_set_security_level", setSecurityLevel) &&
               find("SSL_new", newSession) && find("SSL_free", freeSession) && find("SSL_set_fd", setFile) &&
               find("SSL_ctrl", control) && find("SSL_connect", connect) && find("SSL_get_error", getError) &&
               find("SSL_get1_peer_certificate", getCertificate) && find("X509_free", freeCertificate) &&
               find("X509_digest", digest) && find("EVP_sha256", sha256) && find("X509_get_issuer_name", issuer) &&
               find("X509_NAME_get_text_by_NID", nameText) && find("X509_check_host", checkHost) &&
               find("X509_check_ip_asc", checkNumber) && find("X509_get0_notBefore", notBefore) &&
               find("X509_get0_notAfter", notAfter) && find("X509_cmp_current_time", compareToNow) &&
               find("BIO_new", newBuffer) && find("BIO_s_mem", inMemory) && find("BIO_read", readBuffer) &&
               find("BIO_free", freeBuffer) && find("PEM_write_bio_X509", writePem) &&
               find("X509_VERIFY_PARAM_new", newRules) && find("X509_VERIFY_PARAM_set1_name", setRulesName) &&
               find("X509_VERIFY_PARAM_set_flags", setRulesFlags) &&
               find("X509_VERIFY_PARAM_set_depth", setRulesDepth) && find("X509_VERIFY_PARAM_add0_table", addRules);
    }
};

/// A talk with a server that may take its time, and be stopped.
class Talk {
public:
    Talk(FileDescriptor socket, StopSignal const &stop, milliseconds patience)
        : m_socket(std::move(socket)), m_stop(stop), m_end(Clock::now() + patience) {}

    [[nodiscard]] int Socket() const { return m_socket.Get(); }
    [[nodiscard]] bool IsOver() const { return m_stop || Clock::now() >= m_end; }
    /// False if there is nothing to be had any more.
    [[nodiscard]] bool WaitFor(short events) const {
        while (!IsOver()) {
            pollfd wanted{.fd = m_socket.Get(), .events = events, .revents = 0};
            if (poll(&wanted, 1, static_cast<int>(kLook.count())) > 0)
                return true;
        }
        return false;
    }

private:
    FileDescriptor m_socket;
    StopSignal const &m_stop;
    Clock::time_point m_end;
};

/// A socket that waits for nobody; none if no number of the host takes connections.
FileDescriptor ConnectTo(HostAndPort const &place) {
    addrinfo wanted{};
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo *found = nullptr;
    FileDescriptor made(-1);
    if (getaddrinfo(place.host.c_str(), std::to_string(place.port).c_str(), &wanted, &found) != 0)
        return made;
    for (addrinfo const *one = found; one != nullptr && !made.IsOpen(); one = one->ai_next) {
        FileDescriptor socket(::socket(one->ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        if (connect(socket.Get(), one->ai_addr, one->ai_addrlen) == 0 || errno == EINPROGRESS)
            made = std::move(socket);
    }
    freeaddrinfo(found);
    return made;
}

/// Asks a database for TLS, which it begins only then.
bool AskDatabaseForTls(Talk const &talk) {
    constexpr std::array<unsigned char, 8> question{0, 0, 0, 8, 0x04, 0xD2, 0x16, 0x2F};
    char answer = 0;
    return talk.WaitFor(POLLOUT) &&
           send(talk.Socket(), question.data(), question.size(), MSG_NOSIGNAL) ==
               static_cast<ssize_t>(question.size()) &&
           talk.WaitFor(POLLIN) && recv(talk.Socket(), &answer, 1, 0) == 1 && answer == 'S';
}

bool IsNumber(DString const &host) {
    std::array<unsigned char, sizeof(in6_addr)> bytes{};
    return inet_pton(AF_INET, host.c_str(), bytes.data()) == 1 || inet_pton(AF_INET6, host.c_str(), bytes.data()) == 1;
}

template <class Value>
using Owned = std::unique_ptr<Value, std::function<void(Value *)>>;

class Certificate {
public:
    Certificate(OpenSsl const &library, X509 const &certificate) : m_library(library), m_certificate(certificate) {}

    [[nodiscard]] DString Fingerprint() const {
        std::array<unsigned char, EVP_MAX_MD_SIZE> bytes{};
        unsigned size = 0;
        if (m_library.digest(&m_certificate, m_library.sha256(), bytes.data(), &size) != 1)
            return {};
        return FingerprintOf({reinterpret_cast<char const *>(bytes.data()), size});
    }
    [[nodiscard]] DString Issuer() const {
        constexpr std::array parts{NID_commonName, NID_organizationName, NID_organizationalUnitName};
        std::array<char, 200> text{}; // a longer one is cut off
        for (int const part : parts)
            if (m_library.nameText(m_library.issuer(&m_certificate), part, text.data(), text.size()) > 0)
                return text.data();
        return {};
    }
    [[nodiscard]] bool IsFor(DString const &host) const {
        constexpr unsigned usual = 0;
        return IsNumber(host) ? m_library.checkNumber(const_cast<X509 *>(&m_certificate), host.c_str(), usual) == 1
                              : m_library.checkHost(const_cast<X509 *>(&m_certificate), host.c_str(), host.size(),
                                                    usual, nullptr) == 1;
    }
    [[nodiscard]] Fault FaultFor(DString const &host, bool hasName) const {
        if (m_library.compareToNow(m_library.notBefore(&m_certificate)) > 0)
            return Fault::NotYetValid;
        if (m_library.compareToNow(m_library.notAfter(&m_certificate)) < 0)
            return Fault::Expired;
        return hasName && !IsFor(host) ? Fault::OtherName : Fault::None;
    }
    [[nodiscard]] DString Pem() const {
        Owned<BIO> const buffer(m_library.newBuffer(m_library.inMemory()), m_library.freeBuffer);
        DString text;
        if (buffer == nullptr || m_library.writePem(buffer.get(), const_cast<X509 *>(&m_certificate)) != 1)
            return text;
        std::array<char, 1024> part{};
        for (int size = 0; (size = m_library.readBuffer(buffer.get(), part.data(), part.size())) > 0;)
            text.append(part.data(), static_cast<std::size_t>(size));
        return text;
    }

private:
    OpenSsl const &m_library;
    X509 const &m_certificate;
};

/// The certificate that the server shows; null if it shows none. That it goes no further is nobody's affair.
Owned<X509> Greet(OpenSsl const &library, Talk const &talk, DString const &host) {
    Owned<SSL_CTX> const context(library.newContext(library.method()), library.freeContext);
    if (context == nullptr)
        return nullptr;
    library.setSecurityLevel(context.get(), 0); // what is weak is told of, too
    Owned<SSL> const session(library.newSession(context.get()), library.freeSession);
    if (session == nullptr || library.setFile(session.get(), talk.Socket()) != 1)
        return nullptr;
    DString name = host;
    if (!IsNumber(host))
        library.control(session.get(), SSL_CTRL_SET_TLSEXT_HOSTNAME, TLSEXT_NAMETYPE_host_name, name.data());
    while (!talk.IsOver()) {
        int const done = library.connect(session.get());
        int const why = library.getError(session.get(), done);
        if (why != SSL_ERROR_WANT_READ && why != SSL_ERROR_WANT_WRITE)
            break;
        if (!talk.WaitFor(why == SSL_ERROR_WANT_READ ? POLLIN : POLLOUT))
            break;
    }
    return {library.getCertificate(session.get()), library.freeCertificate};
}

DString OptionOf(ConnectionTerms const &terms, char const *name) {
    auto const at = terms.options.find(name);
    return at == terms.options.end() ? DString() : at->second;
}

} // namespace

std::optional<ShownCertificate> GreetServer(ConnectionTerms const &terms, StopSignal const &stop, DError &error) {
    std::optional<HostAndPort> const place = PlaceIn(OptionOf(terms, "server"), 0);
    OpenSsl const *const library = OpenSsl::Get();
    auto const fail = [&](char const *why) {
        error.Set((place ? TextOf(*place) : DString("the server")) + why, DError::Cause::Untrusted);
        return std::nullopt;
    };
    if (!place || library == nullptr)
        return fail(": its certificate cannot be looked at here");
    milliseconds patience = kPatience;
    if (DString const seconds = OptionOf(terms, "seconds"); !seconds.empty())
        patience = milliseconds(1000 * std::strtoll(seconds.c_str(), nullptr, 10));
    Talk const talk(ConnectTo(*place), stop, patience);
    bool const isDatabase = terms.kind == ConnectionKind::PostgreSql;
    bool const isAsked = talk.Socket() >= 0 && (!isDatabase || AskDatabaseForTls(talk));
    Owned<X509> const shown = isAsked ? Greet(*library, talk, place->host) : Owned<X509>();
    if (talk.Socket() < 0 || (shown == nullptr && talk.IsOver())) {
        error.Set(TextOf(*place) + " does not answer", DError::Cause::NoAnswer);
        return std::nullopt;
    }
    if (shown == nullptr)
        return fail(isAsked ? " shows no certificate" : " does not encrypt");
    Certificate const certificate(*library, *shown);
    bool const hasName = !isDatabase || OptionOf(terms, "sslmode") == "verify-full";
    return ShownCertificate{.facts = {.issuer = certificate.Issuer(),
                                      .fingerprint = certificate.Fingerprint(),
                                      .fault = certificate.FaultFor(place->host, hasName)},
                            .pem = certificate.Pem()};
}

bool TrustListedCertificates() {
    OpenSsl const *const library = OpenSsl::Get();
    if (library == nullptr)
        return false;
    // In place of the rules of this name that are built in, which all others begin with; the table takes it over.
    X509_VERIFY_PARAM *const rules = library->newRules();
    constexpr int usualDepth = 100;
    if (rules == nullptr || library->setRulesName(rules, "default") != 1 ||
        library->setRulesFlags(rules, X509_V_FLAG_PARTIAL_CHAIN | X509_V_FLAG_TRUSTED_FIRST) != 1)
        return false;
    library->setRulesDepth(rules, usualDepth);
    return library->addRules(rules) == 1;
}

} // namespace zelvar::reader
