#include "zelvar/data/DriverOptions.h"

#include "support/ImageFiles.h"
#include "support/RealDriversTest.h"
#include "support/Test.h"
#include "zelvar/data/OpenImage.h"
#include "zelvar/data/gdal/OptionLists.h"
#include "zelvar/data/tables/ADIFile.h"

#include <gdal.h>

#include <sys/stat.h>

namespace zelvar {
namespace {

using Kind = DriverOption::Kind;

/// Of options, but for their descriptions: "name kind usual least..most longest choice|choice".
DString Told(DriverOption const &option) {
    DString text = option.name + " " + ToText(option.kind) + " " + option.usual;
    if (option.least || option.most)
        text += Format(" %g..%g", option.least.value_or(-1), option.most.value_or(-1));
    if (option.longest > 0)
        text += Format(" <=%d", option.longest);
    return text + (option.choices.empty() ? "" : " ") + JoinNotEmpty(option.choices, '|');
}

TEST(OptionLists, SayWhatADriverSaysAndTakeOddDescriptionsForTexts) {
    DString const deep = "<L>" + DString(50'000, '<') + "</L>";
    for (auto const &[xml, told] : test::Rows<DString, std::vector<DString>>{
             {"", {}},
             {"<L/>", {}},
             {"<L><Option name='A' type='boolean' default='YES' description='d'/></L>", {"A switch YES"}},
             {"<L><Option name='A' type='int' min='1' max='9' default='6'/></L>", {"A whole number 6 1..9"}},
             {"<L><Option name='A' type='unsigned int'/></L>", {"A whole number  0..-1"}},
             {"<L><Option name='A' type='float' default='inf'/></L>", {"A number inf"}},
             {"<L><Option type='string' name='A' maxsize='3'/></L>", {"A text  <=3"}},
             {"<L><Option name='A' type='string-select'><Value alias='x'>U</Value><Value>V</Value></Option></L>",
              {"A choice  U|V"}},
             {"<L><Option name='A' type='float'><Value>1</Value></Option></L>", {"A choice  1"}},
             // Odd ones.
             {"<L><Option name='A' type='string-select'/><Option name='B'/></L>", {"A text ", "B text "}},
             {"<L><Option name='A' type='colour' default='red'/></L>", {"A text red"}},
             {"<L><Option name='A' type='int' min='9' max='1'/></L>", {"A whole number "}},
             {"<L><Option name='A' type='int' min='1' max='9' default='0'/></L>", {"A whole number 0"}},
             {"<L><Option name='A' type='int' default='many' min='x'/></L>", {"A text many"}},
             {"<L><Option name='A' type='string' maxsize='-3'/><Option name='a'/></L>", {"A text "}},
             {"<L><Option name='A=B'/><Option name=''/><Option/><Option name='A&amp;B'/>text<Other name='C'/></L>", {}},
             {"<L><Option name='" + DString(200, 'A') + "'/></L>", {}},
             {"<L><Option name='A' default='\xFF'/></L>", {"A text \xEF\xBF\xBD"}},
             {"<L><Option name='A' type='int'><Option type='x' name=\"B\"></L>", {"A text ", "B text "}}, // no XML
             {"<L><Option name='A", {"A text "}},
             {deep, {}}}) {
        std::vector<DString> found;
        for (DriverOption const &option : gdal::ParseOptionList(xml))
            found.push_back(Told(option));
        EXPECT_EQ(found, told) << xml.substr(0, 200);
    }
    DString many = "<L>";
    for (int i = 0; i < 2000; ++i)
        many += Format("<Option name='N%d' description='%s'/>", i, DString(100, 'd').c_str());
    EXPECT_EQ(gdal::ParseOptionList(many + "</L>").size(), 1000U);
}

TEST(OptionLists, HaveEveryOptionOfEveryDriver) {
    GDALAllRegister();
    int lists = 0;
    for (int i = 0; i < GDALGetDriverCount(); ++i)
        for (char const *const key : {GDAL_DMD_OPENOPTIONLIST, GDAL_DMD_CREATIONOPTIONLIST})
            if (char const *const xml = GDALGetMetadataItem(GDALGetDriver(i), key, nullptr); xml != nullptr) {
                std::set<DString> names;
                std::string_view const text = xml;
                for (std::size_t at = text.find("<Option "); at != DString::npos; at = text.find("<Option ", at + 1)) {
                    std::size_t const name = text.find("name=", at) + 6;
                    names.insert(FoldCase(text.substr(name, text.find(text[name - 1], name) - name)));
                }
                lists += names.empty() ? 0 : 1;
                EXPECT_EQ(gdal::ParseOptionList(xml).size(), names.size()) << GDALGetDriverShortName(GDALGetDriver(i));
            }
    EXPECT_GT(lists, 100);
}

struct DriverOptionFacts : test::RealDriversTest {
    static DriverOption Find(std::vector<DriverOption> const &options, std::string_view name) {
        for (DriverOption const &option : options)
            if (option.name == name)
                return option;
        return {};
    }
    DString Write(char const *name, DString const &text) {
        m_folder.Write(name, text);
        return m_folder / name;
    }
};

TEST_F(DriverOptionFacts, AreToldByTheDriverAndKept) {
    auto const tiff = DriverOptions("GTiff");
    EXPECT_EQ(Told(Find(tiff->open, "GEOTIFF_KEYS_FLAVOR")), "GEOTIFF_KEYS_FLAVOR choice STANDARD STANDARD|ESRI_PE");
    EXPECT_EQ(Told(Find(tiff->create, "JPEG_QUALITY")), "JPEG_QUALITY whole number 75");
    EXPECT_EQ(Told(Find(DriverOptions("MBTiles")->open, "ZLEVEL")), "ZLEVEL whole number 6 1..9");
    EXPECT_EQ(DriverOptions("gtiff")->open, tiff->open);
    EXPECT_EQ(DriverOptions("GTiff"), tiff);
    auto const package = DriverOptions("GPKG")->open;
    EXPECT_TRUE(Find(package, "PRELUDE_STATEMENTS").isBarred);
    EXPECT_FALSE(Find(package, "ZOOM_LEVEL").isBarred);
    EXPECT_FALSE(Find(package, "BAND_COUNT").forLayers);
    EXPECT_TRUE(Find(DriverOptions("PDF")->open, "USER_PWD").isSecret);
    EXPECT_FALSE(Find(DriverOptions("CSV")->open, "SEPARATOR").name.empty());
    for (char const *const none : {"", "no such driver", "PNM", "HTTP"})
        EXPECT_TRUE(DriverOptions(none)->open.empty()) << none;
}

TEST_F(DriverOptionFacts, AreThoseOfTheDriverThatReadsTheData) {
    test::WriteImage(m_folder / "a?b.tif");
    test::WriteGeoPackage(m_folder / "a.gpkg", 2, 0, 0);
    Write("a.csv", "a,b\n1,2\n");
    for (auto const &[name, driver] : test::Rows<char const *, char const *>{{"a?b.tif", "GTiff"},
                                                                             {"a?b.tif?NUM_THREADS=2", "GTiff"},
                                                                             {"a.gpkg", "GPKG"},
                                                                             {"a.gpkg?LAYER=layer%201", "GPKG"},
                                                                             {"a.csv", "CSV"},
                                                                             {"none.tif", ""},
                                                                             {".", ""}})
        EXPECT_EQ(TellDriver({m_folder / name, nullptr}), driver) << name;
}

TEST_F(DriverOptionFacts, ReachTheDriverThatOpens) {
    DString const grid = Write("g.asc", "ncols 2\nnrows 1\nxllcorner 0\nyllcorner 0\ncellsize 1\n1 2\n");
    for (auto const &[options, type] :
         test::Rows<char const *, int>{{"", RDI_Int32},
                                       {"?DATATYPE=Float32", RDI_Float32},
                                       {"?datatype=Float%332", RDI_Float32},
                                       {"?DATATYPE=", RDI_Int32},
                                       {"?NO_SUCH=1&DATATYPE=Float32&NUM_THREADS=", RDI_Float32},
                                       {"?NO_SUCH=1", RDI_Int32}}) {
        OpenImage const image({grid + options, nullptr}, "", nullptr);
        ASSERT_TRUE(image.IsOpen()) << options;
        EXPECT_EQ(image.Driver().GetChnlDataType(image.Handle(), 0), type) << options;
    }
}

TEST_F(DriverOptionFacts, LeadToPlainFilesAlone) {
    DString const gml =
        Write("a.gml", R"(<?xml version="1.0"?><gml:FeatureCollection xmlns:gml="http://www.opengis.net/)"
                       R"(gml"><gml:featureMember><a fid="1"><v>1</v></a></gml:featureMember></gml:Fe)"
                       R"(atureCollection>)");
    Write("plain.gfs", "<GMLFeatureClassList><GMLFeatureClass><Name>a</Name><ElementPath>a</ElementPath><PropertyDefn>"
                       "<Name>v</Name><ElementPath>v</ElementPath><Type>Integer</Type></PropertyDefn>"
                       "</GMLFeatureClass></GMLFeatureClassList>");
    ASSERT_EQ(mkfifo((m_folder / "pipe").c_str(), 0600), 0);
    auto const reason = [&](DString const &options) {
        ADIFile const table(DFile(gml + options), "", tdFormatAccess_Read, nullptr, "");
        return table.IsOpen() ? DString() : DString("refused");
    };
    EXPECT_EQ(reason(""), "");
    EXPECT_EQ(reason("?EXPOSE_FID=NO"), "");
    EXPECT_EQ(reason("?GFS_TEMPLATE=" + m_folder / "plain.gfs"), "");
    for (DString const &value : {DString("XSD=http://127.0.0.1:9/a.xsd"), DString("XSD=/vsicurl/http://127.0.0.1:9/a"),
                                 "XSD=" + m_folder / "pipe", DString("XSD=/dev/zero"), "XSD=" + m_folder / "none.xsd",
                                 DString("GFS_TEMPLATE=%2Fvsizip%2Fx"), "EXPOSE_FID=" + m_folder / "pipe"})
        EXPECT_EQ(reason("?" + value), "refused") << value;
    EXPECT_FALSE(DFile(m_folder / "a.gfs").Exist());
    EXPECT_EQ(reason("?WRITE_GFS=YES"), "");
    EXPECT_FALSE(DFile(m_folder / "a.gfs").Exist());
}

} // namespace
} // namespace zelvar
