#include "support/Test.h"
#include "zelvar/platform/os/LinuxShellNamespace.h"
#include "zelvar/platform/os/ScriptedShellNamespace.h"

namespace zelvar::platform {
namespace {

TEST(ShellId, AChildKeepsItsChainAliveAndComparesByElements) {
    ShellId deep;
    {
        ShellId const drives = ShellId::Desktop().Child("drives", ShellKind::Virtual);
        deep = drives.Child("/", ShellKind::Fixed).Child("a name of some length", ShellKind::Directory);
    }
    EXPECT_EQ(deep.Element(), "a name of some length");
    EXPECT_EQ(deep.Parent().Element(), "/");
    EXPECT_EQ(deep.Depth(), 3);
    ShellId const same = ShellId::Desktop()
                             .Child("drives", ShellKind::Virtual)
                             .Child("/", ShellKind::Fixed)
                             .Child("a name of some length", ShellKind::File);
    EXPECT_TRUE(deep == same);
    EXPECT_FALSE(deep == same.Parent());
    EXPECT_FALSE(deep == deep.Parent().Child("A name of some length", ShellKind::Directory));
}

TEST(ShellId, NullAndDesktopEndAChain) {
    EXPECT_TRUE(ShellId().IsNull());
    EXPECT_TRUE(ShellId() == ShellId());
    EXPECT_FALSE(ShellId() == ShellId::Desktop());
    EXPECT_TRUE(ShellId::Desktop().IsDesktop());
    EXPECT_TRUE(ShellId::Desktop().Parent().IsNull());
    EXPECT_TRUE(ShellId().Parent().IsNull());
}

TEST(ShellNamespace, ATestsNamespaceStandsInUntilItIsTakenAway) {
    auto const scripted = std::make_shared<ScriptedShellNamespace>();
    std::shared_ptr<ShellNamespace> const former = ShellNamespace::SetCurrent(scripted);
    EXPECT_EQ(&ShellNamespace::Current(), scripted.get());
    EXPECT_EQ(ShellNamespace::SetCurrent(former), scripted);
    EXPECT_NE(dynamic_cast<LinuxShellNamespace *>(&ShellNamespace::Current()), nullptr);
}

} // namespace
} // namespace zelvar::platform
