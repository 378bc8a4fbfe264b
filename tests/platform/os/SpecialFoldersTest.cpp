#include "zelvar/platform/os/SpecialFolders.h"

#include "support/Test.h"
#include "zelvar/platform/os/LinuxShellNamespace.h"

namespace zelvar::platform {
namespace {

/// Another home folder for one test.
class OtherHome : test::Pinned {
public:
    [[nodiscard]] test::TempFolder const &Folder() const { return m_folder; }

private:
    test::TempFolder m_folder;
    test::Environment m_home{{{"HOME", m_folder.Path()}}};
};

TEST(SpecialFolders, TheUsersFileWinsOverTheCustomaryNames) {
    OtherHome const home;
    home.Folder().Folder("Documents");
    home.Folder().Folder("Papers and \"more\"");
    home.Folder().Write(".config/user-dirs.dirs", "# comment\n"
                                                  "XDG_DOCUMENTS_DIR_X=\"$HOME/Documents\"\n"
                                                  "XDG_DOCUMENTS_DIR=\"$HOME/Papers and \\\"more\\\"/\"\n"
                                                  "XDG_PICTURES_DIR=\"$HOME/no such folder\"\n"
                                                  "XDG_DESKTOP_DIR=relative\n");
    LinuxShellNamespace const shell;
    EXPECT_EQ(shell.SpecialFolder(ShellFolderOf::Documents), home.Folder() / "Papers and \"more\"");
    EXPECT_EQ(shell.SpecialFolder(ShellFolderOf::Pictures), home.Folder().Path());
    EXPECT_EQ(shell.SpecialFolder(ShellFolderOf::Desktop), home.Folder().Path());
}

TEST(SpecialFolders, WithoutAFileTheCustomaryNamesServe) {
    OtherHome const home;
    home.Folder().Folder("Pictures");
    LinuxShellNamespace const shell;
    EXPECT_EQ(shell.SpecialFolder(ShellFolderOf::Pictures), home.Folder() / "Pictures");
    EXPECT_EQ(shell.SpecialFolder(ShellFolderOf::CommonDocuments), home.Folder().Path());
}

TEST(SpecialFolders, ALineIsReadAsAShellWould) {
    std::pair<char const *, char const *> const cases[] = {
        {"XDG_DOCUMENTS_DIR=\"$HOME\"", "/home/me"},
        {"XDG_DOCUMENTS_DIR=\"$HOME/\"", "/home/me"},
        {"\t XDG_DOCUMENTS_DIR=\"/data//\" \r\n", "/data"},
        {"XDG_DOCUMENTS_DIR=\"/\"", "/"},
        {"XDG_DOCUMENTS_DIR=\"/a\"\nXDG_DOCUMENTS_DIR=\"/b\"\nXDG_DOCUMENTS_DIR=broken", "/b"},
        {"XDG_DOCUMENTS_DIR=\"/a\\$b\\\\c\"", "/a$b\\c"}};
    for (auto const &[text, folder] : cases)
        EXPECT_EQ(FindUserDirectory(text, "XDG_DOCUMENTS_DIR", "/home/me"), folder) << text;
}

TEST(SpecialFolders, ADamagedLineIsPassedOver) {
    for (char const *text : {"XDG_DOCUMENTS_DIR=", "XDG_DOCUMENTS_DIR=\"", "XDG_DOCUMENTS_DIR=\"$HOM", "=\"/x\"",
                             "XDG_DOCUMENTS_DIR=\"\"", "XDG_DOCUMENTS_DIR", "XDG_DOCUMENTS_DIR=\"$HOMEWORK/x\"",
                             "XDG_DOCUMENTS_DIR='/x'", "#XDG_DOCUMENTS_DIR=\"/x\""})
        EXPECT_EQ(FindUserDirectory(text, "XDG_DOCUMENTS_DIR", "/home/me"), "") << text;
}

} // namespace
} // namespace zelvar::platform
