// A map service on the loopback interface: its thousand layers listed through a reader, and the preview of one of them,
// each beside a program that asks for the same and does nothing with it.
#include "Processes.h"
#include "reader/Drivers.h"
#include "support/WebServers.h"
#include "zelvar/data/ImageReader.h"
#include "zelvar/data/RequestScope.h"

namespace zelvar::bench {
namespace {

constexpr int kLayers = 1000;
constexpr int kRounds = 5;  // the server takes a second for its list
constexpr int kSide = 1024; // pixels

/// MapServer with so many layers of one picture.
void Begin(test::WebServer &server) {
    std::string bytes = "P5\n1024 1024\n255\n";
    for (int i = 0; i < kSide * kSide; ++i)
        bytes += static_cast<char>(i * 7 + i / kSide * 13);
    server.Folder().Write("data/h.pgm", bytes);
    server.Folder().Write("data/h.pgw", "0.0025\n0\n0\n-0.0025\n10.00125\n51.27875\n");
    if (!server.StartMaps())
        Fail("no map server");
    std::string map = test::ReadFile(server.Folder() / "field.map");
    map.erase(map.find("LAYER "));
    for (int i = 0; i < kLayers; ++i)
        map += "LAYER NAME \"layer" + std::to_string(i) + "\" TYPE RASTER STATUS ON DATA \"" +
               (server.Folder() / "data/h.pgm") +
               "\" PROJECTION \"init=epsg:4326\" END EXTENT 10 50 12.56 51.28 METADATA \"ows_title\" \"Layer " +
               std::to_string(i) + "\" \"ows_extent\" \"10 50 12.56 51.28\" END END\n";
    server.Folder().Write("field.map", map + "END");
}

void List(DString const &address) {
    RequestScope const scope(RequestKind::List, {}, std::chrono::minutes(1));
    BDIDrvr *const driver = BDIDrvrMngr::Instance()->GetDrvr("OGC");
    BDINode *root = nullptr;
    void *const tree = driver == nullptr ? nullptr : driver->OpenRepository(address.c_str(), &root, nullptr);
    void *const walk = tree == nullptr ? nullptr : driver->FindFirstChildNode(tree, root, 0xFF);
    int count = 0;
    while (walk != nullptr && driver->FindNextChildNode(walk) != nullptr)
        ++count;
    if (count < kLayers)
        Fail("not all layers came");
    driver->FindClose(walk);
    driver->CloseNode(root);
    driver->CloseRepository(tree);
}

Register const kMaps("maps", [] {
    test::WebServer server;
    Begin(server);
    Use(Way::Reader);
    DString const asked = "http://" + server.Place() + "/maps?map=field";
    auto const curl = [&](DString const &request) {
        return Program{.name = "curl", .words = {"curl", "-sf", "-o", "/dev/null", asked + request}};
    };
    DString const address = "wms+" + asked;
    List(address); // the reader is up
    std::vector<double> listed;
    auto const gets = TimesBeside(kRounds,
                                  [&] { // an address that is new each time: what has just been asked is not asked again
                                      DString const fresh = address + "&round=" + std::to_string(listed.size());
                                      listed.push_back(Ms([&] { List(fresh); }));
                                  },
                                  {curl("&SERVICE=WMS&REQUEST=GetCapabilities")});
    Figure("maps.list", Median(listed), "ms", {.alternatives = gets, .note = "1,000 layers of a WMS"});
    std::vector<double> shown;
    int layer = 0;
    auto const maps = TimesBeside(
        kRounds,
        [&] {
            DString const moniker = address + "&LAYER=layer" + std::to_string(layer++); // none twice: maps are kept
            DCanvas picture;
            shown.push_back(Ms([&] {
                if (!ReadPreview({moniker, nullptr}, "", nullptr, picture))
                    Fail("no picture");
            }));
        },
        {curl("&SERVICE=WMS&VERSION=1.3.0&REQUEST=GetMap&LAYERS=layer999&STYLES=&CRS=EPSG:4326&BBOX=50,10,51.28,12.56&"
              "WIDTH=1024&HEIGHT=512&FORMAT=image/png")});
    Figure("maps.preview", Median(shown), "ms", {.alternatives = maps, .note = "a layer of it"});
    EndReaders();
});

} // namespace
} // namespace zelvar::bench
