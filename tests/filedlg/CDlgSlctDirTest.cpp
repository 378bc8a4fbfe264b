#include "zelvar/filedlg/CDlgSlctDir.h"

#include "support/FileDialogHand.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/filedlg/FileDlg.h"
#include "zelvar/settings/DfltFldrs.h"
#include "zelvar/store/DCnfg.h"
#include "zelvar/store/SettingsStore.h"

namespace zelvar::test {
namespace {

using Hand = FileDialogHand;

struct SelectDirectory : FileDialogTest {
    SelectDirectory() {
        SettingsStore::Instance().RemoveTree("Profile");
        DfltFldrs::DeleteInstance();
    }
    /// The folder chosen while `act` works with the browser, relative to the test's, empty for none.
    [[nodiscard]] std::string Browse(CDlgSlctDir &dialog, std::function<void(Hand const &)> const &act) const {
        auto const done = OnNextDialog([&act](QWidget &window) { act(Hand(window)); });
        bool const chosen = dialog.DoBrowse() != 0;
        EXPECT_TRUE(*done);
        EXPECT_TRUE(!chosen || dialog.GetPath().starts_with(folder.Path() + "/"));
        return chosen ? dialog.GetPath().substr(folder.Path().size() + 1) : std::string();
    }
    static QPushButton &Ok(Hand const &hand) {
        return *hand.Dialog().findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Open);
    }
    static std::string Shown(Hand const &hand) { return hand.Part<CZelComboBox>("folderBox").GetWindowText(); }
    static DString Remembered() { return Profile::GetString("Settings", "ActnLibDir", ""); }

    CDlgSlctDir browser;
};

TEST_F(SelectDirectory, AFolderIsPickedFromTheListOrByItsName) {
    Write({"a/inner/file.txt", "\"b\" c/x", "file.txt"});
    browser.SetTitle("Load Action Library...");
    browser.SetInitDir(folder.Path() + "/");
    auto const clickB = [&](Hand const &hand) {
        EXPECT_EQ(hand.Dialog().windowTitle(), "Load Action Library...");
        hand.ClickRow("\"b\" c"); // which reads as two words where it is typed
        EXPECT_EQ(hand.Shown(), (Paths{"\"b\" c", "a"})) << "no files";
        EXPECT_EQ(Ok(hand).text(), "Choose");
        EXPECT_TRUE(hand.Part<QWidget>("newFolderButton").isVisible());
        Shot(hand.Dialog(), "select-directory");
        Click(&Ok(hand));
    };
    EXPECT_EQ(Browse(browser, clickB), "\"b\" c");
    EXPECT_EQ(Browse(browser, [](Hand const &hand) { hand.DoubleClickRow("a"), Click(&Ok(hand)); }), "a") << "shown";
    EXPECT_EQ(Browse(browser, [](Hand const &hand) { hand.TypeAndEnter("a/inner"); }), "a/inner");
    Write({"z\xe9/in/x"});
    auto const enter = [&](Hand const &hand) {
        ChooseUndecoded(hand);
        EXPECT_EQ(Shown(hand), folder / "z\xe9") << "not picked but entered";
        hand.ClickRow("in");
        Click(&Ok(hand));
    };
    EXPECT_EQ(Browse(browser, enter), "z\xe9/in");
    EXPECT_EQ(Profile::GetString("Settings", "", "none"), "none") << "there is no key";
    auto const typeFile = [](Hand const &hand) {
        hand.Type("a/file.txt");
        EXPECT_FALSE(Ok(hand).isEnabled());
    };
    EXPECT_EQ(Browse(browser, typeFile), "");
}

TEST_F(SelectDirectory, OnlyAFolderThatHoldsAMatchCanBePicked) {
    Write({"library/sub/one.DLX", "library/sub/other.txt"});
    browser.SetInitDir(folder.Path());
    browser.SetFilter("*.dlx");
    browser.EnableNewFolder(false);
    auto const act = [&](Hand const &hand) {
        EXPECT_FALSE(Ok(hand).isEnabled() || hand.Part<QWidget>("newFolderButton").isVisible());
        hand.TypeAndEnter("library");
        EXPECT_EQ(Shown(hand), folder / "library") << "not picked but entered";
        EXPECT_FALSE(Ok(hand).isEnabled());
        hand.ClickRow("sub");
        EXPECT_TRUE(Ok(hand).isEnabled());
        Click(&Ok(hand));
    };
    EXPECT_EQ(Browse(browser, act), "library/sub");
}

TEST_F(SelectDirectory, TheFolderIsRememberedUnderItsKey) {
    Write({"known/x", "chosen/x"});
    DfltFldrs::Instance()->SaveDirHist("ActnLibDir", folder.Path());
    browser.SetKey("ActnLibDir");
    auto const typeKnown = [&](Hand const &hand) {
        EXPECT_EQ(Shown(hand), folder.Path()) << "from the history";
        hand.TypeAndEnter("known");
    };
    EXPECT_EQ(Browse(browser, typeKnown), "known");
    for (DString const &given : {DString(), folder / "chosen"}) {
        CDlgSlctDir next;
        next.SetKey("ActnLibDir");
        next.SetInitDir(given);
        DString const begin = given.empty() ? folder / "known" : given;
        EXPECT_EQ(Browse(next, [&](Hand const &hand) { EXPECT_EQ(Shown(hand), begin); }), "");
        EXPECT_EQ(next.GetInitDir(), begin);
        EXPECT_EQ(Remembered(), folder / "known") << "nothing was chosen";
    }
}

TEST_F(SelectDirectory, AnActionLibraryIsTheLibraryFileInAFolder) {
    Write({"lib/b.dlx", "lib/a.dlx", "lib/a.txt"});
    DfltFldrs::Instance()->SaveDirHist("ActnLibDir", folder.Path());
    FileDlg request;
    auto const done = OnNextDialog([&](QWidget &window) {
        EXPECT_EQ(window.windowTitle(), "Load Action Library...");
        Hand(window).ClickRow("lib");
        Click(&Ok(Hand(window)));
    });
    ASSERT_TRUE(request.OpenActnLib(0));
    EXPECT_TRUE(*done);
    ASSERT_EQ(request.GetNumSlctFiles(), 1);
    EXPECT_EQ(request.GetFile(0)->GetText(), folder / "lib/a.dlx");
    EXPECT_EQ(request.GetFile(0)->GetDrvr(), nullptr);
    EXPECT_EQ(Remembered(), folder / "lib");
}

TEST_F(SelectDirectory, ABrowserWithAStartFolderKeepsASecondOneAway) {
    browser.SetInitDir(folder.Path());
    CDlgSlctDir second;
    std::ignore = Browse(browser, [&](Hand const &) {
        second.SetInitDir(folder.Path());
        EXPECT_EQ(second.DoBrowse(), 0);
    });
    CDlgSlctDir without; // which does not
    std::ignore = Browse(without, [&](Hand const &) { std::ignore = Browse(second, [](Hand const &) {}); });
}

} // namespace
} // namespace zelvar::test
