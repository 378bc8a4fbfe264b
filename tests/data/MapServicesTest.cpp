#include "support/HttpServer.h"
#include "support/ImageFiles.h"
#include "support/OpenedTree.h"
#include "support/RealDriversTest.h"
#include "support/SecretWatch.h"
#include "support/WebServers.h"
#include "zelvar/data/Connection.h"
#include "zelvar/data/ImageReader.h"
#include "zelvar/data/OpenImage.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/data/ServerCertificate.h"
#include "zelvar/data/gdal/services/Capabilities.h"
#include "zelvar/data/gdal/services/ServiceDescription.h"
#include "zelvar/data/reader/ConnectionNotes.h"
#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/data/tables/ADIDriverMngr.h"
#include "zelvar/data/tables/ADIFile.h"
#include "zelvar/data/wire/SealedMemory.h"

namespace zelvar {
namespace {

using Names = std::vector<DString>;
using test::WhyNotOpened;
using enum DError::Cause;

constexpr char const *kMarker = "marker7secret";
constexpr char const *kMarkerSent = "Basic YW5uOm1hcmtlcjdzZWNyZXQ="; // ann's
constexpr int kWidth = 1024;
constexpr int kHeight = 512;

double HeightAt(int, int x, int y) { return (x * 7 + y * 13 + x * y % 11) % 256; }
bool Says(DError const &error, DString const &words) { return error.Text().find(words) != DString::npos; }

/// Drivers in readers.
struct MapServices : test::RealDriversTest {
    MapServices() { test::UseReaders(test::PatientReaders()); }
    ~MapServices() override { SetConnectionFinder(nullptr); }
    /// "name:type" of what lies in the node at that path of a tree, or in its root.
    static Names NamesIn(DString const &url, DString const &path = {}) {
        test::OpenedTree const tree(url);
        Names names;
        if (!tree)
            return {"nothing opens"};
        for (BDINode const &child : tree.Children(path.empty() ? *tree.root : tree.Node(path).value_or(BDINode())))
            names.push_back(child.name + ":" + std::to_string(child.type));
        return names;
    }
    static DError WhyNotShown(DString const &moniker) {
        DCanvas picture;
        DError error;
        EXPECT_FALSE(ReadPreview({moniker, nullptr}, "", nullptr, picture, Enlarge::Yes, &error)) << moniker;
        return error;
    }
    /// A whole channel in that size; none where it cannot be read.
    static std::vector<int> SamplesOf(DString const &moniker, int channel, int width, int height) {
        OpenImage const image({moniker, nullptr}, "", nullptr);
        if (!image.IsOpen())
            return {};
        std::vector<std::int16_t> samples(static_cast<std::size_t>(width * height));
        RDIDriver &driver = image.Driver();
        EXPECT_TRUE(driver.ReadBlockRsmpl(image.Handle(), channel, 0, 0, driver.GetChnlSizeX(image.Handle(), 0),
                                          driver.GetChnlSizeY(image.Handle(), 0), samples.data(), width, height,
                                          RDIDriver::Nearest, true, true));
        auto const *const bytes = reinterpret_cast<std::uint8_t const *>(samples.data());
        bool const isWide = driver.GetChnlDataType(image.Handle(), channel) == RDI_Int16;
        return isWide ? std::vector<int>(samples.begin(), samples.end())
                      : std::vector<int>(bytes, bytes + samples.size());
    }
    /// From now on connections are of that kind and to these places alone, each time another one.
    void Allow(ConnectionKind kind, Names const &places, std::map<DString, DString> const &options = {},
               DString const &password = {}) {
        ConnectionTerms terms{.id = "lab" + std::to_string(++m_connections), .kind = kind, .options = options};
        for (DString const &place : places)
            terms.hosts.push_back(*PlaceIn(place, 0));
        if (!password.empty())
            terms.secrets["password"] = password;
        SetConnectionFinder([terms](std::string_view) { return terms; });
    }
    test::SecretWatch m_watch{{kMarker}};
    int m_connections = 0;
};

/// The same beside a map server with data.
struct RealMapServer : MapServices {
    void SetUp() override {
        test::WriteImage(m_server.Folder().Folder("data") + "/h.tif",
                         {.width = kWidth, .height = kHeight, .sample = &HeightAt});
        m_server.Folder().Write("data/h.tfw", "0.0025\n0\n0\n-0.0025\n10.00125\n51.27875\n");
        DString rows;
        for (int i = 0; i < kRows; ++i)
            rows += Format(R"(%s{"type":"Feature","properties":{"id":%d,"name":"<%d> & '%c'","area":%g},"geometry":)"
                           R"({"type":"Polygon","coordinates":[[[0,0],[0,1],[20,1],[20,0],[0,0]]]}})",
                           i == 0 ? "" : ",", i, i, 'a' + i % 26, i * 0.25);
        m_server.Folder().Write("data/plots.json", R"({"type":"FeatureCollection","features":[)" + rows + "]}");
        ASSERT_TRUE(m_server.StartMaps());
    }
    [[nodiscard]] DString Address(DString const &kind) const {
        return kind + "http://" + m_server.Place() + "/maps?map=field";
    }
    /// How many requests of that name there were, letters in any case.
    [[nodiscard]] long Count(DString const &request) const {
        Names const lines = m_server.Requests();
        return std::ranges::count_if(lines, [&](DString const &line) {
            return FoldCase(line).find(FoldCase("request=" + request)) != DString::npos;
        });
    }
    static constexpr int kRows = 250;
    test::WebServer m_server;
};

TEST_F(RealMapServer, ListsWhatEachServiceOffersWithOneRequest) {
    std::pair<char const *, Names> const cases[] = {{"wms+", {"Field station:2", "Heights of the field:2", "Plots:3"}},
                                                    {"wfs+", {"Plots:12"}},
                                                    {"wcs+", {"height:2"}},
                                                    {"ogc+", {"WMS:1025", "WFS:1025", "WCS:1025"}}};
    for (auto const &[scheme, names] : cases) {
        long const before = Count("GetCapabilities");
        EXPECT_EQ(NamesIn(Address(scheme)), names) << scheme;
        EXPECT_EQ(Count("GetCapabilities") - before, DString(scheme) == "ogc+" ? 4 : 1) << scheme;
    }
    EXPECT_EQ(NamesIn(Address("wms+"), Address("wms+") + "&LAYER=plots"), (Names{"green:2", "red & dark:2"}));
    EXPECT_EQ(NamesIn(Address("ogc+") + "&SERVICE=WFS"), Names{"Plots:12"});
    EXPECT_EQ(static_cast<long>(m_server.Requests().size()), Count("GetCapabilities")) << "asked for more than lists";
    EXPECT_TRUE(Says(WhyNotOpened(Address("wms+") + "x"), "a web page, not capabilities: MapServer Message"));
}

TEST_F(RealMapServer, AMapIsThePixelsOfItsSource) {
    DString const moniker = Address("wms+") + "&LAYER=height";
    ImageInfo info;
    ASSERT_TRUE(ReadImageInfo({moniker, nullptr}, "", nullptr, info));
    EXPECT_TRUE(info.isOfAnyResolution);
    EXPECT_EQ(info.extent, "10, 50 - 12.56, 51.28 (EPSG:4326)");
    EXPECT_EQ(Count("GetMap"), 0);
    for (DString const &image : {moniker, Address("wcs+") + "&COVERAGE=height"}) {
        std::vector<int> const samples = SamplesOf(image, 0, kWidth, kHeight);
        ASSERT_FALSE(samples.empty()) << image;
        int wrong = 0;
        for (int i = 0; i < kWidth * kHeight; ++i)
            wrong += samples[static_cast<std::size_t>(i)] == HeightAt(0, i % kWidth, i / kWidth) ? 0 : 1;
        EXPECT_EQ(wrong, 0) << image;
    }
    DCanvas picture;
    PreviewValues values;
    ASSERT_TRUE(ReadPreview({moniker, nullptr}, "", nullptr, picture));
    EXPECT_TRUE(ReadPreviewValues({moniker, nullptr}, "", nullptr, {}, values));
    EXPECT_EQ(Count("GetMap"), 1);
    EXPECT_EQ(Count("GetCapabilities"), 2) << "of each service";
    for (auto const &[style, red, green] : {std::tuple{"green", 0, 200}, {"red%20%26%20dark", 200, 0}}) {
        DString const plots = Address("ogc+") + "&LAYER=plots&STYLE=" + style;
        EXPECT_EQ(SamplesOf(plots, 0, 20, 1), std::vector<int>(20, red));
        EXPECT_EQ(SamplesOf(plots, 1, 20, 1), std::vector<int>(20, green));
    }
    EXPECT_TRUE(Says(WhyNotShown(Address("wms+") + "&LAYER=nope"), "the service has no layer \"nope\""));
    EXPECT_TRUE(Says(WhyNotShown(Address("wms+") + "&LAYER=plots&STYLE=no"), "the service has no style \"no\""));
}

TEST_F(RealMapServer, IsAskedWhatItOffersOnceForBothReadersOfItsConnection) {
    Allow(ConnectionKind::MapService, {m_server.Place()});
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(NamesIn(Address("wms+")).size(), 3U);
    ImageInfo info;
    EXPECT_TRUE(ReadImageInfo({Address("wms+") + "&LAYER=height", nullptr}, "", nullptr, info));
    DCanvas picture;
    for (char const *layer : {"height", "plots&STYLE=green", "plots"})
        EXPECT_TRUE(ReadPreview({Address("wms+") + "&LAYER=" + layer, nullptr}, "", nullptr, picture)) << layer;
    EXPECT_EQ(Count("GetCapabilities"), 1);
    EXPECT_EQ(Count("GetMap"), 3);
    // What one of them has left is read like any answer.
    Allow(ConnectionKind::MapService, {m_server.Place()});
    auto const terms = std::make_shared<ConnectionTerms const>(TermsOf(Address("wms+")));
    DString const request = Address("") + "&SERVICE=WMS&REQUEST=GetCapabilities";
    std::vector<std::uint8_t> note(request.begin(), request.end());
    for (char const c : std::string_view("\0<WMS_Capabilities><Capability/>", 32))
        note.push_back(static_cast<std::uint8_t>(c));
    ASSERT_TRUE(ConnectionNotes::Instance().Keep(terms, request, wire::SealBytes({note})));
    EXPECT_TRUE(ReadImageInfo({Address("wms+") + "&LAYER=height", nullptr}, "", nullptr, info));
    EXPECT_EQ(Count("GetCapabilities"), 2);
}

TEST_F(RealMapServer, FeaturesAreRows) {
    DString const moniker = Address("wfs+") + "&TYPENAME=ms%3Aplots";
    ADIFile table(DFile(moniker), "", tdFormatAccess_Read, nullptr, "");
    ASSERT_EQ(table.GetNumCols(), 4) << table.GetError();
    for (int i = 0; i < kRows; ++i) {
        ASSERT_TRUE(table.SetRow(i)) << i;
        EXPECT_EQ(table.GetText(1) + "|" + table.GetText(2), Format("%d|<%d> & '%c'", i, i, 'a' + i % 26));
        EXPECT_EQ(std::stod(table.GetText(3)), i * 0.25);
    }
    EXPECT_FALSE(table.SetRow(kRows));
    EXPECT_EQ(Count("GetCapabilities"), 1);
    EXPECT_EQ(WhyNotShown(moniker).Why(), NotSupported);
    ADIDriver *driver = nullptr;
    void *handle = nullptr;
    ASSERT_TRUE(ADIDriverMngr::Instance()->OpenTable({moniker, nullptr}, &driver, &handle, nullptr, "", nullptr));
    EXPECT_EQ(driver->GetInfo(), "WFS") << "a driver of the service's readers alone";
    driver->CloseTable(handle);
}

/// A WMS with that in its list of layers, whose maps are asked for at `place`.
std::string Wms(std::string const &layers, std::string const &place = {}) {
    return "<WMS_Capabilities version=\"1.3.0\" xmlns:xlink=\"http://www.w3.org/1999/xlink\"><Capability><Request>"
           "<GetMap><Format>image/png</Format><DCPType><HTTP><Get><OnlineResource xlink:href=\"" +
           place + "\"/></Get></HTTP></DCPType></GetMap></Request>" + layers + "</Capability></WMS_Capabilities>";
}
constexpr char const *kAsked = "/ows?SERVICE=WMS&REQUEST=GetCapabilities";
constexpr char const *kLayer = "<Layer><Name>a</Name><BoundingBox CRS=\"EPSG:4326\" minx=\"50\" miny=\"10\" "
                               "maxx=\"52\" maxy=\"14\"/></Layer>";

TEST_F(MapServices, OddNamesAndAxesReachTheServerAsTheyAre) {
    test::HttpServer server;
    DString const name = R"(a:b?c="}%&<,ä/+)";
    DString layer = kLayer;
    layer.replace(layer.find(">a<") + 1, 1, "a:b?c=\"}%&amp;&lt;,ä/+");
    server.Serve(kAsked, Wms("<Layer><Layer><Title>Group</Title>" + layer + "</Layer></Layer>", server.Url() + "/map"));
    DString const address = "wms+" + server.Url() + "/ows";
    DString const moniker = address + "?LAYER=" + PercentEncoded(name);
    EXPECT_EQ(NamesIn(address), Names{"Group:1025"});
    EXPECT_EQ(NamesIn(address, address + "?GROUP=Group"), Names{name + ":2"});
    EXPECT_TRUE(test::OpenedTree(address).Node(moniker));
    EXPECT_EQ(BDIMoniker(moniker, nullptr).GetDisplayName(), name);
    EXPECT_EQ(WhyNotShown(moniker).Detail(), 404);
    std::string const map = server.Requests().back();
    EXPECT_NE(map.find("ayers=" + PercentEncoded(name) + "&"), std::string::npos) << map;
    EXPECT_NE(map.find("box=50"), std::string::npos) << "latitudes come first: " << map;
}

TEST_F(MapServices, TilesComeByTheirMatrixSets) {
    test::HttpServer server;
    test::WriteImage(m_folder / "t.tif",
                     {.width = 256, .height = 256, .channels = 3, .sample = [](int channel, int, int) {
                          return 10 * (channel + 1);
                      }});
    for (char const *tile : {"/t/0/0/0", "/t/0/0/1"})
        server.Serve(tile, test::ReadFile(m_folder / "t.tif"));
    DString contents = R"(<Layer><Title>Ortho</Title><Identifier>or/tho</Identifier><Style><Identifier>x</Identifier>
</Style><Format>image/tiff</Format><TileMatrixSetLink><TileMatrixSet>a</TileMatrixSet></TileMatrixSetLink>
<TileMatrixSetLink><TileMatrixSet>b</TileMatrixSet></TileMatrixSetLink><ResourceURL format="image/tiff"
resourceType="tile" template=")" +
                       server.Url() + "/t/{TileMatrix}/{TileRow}/{TileCol}\"/></Layer>";
    for (char const *set : {"a", "b"})
        contents += DString("<TileMatrixSet><Identifier>") + set + R"(</Identifier><SupportedCRS>
urn:ogc:def:crs:OGC:1.3:CRS84</SupportedCRS><TileMatrix><Identifier>0</Identifier><ScaleDenominator>
2.795411320143589E8</ScaleDenominator><TopLeftCorner>-180 90</TopLeftCorner><TileWidth>256</TileWidth><TileHeight>
256</TileHeight><MatrixWidth>2</MatrixWidth><MatrixHeight>1</MatrixHeight></TileMatrix></TileMatrixSet>)";
    server.Serve("/w.xml", "<Capabilities version=\"1.0.0\"><Contents>" + contents + "</Contents></Capabilities>");
    DString const address = "wmts+" + server.Url() + "/w.xml";
    EXPECT_EQ(NamesIn(address), Names{"Ortho:3"});
    EXPECT_EQ(NamesIn(address, address + "?LAYER=or%2Ftho"), (Names{"a:2", "b:2"}));
    EXPECT_EQ(SamplesOf(address + "?LAYER=or%2Ftho&MATRIXSET=b", 2, 4, 1), std::vector<int>(4, 30));
    EXPECT_EQ(WhyNotShown(address + "?LAYER=or%2Ftho&MATRIXSET=c").Why(), Missing);
}

TEST_F(MapServices, AnotherHostIsRefusedAndNamedUntilItIsAllowedAndGetsNoLogin) {
    test::HttpServer server;
    test::HttpServer other;
    DString const address = "wms+" + server.Url() + "/ows";
    Names const both{server.Url().substr(7), other.Url().substr(7)};
    server.SendOn(kAsked, other.Url() + kAsked);
    other.Serve(kAsked, Wms(kLayer, other.Url() + "/map"));
    EXPECT_TRUE(Says(WhyNotOpened(address), "the server sends on to " + both[1])) << m_watch.Log();
    Allow(ConnectionKind::MapService, both, {{"user", "ann"}}, kMarker);
    EXPECT_EQ(NamesIn(address), Names{"a:2"});
    // One that names the other only for its maps.
    server.Serve(kAsked, Wms(kLayer, other.Url() + "/map"));
    EXPECT_EQ(WhyNotShown(address + "?LAYER=a").Detail(), 404);
    EXPECT_THAT(server.Logins(), testing::Contains(kMarkerSent));
    EXPECT_THAT(other.Logins(), testing::Not(testing::Contains(kMarkerSent)));
    int const before = other.Connections();
    Allow(ConnectionKind::MapService, {both[0]});
    EXPECT_EQ(WhyNotShown(address + "?LAYER=a").Why(), Refused);
    EXPECT_EQ(other.Connections(), before);
    server.SendOn(kAsked, server.Url() + kAsked);
    EXPECT_TRUE(WhyNotOpened(address).IsSet()) << "endless redirections";
    EXPECT_LT(server.Requests().size(), 40U);
}

TEST_F(MapServices, ATypedLoginStaysBesideTheName) {
    test::HttpServer server;
    server.Demand(DString(kMarkerSent).substr(6));
    server.Serve(kAsked, Wms(kLayer, server.Url() + "/map"));
    DString const place = server.Url().substr(7) + "/ows";
    EXPECT_EQ(WhyNotOpened("wms+http://" + place).Detail(), 401);
    EXPECT_EQ(NamesIn("wms+http://ann:" + DString(kMarker) + "@" + place), Names{"a:2"});
    EXPECT_TRUE(OpenImage({"wms+http://ann@" + place + "?LAYER=a", nullptr}, "", nullptr).IsOpen());
}

TEST(Capabilities, WhatIsNoneIsNamedAndDoesNoHarm) {
    std::string many;
    for (int i = 0; i < 250'000; ++i)
        many += "<Layer><Name>x</Name></Layer>";
    test::Rows<std::string, DError::Cause, char const *> const cases = {
        {"<!DOCTYPE html><html>Menu<title>Log in\n here</title>x", NotSupported, "not capabilities: Log in"},
        {"\n  Error: no map\nmore", NotSupported,
         "the address answers with a web page, not capabilities: Error: no map"},
        {"<ServiceExceptionReport><ServiceException>\nno map\n</ServiceException></ServiceExceptionReport>", Server,
         "the server says: no map"},
        {"<a:ExceptionReport><a:Exception><a:ExceptionText>off</a:ExceptionText></a:Exception></a:ExceptionReport>",
         Server, "the server says: off"},
        {"<WFS_Capabilities><FeatureTypeList/></WFS_Capabilities>", NotSupported, "\"WFS_Capabilities\", not with"},
        {"<?xml version=\"1.0\"?><WMS_Capabilities><Capability>", Damaged, "the capabilities cannot be read"},
        {"<?xml version=\"1.0\"?><!DOCTYPE WMS_Capabilities [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;\">]>"
         "<WMS_Capabilities><Capability>&b;</Capability></WMS_Capabilities>",
         Damaged, "the capabilities cannot be read"},
        {Wms("<Layer>" + many + "</Layer>"), TooLarge, "the service offers more than 200000 layers"}};
    for (auto const &[answer, cause, words] : cases) {
        DError error;
        EXPECT_FALSE(services::ReadCapabilities(services::Service::Wms, answer, error)) << words;
        EXPECT_EQ(error.Why(), cause) << error.Text();
        EXPECT_TRUE(Says(error, words)) << error.Text();
    }
    using services::Service;
    for (auto const &[service, foreign] :
         {std::pair{Service::Wcs, "TileMatrixSet"}, {Service::Wmts, "CoverageSummary"}}) {
        DError error;
        std::string const answer = DString("<Capabilities><Contents><") + foreign + "/></Contents></Capabilities>";
        EXPECT_FALSE(services::ReadCapabilities(service, answer, error)) << "those of another service";
    }
    std::string layers = "<Layer><Name>" + std::string(1'000'000, 'x') +
                         "</Name><BoundingBox CRS=\"EPSG:4326\" minx=\"nan\" miny=\"1\" maxx=\"1\" maxy=\"inf\"/>";
    for (int i = 0; i < 900; ++i)
        layers = layers + "<Layer>";
    for (int i = 0; i <= 900; ++i)
        layers += "</Layer>";
    DError error;
    auto const odd = services::ReadCapabilities(services::Service::Wms, Wms(layers), error);
    ASSERT_TRUE(odd) << error.Text();
    EXPECT_EQ(odd->offers.front().name, "");
    EXPECT_TRUE(odd->offers.front().boxes.empty());
    EXPECT_LT(odd->offers.size(), 40U) << "deeper than anybody looks";
}

TEST(Capabilities, GdalGetsOneTypeOfFeaturesWhereItCanBeCutOut) {
    auto const address = services::ParseServiceAddress("wfs+https://maps.lab/ows?TYPENAME=a%26b");
    ASSERT_TRUE(address);
    DString const head = "<w:WFS_Capabilities xmlns:w=\"w\"><w:FeatureTypeList>";
    DString const tail = "</w:FeatureTypeList><x/></w:WFS_Capabilities>";
    DString const wanted = "<w:FeatureType a='1'><w:Name>a&amp;b</w:Name></w:FeatureType>";
    DString const others = "\n<w:FeatureType>\n<w:Name>a</w:Name></w:FeatureType>";
    DString const begin = "<OGRWFSDataSource><URL>https://maps.lab/ows</URL>";
    DString const end = "</OGRWFSDataSource>";
    EXPECT_EQ(services::DescribeFeatures(*address, head + others + wanted + others + tail),
              begin + head + "\n" + wanted + tail + end);
    for (DString const &odd : {head + "<!-- <w:FeatureType> -->" + wanted + tail, head + others + tail})
        EXPECT_EQ(services::DescribeFeatures(*address, odd), begin + odd + end);
}

TEST(ServiceAddresses, WhatWasAskedWithTlsIsNotAskedWithout) {
    using services::PlaceToAsk;
    EXPECT_EQ(PlaceToAsk("https://maps.lab:8443/ows?map=x", "http://MAPS.lab/cgi?m&"), "https://maps.lab:8443/cgi?m&");
    EXPECT_EQ(PlaceToAsk("https://maps.lab/ows", "http://cdn.lab:81/a"), "http://cdn.lab:81/a");
    EXPECT_EQ(PlaceToAsk("http://maps.lab/ows", "https://ann:x@maps.lab/a"), "https://maps.lab/a");
    EXPECT_EQ(PlaceToAsk("http://maps.lab/ows", "file:///etc/passwd"), "http://maps.lab/ows");
    auto const address =
        services::ParseServiceAddress("OGC+https://ann:pw@[::1]:8443/a?SERVICE=wms&b&LAYER=%41%2F&VERSION=1");
    ASSERT_TRUE(address);
    EXPECT_EQ(address->connection, "OGC+https://ann@[::1]:8443/a?b&VERSION=1");
    EXPECT_EQ(address->url + " " + address->layer + " " + address->version, "https://[::1]:8443/a?b A/ 1");
    EXPECT_FALSE(services::ParseServiceAddress("wms+ftp://maps.lab/a"));
}

using WebFolders = MapServices;

TEST_F(WebFolders, ATlsServerOfAPrivateAuthorityWithALogin) {
    test::WebServer server;
    ASSERT_TRUE(server.StartTls());
    test::WriteImage(server.Folder() / "files/x 1%2.tif", {.width = 30});
    server.Folder().Write("files/v1.2 data/b.txt");
    Names const inside{"v1.2 data:1025", "x 1%2.tif:2"};
    DString const url = "https://" + server.Place();
    Allow(ConnectionKind::WebFolder, {server.Place()});
    EXPECT_EQ(WhyNotOpened(url + "/open/").Why(), Untrusted);
    EXPECT_TRUE(Says(WhyNotOpened(url + "/open/"), "the certificate of " + server.Place() + " is not trusted"));
    DString const ca = server.Folder() / "ca.pem";
    Allow(ConnectionKind::WebFolder, {server.Place()}, {{"ca", ca}});
    EXPECT_EQ(NamesIn(url + "/open/"), inside);
    for (auto const &[folder, status, words] : {std::tuple{"/private/", 401, "wants a login"},
                                                {"/closed/", 403, "refuses access"},
                                                {"/none/", 404, "has nothing there"}}) {
        DError const error = WhyNotOpened(url + folder);
        EXPECT_EQ(error.Detail(), status) << error.Text();
        EXPECT_TRUE(Says(error, words)) << error.Text();
    }
    Allow(ConnectionKind::WebFolder, {server.Place()}, {{"ca", ca}, {"user", "ann"}}, "wrong");
    EXPECT_TRUE(Says(WhyNotOpened(url + "/private/"), "does not know the user or the password"));
    Allow(ConnectionKind::WebFolder, {server.Place()}, {{"ca", ca}, {"user", "ann"}}, kMarker);
    EXPECT_EQ(NamesIn(url + "/private/"), inside);
    ImageInfo info;
    EXPECT_TRUE(ReadImageInfo({url + "/private/x%201%252.tif", nullptr}, "", nullptr, info));
    EXPECT_EQ(info.width, 30);
}

TEST_F(WebFolders, ACertificateThatWasAcceptedIsTrustedAndNoOther) {
    using Fault = ServerCertificate::Fault;
    test::WebServer server;
    ASSERT_TRUE(server.StartTls());
    test::WriteImage(server.Folder() / "files/x.tif", {.width = 30});
    DString const url = "https://" + server.Place();
    DString const byName = "https://localhost" + server.Place().substr(server.Place().find(':'));
    auto const allow = [&](DString const &place, DString const &accepted = {}) {
        std::map<DString, DString> options{{"server", place}};
        if (!accepted.empty())
            options["fingerprint"] = accepted;
        Allow(ConnectionKind::WebFolder, {place}, options);
    };
    allow(server.Place());
    std::optional<ServerCertificate> const shown = ReadServerCertificate(url);
    ASSERT_TRUE(shown);
    EXPECT_EQ(shown->issuer, "Lab CA");
    EXPECT_TRUE(shown->fault == Fault::None);
    EXPECT_EQ(shown->fingerprint, FingerprintIn(server.Fingerprint()));
    allow(server.Place(), shown->fingerprint);
    EXPECT_EQ(NamesIn(url + "/open/"), Names{"x.tif:2"});
    ImageInfo info;
    EXPECT_TRUE(ReadImageInfo({url + "/open/x.tif", nullptr}, "", nullptr, info)) << "by another way to its server";
    server.Folder().Write("files/maps",
                          "<WMS_Capabilities version=\"1.3.0\"><Capability><Layer><Layer><Name>a</Name></Layer>"
                          "</Layer></Capability></WMS_Capabilities>");
    DString const maps = "wms+" + url + "/open/maps";
    Allow(ConnectionKind::MapService, {server.Place()}, {{"server", server.Place()}});
    EXPECT_EQ(WhyNotOpened(maps).Why(), Untrusted);
    Allow(ConnectionKind::MapService, {server.Place()},
          {{"server", server.Place()}, {"fingerprint", shown->fingerprint}});
    EXPECT_EQ(NamesIn(maps), Names{"a:2"});
    allow(byName.substr(8), shown->fingerprint);
    EXPECT_EQ(WhyNotOpened(byName + "/open/").Why(), Untrusted) << "it is not the certificate of that name";
    std::optional<ServerCertificate> const other = ReadServerCertificate(byName);
    EXPECT_TRUE(other && other->fault == Fault::OtherName);

    ASSERT_TRUE(server.RenewCertificate());
    allow(server.Place(), shown->fingerprint);
    DError const changed = WhyNotOpened(url + "/open/");
    EXPECT_EQ(changed.Why(), Untrusted);
    EXPECT_TRUE(Says(changed, "is not the one that was accepted")) << changed.Text();
    allow(server.Place(), server.Fingerprint());
    EXPECT_EQ(NamesIn(url + "/open/"), Names{"x.tif:2"});
}

TEST_F(WebFolders, WhereAnAcceptedCertificateLeadsOnToTheAuthoritiesHold) {
    test::WebServer server;
    test::WebServer other;
    ASSERT_TRUE(server.StartTls() && other.StartTls());
    test::HttpServer plain;
    other.Folder().Write("files/sent", Wms(kLayer));
    plain.Serve("/open/sent", Wms(kLayer), "text/xml");
    DString const tls = "https://" + other.Place();
    for (auto const &[url, ca, isTrusted] : test::Rows<DString, DString, bool>{{tls, other.Folder() / "ca.pem", true},
                                                                               {tls, server.Folder() / "ca.pem", false},
                                                                               {tls, "", false},
                                                                               {plain.Url(), "", true}}) {
        std::optional<HostAndPort> const place = PlaceIn(url.substr(url.find("//") + 2), 0);
        server.Folder().Write("files/maps", Wms(kLayer, url + "/open/map"));
        Allow(ConnectionKind::MapService, {server.Place(), TextOf(*place)},
              {{"server", server.Place()},
               {"fingerprint", server.Fingerprint()},
               {"others", "yes"},
               {ca.empty() ? "" : "ca", ca}});
        DString const own = "wms+https://" + server.Place();
        DString const on = own + Format("/on/%s/%d/open/sent", url.substr(0, url.find(':')).c_str(), place->port);
        EXPECT_EQ(NamesIn(on), Names{isTrusted ? "a:2" : "nothing opens"}) << url << ca;
        DError const error = WhyNotShown(own + "/open/maps?LAYER=a");
        EXPECT_EQ(error.Why(), isTrusted ? Server : Untrusted) << error.Text(); // that one has no map
        for (DError const &told : {error, isTrusted ? error : WhyNotOpened(on)})
            EXPECT_EQ(HostUntrustedElsewhere(told.Text()), isTrusted ? std::nullopt : place) << told.Text();
    }
}

TEST_F(WebFolders, AStopLeavesTheReaderReadyForTheNextQuestion) {
    test::HttpServer server;
    test::TempFolder const folder;
    test::WriteImage(folder / "a.tif");
    server.Serve("/a.tif", test::ReadFile(folder / "a.tif"));
    DString const image = server.Url() + "/a.tif";
    Allow(ConnectionKind::WebFolder, {server.Url().substr(7)});
    ImageInfo info;
    EXPECT_FALSE(ReadImageInfo({image + "x", nullptr}, "", nullptr, info)); // the reader is up
    int const started = CountReaders().started;
    for (bool const isStopped : {true, false}) {
        server.Hang(isStopped);
        std::size_t const before = server.Requests().size();
        RequestScope const scope(RequestKind::List, [&] { return isStopped && server.Requests().size() > before; });
        EXPECT_EQ(ReadImageInfo({image, nullptr}, "", nullptr, info), !isStopped);
    }
    EXPECT_EQ(CountReaders().started, started);
}

TEST_F(WebFolders, AWebDavServerTellsSizesAndTimes) {
    test::WebServer server;
    ASSERT_TRUE(server.StartDav());
    server.Folder().Folder("files/v1.2");
    test::WriteImage(server.Folder() / "files/p;q.tif", {.width = 30});
    test::OpenedTree const tree("http://" + server.Place() + "/");
    ASSERT_TRUE(tree);
    std::vector<BDINode> const found = tree.Children(*tree.root);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_GT(found[0].modified, 0);
    EXPECT_EQ(found[0].size, static_cast<std::int64_t>(test::ReadFile(server.Folder() / "files/p;q.tif").size()));
    EXPECT_EQ(found[1].type, kDirectoryNode);
    ImageInfo info;
    EXPECT_TRUE(ReadImageInfo({found[0].path, nullptr}, "", nullptr, info));
}

} // namespace
} // namespace zelvar
