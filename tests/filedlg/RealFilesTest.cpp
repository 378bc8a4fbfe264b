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

namespace zelvar::test {
namespace {

using Names = std::vector<std::string>;

struct RealFiles : testing::Test {
    RealFiles() { UseRealDrivers(); }
    /// What becomes of the files under "All Files"; `act` answers the selector.
    Names Resolve(Names const &names, std::function<void(CBDISelectorDlg &)> const &act = {}) {
        DVectorSafe<DFile> files;
        for (DString const &name : names)
            files.push_back(DFile(folder / name));
        std::shared_ptr<bool const> asked = std::make_shared<bool>(true);
        if (act)
            asked = OnNextDialog([&act](QWidget &dialog) { act(dynamic_cast<CBDISelectorDlg &>(dialog)); });
        DVector<BDIMoniker *> out;
        resolved = FileDlg::ResolveBDI(0, BDINode_Raster, nullptr, "Choose", files, "*.*", out, nullptr);
        EXPECT_TRUE(*asked);
        Names texts;
        for (BDIMoniker const *moniker : out)
            texts.push_back(std::unique_ptr<BDIMoniker const>(moniker)->GetText());
        return texts;
    }
    static void ExpectImages(Names const &monikers, std::size_t count) {
        EXPECT_EQ(std::set(monikers.begin(), monikers.end()).size(), count) << testing::PrintToString(monikers);
        for (DString const &moniker : monikers) {
            ImageInfo info;
            EXPECT_TRUE(ReadImageInfo({moniker, nullptr}, "", nullptr, info) && info.width > 0) << moniker;
        }
    }

    TempFolder folder;
    bool resolved = false;
};

TEST_F(RealFiles, APlainImageStaysWhatItIs) {
    for (char const *name : {"plain.tif", "a?b.tif", "p & %41 #.tif"})
        WriteImage(folder / name);
    EXPECT_EQ(Resolve({"a?b.tif"}), Names{folder / "a?b.tif"});
    ExpectImages(Resolve({"plain.tif", "a?b.tif", "p & %41 #.tif"}), 3);
}

TEST_F(RealFiles, AContainerLetsTheUserChooseWhatIsRead) {
    WritePages(folder / "pa?ges & more.tif", 3);
    WriteNetCdf(folder / "cube 1.nc", 3);
    for (char const *name : {"pa?ges & more.tif", "cube 1.nc"}) {
        auto const takeTwo = [](CBDISelectorDlg &dialog) {
            auto &list = *platform::GetDlgItem<CZelListCtrl>(dialog, 6004);
            EXPECT_EQ(dialog.windowTitle(), "Choose");
            ASSERT_EQ(list.GetNumRow(), 3);
            list.SetSlct(0, false);
            list.SetSlct(1, true);
            list.SetSlct(2, true);
            Click(platform::GetDlgItem(dialog, 1));
        };
        ExpectImages(Resolve({name}, takeTwo), 2);
        EXPECT_TRUE(resolved);
    }
    EXPECT_EQ(Resolve({"cube 1.nc"}, [](CBDISelectorDlg &dialog) { dialog.reject(); }), Names{folder / "cube 1.nc"})
        << "what was made stays";
    EXPECT_FALSE(resolved);
}

TEST_F(RealFiles, SeveralContainersGiveAllTheirImagesAndDamagedOnesStayWhatTheyAre) {
    WritePages(folder / "pages.tif", 3);
    WriteNetCdf(folder / "cube.nc", 2);
    WriteImage(folder / "plain.tif");
    ExpectImages(Resolve({"pages.tif", "plain.tif", "cube.nc"}), 6);
    std::filesystem::resize_file(folder / "cube.nc", 100);
    folder.Write("empty.nc");
    EXPECT_EQ(Resolve({"cube.nc"}), Names{folder / "cube.nc"});
    EXPECT_EQ(Resolve({"cube.nc", "empty.nc", "gone.nc"}).size(), 3U);
    EXPECT_TRUE(resolved);
}

TEST_F(RealFiles, AllOfTheDriversFormatsAreOfferedAndTheDialogShowsTheFolderOfAContainersNode) {
    WritePages(folder / "pages.tif", 2);
    Application const application;
    Profile::WriteString("Settings", "Raster File Type", "");
    FileDlg request;
    request.SetDataType(BDINode_Raster);
    request.SetInitFile("GTIFF_DIR:2:" + folder / "pages.tif");
    std::string node;
    auto const open = [&] { return request.OpenRasterData(DIOPluginMngr::Instance(), 0, false, false, nullptr); };
    Shown const shown = Answer(open, "", [&](QWidget &dialog) {
        DSListCtrl const &list = *dynamic_cast<DlgOpenDS &>(dialog).MainList();
        EXPECT_TRUE(Eventually([&] { return list.GetNumRow() == 2; }));
        node = list.ItemAt(1)->GetPath();
        Shot(dialog, "filedlg-load-raster");
    });
    EXPECT_GT(shown.types.size(), 60U);
    EXPECT_EQ(shown.type, "All Files");
    ExpectImages({node}, 1);
}

} // namespace
} // namespace zelvar::test
