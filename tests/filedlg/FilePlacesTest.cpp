// The file dialog over places that have gone, that are closed, and that change meanwhile.
#include "support/FileDialogHand.h"
#include "support/SilentMount.h"
#include "support/Stopwatch.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/data/PlaceCheck.h"

#include <QtCore/QPointer>
#include <QtCore/QSettings>
#include <QtWidgets/QFileDialog>

#include <filesystem>

namespace zelvar::test {
namespace {

using namespace std::chrono_literals;

/// A mounted place that does not answer, and the check that knows it.
class DeadPlace : Pinned {
public:
    DeadPlace() : m_rescuer([this](std::stop_token const &end) { Rescue(end); }) {
        s_point = ParentPathOf(m_mount.File());
        m_mount.FallSilent();
        SetPlaceCheck([](DString const &path) { return !path.starts_with(s_point); });
    }
    ~DeadPlace() {
        SetPlaceCheck(nullptr);
        LetGo();
    }

    [[nodiscard]] bool IsMounted() const { return m_mount.IsMounted(); }
    [[nodiscard]] DString const &Point() const { return s_point; }
    [[nodiscard]] DString Parent() const { return DString(ParentPathOf(s_point)); }
    [[nodiscard]] bool WasTouched() const { return m_mount.IsSomebodyHeld(); }
    void LetGo() { m_isOver = true; } ///< nobody is held any more

private:
    /// Nothing else ends a program that is held when it should not be.
    void Rescue(std::stop_token const &end) {
        Clock::time_point held = Clock::now();
        while (!end.stop_requested()) {
            if (!WasTouched())
                held = Clock::now();
            else if (m_isOver || Since(held) > 4s)
                m_mount.Answer();
            std::this_thread::yield();
        }
    }

    SilentMount m_mount{"image.tif"};
    inline static DString s_point;
    std::atomic<bool> m_isOver{false};
    std::jthread m_rescuer;
};

struct FilePlaces : FileDialogTest {
    [[nodiscard]] CCustomFileDlg Dialog(bool opens, DString const &place) const {
        CCustomFileDlg dialog(opens, "tif", nullptr, "Images|*.tif||", nullptr);
        dialog.GetOFN().initialDir = place;
        return dialog;
    }
};

/// Only where a place can be mounted.
struct DeadPlaces : FilePlaces {
    void SetUp() override {
        ASSERT_TRUE(dead.IsMounted() || getuid() != 0U) << "the superuser can mount";
        if (!dead.IsMounted())
            GTEST_SKIP() << "no mount can be made here";
    }
    DeadPlace dead;
};

TEST_F(DeadPlaces, TenDeadFoldersInTheHistoryHoldNobodyNorIsTheOneAroundThemListed) {
    DVectorSafe<DString> history;
    for (int at = 0; at < 10; ++at)
        history.push_back(dead.Point() + "/" + std::to_string(at));
    history.push_back(folder.Path());
    CCustomFileDlg dialog = Dialog(false, dead.Parent());
    dialog.EnableHistory(true);
    dialog.SetHistory(history);
    auto const begin = Clock::now();
    ExpectPicked(dialog, Paths{folder / "result.tif"}, [&](FileDialogHand const &hand) {
        EXPECT_LT(Since(begin), 300ms * kSlower);
        auto *const combo = hand.Control<CZelComboBox>(6008);
        EXPECT_EQ(combo->GetCount(), 11);
        EXPECT_NE(hand.Part<CZelComboBox>("folderBox").GetWindowText(), dead.Parent());
        hand.TypeAndEnter(dead.Parent());
        EXPECT_EQ(told.Take(), Paths{"Folder '" + dead.Parent() + "' holds a place that does not answer"});
        Choose(*combo, 5);
        EXPECT_THAT(told.Take(), testing::Contains("Folder '" + history[5] + "' not found"));
        hand.TypeAndEnter(dead.Point() + "/image.tif");
        EXPECT_EQ(told.Take(), Paths{"'" + dead.Point() + "/image.tif' does not answer"});
        Choose(*combo, 10);
        std::ignore = told.Take(); // of those on the way
        hand.TypeAndEnter("result");
    });
    EXPECT_FALSE(dead.WasTouched());
    EXPECT_LT(Since(begin), 2000ms * kSlower);
}

TEST_F(DeadPlaces, ALinkToADeadPlaceHoldsTheListingAlone) {
    std::filesystem::create_symlink(dead.Point(), folder / "share");
    CCustomFileDlg dialog = Dialog(true, folder.Path());
    auto const begin = Clock::now();
    QPointer<QWidget> left;
    RunWith(dialog, [&](FileDialogHand const &hand) {
        left = &hand.Dialog();
        EXPECT_TRUE(Eventually([&] { return dead.WasTouched(); }));
    });
    EXPECT_LT(Since(begin), 1500ms * kSlower) << "closing does not wait for the listing";
    EXPECT_TRUE(left && left->isHidden());
    dead.LetGo();
    EXPECT_TRUE(Eventually([&] { return left.isNull(); })) << "it ends when it can";
}

TEST_F(FilePlaces, WhatAllProgramsShareIsNeitherReadNorWritten) {
    QSettings shared(QSettings::UserScope, QStringLiteral("QtProject"));
    for (char const *const kept : {"lastVisited", "shortcuts", "history"})
        shared.setValue(QStringLiteral("FileDialog/") + kept, QStringList{QStringLiteral("file:///proc/") + kept});
    shared.setValue(QStringLiteral("FileDialog/viewMode"), QStringLiteral("List"));
    shared.sync();
    std::string const before = ReadFile(shared.fileName().toStdString());
    ASSERT_FALSE(before.empty());
    CCustomFileDlg dialog = Dialog(true, folder.Path());
    RunWith(dialog, [&](FileDialogHand const &hand) {
        auto const &window = dynamic_cast<QFileDialog &>(hand.Dialog());
        EXPECT_TRUE(window.testOption(QFileDialog::DontUseNativeDialog));
        EXPECT_EQ(window.viewMode(), QFileDialog::Detail);
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

} // namespace
} // namespace zelvar::test
