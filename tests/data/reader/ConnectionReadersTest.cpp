#include "support/HostileFiles.h"
#include "support/HttpServer.h"
#include "support/LoopbackPort.h"
#include "zelvar/data/Connection.h"
#include "zelvar/data/RequestScope.h"

#include <thread>

#include <linux/landlock.h>
#include <sys/syscall.h>

namespace zelvar {
namespace {

using std::chrono::milliseconds;

bool KernelBarsReading() {
    return syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION) >= 1;
}

/// Waits for it, far longer than it can take.
bool Eventually(std::function<bool()> const &condition) {
    auto const begin = test::Clock::now();
    while (!condition() && test::Since(begin) < std::chrono::seconds(20))
        std::this_thread::yield();
    return condition();
}

struct ConnectionReaders : test::HostileFiles {
    ~ConnectionReaders() override { SetConnectionFinder(nullptr); }
    /// The address at that place whose driver does these things when it is opened.
    static DString At(DString const &place, std::vector<DString> const &actions) {
        DString address = "http://" + place + "/";
        for (DString const &action : actions)
            address += "open " + action + ";";
        return address + "/.hostile";
    }
    /// What the driver tells of it; why it was not opened otherwise.
    static DString Told(DString const &address) {
        Image const image(address);
        return image ? image.driver->GetAttrString("RDI_Drvr_Info", image.handle, 0) : image.error.Text();
    }
    [[nodiscard]] DString Own() const { return "127.0.0.1:" + std::to_string(m_server.Port()); }
    test::HttpServer m_server;
};

TEST_F(ConnectionReaders, OneReachesTheHostsOfItsTermsAloneAndThroughItsApplication) {
    test::HttpServer const other;
    DString const own = std::to_string(m_server.Port());
    DString const secret = folder.Write("secret", "x");
    test::Rows<DString, DString> const rows = {
        {"reach 127.0.0.1 " + own, "done"},
        {"connect " + own, "done"},
        {"reach 127.0.0.1 " + std::to_string(other.Port()), "unknown"},
        {"connect " + std::to_string(other.Port()), "errno 13"},
        {"reach localhost " + own, "unknown"},
        {"raw " + own, "errno 13"},
        {"fastopen " + own, "errno 13"},
        {"datagram", "errno 13"},
        {"unix", "errno 13"},
        {"sctp", "errno 13"},
        {"pair", "errno 13"},
        {"listen", "errno 13"},
        {"see " + secret, KernelBarsReading() ? "errno 13" : "done"},
        {"thread", "done"},
    };
    for (auto const &[action, outcome] : rows)
        EXPECT_EQ(Told(At(Own(), {action})), action.substr(0, action.find(' ')) + ": " + outcome);
    EXPECT_EQ(other.Connections(), 0);
    EXPECT_TRUE(Eventually([&] { return m_server.Connections() == 2; }));
    // By a name, when the terms have it.
    SetConnectionFinder([&](std::string_view) {
        return ConnectionTerms{.id = "named", .hosts = {{"LocalHost", static_cast<std::uint16_t>(m_server.Port())}}};
    });
    EXPECT_EQ(Told(At("named", {"connect " + own})), "connect: done"); // whose numbers libraries do not ask for
    EXPECT_EQ(Told(At("named", {"reach localhost " + own})), "reach: done");
    EXPECT_EQ(Told(At("named", {"connect " + std::to_string(other.Port())})), "connect: errno 13");
}

TEST_F(ConnectionReaders, WhatKeepsAReaderFromItsServerIsTheCause) {
    using enum DError::Cause;
    test::SilentPort const silent;
    SetConnectionFinder([](std::string_view address) {
        ConnectionTerms terms{.id = DString(address), .hosts = {{"127.0.0.1", 0}, {"no..server", 0}}};
        terms.connectTime = milliseconds(50);
        return address.find("elsewhere") == std::string_view::npos ? std::optional(terms) : std::nullopt;
    });
    test::Rows<std::vector<DString>, DString, DError::Cause> const rows = {
        {{"reach 127.0.0.1 1", "fail"}, "127.0.0.1:1 refuses connections", NoAnswer},
        {{"reach no..server 80", "fail"}, "no server named no..server is known", NoAnswer},
        {{"reach 127.0.0.1 " + silent.Port(), "fail"}, silent.Place() + " does not answer (0.05 s)", NoAnswer},
        {{"reach other.lab 81", "fail"},
         "the server sends on to other.lab:81, which is no host of its connection",
         Refused},
        {{"reach ::1 81", "fail"}, "the server sends on to [::1]:81, which is no host of its connection", Refused},
        {{"reach 127.0.0.1 1", "reach 127.0.0.1 " + std::to_string(m_server.Port()), "fail"},
         "it does not open",
         Unknown},
    };
    for (auto const &[actions, text, cause] : rows) {
        Image const image(At("127.0.0.1", actions));
        EXPECT_FALSE(image);
        EXPECT_THAT(image.error.Text(), testing::HasSubstr(text));
        EXPECT_EQ(image.error.Why(), cause) << text;
    }
}

TEST_F(ConnectionReaders, AStopClosesTheSocketOfASilentServerAtOnce) {
    test::SilentPort const silent;
    SetConnectionFinder([](std::string_view) {
        return ConnectionTerms{.id = "slow", .hosts = {{"127.0.0.1", 0}}, .connectTime = std::chrono::minutes(5)};
    });
    Told(At("slow", {}));              // the reader is up
    constexpr milliseconds soon{2000}; // a machine under load included; the patience would be minutes
    for (DString const &port : {DString(silent.Port()), DString(std::to_string(m_server.Port()))}) {
        StopSignal stop = false;
        std::atomic<test::Clock::time_point> stopped{};
        std::jthread const user([&] {
            EXPECT_TRUE(port == silent.Port() || Eventually([&] { return m_server.OpenConnections() == 1; }));
            stopped = test::Clock::now();
            stop = true;
        });
        Image const image(At("slow", {"reach 127.0.0.1 " + port, "sleep 300"}), {}, &stop);
        EXPECT_FALSE(image);
        EXPECT_TRUE(Eventually([&] { return m_server.OpenConnections() == 0; }));
        EXPECT_LT(test::Since(stopped), soon);
    }
}

TEST_F(ConnectionReaders, EachConnectionHasItsOwnAndThereAreNotTooMany) {
    ReaderSettings settings;
    settings.connectionReaders = 2;
    Use(settings);
    auto const open = [](char const *place) { return Told(At(place, {"thread"})); };
    open("127.0.0.1:1");
    int const withOne = CountReaders().alive; // and those for files
    int const started = CountReaders().started;
    for (char const *place : {"127.0.0.1:1", "127.0.0.1:1", "127.0.0.1:2", "127.0.0.1:1", "127.0.0.1:2"})
        EXPECT_EQ(open(place), "thread: done");
    EXPECT_EQ(CountReaders().alive, withOne + 1);
    EXPECT_EQ(CountReaders().started, started + 1);
    open("127.0.0.1:1"); // the other has been idle longer
    open("127.0.0.1:3");
    open("127.0.0.1:1");
    EXPECT_EQ(CountReaders().alive, withOne + 1);
    EXPECT_EQ(CountReaders().started, started + 2);
    EXPECT_EQ(CountReaders().crashed, 0);
    // Under other terms it is another.
    SetConnectionFinder([](std::string_view) {
        return ConnectionTerms{.id = "http://127.0.0.1:1", .secrets = {{"password", "new"}}};
    });
    EXPECT_EQ(Told(At("127.0.0.1:1", {"told password"})), "told: new");
    EXPECT_EQ(CountReaders().started, started + 3);
}

TEST_F(ConnectionReaders, OneThatIsDisconnectedEndsWhateverItDoes) {
    test::HttpServer other;
    DString const port = std::to_string(m_server.Port());
    DString const otherPlace = "127.0.0.1:" + std::to_string(other.Port());
    EXPECT_EQ(Told(At(Own(), {"reach 127.0.0.1 " + port})), "reach: done");
    EXPECT_EQ(Told(At(otherPlace, {"reach 127.0.0.1 " + std::to_string(other.Port())})), "reach: done");
    ASSERT_TRUE(Eventually([&] { return m_server.OpenConnections() == 1 && other.OpenConnections() == 1; }));
    EndReadersOf("http://" + Own());
    EXPECT_TRUE(Eventually([&] { return m_server.OpenConnections() == 0; }));
    EXPECT_EQ(other.OpenConnections(), 1);
    std::jthread const user([&] {
        EXPECT_TRUE(Eventually([&] { return m_server.OpenConnections() == 1; }));
        EndReadersOf("http://" + Own());
    });
    Image const image(At(Own(), {"reach 127.0.0.1 " + port, "sleep 300"}));
    EXPECT_EQ(image.error.Text().substr(image.error.Text().rfind(' ') + 1), "stopped");
    EXPECT_EQ(Told(At(Own(), {"thread"})), "thread: done") << "and another comes";
    EXPECT_EQ(CountReaders().crashed, 0);
}

TEST_F(ConnectionReaders, AnIdleOneEnds) {
    ReaderSettings settings;
    settings.connectionIdle = milliseconds(100);
    Use(settings);
    EXPECT_FALSE(Image("/none.hostile"));
    int const ofFiles = CountReaders().alive;
    EXPECT_EQ(Told(At(Own(), {"reach 127.0.0.1 " + std::to_string(m_server.Port())})), "reach: done");
    EXPECT_TRUE(Eventually([&] { return m_server.OpenConnections() == 0; })) << "it has ended by itself";
    EXPECT_TRUE(Eventually([&] { return CountReaders().alive == ofFiles; }));
    EXPECT_EQ(Told(At(Own(), {"thread"})), "thread: done") << "and another comes";
    EXPECT_EQ(CountReaders().crashed, 0);
}

TEST_F(ConnectionReaders, SecretsGoToTheReaderAndIntoNoLog) {
    constexpr char kMarker[] = "Marker-Of-A-Secret";
    std::string log;
    std::mutex mutex;
    auto const former = Report::SetTraceHandler([&](int, DString const &line) {
        std::lock_guard const lock(mutex);
        log += line;
    });
    SetConnectionFinder([&](std::string_view) {
        return ConnectionTerms{.id = "http://ann@maps.lab:80", .secrets = {{"password", kMarker}}};
    });
    // "Told" itself must not be looked at: it says what it was told.
    Image const image(At("maps.lab", {"told password", "reach 127.0.0.1 1"}));
    ASSERT_TRUE(image) << image.error.Text();
    EXPECT_EQ(image.driver->GetAttrString("RDI_Drvr_Info", image.handle, 0),
              DString("told: ") + kMarker + "; reach: unknown");
    Report::SetTraceHandler(former);
    EXPECT_EQ(log.find(kMarker), std::string::npos) << log;
    EXPECT_THAT(log, testing::HasSubstr("starts for http://ann@maps.lab:80"));
}

TEST_F(ConnectionReaders, AProxyLeadsToTheHostsOfTheTermsAlone) {
    m_server.Serve("maps.lab:80", "");
    m_server.Serve("desk.lab:80", "");
    m_server.Refuse("maps.lab:81", 407);
    // Of the desktop's settings, which count where the environment says nothing.
    folder.Write("glib-2.0/settings/keyfile", "[system/proxy]\nmode='manual'\nignore-hosts=['own.lab']\n"
                                              "[system/proxy/http]\nhost='127.0.0.1'\nport=" +
                                                  std::to_string(m_server.Port()) + "\n");
    {
        test::Environment const session{{{"XDG_CONFIG_HOME", folder.Path()},
                                         {"GSETTINGS_BACKEND", "keyfile"},
                                         {"XDG_CURRENT_DESKTOP", "GNOME"},
                                         {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/dev/null"}}};
        EXPECT_EQ(Told(At("desk.lab", {"reach desk.lab 80", "reach other.lab 80"})), "reach: done; reach: unknown");
        EXPECT_EQ(Told(At("own.lab", {"reach own.lab 80"})), "reach: unknown");
    }
    test::Environment const proxy{{{"http_proxy", m_server.Url()}}};
    EXPECT_EQ(Told(At("maps.lab", {"reach maps.lab 80", "reach other.lab 80"})), "reach: done; reach: unknown");
    EXPECT_THAT(Told(At("maps.lab:81", {"reach maps.lab 81", "fail"})),
                testing::HasSubstr("the proxy " + Own() + " does not lead to maps.lab:81 (407)"));
    EXPECT_THAT(m_server.Requests(),
                testing::ElementsAre("CONNECT desk.lab:80", "CONNECT maps.lab:80", "CONNECT maps.lab:81"));
}

} // namespace
} // namespace zelvar
