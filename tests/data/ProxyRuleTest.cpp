#include "zelvar/data/ProxyRule.h"

#include "support/Test.h"

namespace zelvar {
namespace {

TEST(ProxyRule, TheEnvironmentNamesTheProxyOfAHost) {
    using enum ConnectionKind;
    struct Row {
        char const *id;
        ConnectionKind kind;
        char const *host;
        std::map<DString, DString> environment;
        char const *proxy; ///< empty for none
        char const *login = "";
        char const *refusal = "";
    };
    Row const rows[] = {
        {"http://a:80", Address, "a", {}, ""},
        {"http://a:80", Address, "a", {{"http_proxy", "http://P.lab:3128/"}, {"all_proxy", "x"}}, "p.lab:3128"},
        {"http://a:80", Address, "a", {{"https_proxy", "p"}, {"HTTP_PROXY", "p"}}, ""},
        {"wms+https://a", MapService, "a", {{"http_proxy", "x"}, {"HTTPS_PROXY", "p:1"}}, "p:1"},
        {"s3://bucket", ObjectStore, "a", {{"ALL_PROXY", "http://u:p%40w@[::1]"}}, "[::1]:1080", "u:p@w"},
        {"postgresql://a:5432", PostgreSql, "a", {{"all_proxy", "p:1"}}, ""},
        {"https://a:443", Address, "a", {{"https_proxy", "socks5://p:1"}}, "p:1", "", "socks5"},
        {"https://a:443", Address, "a", {{"https_proxy", "http://:1"}}, "", "", "no host"},
        {"http://a:80", Address, "a.lab", {{"http_proxy", "p:1"}, {"no_proxy", "b, .LAB"}}, ""},
        {"http://a:80", Address, "xlab", {{"http_proxy", "p:1"}, {"NO_PROXY", "lab"}}, "p:1"},
        {"http://a:80", Address, "lab", {{"http_proxy", "p:1"}, {"no_proxy", "*.lab:80"}}, ""},
        {"http://a:80", Address, "::1", {{"http_proxy", "p:1"}, {"no_proxy", "::1"}}, ""},
        {"http://a:80", Address, "a", {{"http_proxy", "p:1"}, {"no_proxy", " * "}}, ""},
    };
    for (Row const &row : rows) {
        ConnectionTerms const terms{.id = row.id, .kind = row.kind};
        auto const environment = [&](char const *name) {
            auto const at = row.environment.find(name);
            return at == row.environment.end() ? DString() : at->second;
        };
        auto const proxy = ProxyFor(terms, row.host, environment);
        SCOPED_TRACE(DString(row.id) + " " + row.host + " " + testing::PrintToString(row.environment));
        ASSERT_EQ(proxy.has_value(), *row.proxy != '\0' || *row.refusal != '\0');
        if (!proxy)
            continue;
        EXPECT_EQ(proxy->login, row.login);
        EXPECT_EQ(proxy->refusal, row.refusal);
        if (*row.proxy != '\0') {
            EXPECT_EQ(TextOf(proxy->place), row.proxy);
        }
    }
}

TEST(ProxyRule, ATunnelIsAskedForWithTheLogin) {
    EXPECT_EQ(TunnelRequest({"::1", 443}, {}), "CONNECT [::1]:443 HTTP/1.1\r\nHost: [::1]:443\r\n\r\n");
    for (auto const &[login, coded] :
         {std::pair("a:b", "YTpi"), {"a:bc", "YTpiYw=="}, {"a:\xFF\xFE\xFD", "YTr//v0="}, {":", "Og=="}})
        EXPECT_THAT(TunnelRequest({"a", 1}, {.login = login}),
                    testing::HasSubstr(DString("Basic ") + coded + "\r\n\r\n"));
    for (auto const &[answer, status] : {std::pair("HTTP/1.1 200 OK\r\n", 200),
                                         {"HTTP/1.0 407\r\n", 407},
                                         {"HTTP/1.1", 0},
                                         {"SSH-2 200", 0},
                                         {"HTTP/1.1 x", 0},
                                         {"", 0}})
        EXPECT_EQ(StatusOfTunnel(answer), status) << answer;
}

} // namespace
} // namespace zelvar
