#include "zelvar/data/gdal/Causes.h"

#include "zelvar/base/FileDescriptor.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/base/TypedSecrets.h"
#include "zelvar/data/ReaderDuty.h"
#include "zelvar/data/gdal/Passwords.h"
#include "zelvar/data/gdal/SmbFiles.h"

#include <cpl_conv.h>
#include <cpl_error.h>
#include <cpl_vsi.h>
#include <cpl_vsi_error.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>

namespace zelvar::gdal {

namespace {

using Cause = DError::Cause;

/// Whether a text that `FoldCase` made holds one of the phrases.
bool Says(std::string_view text, std::initializer_list<std::string_view> phrases) {
    return std::any_of(phrases.begin(), phrases.end(),
                       [&](std::string_view phrase) { return text.find(FoldCase(phrase)) != std::string_view::npos; });
}

/// The number behind the first of the phrases that one stands behind; -1 for none.
std::int64_t NumberBehind(std::string_view text, std::initializer_list<std::string_view> phrases) {
    for (std::string_view const phrase : phrases) {
        std::size_t const at = text.find(FoldCase(phrase));
        if (at == std::string_view::npos)
            continue;
        std::int64_t number = -1;
        char const *const begin = text.data() + at + phrase.size();
        if (std::from_chars(begin, text.data() + text.size(), number).ec == std::errc{} && number >= 0)
            return number;
    }
    return -1;
}

/// 0 where a library tells of a server that has not answered.
std::int64_t StatusOrNone(std::string_view text) {
    return NumberBehind(text,
                        {"http response code: ", "http error code : ", "http error code: ", "http status code: "});
}

std::int64_t StatusIn(std::string_view text) {
    std::int64_t const status = StatusOrNone(text);
    return status == 0 ? -1 : status;
}

bool IsAboutSilence(std::string_view text) { return Says(text, {"curl error"}) || StatusOrNone(text) == 0; }

std::int64_t ByteIn(std::string_view text) {
    return NumberBehind(text, {"at offset ", "from offset ", "to offset ", "@ offset ", "at byte ", "@ "});
}

/// As `FoldCase`, and without the names of the file.
DString WordsOf(DString text, Source const &source) {
    for (DString const &name : {source.name, source.diskPath, DString(FileNameOf(source.diskPath))})
        for (std::size_t at = 0; !name.empty() && (at = text.find(name)) != DString::npos;)
            text.erase(at, name.size());
    return FoldCase(text);
}

bool IsAboutCertificate(std::string_view words) {
    return Says(words, {"ssl certificate", "server certificate", "peer certificate", "certificate problem",
                        "certificate subject name"});
}

Cause CauseOf(int number, std::string_view words) {
    switch (number) {
    case CPLE_OutOfMemory:
        return Cause::TooLarge;
    case CPLE_NotSupported:
        return Cause::NotSupported;
    case CPLE_UserInterrupt:
        return Cause::Unknown;
    case CPLE_HttpResponse:
        return Cause::Server;
    case CPLE_AWSBucketNotFound:
    case CPLE_AWSObjectNotFound:
        return Cause::Missing;
    case CPLE_AWSAccessDenied:
    case CPLE_AWSInvalidCredentials:
    case CPLE_AWSSignatureDoesNotMatch:
        return Cause::NotPermitted;
    default:
        break;
    }
    if (StatusIn(words) >= 0)
        return Cause::Server;
    if (IsAboutCertificate(words))
        return Cause::Untrusted;
    if (IsAboutSilence(words))
        return Cause::NoAnswer;
    if (Says(words, {"password", "encrypted"}))
        return Cause::NeedsPassword;
    if (Says(words, {"out of memory"}))
        return Cause::TooLarge;
    if (Says(words, {std::strerror(ENOENT)}))
        return Cause::Missing;
    if (Says(words, {std::strerror(EACCES)}))
        return Cause::NotPermitted;
    if (Says(words, {"not supported", "unsupported", "not configured", "not implemented", "selected instead"}))
        return Cause::NotSupported;
    return Cause::Damaged;
}

/// Not what GDAL says of itself where a format opens nothing without a word.
bool IsTelling(GdalError const &error) { return error.text.find("not recognized as") == DString::npos; }

DError Because(DString const &text, Cause cause, std::int64_t detail = -1) {
    DError error;
    error.Set(text, cause, detail);
    return error;
}

DError OfErrno(DString const &name, int error) {
    return Because("\"" + name + "\": " + std::strerror(error), CauseOfErrno(error));
}

/// What the file on disk says, whatever is in it.
DError AskFile(Source const &source) {
    FileDescriptor const file(open(source.diskPath.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat info {};
    if (!file.IsOpen() || fstat(file.Get(), &info) != 0)
        return OfErrno(source.diskPath, errno);
    bool const isEmpty = S_ISREG(info.st_mode) && info.st_size == 0;
    return isEmpty ? Because("\"" + source.diskPath + "\" is empty", Cause::Damaged) : DError();
}

/// Whether GDAL has a login for the servers that this process asks.
bool HasLogin(DString const &subject) {
    return CPLGetConfigOption("GDAL_HTTP_USERPWD", nullptr) != nullptr || WithSecrets(subject) != subject;
}

/// The server that is meant: addresses of stores name none.
DString ServerOf(DString const &subject) {
    ReaderDuty const *const duty = OwnDuty();
    if (duty != nullptr && duty->connection && duty->connection->kind == ConnectionKind::ObjectStore)
        if (auto const told = duty->connection->options.find("server"); told != duty->connection->options.end())
            return told->second;
    std::size_t const begin = subject.find("://") == DString::npos ? 0 : subject.find("://") + 3;
    DString const authority = subject.substr(begin, subject.find_first_of("/?#", begin) - begin);
    return authority.substr(authority.rfind('@') + 1);
}

/// Of a server that has answered with a status: a login that it has not been given is none that it does not know.
Cause CauseOfStatus(DString const &subject, std::int64_t status) {
    constexpr std::int64_t unauthorized = 401;
    return status == unauthorized && !HasLogin(subject) ? Cause::NeedsPassword : Cause::Server;
}

/// What is to be said of an address whose server was asked, in place of a library's words where they say too little.
DString WordsOfServer(DString const &subject, DString const &said, std::int64_t status) {
    DString const words = FoldCase(said);
    DString const number = zelvar::Format(" (%d)", static_cast<int>(status));
    switch (status) {
    case 401:
        return (HasLogin(subject) ? "the server does not know the user or the password" : "the server wants a login") +
               number;
    case 403:
        return "the server refuses access" + number;
    case 404:
        return "the server has nothing there" + number;
    default:
        break;
    }
    if (status >= 0 || !IsAboutCertificate(words))
        return said;
    return "the certificate of " + ServerOf(subject) +
           (Says(words, {"subject name"}) ? " is that of another server"
                                          : " is not trusted: name the file of its authority") +
           " (" + said + ")";
}

/// Of a map service: a status, or its own words. Libraries tell first what they made of its answer.
DError ErrorOfService(std::vector<GdalError> const &errors, DString const &subject) {
    DString words;
    for (GdalError const &error : errors) {
        if (std::int64_t const status = StatusIn(FoldCase(error.text)); status >= 0) {
            DString const told = WordsOfServer(subject, {}, status);
            return Because(
                "\"" + subject +
                    "\": " + (told.empty() ? zelvar::Format("the server answers %d", static_cast<int>(status)) : told),
                CauseOfStatus(subject, status), status);
        }
        if (DString const said = FoldCase(error.text); IsAboutCertificate(said) || IsAboutSilence(said))
            return ErrorOfServer(subject, error.text);
        if (words.empty() && error.number != CPLE_OpenFailed)
            words = error.text;
    }
    return Because("\"" + subject + "\": " + (words.empty() ? errors.front().text : words), Cause::Server);
}

Cause CauseOfServer(int number, std::string_view words) {
    switch (number) {
    case VSIE_AWSBucketNotFound:
    case VSIE_AWSObjectNotFound:
        return Cause::Missing;
    case VSIE_AWSAccessDenied:
    case VSIE_AWSInvalidCredentials:
    case VSIE_AWSSignatureDoesNotMatch:
        return Cause::NotPermitted;
    default:
        break;
    }
    return StatusIn(words) >= 0        ? Cause::Server
           : IsAboutCertificate(words) ? Cause::Untrusted
           : IsAboutSilence(words)     ? Cause::NoAnswer
                                       : Cause::Unknown;
}

} // namespace

DError::Cause CauseOfErrno(int error) {
    switch (error) {
    case ENOENT:
    case ENOTDIR:
    case ENAMETOOLONG:
    case ELOOP:
        return Cause::Missing;
    case EACCES:
    case EPERM:
        return Cause::NotPermitted;
    case EIO:
    case ESTALE:
    case ETIMEDOUT:
    case EHOSTDOWN:
    case EHOSTUNREACH:
    case ENETUNREACH:
    case ENOTCONN:
    case ECONNREFUSED:
        return Cause::NoAnswer;
    case ENOMEM:
        return Cause::TooLarge;
    default:
        return Cause::Unknown;
    }
}

DError ErrorOf(GdalScope const &scope, Source const &source) {
    if (scope.Errors().empty())
        return {};
    if (source.service)
        return ErrorOfService(scope.Errors(), source.text);
    auto const telling = std::find_if(scope.Errors().begin(), scope.Errors().end(), IsTelling);
    GdalError const &first = telling == scope.Errors().end() ? scope.Errors().front() : *telling;
    DString const words = WordsOf(first.text, source);
    Cause const cause = CauseOf(first.number, words);
    std::int64_t detail = cause == Cause::Server ? StatusIn(words) : -1;
    for (GdalError const &error : scope.Errors())
        if (cause == Cause::Damaged && detail < 0)
            detail = ByteIn(WordsOf(error.text, source));
    return Because(first.text, cause, detail);
}

bool HasSaidWhy(GdalScope const &scope) { return std::any_of(scope.Errors().begin(), scope.Errors().end(), IsTelling); }

DError AskServer(Source const &source) {
    constexpr std::string_view kServers[] = {"/vsicurl/", "/vsis3/", "/vsigs/", "/vsiaz/"};
    bool const isAsked = std::any_of(std::begin(kServers), std::end(kServers),
                                     [&](std::string_view prefix) { return source.name.starts_with(prefix); });
    if (!isAsked || source.name.ends_with('/'))
        return {};
    VSIErrorReset();
    constexpr int tellErrors = TRUE;
    if (VSILFILE *const file = VSIFOpenExL(source.name.c_str(), "rb", tellErrors)) {
        VSIFCloseL(file);
        return {};
    }
    DString const said = VSIGetLastErrorMsg();
    DString const words = FoldCase(said);
    Cause const cause = CauseOfServer(VSIGetLastErrorNo(), words);
    VSICurlPartialClearCache(source.name.c_str()); // else the next one that asks is not told
    std::int64_t const status = cause == Cause::Server ? StatusIn(words) : -1;
    return Because(
        "\"" + source.text +
            "\": " + (said.empty() ? DString("the server does not give it") : WordsOfServer(source.text, said, status)),
        cause == Cause::Server ? CauseOfStatus(source.text, status) : cause, status);
}

DError ErrorOfServer(DString const &subject, DString const &said) {
    DString const words = FoldCase(said);
    std::int64_t const status = StatusIn(words);
    Cause const cause = status >= 0                 ? CauseOfStatus(subject, status)
                        : IsAboutCertificate(words) ? Cause::Untrusted
                                                    : Cause::NoAnswer;
    return Because("\"" + subject + "\": " +
                       (said.empty() ? DString("its server does not answer") : WordsOfServer(subject, said, status)),
                   cause, status);
}

DError ErrorOfStore(DString const &subject, DString const &code, DString const &said) {
    if (code.empty())
        return ErrorOfServer(subject, said);
    bool const isMissing = code.starts_with("NoSuch") || code.ends_with("NotFound");
    bool const isRefused = code == "AccessDenied" || code == "InvalidAccessKeyId" || code == "SignatureDoesNotMatch" ||
                           code == "ExpiredToken" || code == "InvalidToken" || code == "RequestTimeTooSkewed" ||
                           code == "AuthenticationFailed" || code.starts_with("Authorization") ||
                           code == "NoAuthenticationInformation" || code == "PublicAccessNotPermitted";
    return Because("\"" + subject + "\": " + code, isMissing   ? Cause::Missing
                                                   : isRefused ? Cause::NotPermitted
                                                               : Cause::Server);
}

DError WhyNotOpened(Source const &source, OpenAttempt const &attempt, GdalScope const &scope) {
    if (!source.diskPath.empty())
        if (DError error = AskFile(source); error.IsSet())
            return error;
    if (std::error_code const error = SmbErrorOf(source.name))
        return OfErrno(source.text, error.value());
    DString const name = "\"" + source.text + "\"";
    if (NeedsPassword(source))
        return Because(name + " is encrypted", Cause::NeedsPassword);
    if (attempt.wouldWrite)
        return Because(name + " has a log beside it, which reading would write", Cause::Refused);
    // Lines that begin with three numbers pass for a grid of points: where they are none, the text is a table.
    if (attempt.isOther || (attempt.known != nullptr && attempt.known->id == "XYZ"))
        return Because(name + " holds data of another kind", Cause::NotSupported);
    DError error = ErrorOf(scope, source);
    if (attempt.known == nullptr && (!error.IsSet() || error.Why() == Cause::Damaged))
        return Because("no driver reads " + name, Cause::NotSupported);
    return HasSaidWhy(scope) ? error : Because(attempt.known->id + " cannot read " + name, Cause::Damaged);
}

} // namespace zelvar::gdal
