#include "zelvar/connections/ListingWords.h"

#include "zelvar/base/Translation.h"
#include "zelvar/connections/FilledWords.h"
#include "zelvar/model/OpenOutcome.h"

#include <algorithm>
#include <array>

namespace zelvar {

namespace {

constexpr int kUnauthorized = 401;
constexpr int kForbidden = 403;
constexpr int kNotFound = 404;
constexpr int kProxyLogin = 407;

constexpr char const *kStopped = Mark("Stopped.");
constexpr char const *kTrusted = Mark("The server's certificate is trusted.");
constexpr char const *kUnchecked = Mark("Encrypted; the server's certificate is not looked at.");
constexpr char const *kReadable = Mark("Not encrypted: the password can be read on its way.");
constexpr char const *kUntrusted =
    Mark("The certificate of %s is not trusted. Name the file of its authority's certificates.");
constexpr char const *kUntrustedStill =
    Mark("The certificate of %s is not trusted, and no certificate in %s vouches for it.");
constexpr char const *kUnknownIssuer = Mark("The certificate of %s is not trusted (issuer %s). Name the file of its "
                                            "authority's certificates, or accept this certificate: %s.");
constexpr char const *kChanged = Mark("The certificate of %s is not the one that was accepted (issuer %s). If it was "
                                      "renewed by those whose server it is, accept this certificate: %s.");
constexpr char const *kOtherName =
    Mark("The certificate of %s is that of another server (issuer %s, %s). Name the server "
         "as its certificate does.");
constexpr char const *kExpired = Mark("The certificate of %s has expired (issuer %s, %s).");
constexpr char const *kNotYet =
    Mark("The certificate of %s is not valid yet (issuer %s, %s). Is this computer's clock right?");
constexpr char const *kAcceptedOne = Mark("The server's certificate is the one that was accepted.");
constexpr char const *kAccepted = Mark("The server takes the login.");
constexpr char const *kAcceptedUser = Mark("The server takes the login of %s.");
constexpr char const *kNoPasswordYet = Mark("The server wants a password, and none is known yet.");
constexpr char const *kWrongLogin = Mark("The server does not know user %s or the password.");
constexpr char const *kWantsLogin = Mark("The server wants a login: name a user and where the password is kept.");
constexpr char const *kProxy = Mark("The proxy on the way wants a login of its own.");
constexpr char const *kForbids = Mark("The server does not let this login list it (%lld).");
constexpr char const *kNothing = Mark("There is nothing at this address (%lld).");
constexpr char const *kNoBucket = Mark("%s: there is no bucket of this name.");
constexpr char const *kWrongKey = Mark("%s: the secret key is wrong, or this computer's clock is.");
constexpr char const *kNoKey = Mark("%s: there is no such key.");
constexpr char const *kLoginExpired = Mark("%s: the login has expired.");
constexpr char const *kMayNotList =
    Mark("%s: the key may read objects but not list them: give a prefix or a full name.");
constexpr char const *kLeadsOn =
    Mark("The server sends on to %s. If that is right, name it among the hosts also allowed.");
constexpr char const *kNotListed = Mark("It cannot be listed: %s.");
constexpr char const *kInPath = Mark("Stores that are not Amazon's often want the bucket in the path: see Addressing.");
constexpr char const *kEmpty = Mark("It is listed, and nothing is in it.");
constexpr char const *kWorks = Mark("Works: %s.");
constexpr char const *kWorksAndMore = Mark("Works: %s, and more.");

/// What a store calls a refusal.
struct StoreCode {
    char const *code;
    char const *words;
    bool isLogin; ///< else it is about what is listed
};
constexpr std::array kCodes{
    StoreCode{"SignatureDoesNotMatch", kWrongKey, true}, StoreCode{"RequestTimeTooSkewed", kWrongKey, true},
    StoreCode{"AuthenticationFailed", kWrongKey, true},  StoreCode{"InvalidAccessKeyId", kNoKey, true},
    StoreCode{"ExpiredToken", kLoginExpired, true},      StoreCode{"InvalidToken", kLoginExpired, true},
    StoreCode{"AccessDenied", kMayNotList, false},       StoreCode{"AuthorizationFailure", kMayNotList, false},
    StoreCode{"NoSuchBucket", kNoBucket, false},         StoreCode{"ContainerNotFound", kNoBucket, false},
};

TrialResult Result(TrialStep step, TrialState state, DString words) {
    return {.step = step, .state = state, .words = std::move(words)};
}

DString ServerOf(Connection const &connection) {
    std::optional<ConnectionAddress> const address = connection.Address();
    DString endpoint = connection.Field("endpoint");
    if (std::size_t const scheme = endpoint.find("://"); scheme != DString::npos)
        endpoint.erase(0, scheme + 3);
    return !endpoint.empty() ? endpoint : address ? address->host : connection.name;
}

/// How what goes between the two is encrypted.
enum class Encryption { Unknown, None, Unchecked, Checked };
Encryption EncryptionOf(Connection const &connection) {
    std::optional<ConnectionAddress> const address = connection.Address();
    DString const scheme = address ? address->scheme : DString();
    if (connection.kind == ConnectionKind::PostgreSql) {
        DString const mode = connection.Field("sslmode");
        return mode.starts_with("verify") ? Encryption::Checked
               : mode == "require"        ? Encryption::Unchecked
               : mode == "disable"        ? Encryption::None
                                          : Encryption::Unknown;
    }
    if (connection.kind == ConnectionKind::ObjectStore)
        return connection.Field("endpoint").starts_with("http://") ? Encryption::None : Encryption::Checked;
    return scheme.ends_with("https")  ? Encryption::Checked
           : scheme.ends_with("http") ? Encryption::None
                                      : Encryption::Unknown;
}

/// Why a certificate is not trusted, and whether the user can accept it all the same.
TrialResult UntrustedResult(Connection const &connection, ListedConnection const &listed) {
    using Fault = ServerCertificate::Fault;
    std::optional<ServerCertificate> const &certificate = listed.certificate;
    std::optional<HostAndPort> const other = HostUntrustedElsewhere(listed.failure.Text());
    DString const server = other ? TextOf(*other) : ServerOf(connection);
    DString const ca = connection.Field("ca");
    std::optional<DString> const accepted = FingerprintIn(connection.Field("fingerprint"));
    // One that is the accepted one is not what was refused, nor can that of another host be accepted.
    if (other || !certificate || (certificate->fault == Fault::None && certificate->fingerprint == accepted))
        return Result(TrialStep::Encryption, TrialState::Failed,
                      ca.empty() ? FilledWords(kUntrusted, server)
                                 : Format(Translated(kUntrustedStill), server.c_str(), ca.c_str()));
    char const *words = accepted ? kChanged : kUnknownIssuer;
    if (certificate->fault == Fault::OtherName)
        words = kOtherName;
    else if (certificate->fault == Fault::Expired)
        words = kExpired;
    else if (certificate->fault == Fault::NotYetValid)
        words = kNotYet;
    DString const issuer = certificate->issuer.empty() ? "?" : certificate->issuer;
    TrialResult result = Result(TrialStep::Encryption, TrialState::Failed,
                                FilledWords(words, {server, issuer, certificate->fingerprint}));
    if (certificate->fault == Fault::None)
        result.accepts = certificate->fingerprint;
    return result;
}

StoreCode const *CodeIn(Connection const &connection, DError const &error) {
    // A store that is asked without a key says what it says of a wrong one.
    if (connection.kind != ConnectionKind::ObjectStore || error.Why() == DError::Cause::NeedsPassword)
        return nullptr;
    DString const &text = error.Text();
    auto const *const found = std::find_if(kCodes.begin(), kCodes.end(),
                                           [&](StoreCode const &row) { return text.find(row.code) != DString::npos; });
    return found == kCodes.end() ? nullptr : found;
}

/// Whether a failure is about who asks.
bool IsAboutLogin(Connection const &connection, DError const &error) {
    using Cause = DError::Cause;
    if (error.Why() == Cause::Server)
        return error.Detail() == kUnauthorized || error.Detail() == kProxyLogin;
    if (error.Why() == Cause::NeedsPassword)
        return true;
    bool const isDatabase = connection.kind == ConnectionKind::PostgreSql || connection.kind == ConnectionKind::Odbc;
    return isDatabase && error.Why() == Cause::NotPermitted;
}

DString LoginWords(Connection const &connection, DError const &error) {
    if (error.Detail() == kProxyLogin)
        return Translated(kProxy);
    std::optional<ConnectionAddress> const address = connection.Address();
    DString const user = address ? address->user : DString();
    bool const isDatabase = connection.kind == ConnectionKind::PostgreSql || connection.kind == ConnectionKind::Odbc;
    if (error.Why() == DError::Cause::NeedsPassword && (isDatabase || !user.empty()))
        return Translated(kNoPasswordYet);
    return user.empty() ? DString(Translated(kWantsLogin)) : FilledWords(kWrongLogin, user);
}

/// The host that the reader was kept from, if it is one that can be allowed.
std::optional<HostAndPort> HostLedTo(DError const &error) {
    return error.Why() == DError::Cause::Refused ? HostSentOnTo(error.Text()) : std::nullopt;
}

/// A store of its own was asked by a name below its own, which nobody knows.
bool IsBucketNoServer(Connection const &connection, DError const &error) {
    return connection.kind == ConnectionKind::ObjectStore && !connection.Field("endpoint").empty() &&
           connection.Field("addressing") != "path" && error.Why() == DError::Cause::NoAnswer &&
           error.Text().find(" " + connection.Field("bucket") + ".") != DString::npos;
}

DString ListingFailureWords(Connection const &connection, DError const &error) {
    if (error.Why() == DError::Cause::Server && error.Detail() == kForbidden)
        return Format(Translated(kForbids), static_cast<long long>(kForbidden));
    if (error.Why() == DError::Cause::Server && error.Detail() == kNotFound)
        return Format(Translated(kNothing), static_cast<long long>(kNotFound));
    if (std::optional<HostAndPort> const host = HostLedTo(error))
        return FilledWords(kLeadsOn, TextOf(*host));
    DString const cause = CauseInWords(error);
    bool const isSame = cause.empty() || cause == error.Text();
    DString const words = FilledWords(kNotListed, isSame ? error.Text() : cause + "; " + error.Text());
    return IsBucketNoServer(connection, error) ? words + " " + Translated(kInPath) : words;
}

/// "3 folders, 41 tables".
DString Counted(ListedConnection const &listed) {
    DString text;
    auto const add = [&text](DString const &part) { text.append(text.empty() ? "" : ", ").append(part); };
    auto const number = [](std::size_t count) { return static_cast<long long>(count); };
    if (long long const count = number(listed.folders); count > 0)
        add(Format(Translated("%lld folder", "%lld folders", count), count));
    if (long long const count = number(listed.images); count > 0)
        add(Format(Translated("%lld image", "%lld images", count), count));
    if (long long const count = number(listed.tables); count > 0)
        add(Format(Translated("%lld table", "%lld tables", count), count));
    if (long long const count = number(listed.others); count > 0)
        add(Format(Translated("%lld other file", "%lld other files", count), count));
    return text;
}

} // namespace

DString LoginFailureInWords(Connection const &connection, DError const &error) {
    StoreCode const *const code = CodeIn(connection, error);
    if (code != nullptr)
        return code->isLogin ? FilledWords(code->words, code->code) : DString();
    return IsAboutLogin(connection, error) ? LoginWords(connection, error) : DString();
}

std::vector<TrialResult> ListingInSteps(Connection const &connection, ListedConnection const &listed) {
    std::vector<TrialResult> results;
    if (listed.isStopped)
        return {Result(TrialStep::Listing, TrialState::Stopped, Translated(kStopped))};
    DError const &failure = listed.failure;
    bool const hasPassword = connection.secret != SecretPlace::None;
    if (failure.Why() == DError::Cause::Untrusted)
        return {UntrustedResult(connection, listed)};
    // A server that was never spoken to has shown no certificate.
    bool const isReached = !failure.IsSet() || failure.Why() == DError::Cause::Server ||
                           failure.Why() == DError::Cause::NotPermitted || failure.Why() == DError::Cause::Missing ||
                           failure.Why() == DError::Cause::NeedsPassword;
    Encryption const encryption = EncryptionOf(connection);
    if (isReached && encryption == Encryption::Checked)
        results.push_back(Result(TrialStep::Encryption, TrialState::Works,
                                 Translated(connection.Field("fingerprint").empty() ? kTrusted : kAcceptedOne)));
    else if (isReached && encryption == Encryption::Unchecked)
        results.push_back(Result(TrialStep::Encryption, TrialState::Works, Translated(kUnchecked)));
    else if (isReached && hasPassword && encryption == Encryption::None)
        results.push_back(Result(TrialStep::Encryption, TrialState::Works, Translated(kReadable)));

    StoreCode const *const code = CodeIn(connection, failure);
    if (code != nullptr ? code->isLogin : IsAboutLogin(connection, failure)) {
        results.push_back(
            Result(TrialStep::Login, TrialState::Failed,
                   code != nullptr ? FilledWords(code->words, code->code) : LoginWords(connection, failure)));
        return results;
    }
    std::optional<ConnectionAddress> const address = connection.Address();
    DString const user = address ? address->user : DString();
    if (isReached && hasPassword)
        results.push_back(Result(TrialStep::Login, TrialState::Works,
                                 user.empty() ? DString(Translated(kAccepted)) : FilledWords(kAcceptedUser, user)));
    if (failure.IsSet()) {
        results.push_back(
            Result(TrialStep::Listing, TrialState::Failed,
                   code != nullptr ? FilledWords(code->words, code->code) : ListingFailureWords(connection, failure)));
        results.back().allows = HostLedTo(failure);
        return results;
    }
    results.push_back(Result(TrialStep::Listing, TrialState::Works,
                             listed.IsEmpty() ? DString(Translated(kEmpty))
                                              : FilledWords(listed.hasMore ? kWorksAndMore : kWorks, Counted(listed))));
    if (!listed.first.empty())
        results.push_back(Result(TrialStep::FirstItem,
                                 listed.firstFailure.IsSet() ? TrialState::Failed : TrialState::Works,
                                 listed.firstWords));
    return results;
}

} // namespace zelvar
