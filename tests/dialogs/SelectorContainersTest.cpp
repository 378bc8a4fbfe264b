// The selector over real files, with drivers in this process and in readers, and over files that hang and crash.
#include "support/HostileFiles.h"
#include "support/ImageFiles.h"
#include "support/OpenedTree.h"
#include "support/RealDriversTest.h"
#include "support/SelectorHands.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/dialogs/CBDISelectorDlg.h"

#include <filesystem>

namespace zelvar::test {
namespace {

struct SelectorContainers : RealDriversTest {
    ~SelectorContainers() override { SetDriverProvider({}); }
    /// The nodes chosen, behind "1:".
    static std::string Run(DString const &path, unsigned mask, std::function<void(SelectorHands const &)> const &act) {
        BDIDrvr *const driver = OpenedTree(path).driver;
        CBDISelectorDlg dialog(driver, path.c_str(), mask, "", true, nullptr);
        return RunSelector(dialog, act);
    }
};

TEST_F(SelectorContainers, WhatIsDamagedOrVanishesStaysEmpty) {
    WritePages(m_folder / "pages.tif", 1);
    DString const broken = m_folder.Write("broken.gpkg", "SQLite format 3 that is none");
    DString const path = m_folder / "archive.zip";
    WriteZip(path, {{"folder/inside.tif", m_folder / "pages.tif"}, {"folder/broken.gpkg", broken}});
    auto const act = [&](SelectorHands const &hands) {
        hands.Expand("archive.zip");
        hands.Expand("folder");
        TreeNode *const inner = hands.Select("broken.gpkg");
        EXPECT_EQ(hands.Rows(), "");
        EXPECT_FALSE(hands.tree.Expand(inner, TVE_EXPAND));
        std::filesystem::remove(path);
        hands.Select("archive.zip");
        hands.Select("folder");
        EXPECT_TRUE(hands.window.isVisible());
    };
    EXPECT_EQ(Run(path, BDINode_Raster, act), "0:");
    CBDISelectorDlg gone(BDIDrvrMngr::Instance()->Drivers().front(), path.c_str(), BDINode_Raster, "", true, nullptr);
    gone.show();
    EXPECT_EQ(SelectorHands(gone).tree.GetCount(), 0U);
    EXPECT_FALSE(SelectorHands(gone).ok.isEnabled());
}

using SelectorHangs = HostileFiles;

TEST_F(SelectorHangs, EscapeEndsTheWaitAndWhatDoesNotAnswerStaysEmpty) {
    BDIDrvr *const driver = BDIDrvrMngr::Instance()->GetDrvr("HOSTILE");
    ASSERT_NE(driver, nullptr);
    auto const begin = Clock::now();
    for (char const *action : {"open sleep 30", "list sleep 30", "list crash"}) {
        SCOPED_TRACE(action);
        QWidget other;
        other.show();
        PressEscapeAfter(std::chrono::milliseconds(450), other);
        DString const file = Write(action, DString("members 3\n") + action + "\n");
        CBDISelectorDlg dialog(driver, file.c_str(), BDINode_Raster, "", true, nullptr);
        RunSelector(dialog, [](SelectorHands const &hands) {
            EXPECT_EQ(hands.Rows(), "");
            EXPECT_TRUE(hands.window.isVisible()); // the key was for the wait
        });
    }
    EXPECT_LT(Since(begin), std::chrono::seconds(5)); // where the file wants 30 seconds
}

} // namespace
} // namespace zelvar::test
