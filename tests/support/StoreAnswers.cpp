#include "support/StoreAnswers.h"

#include "zelvar/base/DString.h"
#include "zelvar/base/Percent.h"

#include <algorithm>
#include <memory>
#include <utility>

#include <glib.h>

namespace zelvar::test {

namespace {

std::string Taken(char *text) {
    std::unique_ptr<char, decltype(&g_free)> const owned(text, &g_free);
    return owned.get();
}

std::string Sha256(std::string const &text) {
    return Taken(
        g_compute_checksum_for_data(G_CHECKSUM_SHA256, reinterpret_cast<guchar const *>(text.data()), text.size()));
}

std::string Hmac(std::string const &key, std::string const &text) {
    GHmac *const hmac = g_hmac_new(G_CHECKSUM_SHA256, reinterpret_cast<guchar const *>(key.data()), key.size());
    g_hmac_update(hmac, reinterpret_cast<guchar const *>(text.data()), static_cast<gssize>(text.size()));
    std::string digest(32, '\0');
    gsize size = digest.size();
    g_hmac_get_digest(hmac, reinterpret_cast<guint8 *>(digest.data()), &size);
    g_hmac_unref(hmac);
    return digest;
}

std::string Hex(std::string const &bytes) {
    std::string hex;
    for (char const c : bytes)
        hex += Format("%02x", static_cast<unsigned>(static_cast<unsigned char>(c)));
    return hex;
}

std::string Between(std::string const &text, std::string const &head, char end) {
    std::size_t const at = text.find(head);
    return at == std::string::npos ? std::string()
                                   : text.substr(at + head.size(), text.find(end, at + head.size()) - at - head.size());
}

/// The signature that a request should have, by the description of the signing process.
std::string SignatureOf(std::string const &request, std::string const &secret) {
    std::string const login = HeaderOf(request, "Authorization");
    std::string const scope = Between(login, "Credential=", ',').substr(Between(login, "Credential=", '/').size() + 1);
    std::string const signedHeaders = Between(login, "SignedHeaders=", ',');
    std::string const target = Between(request, " ", ' ');
    std::size_t const question = std::min(target.find('?'), target.size());
    std::vector<DString> items;
    if (question < target.size())
        for (DString const &item : Split(target.substr(question + 1), '&'))
            items.push_back(item.find('=') == DString::npos ? item + "=" : item);
    std::sort(items.begin(), items.end());
    std::string query;
    for (DString const &item : items)
        query += (query.empty() ? "" : "&") + item;
    std::string canonical =
        request.substr(0, request.find(' ')) + "\n" + target.substr(0, question) + "\n" + query + "\n";
    for (DString const &name : Split(signedHeaders, ';'))
        canonical += name + ":" + HeaderOf(request, name) + "\n";
    canonical += "\n" + signedHeaders + "\n" + HeaderOf(request, "x-amz-content-sha256");
    std::string key = "AWS4" + secret;
    for (DString const &part : Split(scope, '/'))
        key = Hmac(key, part);
    return Hex(
        Hmac(key, "AWS4-HMAC-SHA256\n" + HeaderOf(request, "x-amz-date") + "\n" + scope + "\n" + Sha256(canonical)));
}

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
    std::string const login = HeaderOf(request, "Authorization");
    if (login.empty())
        return Refusal(forbidden, "AccessDenied", {});
    if (Between(login, "Credential=", '/') != m_key)
        return Refusal(forbidden, "InvalidAccessKeyId", {});
    bool const isSigned = login.substr(login.find("Signature=") + 10) == SignatureOf(request, m_secret);
    return isSigned ? std::nullopt : std::optional(Refusal(forbidden, "SignatureDoesNotMatch", {}));
}

std::optional<StoreAnswers::Answer> StoreAnswers::AnswerTo(std::string const &request) const {
    constexpr int missing = 404;
    if (auto refusal = RefusalOf(request))
        return refusal;
    std::string const target = Between(request, " ", ' ');
    if (target == "/" && !m_buckets.empty())
        return Answer{.body = Buckets()};
    std::size_t const question = target.find("/?");
    if (question == std::string::npos || question == 0 || target.find("delimiter=") == std::string::npos)
        return std::nullopt;
    std::string const name = target.substr(1, question - 1);
    auto const bucket = m_buckets.find(name);
    if (bucket == m_buckets.end())
        return m_buckets.empty() ? std::nullopt : std::optional(Refusal(missing, "NoSuchBucket", {}));
    std::map<std::string, std::string> query;
    for (DString const &item : Split(target.substr(question + 2), '&'))
        query[item.substr(0, item.find('='))] = PercentDecoded(std::string_view(item).substr(item.find('=') + 1));
    return Answer{.body = Page(bucket->second, query)};
}

std::string StoreAnswers::Buckets() const {
    std::string text = "<?xml version=\"1.0\"?><ListAllMyBucketsResult><Buckets>";
    for (auto const &[name, bucket] : m_buckets)
        text += "<Bucket><Name>" + name + "</Name><CreationDate>2024-01-02T10:00:30.000Z</CreationDate></Bucket>";
    return text + "</Buckets></ListAllMyBucketsResult>";
}

/// One page of a listing with "/" as its separator. The marker is the last key or prefix of the page before.
std::string StoreAnswers::Page(Bucket const &bucket, std::map<std::string, std::string> const &query) {
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
        entries += "<Contents><Key>" + key +
                   "</Key><LastModified>2024-01-02T10:00:30.000Z</LastModified><Size>1234</Size></Contents>";
    };
    auto const page = [&](bool isCut) {
        if (isCut)
            entries += "<NextMarker>" + last + "</NextMarker><IsTruncated>true</IsTruncated>";
        return "<?xml version=\"1.0\"?><ListBucketResult><Prefix>" + prefix + "</Prefix>" + entries +
               "</ListBucketResult>";
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
            entries += "<CommonPrefixes><Prefix>" + shown + "</Prefix></CommonPrefixes>";
    }
    return page(bucket.repeats);
}

} // namespace zelvar::test
