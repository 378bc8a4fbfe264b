#include "support/HttpServer.h"
#include "support/ImageFiles.h"
#include "support/OpenedImage.h"
#include "support/OpenedTree.h"
#include "support/TablesTest.h"
#include "zelvar/data/tables/ADIDriverMngr.h"

#include <filesystem>

namespace zelvar {
namespace {

using testing::ElementsAre;

DString Mosaic(DString const &source, DString const &more = {}) {
    DString const isRelative = source.starts_with("GTIFF_DIR") ? "0" : "1";
    return R"(<VRTDataset rasterXSize="64" rasterYSize="48"><VRTRasterBand dataType="Byte" band="1"><SimpleSource>)"
           "<SourceFilename relativeToVRT=\"" +
           isRelative + "\">" + source + "</SourceFilename><SourceBand>1</SourceBand></SimpleSource>" + more +
           "</VRTRasterBand></VRTDataset>";
}

DString Layers(DString const &source, DString const &more = {}) {
    return R"(<OGRVRTDataSource><OGRVRTLayer name="t"><SrcDataSource relativeToVRT="1">)" + source +
           "</SrcDataSource>" + more + "</OGRVRTLayer></OGRVRTDataSource>";
}

struct VirtualData : test::TablesTest {
    [[nodiscard]] DString ReasonAgainst(DString const &text) const {
        DString const path = m_folder.Write("virtual.vrt", text);
        if (text.find("<OGRVRT") == DString::npos)
            return test::OpenedImage(path).error.Text();
        ADIDriver *driver = nullptr;
        void *handle = nullptr;
        DError error;
        EXPECT_FALSE(ADIDriverMngr::Instance()->OpenTable({path, nullptr}, &driver, &handle, &error, ""));
        return error.Text();
    }
    /// Mosaics over each other, the last over a picture; the first is "m0.vrt".
    void WriteChain(int count, int times) const {
        for (int i = 0; i < count; ++i) {
            DString const next = i + 1 == count ? DString("a.tif") : "m" + std::to_string(i + 1) + ".vrt";
            DString repeated;
            for (int k = 1; k < times; ++k)
                repeated += R"(<SimpleSource><SourceFilename relativeToVRT="1">)" + next +
                            "</SourceFilename><SourceBand>1</SourceBand></SimpleSource>";
            m_folder.Write("m" + std::to_string(i) + ".vrt", Mosaic(next, repeated));
        }
    }
};

TEST_F(VirtualData, AMosaicOfFilesAnywhereOnTheDiskOpens) {
    test::TempFolder const elsewhere;
    test::WriteImage(m_folder / "a.tif", {.sample = [](int, int, int) { return 77; }});
    test::WriteImage(elsewhere / "b.tif", {.sample = [](int, int, int) { return 77; }});
    test::WriteImage(m_folder / "z.zarr", {.format = "Zarr", .sample = [](int, int, int) { return 77; }});
    test::WriteZip(m_folder / "a.zip", {{"a.tif", m_folder / "a.tif"}});
    m_folder.Write("inner.vrt", Mosaic("a.tif"));
    for (DString const &source : {DString("a.tif"), elsewhere / "b.tif", DString("z.zarr"), DString("inner.vrt"),
                                  "/vsizip/" + m_folder / "a.zip/a.tif", "GTIFF_DIR:1:" + m_folder / "a.tif"}) {
        SCOPED_TRACE(source);
        test::OpenedImage const image(m_folder.Write("m.vrt", Mosaic(source)));
        ASSERT_TRUE(image) << image.error.Text();
        EXPECT_EQ(image.driver->GetId(), "VRT");
        EXPECT_THAT(image.Read<unsigned char>(0, 0, 1, 1, 1, 1, 0), ElementsAre(77));
    }
    EXPECT_EQ(BDIDrvrMngr::Instance()->FindContainerDriver(m_folder / "m.vrt"), nullptr);
}

TEST_F(VirtualData, LayersOverTablesOpen) {
    m_folder.Write("p.csv", "id,name\n1,a\n2,b\n");
    DString const text = Layers("p.csv", "<SrcLayer>p</SrcLayer>");
    EXPECT_THAT(Read(m_folder.Write("one.vrt", text)), testing::SizeIs(3));
    DString two = text;
    two.insert(text.find("</OGRVRTDataSource>"),
               R"(<OGRVRTLayer name="u"><SrcDataSource relativeToVRT="1">p.csv</SrcDataSource>)"
               "<SrcSQL>SELECT id FROM p WHERE name = 'b'</SrcSQL></OGRVRTLayer>");
    DString const path = m_folder.Write("two.vrt", two);
    EXPECT_NE(BDIDrvrMngr::Instance()->FindContainerDriver(path), nullptr);
    EXPECT_THAT(Read(path + "?LAYER=u"), ElementsAre(testing::StartsWith("id"), "2"));
}

TEST_F(VirtualData, ReferencesThatLeadOutAreRefusedInWords) {
    test::HttpServer const server;
    DString const url = server.Url();
    test::WriteImage(m_folder / "a.tif");
    m_folder.Write("wms.xml",
                   "<GDAL_WMS><Service name=\"TMS\"><ServerUrl>" + url + "</ServerUrl></Service></GDAL_WMS>");
    m_folder.Write("out.vrt", Mosaic(url + "/a.tif"));
    m_folder.Write("bomb.vrt", "<!DOCTYPE a [<!ENTITY b \"c\">]>" + Mosaic("a.tif"));
    m_folder.Write("p.csv", "id\n1\n");
    ASSERT_EQ(symlink("/dev/zero", (m_folder / "zero.tif").c_str()), 0);
    constexpr char const *kAddress = "a local file never uses the network";
    constexpr char const *kNoFile = "which is no file";
    auto const option = [](DString const &key, DString const &value) {
        return "<OpenOptions><OOI key=\"" + key + "\">" + value + "</OOI></OpenOptions>";
    };
    using Case = std::pair<DString, char const *>;
    for (auto const &[text, words] : {
             Case{Mosaic(url + "/a.tif"), kAddress},
             Case{Mosaic("/vsicurl/" + url + "/a.tif"), kAddress},
             Case{Mosaic("/vsizip//vsis3/bucket/a.zip/a.tif"), kAddress},
             Case{Mosaic("&#104;ttp://127.0.0.1/a.tif"), kAddress},
             Case{Mosaic("<![CDATA[WMS:" + url + "]]>"), kAddress},
             Case{Mosaic("vrt://a.tif"), kAddress},
             Case{Mosaic("/vsistdin/"), kNoFile},
             Case{Mosaic("/vsimem/a.tif"), kNoFile},
             Case{Mosaic("PG:dbname=a"), kNoFile},
             Case{Mosaic("DERIVED_SUBDATASET:LOGAMPLITUDE:" + m_folder / "a.tif"), "of the kind DERIVED"},
             Case{Mosaic("&lt;GDAL_WMS/&gt;"), "description of another source"},
             Case{Mosaic("wms.xml"), "of the kind WMS"},
             Case{Mosaic("zero.tif"), "no plain file"},
             Case{Mosaic("out.vrt"), kAddress},
             Case{Mosaic("bomb.vrt"), "declares entities"},
             Case{Mosaic("a.tif", "<Overview><SourceFilename>" + url + "/o.tif</SourceFilename></Overview>"), kAddress},
             Case{Mosaic("a.tif", option("ANY", url)), kAddress},
             Case{Mosaic("a.tif", option("PRELUDE_STATEMENTS", "ATTACH 'a' AS b")), "PRELUDE_STATEMENTS"},
             Case{Mosaic("a.tif", "<PixelFunctionLanguage>Python</PixelFunctionLanguage>"), "program"},
             Case{
                 Mosaic("a.tif", R"(<Metadata domain="GEOLOCATION"><MDI key="X_DATASET">)" + url + "</MDI></Metadata>"),
                 kAddress},
             Case{Layers(url + "/a.json"), kAddress},
             Case{Layers("MYSQL:a,user=b"), kNoFile},
             Case{Layers("p.csv", "<SrcSQL>SELECT * FROM p JOIN 'PG:dbname=a'.b ON p.id = b.id</SrcSQL>"), kNoFile},
             Case{Layers("p.csv", "<SrcSQL dialect=\"sqlite\">SELECT ogr_geocode('a')</SrcSQL>"), "statement"},
         })
        EXPECT_THAT(ReasonAgainst(text), HasSubstr(words)) << text;
    EXPECT_EQ(server.Connections(), 0);
    // Words are no references, and an option of the moniker leads nowhere else.
    EXPECT_EQ(ReasonAgainst(Mosaic("a.tif", "<Metadata><MDI key=\"made with\">" + url + "</MDI></Metadata>")), "");
    EXPECT_TRUE(test::OpenedImage(m_folder.Write("m.vrt", Mosaic("a.tif")) + "?ROOT_PATH=/nowhere"));
}

TEST_F(VirtualData, CirclesDepthAndMultitudesEnd) {
    test::WriteImage(m_folder / "a.tif");
    EXPECT_THAT(ReasonAgainst(Mosaic("virtual.vrt")), HasSubstr("refers to itself"));
    m_folder.Write("there.vrt", Mosaic("./back.vrt"));
    EXPECT_THAT(test::OpenedImage(m_folder.Write("back.vrt", Mosaic("there.vrt"))).error.Text(),
                HasSubstr("refers to itself"));
    WriteChain(16, 1);
    EXPECT_TRUE(test::OpenedImage(m_folder / "m0.vrt"));
    WriteChain(17, 1);
    EXPECT_THAT(test::OpenedImage(m_folder / "m0.vrt").error.Text(), HasSubstr("more than 16"));
    WriteChain(15, 4);
    EXPECT_THAT(test::OpenedImage(m_folder / "m0.vrt").error.Text(), HasSubstr("too many files"));
    DString opened;
    DString closed;
    DString many;
    for (int i = 0; i < 1'600'000; ++i) {
        opened += i < 100 ? "<a>" : "";
        closed += i < 100 ? "</a>" : "";
        many += "<b/><b/>";
    }
    EXPECT_THAT(ReasonAgainst(Mosaic("a.tif", opened + closed)), HasSubstr("elements in elements"));
    EXPECT_THAT(ReasonAgainst(Mosaic("a.tif", many)), HasSubstr("larger than"));
    std::filesystem::resize_file(m_folder.Write("large.vrt", Mosaic("a.tif")), std::uintmax_t{1} << 30U);
    EXPECT_THAT(test::OpenedImage(m_folder / "large.vrt").error.Text(), HasSubstr("larger than"));
}

} // namespace
} // namespace zelvar
