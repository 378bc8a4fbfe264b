#include "support/StoreAnswers.h"

#include "support/StoreSignatures.h"
#include "zelvar/base/DString.h"
#include "zelvar/base/Percent.h"

#include <algorithm>
#include <utility>

namespace zelvar::test {

namespace {

StoreAnswers::Answer Refusal(int status, std::string const &code, std::string const &more) {
    return {status, "<?xml version=\"1.0\"?><Error><Code>" + code + "</Code><Message>m</Message>" + more + "</Error>"};
}

} // namespace

std::string KeyOf(long long number) { return Format("k%012lld.tif", number); }

std::string HeaderOf(std::string const &request, std::string const &name) {
    for (std::size_t at = request.find("\r\n"); at != std::string::npos; at = request.find("\r\n", at + 2)) {
        std::string const line = request.substr(at + 2, request.find("\r\n", at + 2) - at - 2);
        bool const same =
            line.size() > name.size() && line[name.size()] == ':' &&
            std::equal(name.begin(), name.end(), line.begin(), [](char a, char b) { return (a | 0x20) == (b | 0x20); });
        if (same)
            return line.substr(std::min(line.find_first_not_of(' ', name.size() + 1), line.size()));
    }
    return {};
}

void StoreAnswers::SetBucket(std::string const &name, Bucket bucket) {
    std::sort(bucket.keys.begin(), bucket.keys.end());
    m_buckets[name] = std::move(bucket);
}

void StoreAnswers::Demand(std::string key, std::string secret) {
    m_key = std::move(key);
    m_secret = std::move(secret);
}

void StoreAnswers::Refuse(int status, std::string code, std::string more) { m_refusal = Refusal(status, code, more); }

std::optional<StoreAnswers::Answer> StoreAnswers::RefusalOf(std::string const &request) const {
    constexpr int forbidden = 403;
    if (m_refusal)
        return m_refusal;
    if (m_key.empty())
        return std::nullopt;
    if (m_secret.starts_with("sv="))
        return Between(request, " ", ' ').find(m_secret) != std::string::npos
                   ? std::nullopt
                   : std::optional(Refusal(forbidden, "AuthenticationFailed", {}));
    std::string const login = HeaderOf(request, "Authorization");
    if (login.empty())
        return Refusal(forbidden, "AccessDenied", {});
    // "GOOG1 key:signature", "SharedKey account:signature", and that of AWS with its parts by name.
    bool const isAws = login.starts_with("AWS4");
    std::string const key = isAws ? Between(login, "Credential=", '/') : Between(login, " ", ':');
    if (key != m_key)
        return Refusal(forbidden, m_isAzure ? "AuthenticationFailed" : "InvalidAccessKeyId", {});
    std::string const wanted = m_isAzure ? AzureSignature(request, m_key, m_secret)
                               : isAws   ? AwsSignature(request, m_secret)
                                         : GoogleSignature(request, m_secret);
    std::string const told = isAws ? login.substr(login.find("Signature=") + 10) : login.substr(login.find(':') + 1);
    if (told == wanted)
        return std::nullopt;
    return Refusal(forbidden, m_isAzure ? "AuthenticationFailed" : "SignatureDoesNotMatch", {});
}

std::optional<StoreAnswers::Answer> StoreAnswers::AnswerTo(std::string const &request) const {
    constexpr int missing = 404;
    if (auto refusal = RefusalOf(request))
        return refusal;
    std::string target = Between(request, " ", ' ');
    if (m_isAzure)
        target.erase(0, std::min(target.size(), m_key.size() + 1)); // all lies below the account
    std::string const path = target.substr(0, target.find('?'));
    std::map<std::string, std::string> query;
    if (path.size() < target.size())
        for (DString const &item : Split(target.substr(path.size() + 1), '&'))
            query[item.substr(0, item.find('='))] = PercentDecoded(std::string_view(item).substr(item.find('=') + 1));
    if (path == "/" && !m_buckets.empty())
        return Answer{.body = Buckets()};
    std::string const name = path.substr(1, path.size() - (path.ends_with('/') ? 2 : 1));
    if (name.empty() || name.find('/') != std::string::npos || !query.contains("delimiter"))
        return std::nullopt;
    auto const bucket = m_buckets.find(name);
    if (bucket == m_buckets.end())
        return m_buckets.empty()
                   ? std::nullopt
                   : std::optional(Refusal(missing, m_isAzure ? "ContainerNotFound" : "NoSuchBucket", {}));
    return Answer{.body = Page(bucket->second, query)};
}

std::string StoreAnswers::Buckets() const {
    std::string text;
    for (auto const &[name, bucket] : m_buckets)
        text += m_isAzure
                    ? "<Container><Name>" + name + "</Name></Container>"
                    : "<Bucket><Name>" + name + "</Name><CreationDate>2024-01-02T10:00:30.000Z</CreationDate></Bucket>";
    return m_isAzure ? "<?xml version=\"1.0\"?><EnumerationResults><Containers>" + text +
                           "</Containers><NextMarker/></EnumerationResults>"
                     : "<?xml version=\"1.0\"?><ListAllMyBucketsResult><Buckets>" + text +
                           "</Buckets></ListAllMyBucketsResult>";
}

/// One page of a listing with "/" as its separator. The marker is the last key or prefix of the page before.
std::string StoreAnswers::Page(Bucket const &bucket, std::map<std::string, std::string> const &query) const {
    auto const value = [&](char const *name) {
        auto const at = query.find(name);
        return at == query.end() ? std::string() : at->second;
    };
    std::string const prefix = value("prefix");
    std::string const marker = bucket.repeats ? "" : value("marker");
    std::string entries;
    std::string last;
    std::size_t count = 0;
    auto const object = [&](std::string const &key) {
        last = key;
        entries += m_isAzure ? "<Blob><Name>" + key +
                                   "</Name><Properties><Last-Modified>Tue, 02 Jan 2024 10:00:30 GMT</Last-Modified>"
                                   "<Content-Length>1234</Content-Length></Properties></Blob>"
                             : "<Contents><Key>" + key +
                                   "</Key><LastModified>2024-01-02T10:00:30.000Z</LastModified><Size>1234</Size>"
                                   "</Contents>";
    };
    auto const page = [&](bool isCut) {
        std::string const next = isCut ? "<NextMarker>" + last + "</NextMarker>" : "";
        std::string const head = "<?xml version=\"1.0\"?>";
        if (m_isAzure)
            return head + "<EnumerationResults><Prefix>" + prefix + "</Prefix><Blobs>" + entries + "</Blobs>" + next +
                   "</EnumerationResults>";
        return head + "<ListBucketResult><Prefix>" + prefix + "</Prefix>" + entries + next +
               (isCut ? "<IsTruncated>true</IsTruncated>" : "") + "</ListBucketResult>";
    };
    if (bucket.isEndless) {
        long long first = marker.empty() ? 0 : std::stoll(marker.substr(1)) + 1;
        for (; count < bucket.keysOfPage; ++count)
            object(KeyOf(first++));
        return page(true);
    }
    for (auto key = std::upper_bound(bucket.keys.begin(), bucket.keys.end(), std::max(marker, prefix));
         key != bucket.keys.end() && key->starts_with(prefix); ++key) {
        std::size_t const slash = key->find('/', prefix.size());
        std::string const shown = slash == std::string::npos ? *key : key->substr(0, slash + 1);
        if (shown <= marker || shown == last)
            continue;
        if (count++ == bucket.keysOfPage)
            return page(true);
        last = shown;
        if (slash == std::string::npos)
            object(*key);
        else
            entries += m_isAzure ? "<BlobPrefix><Name>" + shown + "</Name></BlobPrefix>"
                                 : "<CommonPrefixes><Prefix>" + shown + "</Prefix></CommonPrefixes>";
    }
    return page(bucket.repeats);
}

} // namespace zelvar::test
