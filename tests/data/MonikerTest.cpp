#include "support/ScriptedDriver.h"
#include "support/Test.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/CustImport.h"

namespace zelvar {
namespace {

using Options = std::vector<std::pair<DString, DString>>;

TEST(Moniker, IsTakenApartAtTheQuestionMark) {
    test::Rows<char const *, char const *, Options> const cases = {
        {"/no/such.tif", "/no/such.tif", {}},
        {"/no/such.tif?", "/no/such.tif", {}},
        {"/no/such.tif?A=1&B=2", "/no/such.tif", {{"A", "1"}, {"B", "2"}}},
        {"/no/such.tif?A=1=2&&flag&=x", "/no/such.tif", {{"A", "1=2"}, {"flag", ""}, {"", "x"}}},
        {"/no/such.tif?b>2&c=a?b", "/no/such.tif", {{"b>2", ""}, {"c", "a?b"}}},
        {"http://host/a.tif?A=1", "http://host/a.tif", {{"A", "1"}}},
        {"", "", {}},
        {"?A=1", "", {{"A", "1"}}}};
    for (auto const &[text, source, options] : cases) {
        SCOPED_TRACE(text);
        BDIMoniker const moniker(text, nullptr);
        EXPECT_EQ(moniker.GetSource(), source);
        EXPECT_EQ(moniker.GetOptions(), options);
    }
}

TEST(Moniker, TheLongestNameThatExistsIsTheFile) {
    test::TempFolder const folder;
    DString const plain = folder.Write("a.tif");
    DString const odd = folder.Write("a.tif?really");
    DString const container = folder.Write("box: 1.gpkg");
    DString const archive = folder.Write("x y.zip");
    DString const quoted = folder.Write("odd \"quoted\" name.tif");
    test::Rows<DString, DString, DString> const cases = {
        {plain, plain, plain},
        {plain + "?A=1", plain, plain},
        {odd, odd, odd},
        {odd + "?A=1", odd, odd},
        {odd + "?A=1?B", odd, odd},
        {odd + "&A=1", odd, odd},
        {odd + "&A=1&B=2", odd, odd},
        {plain + "?b=2&a=1", plain, plain},
        {plain + "?reall", plain, plain},
        {"GPKG:" + container + ":table", "GPKG:" + container + ":table", container},
        {"GPKG:" + container + ":table?A=1", "GPKG:" + container + ":table", container},
        {"GTIFF_DIR:2:" + odd, "GTIFF_DIR:2:" + odd, odd},
        {"GTIFF_DIR:2:" + odd + "?A=1", "GTIFF_DIR:2:" + odd, odd},
        {"HDF5:\"" + container + "\"://group/set", "HDF5:\"" + container + "\"://group/set", container},
        {"GTIFF_DIR:2:" + quoted, "GTIFF_DIR:2:" + quoted, quoted},
        {"HDF5:\"" + quoted + "\"://a?A=1", "HDF5:\"" + quoted + "\"://a", quoted},
        {"/vsizip/" + archive + "/in/b.tif", "/vsizip/" + archive + "/in/b.tif", archive},
        {"/vsizip/{" + archive + "}/b.tif?A=1", "/vsizip/{" + archive + "}/b.tif", archive},
        {"GTIFF_DIR:1:/vsizip/" + archive + "/b.tif", "GTIFF_DIR:1:/vsizip/" + archive + "/b.tif", archive},
        {"file://" + folder.Path() + "/x%20y.zip", "file://" + folder.Path() + "/x%20y.zip", archive},
        {folder.Path(), folder.Path(), folder.Path()},
        {folder.Path() + "/missing/b.tif", folder.Path() + "/missing/b.tif", ""},
        {"http://host" + plain, "http://host" + plain, ""}};
    for (auto const &[text, source, onDisk] : cases) {
        SCOPED_TRACE(text);
        BDIMoniker const moniker(text, nullptr);
        EXPECT_EQ(moniker.GetSource(), source);
        EXPECT_EQ(moniker.FindFile(), onDisk);
    }
}

TEST(Moniker, APlainPathNeedNotExistToHaveAPlaceOnDisk) {
    test::TempFolder const folder;
    DString const there = folder.Write("a.tif");
    folder.Folder("run");
    for (auto const &[text, onDisk] :
         std::initializer_list<std::pair<DString, DString>>{{there + "?A=1", there},
                                                            {folder / "new.tif?A=1", folder / "new.tif"},
                                                            {"new.tif", "new.tif"},
                                                            {"GPKG:/no/such.gpkg:table", ""},
                                                            {"http://host/a.tif", ""},
                                                            {"", ""}})
        EXPECT_EQ(BDIMoniker(text, nullptr).GetPathOnDisk(), onDisk) << text;
    // Beside files whose names they begin with.
    for (DString const &path : {folder / "new.tif", folder / "new?.tif", there + ":30.csv", there + "}b.csv",
                                folder / "my \"" + there + "\".csv", folder.Folder("run?n=2") + "/new.csv"})
        EXPECT_EQ(BDIMoniker(path, nullptr).GetPathOnDisk(), path);
    for (DString const &path :
         {there + "?n=2.csv", folder / "NETCDF:" + there, folder / "b:/vsicurl/c", DString("x")}) {
        BDIMoniker const moniker = BDIMoniker::OfPath(path, "", nullptr).WithOptions("A=1").WithOptions("B=2");
        EXPECT_EQ(moniker.GetPathOnDisk(), path);
        EXPECT_EQ(moniker.FindFile(), "");
        EXPECT_EQ(moniker.GetOptions(), (Options{{"A", "1"}, {"B", "2"}}));
        EXPECT_EQ(moniker.GetDisplayName(), path.substr(path.rfind('/') + 1));
    }
}

TEST(Moniker, TheDisplayNameIsThatOfTheFileAndOfWhatIsInside) {
    test::TempFolder const folder;
    DString const file = folder.Write("a b.h5");
    for (auto const &[text, name, extension] : std::initializer_list<std::tuple<DString, DString, DString>>{
             {file, "a b.h5", "h5"},
             {file + "?LAYER=x", "a b.h5", "h5"},
             {"HDF5:\"" + file + "\"://group/set", "a b.h5 group/set", "h5"},
             {"GTIFF_DIR:2:" + file, "a b.h5", "h5"},
             {"/gone/c", "c", ""},
             {"wms+http://host/ows?map=a&GROUP=b%20c", "b c", ""},
             {"http://host/x/d%20e.tif?A=1", "d e.tif", "tif"}}) {
        EXPECT_EQ(BDIMoniker(text, nullptr).GetDisplayName(), name) << text;
        EXPECT_EQ(BDIMoniker(text, nullptr).GetFrmtExtn(false), extension) << text;
    }
}

TEST(Moniker, CopiesShareOneNodeAndTheLastOneClosesIt) {
    test::TempFolder const folder;
    DString const file = folder.Write("a.box");
    test::ScriptedDrivers const drivers;
    test::ScriptedTreeDriver &driver = test::ScriptedDrivers::AddTree("BOX", "*.box");
    driver.SetTree(file, {.name = "a", .children = {{.name = "b", .type = BDINode_Raster}}});
    {
        BDIMoniker const moniker(file, nullptr);
        ASSERT_NE(moniker.GetNode(), nullptr);
        EXPECT_EQ(moniker.GetDrvr(), &driver); // found by the file
        BDIMoniker const copy = moniker;
        EXPECT_EQ(copy.GetNode(), moniker.GetNode());
        EXPECT_NE(copy.GetRepository(), nullptr);
        EXPECT_EQ(driver.opens, 1);
        EXPECT_EQ(driver.closes, 0);
    }
    EXPECT_EQ(driver.closes, 1);
    EXPECT_EQ(driver.nodesClosed, driver.nodesMade);

    BDIMoniker const missing(file + ".txt", &driver);
    EXPECT_EQ(missing.GetNode(), nullptr);
    EXPECT_EQ(missing.GetRepository(), nullptr);
    EXPECT_EQ(BDIMoniker(folder.Write("plain.tif"), nullptr).GetNode(), nullptr);
}

TEST(CustImport, ThePatternOfItsFilesHasTextOrAnythingInPlaceOfBraces) {
    EXPECT_EQ(CustImport::GetFilePttr({}, ""), "");
    EXPECT_EQ(CustImport::GetFilePttr({"/a/scan_{name}_{n}.tif", "x"}, ""), "/a/scan_*_*.tif");
    EXPECT_EQ(CustImport::GetFilePttr({"scan_{name}.tif"}, "7"), "scan_7.tif");
    EXPECT_EQ(CustImport::GetFilePttr({"open{"}, "7"), "open{");
}

TEST(Moniker, AZeroByteHidesNothingOfTheText) {
    BDIMoniker const moniker(DString("/\0x?A=1", 7), nullptr);
    EXPECT_EQ(moniker.GetSource(), DString("/\0x", 3));
    EXPECT_EQ(moniker.FindFile(), "");
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
    EXPECT_EQ(PercentDecoded("a%20b%2fc%zz%4%41"), "a b/c%zz%4A");
    EXPECT_EQ(PercentDecoded("%4") + PercentDecoded("%41%"), "%4A%");
    EXPECT_EQ(PercentEncoded("a b/\xC3\xA4&=?"), "a%20b%2F%C3%A4%26%3D%3F");
    EXPECT_EQ(PercentEncoded("a/b", true), "a/b");
    EXPECT_EQ(PercentEncoded("azAZ09-._~`{@[/:\x01"), "azAZ09-._~%60%7B%40%5B%2F%3A%01");
}

} // namespace
} // namespace zelvar
