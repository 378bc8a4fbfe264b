#include "zelvar/filedlg/CDlgSlctDir.h"

#include "support/FileDialogHand.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/filedlg/FileDlg.h"
#include "zelvar/settings/DfltFldrs.h"
#include "zelvar/store/DCnfg.h"
#include "zelvar/store/SettingsStore.h"

namespace zelvar {
namespace {

using test::FileDialogHand;
using test::Paths;
using test::TempFolder;

struct SelectDirectory : testing::Test {
    SelectDirectory() {
        SettingsStore::Instance().RemoveTree("Profile");
        DfltFldrs::DeleteInstance();
    }
    /// The folder chosen while `act` works with the browser, empty for none.
    static std::string Browse(CDlgSlctDir &browser, std::function<void(FileDialogHand const &)> const &act) {
        auto const done = test::OnNextDialog([&act](QWidget &window) { act(FileDialogHand(window)); });
        bool const chosen = browser.DoBrowse() != 0;
        EXPECT_TRUE(*done);
        return chosen ? browser.GetPath() : std::string();
    }
    static QPushButton &Ok(FileDialogHand const &hand) {
        return *hand.Dialog().findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Open);
    }
    static std::string Shown(FileDialogHand const &hand) {
        return hand.Part<CZelComboBox>("folderBox").GetWindowText();
    }
};

TEST_F(SelectDirectory, AFolderIsPickedFromTheListOrByItsName) {
    TempFolder const folder;
    folder.Write("a/inner/file.txt");
    folder.Folder("b");
    folder.Write("file.txt");
    CDlgSlctDir browser;
    browser.SetTitle("Load Action Library...");
    browser.SetInitDir(folder.Path() + "/");
    EXPECT_EQ(Browse(browser,
                     [&](FileDialogHand const &hand) {
                         EXPECT_EQ(hand.Dialog().windowTitle(), "Load Action Library...");
                         hand.ClickRow("b");
                         EXPECT_EQ(hand.Shown(), (Paths{"a", "b"})) << "no files";
                         EXPECT_EQ(Ok(hand).text(), "Choose");
                         EXPECT_TRUE(hand.Part<QWidget>("newFolderButton").isVisible());
                         test::Shot(hand.Dialog(), "select-directory");
                         test::Click(&Ok(hand));
                     }),
              folder / "b");
    EXPECT_EQ(Browse(browser,
                     [](FileDialogHand const &hand) {
                         hand.DoubleClickRow("a");
                         test::Click(&Ok(hand));
                     }),
              folder / "a")
        << "the folder that is shown";
    EXPECT_EQ(Browse(browser, [](FileDialogHand const &hand) { hand.TypeAndEnter("a/inner"); }), folder / "a/inner");
    EXPECT_EQ(Browse(browser,
                     [](FileDialogHand const &hand) {
                         hand.Type("a/file.txt");
                         EXPECT_FALSE(Ok(hand).isEnabled());
                     }),
              "");
}

TEST_F(SelectDirectory, OnlyAFolderThatHoldsAMatchCanBePicked) {
    TempFolder const folder;
    folder.Write("library/sub/one.DLX");
    folder.Write("library/sub/other.txt");
    CDlgSlctDir browser;
    browser.SetInitDir(folder.Path());
    browser.SetFilter("*.dlx");
    browser.EnableNewFolder(false);
    EXPECT_EQ(Browse(browser,
                     [&](FileDialogHand const &hand) {
                         EXPECT_FALSE(Ok(hand).isEnabled());
                         EXPECT_FALSE(hand.Part<QWidget>("newFolderButton").isVisible());
                         hand.TypeAndEnter("library");
                         EXPECT_EQ(Shown(hand), folder / "library") << "not picked but entered";
                         EXPECT_FALSE(Ok(hand).isEnabled());
                         hand.ClickRow("sub");
                         EXPECT_TRUE(Ok(hand).isEnabled());
                         test::Click(&Ok(hand));
                     }),
              folder / "library/sub");
}

TEST_F(SelectDirectory, TheFolderIsRememberedUnderItsKey) {
    TempFolder const folder;
    folder.Folder("known");
    folder.Folder("chosen");
    DfltFldrs::Instance()->SaveDirHist("ActnLibDir", folder.Path());
    CDlgSlctDir first;
    first.SetKey("ActnLibDir");
    EXPECT_EQ(Browse(first,
                     [&](FileDialogHand const &hand) {
                         EXPECT_EQ(Shown(hand), folder.Path()) << "from the history";
                         hand.TypeAndEnter("known");
                     }),
              folder / "known");
    EXPECT_EQ(Profile::GetString("Settings", "ActnLibDir", ""), folder / "known");
    for (char const *given : {"", "chosen"}) {
        CDlgSlctDir next;
        next.SetKey("ActnLibDir");
        next.SetInitDir(*given == '\0' ? "" : folder / given);
        std::string const begin = folder / (*given == '\0' ? "known" : given);
        EXPECT_EQ(Browse(next, [&](FileDialogHand const &hand) { EXPECT_EQ(Shown(hand), begin); }), "");
        EXPECT_EQ(next.GetInitDir(), begin);
    }
    EXPECT_EQ(Profile::GetString("Settings", "ActnLibDir", ""), folder / "known") << "nothing was chosen";
    EXPECT_EQ(CDlgSlctDir::strPrtclDir, "Protocol Operation Folder");
}

TEST_F(SelectDirectory, AnActionLibraryIsTheLibraryFileInAFolder) {
    TempFolder const folder;
    folder.Write("lib/b.dlx");
    folder.Write("lib/a.dlx");
    folder.Write("lib/a.txt");
    DfltFldrs::Instance()->SaveDirHist("ActnLibDir", folder.Path());
    FileDlg request;
    auto const done = test::OnNextDialog([&](QWidget &window) {
        FileDialogHand const hand(window);
        EXPECT_EQ(hand.Dialog().windowTitle(), "Load Action Library...");
        hand.ClickRow("lib");
        test::Click(&Ok(hand));
    });
    ASSERT_TRUE(request.OpenActnLib(0));
    EXPECT_TRUE(*done);
    ASSERT_EQ(request.GetNumSlctFiles(), 1);
    EXPECT_EQ(request.GetFile(0)->GetText(), folder / "lib/a.dlx");
    EXPECT_EQ(request.GetFile(0)->GetDrvr(), nullptr);
    EXPECT_EQ(Profile::GetString("Settings", "ActnLibDir", ""), folder / "lib");
}

TEST_F(SelectDirectory, ABrowserWithAStartFolderKeepsASecondOneAway) {
    TempFolder const folder;
    CDlgSlctDir browser;
    browser.SetInitDir(folder.Path());
    CDlgSlctDir second;
    Browse(browser, [&](FileDialogHand const &) {
        second.SetInitDir(folder.Path());
        EXPECT_EQ(second.DoBrowse(), 0);
    });
    CDlgSlctDir without; // which does not
    Browse(without, [&](FileDialogHand const &) { Browse(second, [](FileDialogHand const &) {}); });
}

} // namespace
} // namespace zelvar
