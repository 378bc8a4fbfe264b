// How long a server that takes a question and never answers keeps its connection once the user has said stop.
#include "Drivers.h"
#include "Harness.h"
#include "support/HttpServer.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/RequestScope.h"

#include <algorithm>
#include <atomic>
#include <thread>

#include <poll.h>

namespace zelvar::bench {
namespace {

/// Looks each millisecond: who turns round without a pause takes the processor from those that are measured.
template <class Condition>
void WaitFor(Condition const &condition) {
    while (!condition())
        poll(nullptr, 0, 1);
}

/// Lists a folder of the server until it has been asked, and then no longer; ms from the stop to the socket's end.
double StopMs(test::HttpServer &server) {
    std::size_t const before = server.Requests().size();
    std::atomic<bool> isStopped{false};
    double time = 0;
    {
        std::jthread const user([&] {
            WaitFor([&] { return server.Requests().size() > before; });
            time = Ms([&] {
                isStopped = true;
                WaitFor([&] { return server.OpenConnections() == 0; });
            });
        });
        RequestScope const scope(
            RequestKind::List, [&] { return isStopped.load(); }, std::chrono::minutes(1));
        BDIDrvr *driver = BDIDrvrMngr::Instance()->GetDrvr("WebDirectory");
        BDINode *root = nullptr;
        if (driver == nullptr || driver->OpenRepository((server.Url() + "/d/").c_str(), &root, nullptr) != nullptr)
            Fail("a server that does not answer is listed");
    }
    return time;
}

Register const stop("reader.stop", [] {
    Use(Way::Reader);
    test::HttpServer server;
    server.Hang();
    std::vector<double> times;
    constexpr int rounds = 21;
    times.reserve(rounds);
    for (int i = 0; i < rounds; ++i)
        times.push_back(StopMs(server));
    Figure("reader.stop", Median(times), "ms", {.limit = 100, .note = "from the stop to the end of the socket"});
    Figure("reader.stop.longest", *std::max_element(times.begin(), times.end()), "ms", "of 21");
});

} // namespace
} // namespace zelvar::bench
