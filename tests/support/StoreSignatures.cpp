#include "support/StoreSignatures.h"

#include "support/StoreAnswers.h"
#include "zelvar/base/DString.h"
#include "zelvar/base/Percent.h"

#include <algorithm>
#include <map>
#include <memory>

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

std::string Hmac(std::string const &key, std::string const &text, GChecksumType type = G_CHECKSUM_SHA256) {
    GHmac *const hmac = g_hmac_new(type, reinterpret_cast<guchar const *>(key.data()), key.size());
    g_hmac_update(hmac, reinterpret_cast<guchar const *>(text.data()), static_cast<gssize>(text.size()));
    std::string digest(32, '\0');
    gsize size = digest.size();
    g_hmac_get_digest(hmac, reinterpret_cast<guint8 *>(digest.data()), &size);
    g_hmac_unref(hmac);
    digest.resize(size);
    return digest;
}

std::string Hex(std::string const &bytes) {
    std::string hex;
    for (char const c : bytes)
        hex += Format("%02x", static_cast<unsigned>(static_cast<unsigned char>(c)));
    return hex;
}

std::string Base64(std::string const &bytes) {
    return Taken(g_base64_encode(reinterpret_cast<guchar const *>(bytes.data()), bytes.size()));
}

std::string MethodOf(std::string const &request) { return request.substr(0, request.find(' ')); }

} // namespace

std::string Between(std::string const &text, std::string const &head, char end) {
    std::size_t const at = text.find(head);
    return at == std::string::npos ? std::string()
                                   : text.substr(at + head.size(), text.find(end, at + head.size()) - at - head.size());
}

std::string AwsSignature(std::string const &request, std::string const &secret) {
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

std::string GoogleSignature(std::string const &request, std::string const &secret) {
    std::string const target = Between(request, " ", ' ');
    return Base64(Hmac(
        secret, MethodOf(request) + "\n\n\n" + HeaderOf(request, "Date") + "\n" + target.substr(0, target.find('?')),
        G_CHECKSUM_SHA1));
}

std::string AzureSignature(std::string const &request, std::string const &account, std::string const &secret) {
    std::string text = MethodOf(request) + "\n";
    for (char const *header :
         {"Content-Encoding", "Content-Language", "Content-Length", "Content-MD5", "Content-Type", "Date",
          "If-Modified-Since", "If-Match", "If-None-Match", "If-Unmodified-Since", "Range"})
        text += HeaderOf(request, header) + "\n";
    for (char const *header : {"x-ms-date", "x-ms-version"})
        text += header + (":" + HeaderOf(request, header)) + "\n";
    std::string const target = Between(request, " ", ' ');
    std::size_t const question = std::min(target.find('?'), target.size());
    text += "/" + account + target.substr(0, question);
    std::map<std::string, std::string> query;
    if (question < target.size())
        for (DString const &item : Split(target.substr(question + 1), '&'))
            query[item.substr(0, item.find('='))] = PercentDecoded(std::string_view(item).substr(item.find('=') + 1));
    for (auto const &[name, value] : query)
        text += "\n" + name + ":" + value;
    return Base64(Hmac(secret, text));
}

} // namespace zelvar::test
