// What chosen files become: with drivers written down by the tests, with some that sleep and crash in real readers, and
// with the real ones, in this process or in readers.
#include "support/FileRequests.h"
#include "support/HostileFiles.h"
#include "support/ImageFiles.h"
#include "support/RealDrivers.h"
#include "support/ScriptedDriver.h"
#include "zelvar/data/DIOPluginMngr.h"
#include "zelvar/data/ImageReader.h"
#include "zelvar/dialogs/CBDISelectorDlg.h"
#include "zelvar/lists/CZelListCtrl.h"
#include "zelvar/store/DCnfg.h"

#include <QtWidgets/QScrollArea>

#include <filesystem>

namespace zelvar::test {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;

/// Files chosen in a dialog.
struct Choice {
    /// The texts of the monikers that the files become, `mark` before those that have a driver.
    Names Resolve(Names const &paths, int nodeMask = BDINode_Raster, char const *options = nullptr, int mode = 0) {
        DVectorSafe<DFile> files;
        for (DString const &path : paths)
            files.push_back(DFile(path));
        DVector<BDIMoniker *> out = given;
        resolved = FileDlg::ResolveBDI(mode, nodeMask, format, "Choose", files, "*.x", out, options);
        EXPECT_EQ(std::erase(out, nullptr), given.size()) << "they stay";
        Names texts;
        for (BDIMoniker const *moniker : out)
            texts.push_back((moniker->GetDrvr() == nullptr ? "" : mark) +
                            std::unique_ptr<BDIMoniker const>(moniker)->GetText());
        return texts;
    }

    DFileFrmt const *format = nullptr;
    DVector<BDIMoniker *> given; ///< null monikers of the caller
    char const *mark = "";
    bool resolved = false;
};

/// A tree driver that wants options for its files.
struct OptionsDriver : ScriptedTreeDriver {
    using ScriptedTreeDriver::ScriptedTreeDriver;
    DString options;
    [[nodiscard]] DString GetDriverParameterString(BDINode const *) override { return options; }
};

struct Resolving : testing::Test, Choice {
    Resolving() : driver(*new OptionsDriver("TREE")) {
        format = &trees;
        mark = "*";
        BDIDrvrMngr::Instance()->Add(std::unique_ptr<BDIDrvr>(&driver));
        Tree("plain", {.name = "plain", .type = BDINode_Raster});
        Tree("other", {.name = "other", .type = BDINode_Thematic});
        Tree("tables", {.name = "tables", .type = BDINode_Folder, .children = {{.name = "t", .type = BDINode_Folder}}});
        ScriptedNode const one{.name = "one", .type = BDINode_Raster};
        ScriptedNode const two{.name = "two", .type = BDINode_Raster};
        ScriptedNode const road{.name = "road", .type = BDINode_Thematic};
        Tree("deep", {.name = "deep", .children = {one, {.name = "in", .children = {two}}, road}});
        ScriptedNode const shut{.name = "shut", .type = BDINode_Container | 0x100U, .children = {two}};
        Tree("hidden", {.name = "hidden", .children = {shut}});
    }
    ~Resolving() override {
        EXPECT_TRUE(driver.OpenTrees() == 0 && driver.OpenNodes() == 0 && driver.OpenFinds() == 0);
    }
    void Tree(DString const &name, ScriptedNode const &root) { driver.SetTree(name, root); }
    ScriptedDrivers drivers;
    OptionsDriver &driver;
    DFileFrmt trees{"TREE", "Trees", "*.x"};
};

TEST_F(Resolving, APlainFileKeepsItsPathAndItsDriver) {
    EXPECT_EQ(Resolve({"plain"}), Names{"*plain"});
    EXPECT_EQ(Resolve({"other"}), Names{"other"}) << "what is of no wanted type loses its driver";
    EXPECT_EQ(Resolve({"plain"}, 0), Names{"plain"}) << "a document is opened by nobody";
    EXPECT_EQ(Resolve({"deep"}, 0), Names{"*deep"}) << "a container stays what it is";
    format = nullptr;
    EXPECT_EQ(Resolve({"plain"}), Names{"plain"});
    given = {nullptr};
    EXPECT_EQ(Resolve({"plain"}), Names{"plain"});
    given.clear();
    EXPECT_EQ(Resolve({}), Names{});
    EXPECT_TRUE(resolved);
}

TEST_F(Resolving, OptionsFollowTheFirstQuestionMarkOrMakeIt) {
    EXPECT_EQ(Resolve({"x?b=2", "x"}, 2, "a=1"), (Names{"*x?b=2&a=1", "*x?a=1"}));
    EXPECT_EQ(Resolve({"x"}, 2, "a=1", 1), Names{"*x?a=1"});
    EXPECT_EQ(Resolve({"x"}, 2, ""), Names{"*x"});
}

TEST_F(Resolving, ADriversOptionsAreAddedOnlyToWhatCanBeOpenedAndHasNone) {
    driver.options = "k=v";
    Tree("plain?o=1", {.name = "plain", .type = BDINode_Raster});
    EXPECT_EQ(Resolve({"plain"}), Names{"*plain?k=v"});
    EXPECT_EQ(Resolve({"plain?o=1"}), Names{"*plain?o=1"});
    EXPECT_EQ(Resolve({"unknown"}), Names{"*unknown"});
    EXPECT_EQ(Resolve({"plain"}, 2, nullptr, 1), Names{"*plain"}) << "not when saving";
    EXPECT_EQ(Resolve({"hidden"}), Names{"*hidden?k=v"}) << "what is shut is not searched";
    EXPECT_EQ(Resolve({"plain", "plain?o=1", "unknown", "plain"}),
              (Names{"*plain?o=1", "*unknown", "*plain?k=v", "*plain?k=v"}));
    EXPECT_EQ(Resolve({"unknown", "plain"}), (Names{"*unknown", "*plain"})) << "the first file tells for all";
}

TEST_F(Resolving, ContainersAmongSeveralFilesGiveAllThatIsInThem) {
    EXPECT_EQ(Resolve({"plain", "deep", "other"}), (Names{"*plain", "other", "*deep/one", "*deep/in", "*deep/in/two"}));
    EXPECT_EQ(Resolve({"deep", "plain", "deep"}, BDINode_Thematic),
              (Names{"plain", "*deep/in", "*deep/road", "*deep/in", "*deep/road"}));
    EXPECT_EQ(Resolve({"deep", "deep"}, 2, nullptr, 1), (Names{"*deep", "*deep"})) << "not when saving";
}

TEST_F(Resolving, ATableGivesItsFirstChildAndEndsTheLook) {
    EXPECT_EQ(Resolve({"tables"}, BDINode_Table), Names{"*tables/t"});
    EXPECT_EQ(Resolve({"other", "tables", "other"}, BDINode_Table), (Names{"other", "*tables/t", "*other"}))
        << "the last is not looked at any more";
}

TEST_F(Resolving, AContainerThatHoldsItselfComesToAnEnd) {
    ScriptedNode root{.name = "loop"};
    for (int depth = 0; depth < 300; ++depth)
        root = ScriptedNode{.name = "n", .children = {root}};
    Tree("loop", root);
    EXPECT_EQ(Resolve({"loop"}), Names{"*loop"});
    EXPECT_LT(Resolve({"loop", "plain"}).size(), 100U);
}

TEST_F(Resolving, AFileWithoutAFormatsDriverTakesOneThatReadsItsContainer) {
    TempFolder const folder;
    DString const file = folder.Write("a.tre", "x");
    auto &container = ScriptedDrivers::AddTree("CONTAINER", "*.tre");
    container.SetTree(file, {.name = "a", .children = {{.name = "one", .type = BDINode_Raster}}});
    format = nullptr;
    EXPECT_EQ(Resolve({file, folder.Write("b.txt")}), (Names{folder / "b.txt", "*" + file + "/one"}));
}

struct HangingContainer : HostileFiles, Choice {
    HangingContainer() { window.show(); }
    /// Each file gives its own moniker; the user presses Escape after a while.
    void ExpectPlain(Names const &paths, std::chrono::milliseconds patience) {
        DFileFrmt const hostile("HOSTILE", "Hostile files", "*.hostile");
        format = &hostile;
        PressEscapeAfter(patience, window);
        EXPECT_THAT(Resolve(paths), testing::UnorderedElementsAreArray(paths));
        EXPECT_TRUE(resolved);
    }
    QWidget window;
};

TEST_F(HangingContainer, GivesItsPlainMonikerOnceTheUserOrItsReaderHasHadEnough) {
    std::string const asleep = Write("asleep", "open sleep 60\nmembers 3\n");
    auto const begin = Clock::now();
    ExpectPlain({asleep}, 500ms);
    ExpectPlain({asleep, Write("too", "list sleep 60\nmembers 3\n")}, 500ms);
    EXPECT_LT(Since(begin), 20s);
    // Nor does one that ends its reader.
    ExpectPlain({Write("crash", "open crash\nmembers 3\n")}, 60s);
    ExpectPlain({Write("a", "list crash\nmembers 3\n"), Write("b", "open abort\nmembers 3\n")}, 60s);
}

struct RealFiles : testing::Test, Choice {
    RealFiles() { UseRealDrivers(); }
    /// What becomes of the files under "All Files"; `act` answers the selector.
    Names Resolve(Names names, std::function<void(CBDISelectorDlg &)> const &act = {}) {
        for (std::string &name : names)
            name = folder / name;
        std::shared_ptr<bool const> asked = std::make_shared<bool>(true);
        if (act)
            asked = OnNextDialog([&act](QWidget &dialog) { act(dynamic_cast<CBDISelectorDlg &>(dialog)); });
        Names texts = Choice::Resolve(names);
        EXPECT_TRUE(*asked);
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
};

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
    for (char const *plain : {"a?b.tif", "p & %41 #.tif"})
        WriteImage(folder / plain);
    EXPECT_EQ(Resolve({"a?b.tif"}), Names{folder / "a?b.tif"});
    ExpectImages(Resolve({"pages.tif", "a?b.tif", "cube.nc", "p & %41 #.tif"}), 7);
    std::filesystem::resize_file(folder / "cube.nc", 100);
    folder.Write("empty.nc");
    EXPECT_EQ(Resolve({"cube.nc"}), Names{folder / "cube.nc"});
    EXPECT_EQ(Resolve({"cube.nc", "empty.nc", "gone.nc"}).size(), 3U);
    EXPECT_TRUE(resolved);
}

TEST_F(RealFiles, OptionsForWritingAreChosenInTheDialogForSaving) {
    auto const save = [&](unsigned features, std::function<void(QWidget &)> const &act, char const *text = "") {
        DlgOpenDS::SetFeatures(features);
        FileDlg request;
        request.SetDataType(BDINode_Raster);
        request.SetInitFile(folder / "new.tif");
        request.SetInitFrmtId("GTiff");
        request.SetOptions(text);
        auto const open = [&] { return request.OpenRasterData(DIOPluginMngr::Instance(), 1, false, false, nullptr); };
        Answer(open, "new.tif", act);
        DlgOpenDS::SetFeatures(kOpenAll);
        EXPECT_EQ(request.GetFile(0)->GetText(),
                  folder / "new.tif" + (request.GetOptions().empty() ? "" : "?" + request.GetOptions()));
        return request.GetOptions();
    };
    auto const button = [](QWidget &dialog) { return dialog.findChild<QPushButton *>("options"); };
    auto const level = [](QWidget &dialog) { return dialog.findChild<QLineEdit *>("ZLEVEL"); };
    EXPECT_EQ(save(kOpenPlain, [&](QWidget &dialog) { EXPECT_EQ(button(dialog), nullptr); }), "");
    EXPECT_EQ(save(kOpenAll, [&](QWidget &dialog) { EXPECT_FALSE(level(dialog)->isVisible()); }), "");
    EXPECT_EQ(save(kOpenAll,
                   [&](QWidget &dialog) {
                       QSize const folded = dialog.size();
                       Click(button(dialog));
                       EXPECT_TRUE(level(dialog)->isVisible());
                       EXPECT_GT(dialog.height(), folded.height());
                       level(dialog)->setText("9");
                       auto const *const area = dialog.findChild<QScrollArea *>();
                       EXPECT_TRUE(Eventually([&] { return !area->horizontalScrollBar()->isVisible(); }));
                       Shot(dialog, "filedlg-save-options");
                       auto &types = *dialog.findChild<QComboBox *>("fileTypeCombo");
                       int const tiff = types.currentIndex();
                       for (int const type : {types.findText("AirSAR Polarimetric Image", Qt::MatchStartsWith),
                                              types.findText("Portable Network", Qt::MatchStartsWith), tiff}) {
                           types.setCurrentIndex(std::max(type, 0));
                           Q_EMIT types.activated(types.currentIndex());
                           EXPECT_EQ(level(dialog) != nullptr && level(dialog)->text() == "9", type == tiff);
                       }
                       Click(button(dialog));
                       EXPECT_TRUE(Eventually([&] { return dialog.size() == folded; }));
                   }),
              "ZLEVEL=9");
    EXPECT_EQ(save(kOpenAll, [&](QWidget &dialog) { EXPECT_TRUE(level(dialog)->isVisible()) << "as last time"; }),
              "ZLEVEL=9");
    EXPECT_EQ(save(
                  kOpenAll, [&](QWidget &dialog) { EXPECT_EQ(level(dialog)->text(), "6"); }, "X=1&compress=lzw"),
              "X=1&COMPRESS=LZW");
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
