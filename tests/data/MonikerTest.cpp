#include "support/TestFiles.h"
#include "zelvar/data/BDIMoniker.h"

#include <gtest/gtest.h>

namespace zelvar {
namespace {

using Options = std::vector<std::pair<DString, DString>>;

TEST(Moniker, IsTakenApartAtTheQuestionMark) {
    struct Case {
        char const *text;
        char const *source;
        Options options;
    };
    Case const cases[] = {
        {"/no/such.tif", "/no/such.tif", {}},
        {"/no/such.tif?", "/no/such.tif", {}},
        {"/no/such.tif?A=1&B=2", "/no/such.tif", {{"A", "1"}, {"B", "2"}}},
        {"/no/such.tif?A=1=2&&flag&=x", "/no/such.tif", {{"A", "1=2"}, {"flag", ""}, {"", "x"}}},
        {"/no/such.tif?b>2&c=a?b", "/no/such.tif", {{"b>2", ""}, {"c", "a?b"}}},
        {"http://host/a.tif?A=1", "http://host/a.tif", {{"A", "1"}}},
        {"", "", {}},
        {"?A=1", "", {{"A", "1"}}},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.text);
        BDIMoniker const moniker(c.text, nullptr);
        EXPECT_EQ(moniker.GetSource(), c.source);
        EXPECT_EQ(moniker.GetOptions(), c.options);
    }
}

TEST(Moniker, TheLongestNameThatExistsIsTheFile) {
    test::TempFolder const folder;
    DString const plain = folder.Write("a.tif");
    DString const odd = folder.Write("a.tif?really");
    DString const container = folder.Write("box: 1.gpkg");
    DString const archive = folder.Write("x y.zip");
    struct Case {
        DString text;
        DString source;
        DString onDisk;
    };
    Case const cases[] = {
        {plain, plain, plain},
        {plain + "?A=1", plain, plain},
        {odd, odd, odd},
        {odd + "?A=1", odd, odd},
        {odd + "?A=1?B", odd, odd},
        {plain + "?reall", plain, plain},
        {"GPKG:" + container + ":table", "GPKG:" + container + ":table", container},
        {"GPKG:" + container + ":table?A=1", "GPKG:" + container + ":table", container},
        {"GTIFF_DIR:2:" + odd, "GTIFF_DIR:2:" + odd, odd},
        {"GTIFF_DIR:2:" + odd + "?A=1", "GTIFF_DIR:2:" + odd, odd},
        {"HDF5:\"" + container + "\"://group/set", "HDF5:\"" + container + "\"://group/set", container},
        {"/vsizip/" + archive + "/in/b.tif", "/vsizip/" + archive + "/in/b.tif", archive},
        {"/vsizip/{" + archive + "}/b.tif?A=1", "/vsizip/{" + archive + "}/b.tif", archive},
        {"GTIFF_DIR:1:/vsizip/" + archive + "/b.tif", "GTIFF_DIR:1:/vsizip/" + archive + "/b.tif", archive},
        {"file://" + folder.Path() + "/x%20y.zip", "file://" + folder.Path() + "/x%20y.zip", archive},
        {folder.Path(), folder.Path(), folder.Path()},
        {folder.Path() + "/missing/b.tif", folder.Path() + "/missing/b.tif", ""},
        {"http://host" + plain, "http://host" + plain, ""},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.text);
        BDIMoniker const moniker(c.text, nullptr);
        EXPECT_EQ(moniker.GetSource(), c.source);
        EXPECT_EQ(moniker.GetPathOnDisk(), c.onDisk);
    }
}

TEST(Moniker, AZeroByteHidesNothingOfTheText) {
    BDIMoniker const moniker(DString("/\0x?A=1", 7), nullptr);
    EXPECT_EQ(moniker.GetSource(), DString("/\0x", 3));
    EXPECT_EQ(moniker.GetPathOnDisk(), "");
    EXPECT_EQ(moniker.GetOptions(), (Options{{"A", "1"}}));
}

TEST(Moniker, OptionsJoinThoseThatAreThere) {
    EXPECT_EQ(BDIMoniker("/a", nullptr).WithOptions("").GetText(), "/a");
    EXPECT_EQ(BDIMoniker("/a", nullptr).WithOptions("x=1").GetText(), "/a?x=1");
    EXPECT_EQ(BDIMoniker("/a?", nullptr).WithOptions("x=1").GetText(), "/a?x=1");
    EXPECT_EQ(BDIMoniker("/a?y=2", nullptr).WithOptions("x=1").GetText(), "/a?y=2&x=1");
}

TEST(Moniker, OnlyAddressesOnTheNetworkAreUrls) {
    for (char const *text : {"http://h/a", "s3://bucket/key", "smb://h/s/f", "/vsicurl/http://h/a.tif",
                             "GTIFF_DIR:1:/vsicurl/http://h/a.tif", "NETCDF:\"/vsismb/h/s/f.nc\":v",
                             "/vsizip//vsicurl/http://h/a.zip/b.tif"})
        EXPECT_TRUE(BDIMoniker(text, nullptr).IsUrl()) << text;
    for (char const *text : {"", "/a/b.tif", "file:///a", "FILE:///a", "C://a", "/home/vsicurl/a.tif",
                             "HDF5:\"/a.h5\"://group", "/vsizip//a.zip/b.tif"})
        EXPECT_FALSE(BDIMoniker(text, nullptr).IsUrl()) << text;
}

TEST(Moniker, PercentEscapesGoBothWays) {
    EXPECT_EQ(PercentDecoded("a%20b%2fc%zz%4"), "a b/c%zz%4");
    EXPECT_EQ(PercentEncoded("a b/\xC3\xA4&=?"), "a%20b%2F%C3%A4%26%3D%3F");
    EXPECT_EQ(PercentEncoded("a/b", true), "a/b");
}

} // namespace
} // namespace zelvar
