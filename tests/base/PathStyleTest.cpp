#include "zelvar/base/PathStyle.h"

#include "support/Test.h"

namespace zelvar {
namespace {

constexpr PathStyle kWindows = PathStyle::Windows();

TEST(PathMatchSpec, MatchesMasks) {
    test::Rows<char const *, char const *, bool> const cases = {{"a.tif", "*.tif", true},
                                                                {"a.TIF", "*.tif", true},
                                                                {"a.tiff", "*.tif", false},
                                                                {"a.tiff", "*.tif; *.tiff", true},
                                                                {"a.tiff", "*.tif;*.tiff ", false},
                                                                {"plain", "*.*", true},
                                                                {"plain", "*.", false},
                                                                {"plain", "", false},
                                                                {"plain", ";;", false},
                                                                {"", "*", true},
                                                                {"", "?", false},
                                                                {"ab", "?", false},
                                                                {"\xC3\xA4", "?", true},
                                                                {"\xC3\x84.tif", "\xC3\xA4*", true},
                                                                {"\xFFx", "?x", true},
                                                                {"aXbXc", "a*x*c", true},
                                                                {"aXbXcd", "a*x*c", false},
                                                                {"abc", "a**?c*", true},
                                                                {"x.TIF", "*.[tT][iI][fF]", true},
                                                                {"x.tig", "*.[tT][iI][fF]", false},
                                                                {"x7", "x[0-9]", true},
                                                                {"x7", "x[!0-9]", false},
                                                                {"x\xC3\x84", "*[!a-z]", true},
                                                                {"a[1].tif", "a[1].tif", true},
                                                                {"a1.tif", "a[1].tif", true},
                                                                {"a[", "a[", true}};
    for (auto const &[name, masks, expected] : cases)
        EXPECT_EQ(PathMatchSpec(name, masks), expected) << name << " by " << masks;
}

TEST(PathMatchSpec, ManyStarsDoNotMultiplyTheTime) {
    DString const name(250, 'a');
    DString mask;
    for (int i = 0; i < 60; ++i)
        mask += "*a";
    auto const start = std::chrono::steady_clock::now();
    EXPECT_FALSE(PathMatchSpec(name, mask + "b"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1)); // else longer than anybody waits
}

TEST(PathStyle, PartsOfAPathInBothStyles) {
    test::Rows<char const *, PathStyle, char const *, char const *, char const *> const cases = {
        {"/a/b.c/d.tif", {}, "/a/b.c", "d.tif", "tif"},
        {"/a", {}, "/", "a", ""},
        {"/", {}, "/", "", ""},
        {"a.b", {}, "", "a.b", "b"},
        {"/a/.hidden", {}, "/a", ".hidden", ""},
        {"/a\\b.c", {}, "/", "a\\b.c", "c"},
        {"C:\\a\\b.c", kWindows, "C:\\a", "b.c", "c"},
        {"C:\\a", kWindows, "C:\\", "a", ""},
        {"C:/a/b", kWindows, "C:/a", "b", ""}};
    for (auto const &[path, style, parent, name, extension] : cases) {
        SCOPED_TRACE(path);
        EXPECT_EQ(ParentPathOf(path, style), parent);
        EXPECT_EQ(FileNameOf(path, style), name);
        EXPECT_EQ(ExtensionOf(path, style), extension);
    }
}

TEST(PathStyle, JoinsWithOneSeparator) {
    EXPECT_EQ(AppendPath("/a/", "/b"), "/a/b");
    EXPECT_EQ(AppendPath("/", "b"), "/b");
    EXPECT_EQ(AppendPath("", "b"), "b");
    EXPECT_EQ(AppendPath("/a/", ""), "/a/");
    EXPECT_EQ(AppendPath("C:", "b", kWindows), "C:\\b");
}

TEST(PathStyle, KnowsUrls) {
    EXPECT_TRUE(IsUrl("smb://host/share"));
    EXPECT_TRUE(IsUrl("s3+http://x"));
    EXPECT_FALSE(IsUrl("C://x"));
    EXPECT_FALSE(IsUrl("/a/x://b"));
    EXPECT_FALSE(IsUrl("://"));
}

} // namespace
} // namespace zelvar
