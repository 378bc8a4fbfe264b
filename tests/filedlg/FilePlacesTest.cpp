// The file dialog over places that have gone, that are closed, and that change meanwhile.
#include "support/FileDialogHand.h"
#include "support/SilentMount.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/data/PlaceCheck.h"

#include <QtCore/QSettings>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QMessageBox>

#include <filesystem>

namespace zelvar::test {
namespace {

using Clock = std::chrono::steady_clock;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kSlower = 8; // under a sanitizer
#else
constexpr int kSlower = 1;
#endif

long long MillisecondsSince(Clock::time_point begin) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();
}

/// A mounted place that does not answer, and the check that knows it.
class DeadPlace : Pinned {
public:
    DeadPlace() : m_rescuer([this] { Rescue(); }) {
        s_point = ParentPathOf(m_mount.File());
        m_mount.FallSilent();
        SetPlaceCheck([](DString const &path) { return !path.starts_with(s_point); });
    }
    ~DeadPlace() {
        SetPlaceCheck(nullptr);
        LetGo();
        m_isGone = true;
        m_rescuer.join();
    }

    [[nodiscard]] bool IsThere() const {
        EXPECT_TRUE(m_mount.IsMounted() || getuid() != 0U) << "the superuser can mount";
        return m_mount.IsMounted();
    }
    [[nodiscard]] DString const &Point() const { return s_point; }
    [[nodiscard]] DString Parent() const { return DString(ParentPathOf(s_point)); }
    [[nodiscard]] bool WasTouched() const { return m_mount.IsSomebodyHeld(); }
    void LetGo() { m_isOver = true; } ///< nobody is held any more

private:
    /// Nothing else ends a program that is held when it should not be.
    void Rescue() {
        Clock::time_point held = Clock::now();
        while (!m_isGone) {
            if (!WasTouched())
                held = Clock::now();
            else if (m_isOver || MillisecondsSince(held) > 4000)
                m_mount.Answer();
            std::this_thread::yield();
        }
    }

    SilentMount m_mount{"image.tif"};
    inline static DString s_point;
    std::atomic<bool> m_isOver{false};
    std::atomic<bool> m_isGone{false};
    std::thread m_rescuer;
};

struct FilePlaces : testing::Test {
    ~FilePlaces() override { EXPECT_EQ(told.Take(), Paths{}); }
    [[nodiscard]] CCustomFileDlg Dialog(bool opens, DString const &place) const {
        CCustomFileDlg dialog(opens, "tif", nullptr, "Images|*.tif||", nullptr);
        dialog.GetOFN().initialDir = place;
        return dialog;
    }

    TempFolder folder;
    Told told;
};

TEST_F(FilePlaces, TenDeadFoldersInTheHistoryHoldNobody) {
    DeadPlace const dead;
    if (!dead.IsThere())
        return;
    DVectorSafe<DString> history;
    for (int at = 0; at < 10; ++at)
        history.push_back(dead.Point() + "/" + std::to_string(at));
    history.push_back(folder.Path());
    CCustomFileDlg dialog = Dialog(false, history[0]); // dropped
    dialog.EnableHistory(true);
    dialog.SetHistory(history);
    auto const begin = Clock::now();
    ExpectPicked(dialog, Paths{folder / "result.tif"}, [&](FileDialogHand const &hand) {
        EXPECT_LT(MillisecondsSince(begin), 300 * kSlower);
        auto *const combo = hand.Control<CZelComboBox>(6008);
        EXPECT_EQ(combo->GetCount(), 11);
        FileDialogHand::Choose(*combo, 5);
        EXPECT_THAT(told.Take(), testing::Contains("Folder '" + history[5] + "' not found"));
        hand.TypeAndEnter(dead.Point() + "/image.tif");
        EXPECT_EQ(told.Take(), Paths{"'" + dead.Point() + "/image.tif' does not answer"});
        FileDialogHand::Choose(*combo, 10);
        std::ignore = told.Take(); // of those on the way
        hand.TypeAndEnter("result");
    });
    EXPECT_FALSE(dead.WasTouched());
    EXPECT_LT(MillisecondsSince(begin), 2000 * kSlower);
}

TEST_F(FilePlaces, AFolderIsNotListedWhileADeadPlaceIsMountedInIt) {
    DeadPlace const dead;
    if (!dead.IsThere())
        return;
    CCustomFileDlg dialog = Dialog(true, dead.Parent());
    RunWith(dialog, [&](FileDialogHand const &hand) {
        EXPECT_NE(hand.Part<CZelComboBox>("folderBox").GetWindowText(), dead.Parent());
        std::ignore = told.Take();
        hand.TypeAndEnter(dead.Parent());
        EXPECT_EQ(told.Take(), Paths{"Folder '" + dead.Parent() + "' holds a place that does not answer"});
    });
    EXPECT_FALSE(dead.WasTouched());
}

TEST_F(FilePlaces, ALinkToADeadPlaceHoldsTheListingAlone) {
    DeadPlace dead;
    if (!dead.IsThere())
        return;
    std::filesystem::create_symlink(dead.Point(), folder / "share");
    CCustomFileDlg dialog = Dialog(true, folder.Path());
    auto const begin = Clock::now();
    RunWith(dialog, [&](FileDialogHand const &) { EXPECT_TRUE(Eventually([&] { return dead.WasTouched(); })); });
    EXPECT_LT(MillisecondsSince(begin), 1500 * kSlower) << "closing does not wait for the listing";
    auto const leftBehind = [] {
        return std::ranges::count_if(QApplication::topLevelWidgets(),
                                     [](QWidget *window) { return qobject_cast<QFileDialog *>(window) != nullptr; });
    };
    EXPECT_EQ(leftBehind(), 1);
    dead.LetGo();
    EXPECT_TRUE(Eventually([&] { return leftBehind() == 0; })) << "it ends when it can";
}

TEST_F(FilePlaces, WhatAllProgramsShareIsNeitherReadNorWritten) {
    QSettings shared(QSettings::UserScope, QStringLiteral("QtProject"));
    for (char const *const kept : {"lastVisited", "shortcuts", "history"})
        shared.setValue(QStringLiteral("FileDialog/") + kept, QStringList{QStringLiteral("file:///proc/") + kept});
    shared.sync();
    std::string const before = ReadFile(shared.fileName().toStdString());
    ASSERT_FALSE(before.empty());
    CCustomFileDlg dialog = Dialog(true, folder.Path());
    RunWith(dialog, [&](FileDialogHand const &hand) {
        auto &window = dynamic_cast<QFileDialog &>(hand.Dialog());
        EXPECT_TRUE(window.testOption(QFileDialog::DontUseNativeDialog));
        EXPECT_EQ(window.directory().path().toStdString(), folder.Path());
        EXPECT_FALSE(window.sidebarUrls().contains(QUrl(QStringLiteral("file:///proc/shortcuts"))));
        EXPECT_EQ(window.history().filter(QStringLiteral("/proc")).size(), 0);
    });
    EXPECT_EQ(ReadFile(shared.fileName().toStdString()), before);
    EXPECT_EQ(QSettings(QSettings::UserScope, QStringLiteral("QtProject")).fileName(), shared.fileName());
    shared.remove(QStringLiteral("FileDialog"));
}

/// Rights of a user who owns nothing, if the tests run as the superuser, who may write everywhere.
class WithoutRights : Pinned {
public:
    WithoutRights() {
        if (geteuid() == 0)
            m_isChanged = seteuid(65534) == 0;
    }
    ~WithoutRights() { EXPECT_TRUE(!m_isChanged || seteuid(0) == 0); }

private:
    bool m_isChanged = false;
};

TEST_F(FilePlaces, NothingIsSavedWhereItCannotBe) {
    chmod(folder.Write("a.tif").c_str(), 0444);
    chmod(folder.Path().c_str(), 0555);
    CCustomFileDlg dialog = Dialog(false, folder.Path());
    dialog.GetOFN().flags &= ~OFN_OVERWRITEPROMPT;
    ExpectPicked(dialog, Paths{}, [&](FileDialogHand const &hand) { // the dialog stays
        WithoutRights const user;
        for (auto const &[typed, text] :
             Rows<std::string, std::string>{{"b", "Nothing can be saved in the folder '" + folder.Path() + "'"},
                                            {"a", "File '" + (folder / "a.tif") + "' is read-only"},
                                            {"gone/c", "Folder '" + (folder / "gone") + "' not found"},
                                            {std::string(300, 'x'), "The name is too long"}}) {
            hand.TypeAndEnter(typed);
            EXPECT_EQ(told.Take(), Paths{text});
        }
    });
    chmod(folder.Path().c_str(), 0755);
}

TEST_F(FilePlaces, ATargetMayGoWhileTheUserIsAsked) {
    folder.Write("sub/a.tif");
    CCustomFileDlg dialog = Dialog(false, folder / "sub");
    ExpectPicked(dialog, Paths{folder / "sub/a.tif"}, [&](FileDialogHand const &hand) {
        hand.Type("a");
        auto const asked = OnNextDialog([&](QWidget &question) {
            std::filesystem::remove_all(folder / "sub");
            Click(dynamic_cast<QMessageBox &>(question).button(QMessageBox::Yes));
        });
        QTest::keyClick(&hand.Name(), Qt::Key_Return);
        EXPECT_TRUE(*asked);
    });
}

} // namespace
} // namespace zelvar::test
