#include "support/HttpServer.h"
#include "support/ImageFiles.h"
#include "support/OpenedTree.h"
#include "support/RealDrivers.h"
#include "support/WebServers.h"
#include "zelvar/data/Connection.h"
#include "zelvar/data/ImageReader.h"
#include "zelvar/data/OpenImage.h"
#include "zelvar/data/gdal/services/Capabilities.h"
#include "zelvar/data/tables/ADIFile.h"

namespace zelvar {
namespace {

using test::HttpServer;

constexpr char const *kMarker = "marker7secret";

double HeightAt(int, int x, int y) { return (x * 7 + y * 13 + x * y % 11) % 256; }

/// Drivers in readers, and what all of it writes into the log.
struct MapServices : testing::Test {
    MapServices() {
        BDIDrvrMngr::Instance()->Reset();
        test::UseReaders(test::PatientReaders());
        m_former = Report::SetTraceHandler([this](int, DString const &line) {
            std::lock_guard const lock(m_mutex);
            m_log += line + "\n";
        });
    }
    ~MapServices() override {
        Report::SetTraceHandler(m_former);
        SetConnectionFinder(nullptr);
        BDIDrvrMngr::Instance()->Reset();
        EXPECT_EQ(m_log.find(kMarker), DString::npos) << m_log;
    }
    /// "name:type" of what lies in the node at that path of a tree, or in its root.
    static std::vector<DString> NamesIn(DString const &url, DString const &path = {}) {
        test::OpenedTree const tree(url);
        std::vector<DString> names;
        if (!tree)
            return {"nothing opens"};
        std::optional<BDINode> const parent = path.empty() ? *tree.root : tree.Node(path);
        for (BDINode const &child : tree.Children(parent.value_or(BDINode())))
            names.push_back(child.name + ":" + std::to_string(child.type));
        return names;
    }
    static DError WhyNotListed(DString const &url) {
        BDIDrvr *driver = nullptr;
        BDINode *root = nullptr;
        DError error;
        EXPECT_EQ(BDIDrvrMngr::Instance()->OpenFile(url.c_str(), &driver, &root, nullptr, &error), nullptr);
        return error;
    }
    static DError WhyNotOpened(DString const &moniker) {
        DError error;
        OpenImage const image({moniker, nullptr}, "", nullptr, &error);
        EXPECT_FALSE(image.IsOpen()) << moniker;
        return error;
    }
    /// All of a channel in that size; none where it cannot be read.
    static std::vector<int> WholeOf(OpenImage const &image, int channel, int width, int height) {
        std::size_t const count = static_cast<std::size_t>(width * height);
        std::vector<std::int16_t> samples(count);
        RDIDriver &driver = image.Driver();
        if (!driver.ReadBlockRsmpl(image.Handle(), channel, 0, 0, driver.GetChnlSizeX(image.Handle(), 0),
                                   driver.GetChnlSizeY(image.Handle(), 0), samples.data(), width, height,
                                   RDIDriver::Nearest, true, true))
            return {};
        auto const *const bytes = reinterpret_cast<std::uint8_t const *>(samples.data());
        return driver.GetChnlDataType(image.Handle(), channel) == RDI_Int16
                   ? std::vector<int>(samples.begin(), samples.end())
                   : std::vector<int>(bytes, bytes + count);
    }
    /// Terms of a connection to these places alone.
    static void Allow(std::vector<int> const &ports) {
        SetConnectionFinder([ports](std::string_view) {
            ConnectionTerms terms{.id = "lab" + std::to_string(ports.size()),
                                  .kind = ConnectionKind::MapService,
                                  .options = {{"user", "ann"}},
                                  .secrets = {{"password", kMarker}}};
            for (int const port : ports)
                terms.hosts.push_back({"127.0.0.1", static_cast<std::uint16_t>(port)});
            return terms;
        });
    }
    std::mutex m_mutex;
    DString m_log;
    Report::TraceHandler m_former;
};

constexpr int kWidth = 1024;
constexpr int kHeight = 512;

/// The same beside a map server with data.
struct RealMapServer : MapServices {
    RealMapServer() {
        DString const data = m_server.Folder().Folder("data");
        test::WriteImage(data + "/h.tif", {.width = kWidth, .height = kHeight, .sample = &HeightAt});
        m_server.Folder().Write("data/h.tfw", "0.0025\n0\n0\n-0.0025\n10.00125\n51.27875\n");
        DString rows;
        for (int i = 0; i < kRows; ++i)
            rows += Format(
                R"(%s{"type":"Feature","properties":{"id":%d,"name":"plot <%d> & '%c'","area":%g},"geometry":)"
                R"({"type":"Polygon","coordinates":[[[%d,0],[%d,1],[%d,1],[%d,0],[%d,0]]]}})",
                i == 0 ? "" : ",\n", i, i, 'a' + i % 26, i * 0.25, i % 20, i % 20, i % 20 + 1, i % 20 + 1, i % 20);
        m_server.Folder().Write("data/plots.json", R"({"type":"FeatureCollection","features":[)" + rows + "]}");
        m_isThere = m_server.StartMaps();
    }
    /// Of a connection of that kind: "wms+http://...".
    [[nodiscard]] DString Address(DString const &kind) const {
        return kind + "http://" + m_server.Place() + "/maps?map=field";
    }
    /// How many requests of that name there were, letters in any case.
    [[nodiscard]] int Count(DString const &request) const {
        int count = 0;
        for (std::string const &line : m_server.Requests())
            count += FoldCase(line).find(FoldCase("request=" + request)) != DString::npos ? 1 : 0;
        return count;
    }
    static constexpr int kRows = 250;
    test::WebServer m_server;
    bool m_isThere = false;
};

TEST_F(RealMapServer, ListsWhatEachServiceOffersWithOneRequest) {
    ASSERT_TRUE(m_isThere);
    std::pair<char const *, std::vector<DString>> const cases[] = {
        {"wms+", {"Field station:2", "Heights of the field:2", "Plots:3"}},
        {"wfs+", {"Plots:12"}},
        {"wcs+", {"height:2"}},
        {"ogc+", {"WMS:1025", "WFS:1025", "WCS:1025"}}};
    for (auto const &[scheme, names] : cases) {
        int const before = Count("GetCapabilities");
        EXPECT_EQ(NamesIn(Address(scheme)), names) << scheme;
        EXPECT_EQ(Count("GetCapabilities") - before, DString(scheme) == "ogc+" ? 4 : 1) << scheme;
    }
    EXPECT_EQ(NamesIn(Address("wms+"), Address("wms+") + "&LAYER=plots"),
              (std::vector<DString>{"green:2", "red & dark:2"}));
    EXPECT_EQ(NamesIn(Address("ogc+") + "&SERVICE=WFS"), std::vector<DString>{"Plots:12"});
    EXPECT_EQ(static_cast<int>(m_server.Requests().size()), Count("GetCapabilities")) << "asked for more than lists";
}

TEST_F(RealMapServer, AMapIsThePixelsOfItsSource) {
    ASSERT_TRUE(m_isThere);
    DString const moniker = Address("wms+") + "&LAYER=height";
    ImageInfo info;
    ASSERT_TRUE(ReadImageInfo({moniker, nullptr}, "", nullptr, info));
    EXPECT_TRUE(info.isOfAnyResolution);
    EXPECT_EQ(info.extent, "10, 50 - 12.56, 51.28 (EPSG:4326)");
    EXPECT_EQ(Count("GetMap"), 0);
    OpenImage const image({moniker, nullptr}, "", nullptr);
    for (int channel = 0; channel < 3; ++channel) {
        std::vector<int> const samples = WholeOf(image, channel, kWidth, kHeight);
        ASSERT_FALSE(samples.empty());
        int wrong = 0;
        for (int i = 0; i < kWidth * kHeight; ++i)
            wrong += samples[static_cast<std::size_t>(i)] == HeightAt(0, i % kWidth, i / kWidth) ? 0 : 1;
        EXPECT_EQ(wrong, 0) << channel;
    }
    DCanvas picture;
    PreviewValues values;
    ASSERT_TRUE(ReadPreview({moniker, nullptr}, "", nullptr, picture));
    EXPECT_TRUE(ReadPreviewValues({moniker, nullptr}, "", nullptr, {}, values));
    EXPECT_EQ(picture.GetHeight(), kHeight);
    EXPECT_EQ(Count("GetMap"), 1);
    EXPECT_EQ(Count("GetCapabilities"), 1);
}

TEST_F(RealMapServer, AStyleAndACoverageOpenByTheirMonikers) {
    ASSERT_TRUE(m_isThere);
    for (auto const &[style, red, green] : {std::tuple{"green", 0, 200}, {"red%20%26%20dark", 200, 0}}) {
        OpenImage const plots({Address("wms+") + "&LAYER=plots&STYLE=" + style, nullptr}, "", nullptr);
        ASSERT_TRUE(plots.IsOpen()) << style;
        EXPECT_EQ(WholeOf(plots, 0, 20, 1).at(5), red) << style;
        EXPECT_EQ(WholeOf(plots, 1, 20, 1).at(5), green) << style;
    }
    OpenImage const heights({Address("ogc+") + "&COVERAGE=height", nullptr}, "", nullptr);
    ASSERT_TRUE(heights.IsOpen());
    std::vector<int> const samples = WholeOf(heights, 0, kWidth, kHeight);
    ASSERT_FALSE(samples.empty());
    EXPECT_EQ(heights.Driver().GetChnlSizeX(heights.Handle(), 0), kWidth);
    for (int const at : {0, 77, kWidth * 300 + 511, kWidth * kHeight - 1})
        EXPECT_EQ(samples[static_cast<std::size_t>(at)], HeightAt(0, at % kWidth, at / kWidth)) << at;
    EXPECT_EQ(WhyNotOpened(Address("wms+") + "&LAYER=nope").Text(), "the service has no layer \"nope\"");
    EXPECT_EQ(WhyNotOpened(Address("wms+") + "&LAYER=plots&STYLE=no").Text(), "the service has no style \"no\"");
    EXPECT_NE(WhyNotListed(Address("wms+") + "x").Text().find("a web page, not capabilities: MapServer Message"),
              DString::npos);
}

TEST_F(RealMapServer, FeaturesAreRows) {
    ASSERT_TRUE(m_isThere);
    ADIFile table(DFile(Address("wfs+") + "&TYPENAME=ms%3Aplots"), "", tdFormatAccess_Read, nullptr, "");
    ASSERT_TRUE(table.IsOpen()) << table.GetError();
    std::map<DString, int> columns;
    for (int col = 0; col < table.GetNumCols(); ++col)
        columns[table.GetColName(col)] = col;
    for (int i = 0; i < kRows; ++i) {
        ASSERT_TRUE(table.SetRow(i)) << i;
        EXPECT_EQ(table.GetText(columns.at("id")), std::to_string(i));
        EXPECT_EQ(table.GetText(columns.at("name")), Format("plot <%d> & '%c'", i, 'a' + i % 26));
        EXPECT_EQ(std::stod(table.GetText(columns.at("area"))), i * 0.25);
    }
    EXPECT_FALSE(table.SetRow(kRows));
    EXPECT_EQ(Count("GetCapabilities"), 1) << testing::PrintToString(m_server.Requests()) << m_log;
    EXPECT_EQ(WhyNotOpened(Address("wfs+") + "&TYPENAME=ms%3Aplots").Why(), DError::Cause::NotSupported);
}

/// A WMS with that in its list of layers, whose maps are asked for at `place`.
std::string Wms(std::string const &layers, std::string const &place) {
    return "<WMS_Capabilities version=\"1.3.0\" xmlns:xlink=\"http://www.w3.org/1999/xlink\"><Service><Title>x</Title>"
           "</Service><Capability><Request><GetMap><Format>image/png</Format><DCPType><HTTP><Get><OnlineResource "
           "xlink:href=\"" +
           place + "\"/></Get></HTTP></DCPType></GetMap></Request>" + layers + "</Capability></WMS_Capabilities>";
}
constexpr char const *kAsked = "/ows?SERVICE=WMS&REQUEST=GetCapabilities";
constexpr char const *kBox = "<BoundingBox CRS=\"EPSG:4326\" minx=\"50\" miny=\"10\" maxx=\"52\" maxy=\"14\"/>";

TEST_F(MapServices, OddNamesAndAxesReachTheServerAsTheyAre) {
    HttpServer server;
    DString const name = R"(a:b?c="}%&<,ä/+)";
    server.Serve(kAsked, Wms("<Layer><Layer><Title>Group</Title><Layer><Name>a:b?c=\"}%&amp;&lt;,ä/+</Name>" +
                                 DString(kBox) + "</Layer></Layer></Layer>",
                             server.Url() + "/map"));
    DString const address = "wms+" + server.Url() + "/ows";
    test::OpenedTree const tree(address);
    ASSERT_TRUE(tree);
    BDINode const group = tree.Children(*tree.root).at(0);
    EXPECT_EQ(group.path, address + "?GROUP=Group");
    BDINode const layer = tree.Children(group).at(0);
    EXPECT_EQ(layer.name, name);
    EXPECT_EQ(layer.path, address + "?LAYER=" + PercentEncoded(name));
    EXPECT_TRUE(tree.Node(layer.path));
    EXPECT_EQ(BDIMoniker(layer.path, nullptr).GetDisplayName(), name);
    DCanvas picture;
    DError error;
    EXPECT_FALSE(ReadPreview({layer.path, nullptr}, "", nullptr, picture, Enlarge::Yes, &error));
    EXPECT_EQ(error.Why(), DError::Cause::Server) << error.Text();
    EXPECT_EQ(error.Detail(), 404) << m_log;
    std::string const map = server.Requests().back();
    EXPECT_NE(map.find("ayers=" + PercentEncoded(name) + "&"), std::string::npos) << map;
    EXPECT_NE(map.find("box=50"), std::string::npos) << "latitudes come first: " << map;
}

TEST_F(MapServices, TilesComeByTheirMatrixSets) {
    HttpServer server;
    test::TempFolder const folder;
    test::WriteImage(folder / "t.tif",
                     {.width = 256, .height = 256, .channels = 3, .sample = [](int channel, int, int) {
                          return 10 * (channel + 1);
                      }});
    for (char const *tile : {"/t/0/0/0", "/t/0/0/1"})
        server.Serve(tile, test::ReadFile(folder / "t.tif"));
    auto const set = [](char const *name) {
        return DString("<TileMatrixSet><Identifier>") + name +
               "</Identifier><SupportedCRS>urn:ogc:def:crs:OGC:1.3:CRS84</SupportedCRS><TileMatrix><Identifier>0"
               "</Identifier><ScaleDenominator>2.795411320143589E8</ScaleDenominator><TopLeftCorner>-180 90"
               "</TopLeftCorner><TileWidth>256</TileWidth><TileHeight>256</TileHeight><MatrixWidth>2</MatrixWidth>"
               "<MatrixHeight>1</MatrixHeight></TileMatrix></TileMatrixSet>";
    };
    server.Serve("/w.xml", "<Capabilities version=\"1.0.0\"><Contents><Layer><Title>Ortho</Title><Identifier>or/tho"
                           "</Identifier><Style><Identifier>x</Identifier></Style><Format>image/tiff</Format>"
                           "<TileMatrixSetLink><TileMatrixSet>a</TileMatrixSet></TileMatrixSetLink><TileMatrixSetLink>"
                           "<TileMatrixSet>b</TileMatrixSet></TileMatrixSetLink><ResourceURL format=\"image/tiff\" "
                           "resourceType=\"tile\" template=\"" +
                               server.Url() + "/t/{TileMatrix}/{TileRow}/{TileCol}\"/></Layer>" + set("a") + set("b") +
                               "</Contents></Capabilities>");
    DString const address = "wmts+" + server.Url() + "/w.xml";
    EXPECT_EQ(NamesIn(address), std::vector<DString>{"Ortho:3"});
    EXPECT_EQ(NamesIn(address, address + "?LAYER=or%2Ftho"), (std::vector<DString>{"a:2", "b:2"}));
    OpenImage const image({address + "?LAYER=or%2Ftho&MATRIXSET=b", nullptr}, "", nullptr);
    ASSERT_TRUE(image.IsOpen());
    EXPECT_EQ(WholeOf(image, 2, 512, 256).at(77), 30);
    EXPECT_EQ(WhyNotOpened(address + "?LAYER=or%2Ftho&MATRIXSET=c").Why(), DError::Cause::Missing);
}

TEST_F(MapServices, AnotherHostIsRefusedAndNamedUntilItIsAllowed) {
    HttpServer server;
    HttpServer other;
    DString const address = "wms+" + server.Url() + "/ows";
    DString const layers = "<Layer><Name>a</Name>" + DString(kBox) + "</Layer>";
    server.SendOn(kAsked, other.Url() + kAsked);
    other.Serve(kAsked, Wms(layers, other.Url() + "/map"));
    DError const error = WhyNotListed(address);
    EXPECT_EQ(error.Why(), DError::Cause::Refused);
    EXPECT_NE(error.Text().find("the server sends on to 127.0.0.1:" + std::to_string(other.Port())), DString::npos)
        << error.Text();
    EXPECT_EQ(other.Connections(), 0);
    Allow({server.Port(), other.Port()});
    EXPECT_EQ(NamesIn(address), std::vector<DString>{"a:2"});
    // One that names the other only for its maps.
    Allow({server.Port()});
    server.Serve(kAsked, Wms(layers, other.Url() + "/map"));
    int const before = other.Connections();
    DCanvas picture;
    DError refused;
    EXPECT_FALSE(ReadPreview({address + "?LAYER=a", nullptr}, "", nullptr, picture, Enlarge::Yes, &refused));
    EXPECT_EQ(refused.Why(), DError::Cause::Refused) << refused.Text();
    EXPECT_EQ(other.Connections(), before);
    Allow({server.Port(), other.Port()});
    EXPECT_FALSE(ReadPreview({address + "?LAYER=a", nullptr}, "", nullptr, picture, Enlarge::Yes, &refused));
    EXPECT_EQ(refused.Detail(), 404) << refused.Text();
    EXPECT_THAT(other.Logins(), testing::Not(testing::Contains("Basic YW5uOm1hcmtlcjdzZWNyZXQ=")));
    EXPECT_THAT(server.Logins(), testing::Contains("Basic YW5uOm1hcmtlcjdzZWNyZXQ="));
    server.SendOn(kAsked, server.Url() + kAsked);
    EXPECT_TRUE(WhyNotListed(address).IsSet()) << "endless redirections";
    EXPECT_LT(server.Requests().size(), 40U);
}

TEST_F(MapServices, ALoginStaysBesideTheName) {
    HttpServer server;
    server.Demand("YW5uOm1hcmtlcjdzZWNyZXQ=");
    server.Serve(kAsked, Wms("<Layer><Name>a</Name>" + DString(kBox) + "</Layer>", server.Url() + "/map"));
    DString const place = "127.0.0.1:" + std::to_string(server.Port()) + "/ows";
    EXPECT_EQ(WhyNotListed("wms+http://" + place).Detail(), 401);
    test::OpenedTree const tree("wms+http://ann:" + DString(kMarker) + "@" + place);
    ASSERT_TRUE(tree);
    BDINode const layer = tree.Children(*tree.root).at(0);
    EXPECT_EQ(layer.path, "wms+http://ann@" + place + "?LAYER=a");
    EXPECT_TRUE(OpenImage({layer.path, nullptr}, "", nullptr).IsOpen());
    EXPECT_EQ(server.Logins(), std::set<std::string>{"Basic YW5uOm1hcmtlcjdzZWNyZXQ="});
}

TEST(Capabilities, WhatIsNoneIsNamedAndDoesNoHarm) {
    using enum DError::Cause;
    std::string many;
    for (int i = 0; i < 250'000; ++i)
        many += "<Layer><Name>x</Name></Layer>";
    std::string deep;
    for (int i = 0; i < 900; ++i)
        deep += "<Layer><Name>d</Name>";
    for (int i = 0; i < 900; ++i)
        deep += "</Layer>";
    struct Case {
        std::string answer;
        DError::Cause cause;
        char const *words;
    };
    Case const cases[] = {
        {"<!DOCTYPE html><html>Menu<title>Log in\n here</title>x", NotSupported,
         "the address answers with a web page, not capabilities: Log in"},
        {"\n  Error: no map\nmore", NotSupported,
         "the address answers with a web page, not capabilities: Error: no map"},
        {"", NotSupported, "the address answers with a web page, not capabilities"},
        {"<ServiceExceptionReport><ServiceException>\nno such map\n</ServiceException></ServiceExceptionReport>",
         Server, "the server says: no such map"},
        {"<a:ExceptionReport><a:Exception><a:ExceptionText>off</a:ExceptionText></a:Exception></a:ExceptionReport>",
         Server, "the server says: off"},
        {"<WFS_Capabilities><FeatureTypeList/></WFS_Capabilities>", NotSupported,
         "the address answers with \"WFS_Capabilities\", not with the capabilities of a WMS"},
        {"<?xml version=\"1.0\"?><WMS_Capabilities><Capability>", Damaged, "the capabilities cannot be read"},
        {"<?xml version=\"1.0\"?><!DOCTYPE WMS_Capabilities [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;\">]>"
         "<WMS_Capabilities><Capability>&b;</Capability></WMS_Capabilities>",
         Damaged, "the capabilities cannot be read"},
        {Wms("<Layer>" + many + "</Layer>", ""), TooLarge, "the service offers more than 200000 layers"}};
    for (Case const &c : cases) {
        DError error;
        EXPECT_FALSE(services::ReadCapabilities(services::Service::Wms, c.answer, error)) << c.words;
        EXPECT_EQ(error.Why(), c.cause) << error.Text();
        EXPECT_TRUE(error.Text().starts_with(c.words)) << error.Text();
    }
    DError error;
    auto const odd = services::ReadCapabilities(services::Service::Wms,
                                                Wms("<Layer><Name>" + std::string(1'000'000, 'x') +
                                                        "</Name><BoundingBox CRS=\"EPSG:4326\" minx=\"nan\" "
                                                        "miny=\"1\" maxx=\"1\" maxy=\"inf\"/>" +
                                                        deep + "</Layer>",
                                                    ""),
                                                error);
    ASSERT_TRUE(odd) << error.Text();
    EXPECT_EQ(odd->offers.front().name, "");
    EXPECT_TRUE(odd->offers.front().boxes.empty());
    EXPECT_LT(odd->offers.size(), 40U) << "deeper than anybody looks";
}

/// Real web servers, as folders.
struct WebFolders : MapServices {
    static void Serve(std::string const &place, std::map<DString, DString> const &options,
                      DString const &password = {}) {
        SetConnectionFinder([=](std::string_view address) {
            ConnectionTerms terms{.id = DString(address.substr(0, 20)) +
                                        std::to_string(password.size() * 10 + options.size()),
                                  .kind = ConnectionKind::WebFolder,
                                  .hosts = {*PlaceIn(place, 443)},
                                  .options = options};
            if (!password.empty())
                terms.secrets["password"] = password;
            return terms;
        });
    }
};

TEST_F(WebFolders, ATlsServerOfAPrivateAuthorityWithALogin) {
    test::WebServer server;
    ASSERT_TRUE(server.StartTls());
    test::WriteImage(server.Folder() / "files/x 1%2.tif", {.width = 30, .height = 20});
    server.Folder().Write("files/v1.2 data/b.txt");
    std::map<DString, DString> const trusted{{"ca", server.Folder() / "ca.pem"}};
    std::map<DString, DString> const ann{{"ca", server.Folder() / "ca.pem"}, {"user", "ann"}};
    DString const url = "https://" + server.Place();
    DString const files = url + "/open/";

    Serve(server.Place(), {});
    DError const untrusted = WhyNotListed(files);
    EXPECT_EQ(untrusted.Why(), DError::Cause::Untrusted) << untrusted.Text();
    EXPECT_NE(untrusted.Text().find("the certificate of " + server.Place() + " is not trusted"), DString::npos)
        << untrusted.Text();
    Serve(server.Place(), trusted);
    EXPECT_EQ(NamesIn(files), (std::vector<DString>{"v1.2 data:1025", "x 1%2.tif:2"}));
    ImageInfo info;
    EXPECT_TRUE(ReadImageInfo({files + "x%201%252.tif", nullptr}, "", nullptr, info));
    EXPECT_EQ(info.width, 30);
    for (auto const &[folder, status, words] : {std::tuple{"/private/", 401, "wants a login"},
                                                {"/closed/", 403, "refuses access"},
                                                {"/none/", 404, "has nothing there"}}) {
        DError const error = WhyNotListed(url + folder);
        EXPECT_EQ(error.Detail(), status) << error.Text();
        EXPECT_NE(error.Text().find(words), DString::npos) << error.Text();
    }
    Serve(server.Place(), ann, "wrong");
    EXPECT_NE(WhyNotListed(url + "/private/").Text().find("does not know the user or the password"), DString::npos);
    Serve(server.Place(), ann, kMarker);
    EXPECT_EQ(NamesIn(url + "/private/"), (std::vector<DString>{"v1.2 data:1025", "x 1%2.tif:2"}));
    EXPECT_TRUE(ReadImageInfo({url + "/private/x%201%252.tif", nullptr}, "", nullptr, info));
}

TEST_F(WebFolders, AWebDavServerTellsSizesAndTimes) {
    test::WebServer server;
    ASSERT_TRUE(server.StartDav());
    server.Folder().Write("files/a b.txt", "12345");
    server.Folder().Folder("files/v1.2");
    test::WriteImage(server.Folder() / "files/p;q.tif", {.width = 30, .height = 20});
    test::OpenedTree const tree("http://" + server.Place() + "/");
    ASSERT_TRUE(tree);
    std::map<DString, BDINode> found;
    for (BDINode const &node : tree.Children(*tree.root, 0xFFFF))
        found[node.name] = node;
    ASSERT_EQ(found.size(), 2U);
    EXPECT_GT(found["p;q.tif"].modified, 0);
    EXPECT_EQ(found["p;q.tif"].size,
              static_cast<std::int64_t>(test::ReadFile(server.Folder() / "files/p;q.tif").size()));
    EXPECT_EQ(found["v1.2"].type, kDirectoryNode);
    ImageInfo info;
    EXPECT_TRUE(ReadImageInfo({found["p;q.tif"].path, nullptr}, "", nullptr, info));
}

} // namespace
} // namespace zelvar
