#include "zelvar/platform/os/ScriptedShellNamespace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace zelvar::platform {
namespace {

using testing::ElementsAre;

std::vector<DString> Names(ShellNamespace const &shell, ShellId const &folder,
                           ShellNamespace::Purpose purpose = ShellNamespace::Purpose::Browse) {
    std::vector<DString> names;
    shell.Enumerate(folder, purpose, [&](ShellChild &&child) {
        names.push_back(child.name);
        return true;
    });
    return names;
}

TEST(ScriptedShellNamespace, ListsWhatWasWrittenInOrderAndCounts) {
    ScriptedShellNamespace shell;
    shell.AddDrive("/mnt/data", "Data", ShellKind::Fixed);
    shell.AddFile("/mnt/data/b.tif", {.size = 7});
    shell.AddFolder("/mnt/data/a");
    EXPECT_THAT(Names(shell, shell.Drives()), ElementsAre("Data"));
    EXPECT_THAT(Names(shell, shell.Parse("/mnt/data")), ElementsAre("b.tif", "a"));
    EXPECT_EQ(shell.Path(shell.Parse("/mnt/data/b.tif")), "/mnt/data/b.tif");
    EXPECT_EQ(shell.Times(shell.Parse("/mnt/data/b.tif"))->size, 7);
    EXPECT_EQ(shell.EnumerateCalls("/mnt/data"), 1);
    EXPECT_EQ(shell.TimesCalls(), 1);
    shell.Remove("/mnt/data/a");
    EXPECT_THAT(Names(shell, shell.Parse("/mnt/data")), ElementsAre("b.tif"));
    shell.SetUnreadable("/mnt/data");
    EXPECT_FALSE(
        shell.Enumerate(shell.Parse("/mnt/data"), ShellNamespace::Purpose::Browse, [](ShellChild &&) { return true; }));
}

TEST(ScriptedShellNamespace, HoldsServersAndDomains) {
    ScriptedShellNamespace shell;
    shell.AddServer("alpha");
    shell.AddServer("beta", "WORKGROUP");
    shell.AddFile("smb://alpha/share/x.tif");
    EXPECT_THAT(Names(shell, shell.Network(), ShellNamespace::Purpose::Network), ElementsAre("alpha", "WORKGROUP"));
    EXPECT_EQ(shell.Path(shell.Parse("smb://alpha/share/x.tif")), "smb://alpha/share/x.tif");
    EXPECT_THAT(Names(shell, shell.Parse("smb://WORKGROUP"), ShellNamespace::Purpose::Network), ElementsAre("beta"));
}

TEST(ScriptedShellNamespace, ABlockedFolderWaitsUntilItIsLetGo) {
    ScriptedShellNamespace shell;
    shell.AddFile("/dead/x");
    shell.Block("/dead");
    std::vector<DString> names;
    std::thread listing([&] { names = Names(shell, shell.Parse("/dead")); });
    while (!shell.IsWaiting("/dead"))
        std::this_thread::yield();
    shell.Unblock("/dead");
    listing.join();
    EXPECT_THAT(names, ElementsAre("x"));
}

} // namespace
} // namespace zelvar::platform
