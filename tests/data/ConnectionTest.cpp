#include "zelvar/data/Connection.h"

#include "support/Test.h"
#include "zelvar/base/Hex.h"
#include "zelvar/data/ServerCertificate.h"

namespace zelvar {
namespace {

struct Row {
    char const *address;
    char const *id;
    char const *hosts; ///< with a blank behind each
    ConnectionKind kind = ConnectionKind::Address;
};

DString HostsOf(ConnectionTerms const &terms) {
    DString text;
    for (HostAndPort const &host : terms.hosts)
        text += TextOf(host) + " ";
    return text;
}

TEST(Connection, AnAddressWithoutADefinitionLeadsToItsOwnHostAlone) {
    using enum ConnectionKind;
    unsetenv("AWS_S3_ENDPOINT");
    constexpr Row kRows[] = {
        {"http://Maps.lab/a/b.tif?x=http://other.lab/", "http://maps.lab:80", "maps.lab:80 "},
        {"HTTPS://u:p%40:w@maps.lab:8443", "https://u@maps.lab:8443", "maps.lab:8443 "},
        {"https://u:p@w@maps.lab#@x", "https://u@maps.lab:443", "maps.lab:443 "},
        {"http://[::1]:81/a", "http://[::1]:81", "[::1]:81 "},
        {"http://[::1/a", "", ""},
        {"http://maps.lab:65536/", "", ""},
        {"http://maps.lab:8o/", "", ""},
        {"http:///a", "", ""},
        {"ftp://maps.lab/a", "ftp://maps.lab", "maps.lab "},
        {"NETCDF:\"/vsicurl/http://maps.lab/a.nc\":v", "http://maps.lab:80", "maps.lab:80 "},
        {"/vsis3/bucket/a.tif", "s3://bucket", "s3.amazonaws.com:443 *.amazonaws.com:443 ", ObjectStore},
        {"s3://lab@bucket", "s3://lab@bucket", "s3.amazonaws.com:443 *.amazonaws.com:443 ", ObjectStore},
        {"postgresql://ann:pw@db.lab/field/a", "postgresql://ann@db.lab:5432", "db.lab:5432 ", PostgreSql},
        {"wms+https://maps.lab/ows?map=a", "wms+https://maps.lab:443", "maps.lab:443 ", MapService},
        {"/home/a.tif", "", ""},
        {"gopher://maps.lab/", "", ""},
    };
    for (Row const &row : kRows) {
        ConnectionTerms const terms = TermsOf(row.address);
        EXPECT_EQ(terms.id, row.id) << row.address;
        EXPECT_EQ(HostsOf(terms), row.hosts) << row.address;
        EXPECT_EQ(terms.kind, row.kind) << row.address;
    }
    setenv("AWS_S3_ENDPOINT", "http://[::1]:9000/x", 1);
    EXPECT_EQ(HostsOf(TermsOf("s3://bucket")), "[::1]:9000 [*.::1]:9000 ");
    unsetenv("AWS_S3_ENDPOINT");
}

TEST(Connection, OnlyHostsOfTheTermsMayBeReached) {
    ConnectionTerms const terms{.hosts = {{"Maps.lab", 443}, {"*.cdn.lab", 80}, {"any.lab", 0}}};
    for (auto const &[host, port] : {std::pair("maps.LAB", 443), {"a.b.cdn.lab", 80}, {"any.lab", 7}, {"maps.lab", 0}})
        EXPECT_TRUE(MayReach(terms, host, static_cast<std::uint16_t>(port))) << host;
    for (auto const &[host, port] : {std::pair("maps.lab", 80),
                                     {"x.maps.lab", 443},
                                     {"cdn.lab", 80},
                                     {".cdn.lab", 80},
                                     {"xcdn.lab", 80},
                                     {"", 7},
                                     {"", 0}})
        EXPECT_FALSE(MayReach(terms, host, static_cast<std::uint16_t>(port))) << host;
}

TEST(Connection, AHostThatAServerSendsOnToIsToldAndFoundInWhatIsTold) {
    for (auto const &[place, found] : test::Rows<HostAndPort, bool>{{{"cdn.lab", 443}, true},
                                                                    {{"::1", 81}, true},
                                                                    {{"cdn.lab", 0}, true},
                                                                    {{"*.lab", 443}, false},
                                                                    {{"a b", 1}, false},
                                                                    {{"x,y.lab", 1}, false}})
        EXPECT_EQ(HostSentOnTo("\"http://h\": " + SendsOnText(place) + " (7)"),
                  found ? std::optional(place) : std::nullopt)
            << place.host;
    EXPECT_FALSE(HostSentOnTo("the server sends on to cdn.lab"));
}

TEST(Connection, AFingerprintIsKnownHoweverItIsTyped) {
    DString const bytes("\x01\xAB 0123456789012345678901234567", 32);
    DString const text = FingerprintOf(bytes);
    DString const hex = HexEncode(bytes);
    EXPECT_TRUE(text.starts_with("SHA256:01:AB:20:30")) << text;
    for (auto const &[typed, isKnown] :
         test::Rows<DString, bool>{{text, true},
                                   {hex, true},
                                   {" sha256:" + hex + " ", true},
                                   {hex.substr(0, 2) + ":\xE2\x80\x8B" + hex.substr(2), true},
                                   {"sha256 Fingerprint=" + text.substr(7), true},
                                   {hex + "00", false},
                                   {hex.substr(2), false},
                                   {"SHA1:" + hex, false},
                                   {hex.substr(1) + "g", false},
                                   {"", false}})
        EXPECT_EQ(FingerprintIn(typed), isKnown ? std::optional(text) : std::nullopt) << typed;
}

TEST(Connection, WhatTheFinderKnowsComesFirst) {
    SetConnectionFinder([](std::string_view address) {
        return address == "s3://bucket/a" ? std::optional(ConnectionTerms{.id = "found"}) : std::nullopt;
    });
    EXPECT_EQ(TermsOf("/vsis3/bucket/a").id, "found");
    EXPECT_EQ(TermsOf("http://h").id, "http://h:80");
    SetConnectionFinder(nullptr);
    EXPECT_EQ(TermsOf("s3://bucket/a").id, "s3://bucket");
}

} // namespace
} // namespace zelvar
