#include "support/LoopbackPort.h"
#include "support/LoopbackSamba.h"
#include "support/Test.h"
#include "zelvar/platform/os/DesktopNetwork.h"
#include "zelvar/platform/os/LinuxShellNamespace.h"
#include "zelvar/platform/os/SmbAddress.h"
#include "zelvar/platform/os/SmbClient.h"
#include "zelvar/platform/os/TcpProbe.h"

#include <filesystem>
#include <thread>

namespace zelvar::platform {
namespace {

using testing::Pair;

TEST(SmbAddress, IsTakenApartAndPutTogether) {
    SmbAddress const address = ParseSmbAddress("SMB://me@host:1445//share/a%20b%25/%C3%A9.tif/").value();
    EXPECT_EQ(address.authority, "me@host:1445");
    EXPECT_THAT(address.parts, ElementsAre("share", "a b%", "\xC3\xA9.tif"));
    EXPECT_EQ(EscapedSmbPart("a b%?#\n\x1F\x7E\x7F\xC3\xA9"), "a%20b%25%3F%23%0A%1F~%7F\xC3\xA9");
}

TEST(SmbAddress, RefusesTheWholeNetworkAndWhatLeavesAShare) {
    for (char const *text :
         {"smb://", "smb:///", "smb:///share", "smb://host/a/../b", "smb://host/%2e%2E/b", "smb://host/%",
          "smb://host/%4", "smb://host/%zz", "smb://host/%00", "smb://host/a%2Fb", "http://host/", "smb:/host", ""})
        EXPECT_FALSE(ParseSmbAddress(text).has_value()) << text;
}

TEST(SmbFolder, AServerThatRefusesIsToldAtOnceAndOneThatSaysNothingIsAskedOnce) {
    test::LoopbackPort const listener;
    LinuxShellNamespace const shell;
    for (auto const &[authority, why] : {std::pair(test::LoopbackPort().Place(), std::errc::connection_refused),
                                         {listener.Place(), std::errc::timed_out}}) {
        DString const address = "smb://" + authority;
        auto const start = std::chrono::steady_clock::now();
        EXPECT_EQ(shell.Parse(address + "/share").Kind(), ShellKind::NetShare) << "taken at its word";
        EXPECT_TRUE(shell.Parse(address + "/share/folder").IsNull());
        EXPECT_FALSE(shell.DoesServerAnswer(address));
        for (char const *share : {"", "/a", "/b/c"})
            EXPECT_EQ(shell.Enumerate(shell.ParseUnseen(address + share), ShellNamespace::Purpose::Browse,
                                      [](ShellChild &&) { return true; }),
                      why);
        int const longest = why == std::errc::timed_out ? 2 * SmbClient::kAnswerMs : 2000;
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(longest));
    }
    EXPECT_TRUE(TryToConnect("no.such.host.invalid", 100));
}

TEST(TcpProbe, FindsAListenerHoweverItsPlaceIsWritten) {
    std::optional<test::LoopbackPort> listener(std::in_place);
    DString const place = listener->Place();
    constexpr int kPatience = 2000; // ms
    for (DString const &authority :
         {place, "me@" + place, "me:p@ss:word@" + place, "[::ffff:127.0.0.1]:" + listener->Port()})
        EXPECT_EQ(TryToConnect(authority, kPatience).value(), 0) << authority;
    for (char const *authority : {"", "@", "127.0.0.1:", "127.0.0.1:port"})
        EXPECT_TRUE(TryToConnect(authority, kPatience)) << authority;
    listener.reset();
    EXPECT_EQ(TryToConnect(place, kPatience), std::errc::connection_refused);
}

TEST(DesktopNetwork, ToldNewsWakeAListenerAndSoDoesAStop) {
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/no/such/bus", 1); // a folder of the machine needs none
    test::TempFolder const place;
    auto const listener = ListenToDesktopNetwork(("file://" + place.Path()).c_str());
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    ASSERT_NE(listener, nullptr);
    place.Write("server");
    std::stop_source stop;
    EXPECT_TRUE(listener->Wait(stop.get_token()));
    std::jthread const stopper([&] { stop.request_stop(); });
    while (listener->Wait(stop.get_token())) // the file may be told of more than once
        ;
}

std::map<DString, std::int64_t> SizesIn(LinuxShellNamespace const &shell, DString const &address) {
    std::map<DString, std::int64_t> sizes;
    EXPECT_FALSE(shell.Enumerate(shell.Parse(address), ShellNamespace::Purpose::Browse, [&](ShellChild &&child) {
        sizes[child.name] = child.file.size;
        return true;
    })) << address;
    return sizes;
}

TEST(SmbFolder, SharesAndFilesOfARealServerAreListed) {
    test::LoopbackSamba samba;
    if (!samba.Start())
        GTEST_SKIP() << "no file server can be started here";
    samba.Folder().Write("share/folder/a b%\xC3\xA9.tif", "123");
    samba.Folder().Write("share/folder/.hidden", "1");
    samba.Folder().Folder("share/folder/inner");
    std::filesystem::create_symlink("../../folder", samba.Folder() / "share/folder/inner/loop");
    ASSERT_TRUE(samba.IsReady());

    LinuxShellNamespace const shell;
    EXPECT_THAT(SizesIn(shell, "smb://127.0.0.1"), ElementsAre(Pair("pub", -1)));
    EXPECT_THAT(SizesIn(shell, "smb://127.0.0.1/pub"), ElementsAre(Pair("folder", -1)));
    EXPECT_THAT(SizesIn(shell, "smb://127.0.0.1/pub/folder"),
                ElementsAre(Pair("a b%\xC3\xA9.tif", 3), Pair("inner", -1)));

    ShellId const file = shell.Parse("smb://127.0.0.1/pub/folder/a%20b%25\xC3\xA9.tif");
    EXPECT_EQ(file.Kind(), ShellKind::File);
    EXPECT_EQ(shell.Path(file), "smb://127.0.0.1/pub/folder/a%20b%25\xC3\xA9.tif");
    auto const identity = shell.IdentityOf(shell.Parse("smb://127.0.0.1/pub/folder"));
    ASSERT_TRUE(identity.has_value());
    EXPECT_TRUE(identity->mayBeLink);
    EXPECT_EQ(shell.IdentityOf(shell.Parse("smb://127.0.0.1/pub/folder/inner/loop")), identity);
    EXPECT_NE(shell.IdentityOf(shell.Parse("smb://127.0.0.1/pub/folder/inner")), identity);
    EXPECT_EQ(shell.Times(file)->size, 3);
    EXPECT_GT(shell.Times(file)->modified, 0);
    EXPECT_TRUE(shell.Parse("smb://127.0.0.1/pub/nothing").IsNull());
    EXPECT_TRUE(shell.Enumerate(shell.Parse("smb://127.0.0.1/nothing"), ShellNamespace::Purpose::Browse,
                                [](ShellChild &&) { return true; }));
    // A connection to the one server does not answer for a port on which none listens.
    EXPECT_TRUE(shell.Enumerate(shell.Parse("smb://" + test::LoopbackPort().Place() + "/pub"),
                                ShellNamespace::Purpose::Browse, [](ShellChild &&) { return true; }));
}

} // namespace
} // namespace zelvar::platform
