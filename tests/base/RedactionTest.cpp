#include "zelvar/base/Redaction.h"

#include "support/Test.h"
#include "zelvar/base/Report.h"
#include "zelvar/base/TypedSecrets.h"

namespace zelvar {
namespace {

TEST(Redaction, SecretsReadAsStars) {
    test::Rows<char const *, char const *> const cases = {
        {"http://u:pw@h/a.tif", "http://u:***@h/a.tif"},
        {"GET HTTPS://u:p%40w'{}@h:80/a?b=c@d failed", "GET HTTPS://u:***@h:80/a?b=c@d failed"},
        {"a \"ftp://:pw@h\", smb://D;u:p@ss:w@h/s", "a \"ftp://:***@h\", smb://D;u:***@h/s"},
        {"http://u:p/w?#@h/x", "http://u:***@h/x"},
        {"/vsizip/{/vsicurl/http://u:pw@h/x.zip}/a.tif", "/vsizip/{/vsicurl/http://u:***@h/x.zip}/a.tif"},
        {"x?NODE=%2Fvsicurl%2fhttp%3a%2F%2Fu%3Ap%2540w%40h%2Fa&LAYER=b",
         "x?NODE=%2Fvsicurl%2fhttp%3a%2F%2Fu%3A***%40h%2Fa&LAYER=b"},
        {"x?NODE=PG%3Ahost%3Dh%20password%3D%27a%20b%27%20port%3D1",
         "x?NODE=PG%3Ahost%3Dh%20password%3D***%20port%3D1"},
        {"PG:host=h password='it''s \\' odd' port=1", "PG:host=h password=*** port=1"},
        {"PG:password = secret;x&y host=h", "PG:password = *** host=h"},
        {"URL \"PG:dbname=d passwd=a\"b\"", "URL \"PG:dbname=d passwd=***\""},
        {"user=u;password=p w;host=h", "user=u;password=***;host=h"},
        {"password=pw;host=h", "password=***;host=h"},
        {"DSN=x;PWD={a;}}b};UID=u", "DSN=x;PWD=***;UID=u"},
        {"password='never ends", "password=***"},
        {"aws_secret_access_key = abc/d+e\nregion = eu", "aws_secret_access_key = ***\nregion = eu"},
        {"https://h/a?X-Amz-Credential=k%2F1&X-Amz-Date=2&x-amz-signature=9f#t",
         "https://h/a?X-Amz-Credential=***&X-Amz-Date=2&x-amz-signature=***#t"},
        {"https://h/a?sv=1&sig=a%2Bb&se=2", "https://h/a?sv=1&sig=***&se=2"},
        {"http://h/?token=t&access_token=a&api_key=k&apikey=l&key=m", "http://h/?token=***&access_token=***&api_key="
                                                                      "***&apikey=***&key=***"},
        {"> Authorization: Basic dTpwdw==\r\n> Host: h", "> Authorization: ***\r\n> Host: h"},
        {"proxy-authorization:AWS4-HMAC-SHA256 Credential=a, Signature=b", "proxy-authorization:***"},
    };
    for (auto const &[text, expected] : cases) {
        EXPECT_EQ(Redacted(text), expected);
        EXPECT_EQ(Redacted(expected), expected) << "what was redacted stays";
    }
}

TEST(Redaction, HarmlessTextsStay) {
    for (char const *text : {"",
                             "mailto:a@b",
                             "C:/a@b",
                             "monkey=1",
                             "passwords=3",
                             "http://h:80/a@b:c",
                             "http://u@h/",
                             "http://[::1]:8/a@b",
                             "file:///a:b@c",
                             "http://h/a:b@c",
                             "token=1",
                             "key=a",
                             "sig=2",
                             "?monkey=1&design=2",
                             "password=",
                             "password= a=b",
                             "'password='",
                             "an authorization is needed",
                             "100%3D",
                             "a://b",
                             "://",
                             "%3A%2F%2F",
                             "u:p@h",
                             "a@b://c"})
        EXPECT_EQ(Redacted(text), text);
}

TEST(Redaction, ALongTextTakesLinearTime) {
    for (char const *piece : {"://a:b/", "password=", "%3A%2F%2Fa%3A", "=", "a@", "password=;", "%3D"}) {
        DString text;
        while (text.size() < 2'000'000)
            text += piece;
        auto const start = std::chrono::steady_clock::now();
        std::ignore = Redacted(text);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2)) << piece; // else minutes
    }
}

TEST(Redaction, WhatIsReportedIsRedacted) {
    DError error;
    error.Set("no http://u:pw@h/");
    EXPECT_EQ(error.Text(), "no http://u:***@h/");
    std::vector<DString> told;
    auto const formerTrace = Report::SetTraceHandler([&](int, DString const &text) { told.push_back(text); });
    auto const formerUser = Report::SetUserHandler([&](auto, DString const &text) { told.push_back(text); });
    Report::TraceMessage(Report::kTraceOpen, "open %s", "http://u:pw@h/");
    Report::UserWarning("open %s", "http://u:pw@h/");
    Report::SetTraceHandler(formerTrace);
    Report::SetUserHandler(formerUser);
    EXPECT_EQ(told, std::vector<DString>(2, "open http://u:***@h/"));
}

TEST(TypedSecrets, LeaveTheAddressAndComeBackToIt) {
    test::Rows<char const *, char const *, char const *> const cases = {
        {"http://u:pw@h/a", "http://u@h/a", "http://u:pw@h/a"},
        {"http://u:p@s@h:1/a", "http://u@h:1/a", "http://u:p%40s@h:1/a"},
        {"http://u:p/w@h:3/a", "http://u@h:3/a", "http://u:p%2Fw@h:3/a"},
        {"HTTP://v:p%40@H/", "HTTP://v@H/", "HTTP://v:p%40@H/"},
        {"/vsizip/{/vsicurl/ftp://u:pz@h/x.zip}/a", "/vsizip/{/vsicurl/ftp://u@h/x.zip}/a",
         "/vsizip/{/vsicurl/ftp://u:pz@h/x.zip}/a"},
        {"http://h/a@b", "http://h/a@b", "http://h/a@b"},
        {"http://u:***@h/b", "http://u@h/b", "http://u:pw@h/b"}, // pasted from where it was shown
        {"https://u@h/a", "https://u@h/a", "https://u@h/a"},     // another place
        {"http://u@h:2/a http://U@h/", "http://u@h:2/a http://U@h/", "http://u@h:2/a http://U@h/"},
        {"http://v@h/c", "http://v@h/c", "http://v:p%40@h/c"},
    };
    for (auto const &[typed, shown, asked] : cases) {
        EXPECT_EQ(TakeSecrets(typed), shown);
        EXPECT_EQ(WithSecrets(shown), asked);
    }
    EXPECT_EQ(WithSecrets("http://u:other@h/"), "http://u:other@h/");
    std::ignore = TakeSecrets("http://u:new@h/");
    EXPECT_EQ(WithSecrets("http://u@h/a"), "http://u:new@h/a");
}

} // namespace
} // namespace zelvar
