#include "zelvar/settings/DfltFldrs.h"

#include "support/ScriptedShellNamespace.h"
#include "support/Test.h"
#include "zelvar/settings/CnfgLdr.h"
#include "zelvar/settings/Project.h"
#include "zelvar/store/DCnfg.h"
#include "zelvar/store/SettingsStore.h"

namespace zelvar {
namespace {

using platform::ShellFolderOf;

/// Everything in both styles: with backslashes in the one, the same with the native separator in the other.
class DfltFldrsTest : public testing::TestWithParam<PathStyle> {
public:
    DfltFldrsTest() {
        m_shell = std::make_shared<test::ScriptedShellNamespace>();
        m_shell->SetSpecialFolder(ShellFolderOf::Desktop, Styled("C:\\u\\Desktop"));
        m_shell->SetSpecialFolder(ShellFolderOf::Documents, Styled("C:\\u\\Docs"));
        m_former = platform::ShellNamespace::SetCurrent(m_shell);
        SettingsStore::Instance().RemoveTree("User\\DefaultFolders");
    }
    ~DfltFldrsTest() override { platform::ShellNamespace::SetCurrent(m_former); }

protected:
    /// A text with backslashes in the style under test.
    [[nodiscard]] static DString Styled(DString text) {
        std::replace(text.begin(), text.end(), '\\', GetParam().separator);
        return text;
    }
    [[nodiscard]] static DString Translated(char const *path) {
        return DfltFldrs::TranslateSpecialPath(Styled(path), GetParam());
    }
    [[nodiscard]] static std::vector<DString> Offered(DfltFldrs const &folders, char const *key, bool defaults = true,
                                                      bool history = true) {
        DVectorSafe<DString> out{"left over"};
        folders.GetDirHist(key, out, defaults, history);
        return {out.begin(), out.end()};
    }
    static void SetHistory(char const *key, DString const &folders) {
        DUserCnfg("DefaultFolders").WriteString(key, folders);
    }
    [[nodiscard]] static std::vector<DString> List(std::vector<DString> texts) {
        for (DString &text : texts)
            text = Styled(text);
        return texts;
    }

    std::shared_ptr<test::ScriptedShellNamespace> m_shell;
    std::shared_ptr<platform::ShellNamespace> m_former;
    test::Environment m_environment{{{"ZELVAR_INSTALL_DIR", Styled("C:\\inst\\")}}};
};
INSTANTIATE_TEST_SUITE_P(Styles, DfltFldrsTest, testing::Values(PathStyle::Native(), PathStyle::Windows()),
                         [](auto const &style) { return style.param == PathStyle::Native() ? "Native" : "Windows"; });

TEST_P(DfltFldrsTest, WordsStandForFolders) {
    EXPECT_EQ(Translated("desktop"), Styled("C:\\u\\Desktop\\"));
    EXPECT_EQ(Translated("My documents"), Styled("C:\\u\\Docs\\"));
    EXPECT_EQ(Translated("Desktop\\x"), Styled("Desktop\\x"));
    EXPECT_EQ(Translated("installdir\\Examples"), Styled("C:\\inst\\Examples"));
    EXPECT_EQ(Translated("InstallDirs"), Styled("C:\\insts"));
    EXPECT_EQ(Translated("InstallDi"), "InstallDi");
    EXPECT_EQ(Translated(""), "");
}

TEST_P(DfltFldrsTest, AFolderThatTheSystemDoesNotNameLeavesTheWord) {
    auto const bare = std::make_shared<test::ScriptedShellNamespace>();
    platform::ShellNamespace::SetCurrent(bare);
    EXPECT_EQ(Translated("Desktop"), "Desktop");
    EXPECT_EQ(Translated("My Documents"), "My Documents");
    bare->SetSpecialFolder(ShellFolderOf::CommonDocuments, Styled("C:\\all\\"));
    EXPECT_EQ(Translated("My Documents"), Styled("C:\\all\\")); // one separator at its end stays one
    DString path = "kept";
    EXPECT_FALSE(DfltFldrs::GetSpecialFolder(1, path, GetParam()));
    EXPECT_EQ(path, "kept");
}

TEST_P(DfltFldrsTest, DefaultsFollowTheHistoryWithoutWhatItHolds) {
    DfltFldrs folders(GetParam());
    folders.SetDfltFldrs("Own", Styled(R"(c:\A;Desktop;;c:\b;C:\B)").c_str());
    EXPECT_EQ(Offered(folders, "Own"), List({"c:\\A", "C:\\u\\Desktop\\", "c:\\b"}));
    SetHistory("Own", Styled("C:\\a;;desktop;C:\\a"));
    EXPECT_EQ(Offered(folders, "Own"), List({"C:\\a", "C:\\u\\Desktop\\", "C:\\a", "c:\\b"}));
    EXPECT_EQ(Offered(folders, "Own", false, true), List({"C:\\a", "C:\\u\\Desktop\\", "C:\\a"}));
    EXPECT_TRUE(Offered(folders, "Own", false, false).empty());
    EXPECT_TRUE(Offered(folders, "").empty());
    EXPECT_TRUE(Offered(folders, nullptr).empty());
    EXPECT_TRUE(Offered(folders, "Unknown").empty());
    EXPECT_EQ(Offered(folders, "ThematicFolders"), List({"C:\\u\\Docs\\", "C:\\u\\Desktop\\", "C:\\inst\\Examples"}));
}

TEST_P(DfltFldrsTest, AChosenFolderMovesToTheHeadInItsNewForm) {
    DfltFldrs folders(GetParam());
    SetHistory("Own", Styled(R"(C:\x;c:\a;C:\A)"));
    folders.SaveDirHist("Own", Styled("C:\\A"));
    EXPECT_EQ(DUserCnfg("DefaultFolders").ReadString("Own", ""), Styled(R"(C:\A;C:\x;C:\A)")); // one match is removed
    folders.SaveDirHist("Own", "");
    folders.SaveDirHist("", "x");
    EXPECT_EQ(DUserCnfg("DefaultFolders").ReadString("Own", ""), Styled(R"(C:\A;C:\x;C:\A)"));
}

TEST_P(DfltFldrsTest, AtTenEntriesOfHistoryAndDefaultsTheOldestGoes) {
    DfltFldrs folders(GetParam());
    folders.SetDfltFldrs("Own", "d1;d2");
    SetHistory("Own", "1;2;3;4;5;6;7");
    folders.SaveDirHist("Own", "new");
    EXPECT_EQ(DUserCnfg("DefaultFolders").ReadString("Own", ""), "new;1;2;3;4;5;6;7"); // nine were there
    folders.SaveDirHist("Own", "new");
    EXPECT_EQ(DUserCnfg("DefaultFolders").ReadString("Own", ""), "new;1;2;3;4;5;6"); // ten: though it adds none
    folders.SetDfltFldrs("Own", "d1;d2;d3;d4;d5;d6;d7;d8;d9;d10");
    SetHistory("Own", "");
    folders.SaveDirHist("Own", "first");
    EXPECT_EQ(DUserCnfg("DefaultFolders").ReadString("Own", ""), "first");
}

TEST_P(DfltFldrsTest, FoldersOfTheProjectComeFirst) {
    DfltFldrs folders(GetParam());
    folders.SetDfltFldrs("Own", "d");
    SetHistory("Own", "a;b");
    SetProject("one; two");
    folders.SaveDirHist("Own", "b");
    folders.SaveDirHist("Own", "c");
    EXPECT_EQ(Offered(folders, "Own"), (std::vector<DString>{"c", "b", "a", "d"}));
    SetProject("another");
    folders.SaveDirHist("Own", "a");
    EXPECT_EQ(Offered(folders, "Own"), (std::vector<DString>{"a", "c", "b", "d"}));
    SetProject("one; two");
    EXPECT_EQ(Offered(folders, "Own"), (std::vector<DString>{"c", "b", "a", "d"}));
    SetProject("");
    EXPECT_EQ(DUserCnfg("DefaultFolders").ReadString("Own", ""), "a;c;b") << "as without projects";
    EXPECT_EQ(Offered(folders, "Own"), (std::vector<DString>{"a", "c", "b", "d"}));
}

TEST_P(DfltFldrsTest, AFileReplacesTheKeysThatItNames) {
    test::TempFolder const folder;
    DString const file = folder.Write("folders.xml", "<any><ImageFolders path='D:/old'/><ImageFolders path='D:/img'/>"
                                                     "<Own/><text>x</text></any>");
    DfltFldrs folders(GetParam());
    EXPECT_TRUE(folders.Load(DFile(file)));
    EXPECT_EQ(Offered(folders, "ImageFolders"), List({"D:\\img"}));
    EXPECT_TRUE(Offered(folders, "Own").empty());
    EXPECT_EQ(Offered(folders, "ProjectFolders").size(), 2U);
    DfltFldrs const copy(folders);
    EXPECT_FALSE(folders.Load(DFile("")));
    EXPECT_FALSE(folders.Load(DFile(folder.Write("cut.xml", "<any><ImageFolders path='E:/'/>"))));
    EXPECT_EQ(Offered(folders, "ImageFolders"), Offered(copy, "ImageFolders"));
}

TEST_P(DfltFldrsTest, TheProductsConfigurationComesBeforeTheDefaults) {
    test::TempFolder const folder;
    folder.Write("share/zelvar/product.xml",
                 "<p><DefaultFolders><ImageFolders path='configured'/></DefaultFolders></p>");
    setenv("ZELVAR_INSTALL_DIR", folder.Path().c_str(), 1);
    DfltFldrs const folders(GetParam());
    EXPECT_EQ(Offered(folders, "ImageFolders"), std::vector<DString>{"configured"});
    EXPECT_EQ(Offered(folders, "ProjectFolders").size(), 2U);
    EXPECT_EQ(CnfgLdr::Instance()->GetDfltFldr("Unknown", nullptr), "");
}

TEST(DfltFldrsInstance, StartsAfreshAfterItsDeletion) {
    DfltFldrs::DeleteInstance();
    EXPECT_FALSE(DfltFldrs::HasInstance());
    DfltFldrs::Instance()->SetDfltFldrs("Own", "x");
    EXPECT_TRUE(DfltFldrs::HasInstance());
    DfltFldrs::DeleteInstance();
    DVectorSafe<DString> out;
    DfltFldrs::Instance()->GetDirHist("Own", out, true, false);
    EXPECT_TRUE(out.empty());
}

} // namespace
} // namespace zelvar
