#include "zelvar/opends/ThumbnailLook.h"

#include "support/ImageFiles.h"
#include "support/OpenDialogHand.h"
#include "support/RealDrivers.h"
#include "support/ScriptedShellNamespace.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/model/NtwDataSourceItem.h"

#include <QtGui/QWheelEvent>
#include <QtWidgets/QToolButton>

#include <filesystem>

namespace zelvar::test {
namespace {

constexpr int kImages = 150;

/// A list of its own in a window, with the look, over a folder of images whose thumbnails are of one colour each.
struct ThumbnailLooks : testing::Test {
    ThumbnailLooks() {
        BDIDrvrMngr::Instance()->Reset();
        RDIDriverMngr::Instance()->Reset();
        UseRealDrivers();
        EnsureDrivers();
        NtwDataSourceItem::Initialize();
        for (int i = 0; i < kImages; ++i)
            WriteImage(folder / Format("i%03d.tif", i),
                       {.width = 8, .height = 8, .sample = [i](int, int, int) { return i + 50.0; }});
    }
    struct Stage {
        explicit Stage(DString const &path, LookChoice const &choice) {
            window.resize(700, 500);
            list.SetMode(DSListCtrl::ModeRecursive);
            list.Create(0, {0, 0, 700, 500}, DT_DATA, &window, 3);
            list.SetMode(DSListCtrl::ModeFiles);
            list.Sort(0, true);
            look.emplace(list, window, "test");
            look->Choose(choice);
            window.show();
            list.setFocus();
            EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
            Show(path);
        }
        void Show(DString const &path) {
            list.ResetItems(
                {RefItemPtr<DataSourceItem>(NtwDataSourceItem::CreateItem(path.c_str(), nullptr, nullptr))});
            EXPECT_TRUE(Eventually([&] { return list.GetNumRow() > 0; }));
            list.viewport()->repaint();
        }
        [[nodiscard]] bool IsQuiet() {
            return Eventually([&] {
                list.viewport()->repaint();
                return !look->IsBusy();
            });
        }
        /// The middle of the picture of a row.
        [[nodiscard]] QColor ColorOf(int row) {
            Rect const place = list.GetSubItemRect(row, 0, LVIR_ICON);
            return list.viewport()->grab().toImage().pixelColor((place.left + place.right) / 2,
                                                                (place.top + place.bottom) / 2);
        }
        QWidget window;
        DSListCtrl list{&window};
        std::optional<ThumbnailLook> look;
    };
    TempFolder folder;
    TempFolder cache;
    Environment environment{{{"XDG_CACHE_HOME", cache.Path()}}};
};

TEST_F(ThumbnailLooks, WhatIsInSightAndOnePageAreReadAndTheSecondTimeNothing) {
    LookChoice const choice{.thumbnails = true, .side = 96};
    int opened = 0;
    {
        Stage stage(folder.Path(), choice);
        ASSERT_TRUE(stage.IsQuiet());
        auto const [first, behind] = stage.list.GetSeenRows();
        ASSERT_EQ(first, 0);
        ASSERT_LT(2 * behind, kImages) << "there is more than two pages";
        opened = stage.look->GetCounts().opened;
        EXPECT_EQ(opened, 2 * behind);
        EXPECT_EQ(stage.look->GetCounts().made, opened);
        for (int row = 0; row < stage.list.GetCountPerPage(); row += 3)
            EXPECT_EQ(stage.ColorOf(row), QColor(row + 50, row + 50, row + 50)) << row;
        stage.list.viewport()->repaint();
        EXPECT_EQ(stage.look->GetCounts().opened, opened);
        stage.list.EnsureVisible(kImages - 1);
        ASSERT_TRUE(stage.IsQuiet());
        EXPECT_LE(stage.look->GetCounts().opened, opened + 2 * behind) << "what lies between is not read";
        EXPECT_EQ(stage.ColorOf(kImages - 1), QColor(kImages + 49, kImages + 49, kImages + 49));
    }
    Stage again(folder.Path(), choice);
    ASSERT_TRUE(again.IsQuiet());
    EXPECT_EQ(again.look->GetCounts().opened, 0);
    EXPECT_EQ(again.look->GetCounts().found, opened);
    WriteImage(folder / "i000.tif", {.width = 9, .height = 9, .sample = [](int, int, int) { return 222; }});
    again.list.Refresh();
    ASSERT_TRUE(Eventually([&] { return again.list.GetNumRow() == kImages && again.IsQuiet(); }));
    EXPECT_EQ(again.look->GetCounts().opened, 1) << "the one that has changed";
    EXPECT_EQ(again.ColorOf(0), QColor(222, 222, 222));
}

TEST_F(ThumbnailLooks, KeysButtonAndWheelChooseAndItIsKept) {
    Stage stage(folder.Path(), {});
    auto const key = [&](Qt::Key which) { QTest::keyClick(&stage.list, which, Qt::ControlModifier); };
    EXPECT_FALSE(stage.list.IsTiled());
    key(Qt::Key_2);
    EXPECT_TRUE(stage.list.IsTiled());
    key(Qt::Key_Plus);
    EXPECT_EQ(stage.look->Choice().side, 144);
    key(Qt::Key_Minus);
    key(Qt::Key_Minus);
    EXPECT_EQ(stage.look->Choice().side, 112);
    auto const turn = [&](int angle, Qt::KeyboardModifiers keys) {
        QPointF const at(50, 50);
        QWheelEvent wheel(at, stage.list.viewport()->mapToGlobal(at), {}, {0, angle}, {}, keys, Qt::NoScrollPhase,
                          false);
        QCoreApplication::sendEvent(stage.list.viewport(), &wheel);
    };
    turn(60, Qt::ControlModifier);
    EXPECT_EQ(stage.look->Choice().side, 112) << "half a notch";
    turn(60, Qt::ControlModifier);
    EXPECT_EQ(stage.look->Choice().side, 128);
    EXPECT_EQ(stage.list.TileSize().cx, 128 + 16);
    turn(-120, {});
    EXPECT_GT(stage.list.verticalScrollBar()->value(), 0) << "without the key it scrolls";
    QTest::mouseClick(stage.look->Button(), Qt::LeftButton, {}, {4, stage.look->Button()->height() / 2});
    EXPECT_FALSE(stage.list.IsTiled());
    EXPECT_EQ(stage.look->Button()->accessibleName(), "Show thumbnails");
    key(Qt::Key_Plus);
    EXPECT_EQ(stage.look->Choice().side, 128) << "of rows there is no size";
}

TEST_F(ThumbnailLooks, PlacesOnANetworkAreRowsUnlessWanted) {
    auto const shell = std::make_shared<ScriptedShellNamespace>();
    for (int i = 0; i < 3; ++i)
        shell->AddFile("smb://host/share/r" + std::to_string(i) + ".tif");
    auto const real = platform::ShellNamespace::SetCurrent(shell);
    Stage stage("smb://host/share", {.thumbnails = true, .side = 96});
    EXPECT_FALSE(stage.list.IsTiled());
    EXPECT_EQ(stage.look->GetCounts().looked, 0);
    stage.look->Choose({.thumbnails = true, .side = 96, .remote = true});
    EXPECT_TRUE(stage.list.IsTiled());
    stage.look->Choose({.thumbnails = true, .side = 96});
    platform::ShellNamespace::SetCurrent(real);
    stage.Show(folder.Path());
    EXPECT_TRUE(stage.list.IsTiled()) << "here they come back by themselves";
}

/// What users see, for `make shots`.
TEST_F(ThumbnailLooks, AreAPageOfPictures) {
    auto const wave = [](int, int x, int y) { return 2000 + 1500 * std::sin(x / 40.0) * std::cos(y / 30.0); };
    TempFolder const mixed;
    WriteImage(mixed / "cells 12 bit.tif", {.width = 400, .height = 300, .type = GDT_UInt16, .sample = wave});
    WriteImage(mixed / "rgb a very long name that says what it is, and then_t001.tif",
               {.width = 320, .height = 200, .channels = 3});
    mixed.Write("measured.csv", "well;area;mean\nA01;12.5;200\nA02;13.1;190\n");
    mixed.Write("no image.tif", "damaged");
    Stage stage(mixed.Path(), {.thumbnails = true, .side = 128});
    ASSERT_TRUE(stage.IsQuiet());
    QTest::keyClick(&stage.list, Qt::Key_Home);
    QTest::keyClick(&stage.list, Qt::Key_Right);
    Shot(stage.window, "ThumbnailLook");
    stage.look->Button()->menu()->popup(stage.look->Button()->mapToGlobal(QPoint(0, 20)));
    Shot(*stage.look->Button()->menu(), "ThumbnailLook-menu");
    stage.look->Button()->menu()->close();
    EXPECT_EQ(stage.look->GetCounts().made, 3);
}

TEST(ThumbnailPictures, ThoseUsedLongestAgoMakeRoom) {
    DCanvas canvas;
    canvas.SetSize(100, 100); // 40,512 bytes each
    ThumbnailPictures pictures(100'000);
    for (char const *const name : {"a", "b"})
        pictures.Keep(name, 100, canvas, 1);
    EXPECT_NE(pictures.Find("a"), nullptr);
    pictures.Keep("c", 100, canvas, 1);
    EXPECT_EQ(pictures.Find("b"), nullptr) << "used before a";
    pictures.Keep("none", 100, {}, 1);
    ASSERT_NE(pictures.Find("none"), nullptr);
    EXPECT_TRUE(pictures.Find("none")->pixmap.isNull());
    EXPECT_LE(pictures.Bytes(), 100'000);
}

TEST(ThumbnailsInDialog, AreAFeatureOfTheMainListAndKnownByKindOfDocument) {
    UseRealDrivers();
    EnsureDrivers();
    TempFolder const folder;
    WriteImage(folder / "a.tif");
    folder.Write("b.asc", "ncols 2\nnrows 1\nxllcorner 0\nyllcorner 0\ncellsize 1\n1 2\n");
    DFileFrmt all("", "All Files", "*.*");
    auto const run = [&](unsigned features, DLGTemplate purpose, std::function<void(DlgOpenDS &)> const &act) {
        DlgOpenDS::SetFeatures(features);
        DialogPtr const dialog(DlgOpenDS::CreateDialogObject({&all}, &all, purpose, nullptr, nullptr));
        dialog->SetInitDir(folder.Path().c_str());
        RunWhen(
            *dialog, [&] { return dialog->MainList() != nullptr && dialog->MainList()->GetNumRow() > 0; },
            [&] {
                dialog->activateWindow();
                EXPECT_TRUE(QTest::qWaitForWindowActive(dialog.get()));
                act(*dialog);
            });
        DlgOpenDS::SetFeatures(kOpenAll);
    };
    run(kOpenAll, DT_DATA, [](DlgOpenDS &dialog) {
        ASSERT_NE(dialog.Thumbnails(), nullptr);
        Shot(dialog, "DlgOpenDS-rows");
        QTest::keyClick(&dialog, Qt::Key_2, Qt::ControlModifier);
        EXPECT_TRUE(dialog.MainList()->IsTiled());
        auto const opened = [&] {
            dialog.MainList()->viewport()->repaint();
            return dialog.Thumbnails()->IsBusy() ? 0 : dialog.Thumbnails()->GetCounts().opened;
        };
        EXPECT_TRUE(Eventually([&] { return opened() == 2; }));
        dialog.MainList()->setFocus();
        QTest::keyClick(dialog.MainList(), Qt::Key_End);
        auto const type = [&] { return dialog.PropertyWnd()->findChild<QComboBox *>("DATATYPE"); };
        ASSERT_TRUE(Eventually([&] { return type() != nullptr; }));
        type()->setCurrentIndex(2);
        Q_EMIT type()->activated(2);
        EXPECT_TRUE(Eventually([&] { return opened() == 3; })) << "with its options it is another picture";
        DString const stamp = ThumbnailStore().OwnFolder() + "/.pruned"; // which no other program looks after
        EXPECT_TRUE(Eventually([&] { return std::filesystem::exists(stamp); })) << stamp;
        QTest::keyClick(dialog.MainList(), Qt::Key_Home);
        PressOk(dialog);
    });
    run(kOpenAll, DT_DATA, [](DlgOpenDS &dialog) { EXPECT_TRUE(dialog.MainList()->IsTiled()); });
    run(kOpenAll, DT_DATA_ALT, [](DlgOpenDS &dialog) { EXPECT_FALSE(dialog.MainList()->IsTiled()); });
    run(kOpenPlain, DT_DATA, [](DlgOpenDS &dialog) {
        EXPECT_EQ(dialog.Thumbnails(), nullptr);
        QTest::keyClick(&dialog, Qt::Key_2, Qt::ControlModifier);
        EXPECT_FALSE(dialog.MainList()->IsTiled());
    });
}

} // namespace
} // namespace zelvar::test
