// Real containers with the real drivers, in this process or in readers.
#include "support/FileRequests.h"
#include "support/ImageFiles.h"
#include "support/RealDrivers.h"
#include "zelvar/data/DIOPluginMngr.h"
#include "zelvar/data/ImageReader.h"
#include "zelvar/dialogs/CBDISelectorDlg.h"
#include "zelvar/lists/CZelListCtrl.h"
#include "zelvar/store/DCnfg.h"

#include <filesystem>

namespace zelvar {
namespace {

using Names = std::vector<std::string>;

struct RealFiles : testing::Test {
    RealFiles() { test::UseRealDrivers(); }
    /// What becomes of the files under "All Files"; `act` answers the selector.
    Names Resolve(Names const &names, int nodeMask, std::function<void(CBDISelectorDlg &)> const &act = {}) {
        DVectorSafe<DFile> files;
        for (DString const &name : names)
            files.push_back(DFile(folder / name));
        DVector<BDIMoniker *> out;
        auto const asked = act ? test::OnNextDialog([&act](QWidget &dialog) {
            if (auto *const selector = dynamic_cast<CBDISelectorDlg *>(&dialog))
                act(*selector);
        })
                               : nullptr;
        resolved = FileDlg::ResolveBDI(0, nodeMask, nullptr, "Choose", files, "*.*", out, nullptr);
        EXPECT_TRUE(asked == nullptr || *asked);
        Names texts;
        for (BDIMoniker const *moniker : out) {
            texts.push_back(moniker->GetText());
            delete moniker;
        }
        return texts;
    }
    static bool IsImage(DString const &moniker) {
        ImageInfo info;
        return ReadImageInfo({moniker, nullptr}, "", nullptr, info) && info.width > 0;
    }
    static CZelListCtrl &ListOf(CBDISelectorDlg &dialog) { return *platform::GetDlgItem<CZelListCtrl>(dialog, 6004); }
    static void PressOk(CBDISelectorDlg &dialog) { test::Click(platform::GetDlgItem<QAbstractButton>(dialog, 1)); }

    test::TempFolder folder;
    bool resolved = false;
};

TEST_F(RealFiles, APlainImageStaysWhatItIs) {
    for (char const *name : {"plain.tif", "a?b.tif", "p & %41 #.tif"})
        test::WriteImage(folder / name);
    EXPECT_EQ(Resolve({"a?b.tif"}, BDINode_Raster), Names{folder / "a?b.tif"});
    Names const all = Resolve({"plain.tif", "a?b.tif", "p & %41 #.tif"}, BDINode_Raster);
    EXPECT_EQ(all.size(), 3U);
    for (DString const &moniker : all)
        EXPECT_TRUE(IsImage(moniker)) << moniker;
}

TEST_F(RealFiles, AContainerLetsTheUserChooseWhatIsRead) {
    test::WritePages(folder / "pa?ges & more.tif", 3);
    test::WriteNetCdf(folder / "cube 1.nc", 3);
    for (char const *name : {"pa?ges & more.tif", "cube 1.nc"}) {
        Names const chosen = Resolve({name}, BDINode_Raster, [](CBDISelectorDlg &dialog) {
            CZelListCtrl &list = ListOf(dialog);
            EXPECT_EQ(dialog.windowTitle(), "Choose");
            ASSERT_EQ(list.GetNumRow(), 3);
            list.ClearSlct();
            list.SetSlct(1, true);
            list.SetSlct(2, true);
            PressOk(dialog);
        });
        EXPECT_TRUE(resolved);
        ASSERT_EQ(chosen.size(), 2U) << name;
        EXPECT_NE(chosen[0], chosen[1]);
        for (DString const &moniker : chosen)
            EXPECT_TRUE(IsImage(moniker)) << moniker;
    }
    EXPECT_EQ(Resolve({"cube 1.nc"}, BDINode_Raster, [](CBDISelectorDlg &dialog) { dialog.reject(); }),
              Names{folder / "cube 1.nc"})
        << "what was made stays";
    EXPECT_FALSE(resolved);
}

TEST_F(RealFiles, SeveralContainersGiveAllTheirImages) {
    test::WritePages(folder / "pages.tif", 3);
    test::WriteNetCdf(folder / "cube.nc", 2);
    test::WriteImage(folder / "plain.tif");
    Names const all = Resolve({"pages.tif", "plain.tif", "cube.nc"}, BDINode_Raster);
    EXPECT_EQ(all.size(), 6U);
    for (DString const &moniker : all)
        EXPECT_TRUE(IsImage(moniker)) << moniker;
}

TEST_F(RealFiles, ADamagedContainerStaysWhatItIs) {
    test::WriteNetCdf(folder / "cube.nc", 3);
    std::filesystem::resize_file(folder / "cube.nc", 100);
    folder.Write("empty.nc");
    EXPECT_EQ(Resolve({"cube.nc"}, BDINode_Raster), Names{folder / "cube.nc"});
    EXPECT_EQ(Resolve({"cube.nc", "empty.nc", "gone.nc"}, BDINode_Raster).size(), 3U);
    EXPECT_TRUE(resolved);
}

TEST_F(RealFiles, AllOfTheDriversFormatsAreOfferedAndTheDialogShowsTheFolderOfAContainersNode) {
    test::WritePages(folder / "pages.tif", 2);
    test::Application const application;
    Profile::WriteString("Settings", "Raster File Type", "");
    FileDlg request;
    request.SetDataType(BDINode_Raster);
    request.SetInitFile("GTIFF_DIR:2:" + folder / "pages.tif");
    std::string node;
    test::Shown const shown =
        test::Answer([&] { return request.OpenRasterData(DIOPluginMngr::Instance(), 0, false, false, nullptr); }, "",
                     [&](QWidget &dialog) {
                         DSListCtrl const &list = *dynamic_cast<DlgOpenDS &>(dialog).MainList();
                         EXPECT_TRUE(test::Eventually([&] { return list.GetNumRow() == 2; }));
                         node = list.ItemAt(1)->GetPath();
                         test::Shot(dialog, "filedlg-load-raster");
                     });
    EXPECT_GT(shown.types.size(), 60U);
    EXPECT_EQ(shown.type, "All Files");
    EXPECT_TRUE(IsImage(node)) << node;
}

} // namespace
} // namespace zelvar
