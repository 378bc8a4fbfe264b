#include "zelvar/data/ProxyRule.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/base/Percent.h"

#include <algorithm>
#include <charconv>

namespace zelvar {

namespace {

constexpr std::size_t kNone = std::string_view::npos;

bool IsOfTheWeb(ConnectionKind kind) { return kind != ConnectionKind::PostgreSql && kind != ConnectionKind::Odbc; }
bool IsPlain(ConnectionTerms const &terms) { return terms.id.substr(0, terms.id.find("://")).ends_with("http"); }

/// "lab, .lab, *.lab, host:80": the port is passed over.
bool IsExempt(std::string_view host, DString const &list) {
    for (DString const &part : Split(list, ',')) {
        std::string_view name = Trimmed(part);
        if (name == "*")
            return true;
        if (name.find(':') == name.rfind(':'))
            name = name.substr(0, name.find(':'));
        while (!name.empty() && (name.front() == '*' || name.front() == '.'))
            name.remove_prefix(1);
        if (name.empty() || name.size() > host.size())
            continue;
        std::string_view const end = host.substr(host.size() - name.size());
        if (EqualNoCase(end, name) && (end.size() == host.size() || host[host.size() - end.size() - 1] == '.'))
            return true;
    }
    return false;
}

DString Base64(std::string_view text) {
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    DString out;
    for (std::size_t i = 0; i < text.size(); i += 3) {
        std::string_view const part = text.substr(i, 3);
        std::uint32_t bits = 0;
        for (std::size_t k = 0; k < 3; ++k)
            bits = bits << 8U | (k < part.size() ? static_cast<unsigned char>(part[k]) : 0U);
        for (std::size_t k = 0; k < 4; ++k)
            out += k <= part.size() ? kDigits[bits >> (6 * (3 - k)) & 0x3FU] : '=';
    }
    return out;
}

} // namespace

Proxy ProxyNamed(DString const &text) {
    constexpr std::uint16_t usual = 1080;
    Proxy proxy;
    std::string_view rest = text;
    if (std::size_t const scheme = rest.find("://"); scheme != kNone) {
        if (!EqualNoCase(rest.substr(0, scheme), "http"))
            proxy.refusal = DString(rest.substr(0, scheme));
        rest.remove_prefix(scheme + 3);
    }
    rest = rest.substr(0, rest.find('/'));
    if (std::size_t const at = rest.rfind('@'); at != kNone) {
        proxy.login = PercentDecoded(rest.substr(0, at));
        rest.remove_prefix(at + 1);
    }
    if (auto const place = PlaceIn(rest, usual))
        proxy.place = *place;
    else
        proxy.refusal = "no host";
    return proxy;
}

DString AddressForProxy(ConnectionTerms const &terms, std::string_view host) {
    if (!IsOfTheWeb(terms.kind))
        return {};
    bool const isNumber = host.find(':') != kNone;
    return DString(IsPlain(terms) ? "http://" : "https://") + (isNumber ? "[" : "") + DString(host) +
           (isNumber ? "]" : "") + "/";
}

std::optional<Proxy> ProxyFor(ConnectionTerms const &terms, std::string_view host, Environment const &environment) {
    if (!IsOfTheWeb(terms.kind))
        return std::nullopt;
    auto const first = [&](std::initializer_list<char const *> names) {
        DString value;
        for (char const *name : names)
            value = value.empty() ? environment(name) : value;
        return value;
    };
    DString const named = IsPlain(terms) ? first({"http_proxy", "all_proxy", "ALL_PROXY"})
                                         : first({"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"});
    if (named.empty() || IsExempt(host, first({"no_proxy", "NO_PROXY"})))
        return std::nullopt;
    return ProxyNamed(named);
}

DString TunnelRequest(HostAndPort const &to, Proxy const &proxy) {
    DString const place = TextOf(to);
    DString request = "CONNECT " + place + " HTTP/1.1\r\nHost: " + place + "\r\n";
    if (!proxy.login.empty())
        request += "Proxy-Authorization: Basic " + Base64(proxy.login) + "\r\n";
    return request + "\r\n";
}

int StatusOfTunnel(std::string_view answer) {
    std::size_t const blank = answer.find(' ');
    if (!answer.starts_with("HTTP/1.") || blank == kNone)
        return 0;
    int status = 0;
    std::from_chars(answer.data() + blank + 1, answer.data() + answer.size(), status);
    return status;
}

} // namespace zelvar
