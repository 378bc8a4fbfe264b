#include "zelvar/data/gdal/StoreTalk.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/data/ReaderDuty.h"
#include "zelvar/data/gdal/Causes.h"

#include <cpl_conv.h>
#include <cpl_error.h>
#include <cpl_vsi_error.h>

#include <array>
#include <cstdlib>
#include <ctime>

namespace zelvar::gdal {

namespace {

constexpr std::size_t kLongestValue = 64;

/// What stands in an element of an answer; empty if it is not there, or is too long for what is looked for.
DString ValueOf(std::string_view answer, std::string_view element) {
    DString const head = "<" + DString(element) + ">";
    std::size_t const begin = answer.find(head);
    if (begin == std::string_view::npos)
        return {};
    std::string_view const rest = answer.substr(begin + head.size());
    std::size_t const end = rest.find('<');
    return end <= kLongestValue ? ToValidUtf8(rest.substr(0, end)) : DString();
}

/// Seconds since 1970 of "20240102T100030Z" and "2024-01-02T10:00:30Z".
std::optional<std::int64_t> MomentOf(DString const &text) {
    std::tm time{};
    for (char const *const form : {"%Y%m%dT%H%M%S", "%Y-%m-%dT%H:%M:%S"})
        if (strptime(text.c_str(), form, &time) != nullptr)
            return timegm(&time);
    return std::nullopt;
}

struct CodeWords {
    std::string_view code;
    char const *words;
};
/// What a code means to who uses the store.
constexpr std::array kWords{
    CodeWords{"NoSuchBucket", "there is no such bucket"},
    CodeWords{"InvalidBucketName", "that is no name of a bucket"},
    CodeWords{"InvalidAccessKeyId", "the store does not know the key"},
    CodeWords{"SignatureDoesNotMatch", "the secret key is wrong, or this computer's clock is"},
    CodeWords{"AccessDenied", "the key may not list here; give a prefix that it may list, or an object's full name"},
    CodeWords{"RequestTimeTooSkewed", "this computer's clock is wrong"},
    CodeWords{"ExpiredToken", "the login has expired"},
    // Of Azure.
    CodeWords{"ContainerNotFound", "there is no such container"},
    CodeWords{"InvalidResourceName", "that is no name of a container"},
    CodeWords{"AuthenticationFailed", "the account's key is wrong, or this computer's clock is"},
    CodeWords{"AuthorizationFailure", "the account may not list here"},
    CodeWords{"AuthorizationPermissionMismatch", "the account may not list here"},
    CodeWords{"NoAuthenticationInformation", "the store wants a key"},
};

/// Whether the connection that this process serves names a key, and nobody has told its secret.
bool LacksSecret() {
    ReaderDuty const *const duty = OwnDuty();
    if (duty == nullptr || !duty->connection || duty->connection->kind != ConnectionKind::ObjectStore)
        return false;
    auto const has = [](std::map<DString, DString> const &texts, char const *name) {
        auto const at = texts.find(name);
        return at != texts.end() && !at->second.empty();
    };
    return has(duty->connection->options, "key") && !has(duty->connection->secrets, "key");
}

} // namespace

StoreTalk::StoreTalk() {
    if (char const *const former = CPLGetThreadLocalConfigOption("CPL_DEBUG", nullptr))
        m_former = former;
    CPLSetThreadLocalConfigOption("CPL_DEBUG", "ON");
    CPLSetThreadLocalConfigOption("CPL_CURL_VERBOSE", "YES");
    VSIErrorReset();
    CPLPushErrorHandlerEx([](CPLErr level, CPLErrorNum number, char const *text) { OnSaid(level, number, text); },
                          this);
}

StoreTalk::~StoreTalk() {
    CPLPopErrorHandler();
    CPLSetThreadLocalConfigOption("CPL_CURL_VERBOSE", nullptr);
    CPLSetThreadLocalConfigOption("CPL_DEBUG", m_former ? m_former->c_str() : nullptr);
}

void StoreTalk::OnSaid(int level, int, char const *text) {
    auto &talk = *static_cast<StoreTalk *>(CPLGetErrorHandlerUserData());
    talk.NoteTransfer(text);
    talk.Note(text);
    if (level == CE_Debug)
        return; // remarks hold requests with their signatures: nothing but figures is taken from them
    Report::TraceMessage(Report::kTraceDriver, "GDAL: %s", text);
    if (level >= CE_Failure && talk.m_error.empty())
        talk.m_error = Trimmed(text);
}

void StoreTalk::NoteTransfer(std::string_view remark) {
    constexpr std::string_view asked = "CURL_INFO_HEADER_OUT: ";
    constexpr std::string_view answered = "CURL_INFO_HEADER_IN: HTTP/"; // "1.1 200 OK"
    constexpr std::string_view said = "CURL_INFO_TEXT: ";
    if (remark.starts_with(answered) && remark.find(' ', answered.size()) != std::string_view::npos)
        m_status = std::atoi(remark.substr(remark.find(' ', answered.size())).data());
    DString const text = remark.starts_with(said) ? DString(Trimmed(remark.substr(said.size()))) : DString();
    if (remark.starts_with(asked) || text.starts_with("Trying "))
        m_status = 0; // what came before is done with
    if (!text.empty() && !text.starts_with("Closing connection"))
        m_said = text;
}

void StoreTalk::Note(std::string_view answer) {
    if (!m_code.empty())
        return;
    m_code = ValueOf(answer, "Code");
    auto const asked = MomentOf(ValueOf(answer, "RequestTime"));
    auto const told = MomentOf(ValueOf(answer, "ServerTime"));
    if (asked && told)
        m_clockOff = *asked - *told;
}

bool StoreTalk::LacksKey() const {
    // Machines of clouds ask for theirs at this number; others have got no answer from it.
    return m_code.empty() &&
           (VSIGetLastErrorNo() == VSIE_AWSInvalidCredentials || m_error.find("169.254.169.254") != DString::npos);
}

DError StoreTalk::Failure(DString const &subject) const {
    DError failure = FailureAsTold(subject);
    if (failure.Why() != DError::Cause::NotPermitted || !LacksSecret())
        return failure;
    DError told;
    told.Set("\"" + subject + "\": there is no secret key for it" + (m_code.empty() ? DString() : " (" + m_code + ")"),
             DError::Cause::NeedsPassword);
    return told;
}

DError StoreTalk::FailureAsTold(DString const &subject) const {
    if (!HasFailed())
        return {};
    if (LacksKey()) {
        DError told;
        told.Set("\"" + subject + "\": there is no key for it; name one, or say that requests are not signed",
                 DError::Cause::NotPermitted);
        return told;
    }
    if (m_code.empty() && m_error.empty())
        return ErrorOfServer(subject, m_status > 0 ? zelvar::Format("HTTP response code: %d", m_status) : m_said);
    DError failure = ErrorOfStore(subject, m_code, m_error);
    for (CodeWords const &known : kWords) {
        if (known.code != m_code)
            continue;
        DString text = failure.Text() + ": " + known.words;
        constexpr std::int64_t minute = 60;
        if (m_clockOff)
            text += zelvar::Format(" (%lld min %s)", static_cast<long long>(std::abs(*m_clockOff) / minute),
                                   *m_clockOff < 0 ? "slow" : "fast");
        DError told;
        told.Set(text, failure.Why(), failure.Detail());
        return told;
    }
    return failure;
}

} // namespace zelvar::gdal
