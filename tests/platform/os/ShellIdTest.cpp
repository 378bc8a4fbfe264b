#include "zelvar/platform/os/ShellId.h"

#include "support/Test.h"

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

} // namespace
} // namespace zelvar::platform
