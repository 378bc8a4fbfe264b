#include "support/HttpServer.h"
#include "support/ImageFiles.h"
#include "support/LoopbackSamba.h"
#include "support/OpenedTree.h"
#include "support/RealDriversTest.h"
#include "support/Test.h"
#include "zelvar/data/ImageReader.h"
#include "zelvar/data/tables/ADIFile.h"

namespace zelvar {
namespace {

struct Network : test::RealDriversTest {
    Network() { BDIDrvrMngr::Instance()->Drivers(); }
    std::string Bytes(test::ImageSpec const &spec, std::vector<int> const &overviews = {}) {
        test::WriteImage(m_folder / "source.tif", spec, overviews);
        return test::ReadFile(m_folder / "source.tif");
    }
    /// The children of the root, or of the node of that name below it, by their names.
    static std::map<DString, BDINode> ChildrenOf(DString const &url, DString const &inner = {}) {
        std::map<DString, BDINode> children;
        test::OpenedTree const tree(url);
        if (!tree)
            return children;
        for (BDINode const &child : tree.Children(*tree.root))
            children[child.name] = child;
        if (inner.empty())
            return children;
        BDINode const parent = tree.Node(std::exchange(children, {})[inner].path).value_or(BDINode());
        for (BDINode const &child : tree.Children(parent))
            children[child.name] = child;
        return children;
    }
    test::HttpServer m_server;
};

TEST_F(Network, APreviewOverTheWebReadsOnlyWhatItNeeds) {
    std::string const bytes = Bytes({.width = 3000, .height = 3000, .options = {"TILED=YES"}}, {2, 4, 8});
    m_server.Serve("/a%20b/big.tif", bytes);
    DCanvas picture;
    ASSERT_TRUE(ReadPreview({m_server.Url() + "/a b/big.tif", nullptr}, "", nullptr, picture));
    EXPECT_EQ(picture.GetWidth(), 1024);
    EXPECT_LT(m_server.BytesSent(), bytes.size() / 2);
    EXPECT_LE(m_server.Requests().size(), 12U);
    for (std::string const &request : m_server.Requests())
        EXPECT_NE(request.find("/a%20b/big.tif"), std::string::npos) << "asked for a side file: " << request;
    ImageInfo info;
    EXPECT_FALSE(ReadImageInfo({m_server.Url() + "/missing.tif", nullptr}, "", nullptr, info));
}

TEST_F(Network, WhatAServerAnswersIsTheCause) {
    using enum DError::Cause;
    std::vector<std::tuple<DString, DError::Cause, int>> cases{{m_server.Url() + "/no.tif", Server, 404},
                                                               {"http://127.0.0.1:1/a.tif", NoAnswer, -1},
                                                               {"smb://127.0.0.1:1/pub/a.tif", NoAnswer, -1},
                                                               {m_server.Url() + "/text.tif", NotSupported, -1},
                                                               {m_server.Url() + "/a b/page.zip", NotSupported, -1},
                                                               {"gopher://127.0.0.1/a.tif", NotSupported, -1}};
    for (int const status : {401, 403, 500}) {
        m_server.Refuse(Format("/%d.tif", status), status);
        cases.emplace_back(m_server.Url() + Format("/%d.tif", status), status == 401 ? NeedsPassword : Server, status);
    }
    m_server.Serve("/text.tif", "no image");
    m_server.Serve("/a%20b/page.zip", "no archive");
    for (int round = 0; round < 2; ++round) // what is remembered of a server hides no cause
        for (auto const &[moniker, cause, detail] : cases) {
            ImageInfo info;
            DError error;
            EXPECT_FALSE(ReadImageInfo({moniker, nullptr}, "", nullptr, info, &error));
            EXPECT_EQ(error.Why(), cause) << moniker << ": " << error.Text();
            EXPECT_EQ(error.Detail(), detail) << moniker;
            EXPECT_EQ(ADIFile(DFile(moniker), "", tdFormatAccess_Read, nullptr, "").GetFailure().Why(), cause)
                << moniker;
        }
}

TEST_F(Network, PagesOfATiffOnAServerOpenByTheirNodes) {
    test::WritePages(m_folder / "pages.tif", 2);
    m_server.Serve("/pages.tif", test::ReadFile(m_folder / "pages.tif"));
    auto const pages = ChildrenOf(m_server.Url() + "/pages.tif");
    ASSERT_EQ(pages.size(), 2U);
    ImageInfo info;
    for (auto const &[name, page] : pages)
        EXPECT_TRUE(ReadImageInfo({page.path, nullptr}, "", nullptr, info)) << page.path;
}

TEST_F(Network, AnAddressKeepsItsOwnQueryBesideTheOptions) {
    constexpr char const *kSigned = "/a.tif?X-Sig=a%2Fb%3D&version=2&&flag";
    m_server.Serve(kSigned, Bytes({.width = 200, .height = 100}, {2}));
    ImageInfo info;
    EXPECT_FALSE(ReadImageInfo({m_server.Url() + "/a.tif", nullptr}, "", nullptr, info)) << "served without a query";
    test::Rows<DString, int> const cases = {
        {kSigned, 200},
        {DString(kSigned) + "&OVERVIEW_LEVEL=0", 100},
        {DString(kSigned) + "?OVERVIEW_LEVEL=0", 100}, // as options typed in a dialog are added
        {"/a.tif?OVERVIEW_LEVEL=0&X-Sig=a%2Fb%3D&version=2&&flag", 100},
        {"/a.tif?X-Sig=a%2Fb%3D&RASTER=1&version=2&&NUM_THREADS=&flag", 200}};
    for (auto const &[text, width] : cases) {
        EXPECT_TRUE(ReadImageInfo({m_server.Url() + text, nullptr}, "", nullptr, info)) << text;
        EXPECT_EQ(info.width, width) << text;
    }
    EXPECT_FALSE(ReadImageInfo({m_server.Url() + "/a.tif?X-Sig=other&version=2&&flag", nullptr}, "", nullptr, info));
}

TEST_F(Network, WhatLiesInsideASignedAddressOpensWithTheSignature) {
    test::WritePages(m_folder / "pages.tif", 2);
    test::WriteZip(m_folder / "x.zip", {{"a.tif", m_folder / "pages.tif"}});
    test::WriteGeoPackage(m_folder / "l.gpkg", 2, 0, 0);
    for (char const *name : {"pages.tif", "x.zip", "l.gpkg"}) {
        SCOPED_TRACE(name);
        DString const place = DString("/") + name + "?X-Sig=a/b";
        m_server.Serve(place, test::ReadFile(m_folder / name));
        auto const children = ChildrenOf(m_server.Url() + place);
        ASSERT_FALSE(children.empty());
        for (auto const &[shown, child] : children) {
            ImageInfo info;
            if ((child.type & BDINode_Raster) != 0) {
                EXPECT_TRUE(ReadImageInfo({child.path, nullptr}, "", nullptr, info)) << child.path;
            } else {
                EXPECT_EQ(child.path, m_server.Url() + place + "&LAYER=layer%20" + shown.back());
            }
        }
    }
    test::OpenedTree const tree(m_server.Url() + "/pages.tif?X-Sig=a/b");
    ASSERT_TRUE(tree);
    EXPECT_EQ(tree.root->name, "pages.tif");
}

constexpr char const *kNginx = R"(<html><head><title>Index of /data/</title></head><body><h1>Index of /data/</h1><pre>
<a href="../">../</a><a href="v1.2%20data/">v1.2 data/</a>  02-Jan-2024 10:00    -
<a href="a%20b.tif">a b.tif</a>  02-Jan-2024 10:00    1234
<a href="text.txt">text.txt</a>  02-Jan-2024 10:00    1234
<a href="/other/c.tif">c</a><a href="http://elsewhere/d.tif">d</a><a href="..%2Fe.tif">e</a></pre>)";
constexpr char const *kApache = R"(<title>Index of /data</title><table><tr><th><a href="?C=N;O=D">Name</a></th></tr>
<tr><td><a href="/">Parent</a></td></tr><tr><td><A HREF='/data/v1.2%20data/'>x</A></td><td>2024-01-02 10:00</td></tr>
<tr><td><a href="./a%20b.tif"><img src="i.png"></a><a href="a%20b.tif">a b</a></td><td>2024-01-02 10:00</td><td>1234</td>)";
constexpr char const *kLighttpd = R"(<?xml version="1.0"?><html><head><title>Index of /data/</title></head><body><table>
<tr class="d"><td class="n"><a href="../">..</a>/</td><td class="m">&nbsp;</td></tr>
<tr class="d"><td class="n"><a href="v1.2%20data/">v</a>/</td><td class="m">2024-Jan-02 10:00:00</td><td>- &nbsp;</td>
<tr><td class="n"><a href="a%20b.tif">a b.tif</a></td><td class="m">2024-Jan-02 10:00:00</td><td class="s">1.2K</td>)";
constexpr char const *kDav = R"(<?xml version="1.0"?><D:multistatus xmlns:D="DAV:" xmlns:x="DAV:">
<D:response><D:href>/data/</D:href><D:propstat><D:prop><D:resourcetype><D:collection/></D:resourcetype></D:prop></D:propstat>
</D:response><x:response><x:href>http://h/data/v1.2%20data/</x:href><x:propstat><x:prop><x:resourcetype><x:collection/>
</x:resourcetype><x:getlastmodified>Tue, 02 Jan 2024 10:00:00 GMT</x:getlastmodified></x:prop></x:propstat></x:response>
<D:response><D:href>/data/a%20b.tif</D:href><D:propstat><D:prop><D:quota/></D:prop></D:propstat><D:propstat><D:prop>
<D:getcontentlength>1234</D:getcontentlength><D:getlastmodified>Tue, 02 Jan 2024 10:00:00 GMT</D:getlastmodified></D:prop>
</D:propstat></D:response><D:response><D:href>/data/../e.tif</D:href></D:response><D:response><D:href>/data/%2e%2e</D:href>
</D:response></D:multistatus>)";

TEST_F(Network, AListingOfAWebServerIsATree) {
    constexpr std::int64_t moment = 1'704'189'600'000'000'000; // 2024-01-02 10:00
    test::Rows<char const *, char const *, std::int64_t> const cases = {{"/data/", kNginx, 1234},
                                                                        {"/data/", kApache, 1234},
                                                                        {"/data/", kLighttpd, -1},
                                                                        {"PROPFIND /data/", kDav, 1234}};
    for (auto const &[place, page, size] : cases) {
        SCOPED_TRACE(page);
        test::HttpServer server;
        server.Serve(place, page, "text/html");
        server.Serve("/data/a%20b.tif", Bytes({}));
        auto const children = ChildrenOf(server.Url() + "/data/");
        ASSERT_EQ(children.size(), 2U);
        EXPECT_EQ(children.at("v1.2 data").type, kDirectoryNode);
        EXPECT_EQ(children.at("v1.2 data").path, server.Url() + "/data/v1.2%20data");
        EXPECT_EQ(children.at("v1.2 data").modified, moment);
        EXPECT_EQ(children.at("a b.tif").path, server.Url() + "/data/a%20b.tif");
        EXPECT_EQ(children.at("a b.tif").size, size);
        EXPECT_EQ(children.at("a b.tif").modified, moment);
        ImageInfo info;
        EXPECT_TRUE(ReadImageInfo({children.at("a b.tif").path, nullptr}, "", nullptr, info));
    }
}

TEST_F(Network, WhatKeepsAPlaceFromBeingListedIsTold) {
    using enum DError::Cause;
    test::HttpServer locked;
    locked.Demand("dTpwdw=="); // u:pw
    locked.Serve("/d/", kNginx, "text/html");
    m_server.Serve("/page/", "<html><title>Welcome</title></html>", "text/html");
    m_server.Serve("/bomb/", "<!DOCTYPE a [<!ENTITY b \"c\">]><multistatus>&b;</multistatus>", "text/xml");
    m_server.Refuse("/403/", 403);
    m_server.Refuse("/words/", 503, "Closed today\n");
    m_server.Serve("/film/", std::string(1 << 20, '\xFF'));
    test::Rows<DString, DError::Cause, int, char const *> const cases = {
        {"http://127.0.0.1:1/d/", NoAnswer, -1, "127.0.0.1"},
        {locked.Url() + "/d/", NeedsPassword, 401, "401"},
        {"http://u:no@" + locked.Url().substr(7) + "/d/", Server, 401, "does not know"},
        {m_server.Url() + "/403/", Server, 403, "403"},
        {m_server.Url() + "/404/", Server, 404, "404"},
        {m_server.Url() + "/words/", Server, 503, "503"},
        {m_server.Url() + "/film/", NotSupported, -1, "something else"},
        {m_server.Url() + "/page/", NotSupported, -1, "Welcome"},
        {m_server.Url() + "/bomb/", NotSupported, -1, "web page"}};
    std::vector<DString> log;
    auto const former = Report::SetTraceHandler([&](int, DString const &text) { log.push_back(text); });
    for (int round = 0; round < 2; ++round) // what is remembered of a failure hides no cause
        for (auto const &[place, cause, detail, word] : cases) {
            DError const error = test::WhyNotOpened(place);
            EXPECT_EQ(error.Why(), cause) << place << ": " << error.Text();
            EXPECT_EQ(error.Detail(), detail) << place;
            EXPECT_NE(error.Text().find(word), DString::npos) << place << ": " << error.Text();
        }
    DString const typed = "http://u:pw@" + locked.Url().substr(7) + "/d/";
    auto const children = ChildrenOf(typed);
    Report::SetTraceHandler(former);
    ASSERT_TRUE(children.contains("a b.tif")) << "a login that is typed is used";
    EXPECT_EQ(children.at("a b.tif").path, "http://u@" + locked.Url().substr(7) + "/d/a%20b.tif");
    locked.Serve("/d/a%20b.tif", Bytes({}));
    ImageInfo info;
    EXPECT_TRUE(ReadImageInfo({children.at("a b.tif").path, nullptr}, "", nullptr, info)) << "and remembered";
    for (DString const &line : log)
        EXPECT_EQ(line.find(":pw@"), DString::npos) << line;
}

TEST_F(Network, AnArchiveOnAServerIsATree) {
    test::WriteImage(m_folder / "a.tif");
    test::WriteZip(m_folder / "x.zip", {{"in/a.tif", m_folder / "a.tif"}});
    m_server.Serve("/x.zip", test::ReadFile(m_folder / "x.zip"));
    auto const children = ChildrenOf(m_server.Url() + "/x.zip", "in");
    ASSERT_EQ(children.size(), 1U);
    ImageInfo info;
    EXPECT_TRUE(ReadImageInfo({children.at("a.tif").path, nullptr}, "", nullptr, info)) << children.at("a.tif").path;
}

TEST_F(Network, AServerThatHangsIsGivenUp) {
    setenv("GDAL_HTTP_TIMEOUT", "1", 1);
    m_server.Hang();
    ImageInfo info;
    auto const start = std::chrono::steady_clock::now();
    EXPECT_FALSE(ReadImageInfo({m_server.Url() + "/a.tif", nullptr}, "", nullptr, info));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15));
    unsetenv("GDAL_HTTP_TIMEOUT");
}

/// A file whose content asks to be fetched from HOST.
struct Lure {
    char const *name;
    char const *content;
};
constexpr Lure kLures[] = {
    {"evil.tif", R"(<GDAL_WMS><Service name="TMS"><ServerUrl>HOST/${z}/${x}/${y}.png</ServerUrl></Service><DataWindow>
<UpperLeftX>-20037508</UpperLeftX><UpperLeftY>20037508</UpperLeftY><LowerRightX>20037508</LowerRightX>
<LowerRightY>-20037508</LowerRightY><TileLevel>2</TileLevel><TileCountX>1</TileCountX><TileCountY>1</TileCountY>
</DataWindow><BlockSizeX>256</BlockSizeX><BlockSizeY>256</BlockSizeY><BandsCount>3</BandsCount></GDAL_WMS>)"},
    {"evil.xml", "<WMS_Tile_Service>HOST</WMS_Tile_Service>"},
    {"wcs.tif", "<WCS_GDAL><ServiceURL>HOST/?</ServiceURL><CoverageName>a</CoverageName></WCS_GDAL>"},
    {"wmts.tif", "<GDAL_WMTS><GetCapabilitiesUrl>HOST/caps</GetCapabilitiesUrl></GDAL_WMTS>"},
    {"wfs.gml", "<OGRWFSDataSource><URL>HOST/wfs?</URL></OGRWFSDataSource>"},
    {"data.gml", R"(<?xml version="1.0"?><!DOCTYPE a SYSTEM "HOST/a.dtd"><gml:FeatureCollection
xmlns:gml="http://www.opengis.net/gml" xmlns:xlink="http://www.w3.org/1999/xlink"
xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"
xsi:schemaLocation="x HOST/a.xsd?SERVICE=WFS&amp;VERSION=1.0.0&amp;REQUEST=DescribeFeatureType"><gml:featureMember>
<a gml:id="a"><gml:pointProperty xlink:href="HOST/point#1"/></a></gml:featureMember></gml:FeatureCollection>)"},
    {"links.kml", R"(<kml xmlns="http://www.opengis.net/kml/2.2"><Document><NetworkLink><Link><href>HOST/a.kml</href>
</Link></NetworkLink><GroundOverlay><Icon><href>HOST/a.png</href></Icon></GroundOverlay></Document></kml>)"},
    {"cache.mrf", R"(<MRF_META><CachedSource><Source>/vsicurl/HOST/a.tif</Source></CachedSource><Raster>
<Size x="10" y="10"/></Raster></MRF_META>)"},
    {"stac.json", R"({"type":"FeatureCollection","stac_version":"1.0.0","features":[{"type":"Feature",
"stac_version":"1.0.0","assets":{"a":{"href":"HOST/a.tif"}}}]})"},
    // Its data file is the first of this list.
    {"a.ers", "DatasetHeader Begin\n\tVersion\t= \"5\"\n\tDataFile\t= \"evil.tif\"\n\tDataSetType\t= Translated\n"
              "RasterInfo Begin\n\tCellType\t= Unsigned8BitInteger\n\tNrOfLines\t= 256\n\tNrOfCellsPerLine\t= 256\n"
              "\tNrOfBands\t= 3\nRasterInfo End\nDatasetHeader End\n"},
};

DString WithHost(DString text, DString const &host) {
    for (std::size_t at = text.find("HOST"); at != DString::npos; at = text.find("HOST", at + host.size()))
        text.replace(at, 4, host);
    return text;
}

TEST_F(Network, AFileThatDescribesAServiceAsksNobody) {
    for (Lure const &lure : kLures) {
        DString const path = m_folder.Write(lure.name, WithHost(lure.content, m_server.Url()));
        ImageInfo info;
        DCanvas picture;
        std::ignore = ReadImageInfo({path, nullptr}, "", nullptr, info);
        std::ignore = ReadPreview({path, nullptr}, "", nullptr, picture);
        std::ignore = ChildrenOf(path);
        EXPECT_EQ(m_server.Connections(), 0) << lure.name;
    }
}

TEST_F(Network, ATextThatNamesAServiceAsksNobody) {
    for (char const *text : {"WMS:HOST/wms", "WFS:HOST/wfs", "NETCDF:HOST/a.nc", kLures[0].content,
                             "PG:host=127.0.0.1 port=PORT", "CSW:HOST/csw"}) {
        DString moniker = WithHost(text, m_server.Url());
        if (std::size_t const at = moniker.find("PORT"); at != DString::npos)
            moniker.replace(at, 4, std::to_string(m_server.Port()));
        ImageInfo info;
        EXPECT_FALSE(ReadImageInfo({moniker, nullptr}, "", nullptr, info));
        EXPECT_TRUE(ChildrenOf(moniker).empty());
        EXPECT_EQ(m_server.Connections(), 0) << text;
    }
}

TEST_F(Network, AShareOnAFileServerIsATree) {
    test::LoopbackSamba samba;
    if (!samba.Start()) {
        // Without a server an address that nobody answers must at least be told at once.
        EXPECT_TRUE(ChildrenOf("smb://127.0.0.1:1/pub").empty());
        return;
    }
    test::WriteImage(samba.Folder() / "share/a b\xC3\xA4.tif", {.width = 33});
    samba.Folder().Folder("share/inner");
    test::WritePages(samba.Folder() / "share/pages.tif", 2);
    ASSERT_TRUE(samba.IsReady());
    auto const children = ChildrenOf("smb://127.0.0.1/pub");
    ASSERT_EQ(children.size(), 3U);
    EXPECT_EQ(children.at("inner").type, kDirectoryNode);
    ImageInfo info;
    ASSERT_TRUE(ReadImageInfo({children.at("a b\xC3\xA4.tif").path, nullptr}, "", nullptr, info));
    EXPECT_EQ(info.width, 33);
    EXPECT_EQ(ChildrenOf("smb://127.0.0.1/pub/pages.tif").size(), 2U);
    for (char const *name : {"pages.tif", "a%20b\xC3\xA4.tif", "missing.tif"})
        EXPECT_EQ(BDIDrvrMngr::Instance()->FindContainerDriver(DString("smb://127.0.0.1/pub/") + name) != nullptr,
                  DString(name) == "pages.tif")
            << name;
    DError error;
    EXPECT_FALSE(ReadImageInfo({"smb://127.0.0.1/pub/missing.tif", nullptr}, "", nullptr, info, &error));
    EXPECT_EQ(error.Why(), DError::Cause::Missing) << error.Text();
    EXPECT_TRUE(ChildrenOf("smb://127.0.0.1").contains("pub"));
}

} // namespace
} // namespace zelvar
