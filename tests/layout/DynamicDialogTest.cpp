#include "support/GuiTest.h"
#include "zelvar/layout/cdxCDynamicDialog.h"
#include "zelvar/layout/cdxCDynamicPropertyPage.h"
#include "zelvar/layout/cdxCSizeIconCtrl.h"
#include "zelvar/platform/ui/MainWindow.h"
#include "zelvar/store/DCnfg.h"
#include "zelvar/store/SettingsStore.h"

#include <QtGui/QScreen>
#include <QtGui/QWheelEvent>

namespace zelvar {
namespace {

using platform::ControlKind;

constexpr platform::DialogItem kItems[] = {
    {1, ControlKind::DefaultButton, "OK", 10, 60, 50, 14, {100, 100, 100, 100}},
    {2, ControlKind::Button, "Cancel", 70, 60, 50, 14},
    {3, ControlKind::List, "", 10, 10, 110, 40, {0, 0, 100, 100}},
};
constexpr platform::DialogTemplate kTemplate{
    .id = 6104, .caption = "Test", .width = 130, .height = 80, .items = kItems};
constexpr char const *kSection = "WindowPositions\\ID=0x000017d8";

std::vector<DString> StoredSections() { return SettingsStore::Instance().Children("Profile\\Zelvar\\WindowPositions"); }

void Store(Rect const &rect, int visibility = 0, int state = -1, int valid = 1) {
    std::pair<char const *, int> const values[] = {
        {"Left", rect.left},        {"Top", rect.top}, {"Right", rect.right}, {"Bottom", rect.bottom},
        {"Visibility", visibility}, {"State", state},  {"(valid)", valid}};
    for (auto const &[name, value] : values)
        Profile::WriteInt(kSection, name, value);
}

struct DynamicDialogTest : testing::Test {
    DynamicDialogTest() { SettingsStore::Instance().RemoveTree("Profile"); }
};

struct TestDialog : cdxCDynamicDialog {
    using cdxCDynamicDialog::cdxCDynamicDialog;
    using cdxCDynamicDialog::m_bNewDlg;
    using cdxCDynamicDialog::m_szInitial;
    bool OnInitDialog() override {
        EXPECT_FALSE(isVisible());
        bool const result = cdxCDynamicDialog::OnInitDialog();
        // Made after the base has restored the position; its rectangle is that of the designed size.
        auto *const own = new QPushButton(this);
        own->setGeometry(5, 5, 20, 20);
        platform::SetDlgCtrlID(*own, 50);
        AddSzControl(50, TopRight);
        ++initialised;
        return result;
    }
    int initialised = 0;
};

TEST_F(DynamicDialogTest, OpensCentredAndTenPercentBiggerTheFirstTime) {
    TestDialog dialog(kTemplate);
    dialog.show();
    QSize const initial(dialog.m_szInitial.cx, dialog.m_szInitial.cy);
    EXPECT_EQ(dialog.size(),
              QSize(initial.width() + initial.width() * 10 / 100, initial.height() + initial.height() * 10 / 100));
    QPoint const off = dialog.geometry().center() - dialog.screen()->availableGeometry().center();
    EXPECT_LE(off.manhattanLength(), 4);
    EXPECT_EQ(dialog.minimumSize(), initial);
    auto *const own = platform::GetDlgItem(dialog, 50);
    ASSERT_NE(own, nullptr);
    EXPECT_TRUE(own->isVisible());
    EXPECT_EQ(own->x(), 5 + dialog.width() - initial.width());
    EXPECT_FALSE(dialog.m_bNewDlg);

    QWidget main;
    platform::SetMainWindow(&main);
    main.show();
    for (QPoint const corner : {QPoint(420, 440), QPoint(720, 740)}) { // the second leaves no room below
        SettingsStore::Instance().RemoveTree("Profile");
        main.setGeometry(QRect(corner, QSize(300, 200)));
        TestDialog over(kTemplate);
        over.show();
        QRect const screen = over.screen()->availableGeometry();
        QPoint const from = over.geometry().center() - main.geometry().center();
        EXPECT_TRUE(from.manhattanLength() < 8 || corner.x() == 720);
        EXPECT_TRUE(screen.adjusted(-4, -4, 4, 4).contains(over.geometry())); // but for the frame
    }
    platform::SetMainWindow(nullptr);
}

TEST_F(DynamicDialogTest, ComesBackWhereItStoodAndControlsFollow) {
    Rect placed;
    {
        TestDialog dialog(kTemplate);
        dialog.show();
        dialog.setGeometry(60, 70, 500, 400);
        auto const *const list = platform::GetDlgItem(dialog, 3);
        QRect const wanted = list->geometry();
        EXPECT_GT(wanted.width(), 300);
        placed = {60, 70, 560, 470};
    }
    EXPECT_EQ(Profile::GetInt(kSection, "Right", 0), placed.right);
    EXPECT_EQ(Profile::GetInt(kSection, "Visibility", -1), 1);
    EXPECT_EQ(Profile::GetInt(kSection, "State", 5), -1);
    EXPECT_EQ(Profile::GetInt(kSection, "(valid)", 0), 1);
    TestDialog again(kTemplate);
    again.Create();
    EXPECT_EQ(again.geometry(), QRect(60, 70, 500, 400));
    EXPECT_TRUE(again.isVisible()); // as it was stored, though only after its controls were there
    EXPECT_TRUE(platform::GetDlgItem(again, 50)->isVisible());
}

TEST_F(DynamicDialogTest, WhatCannotBeRestoredOpensCentred) {
    Rect const screen{0, 0, 800, 800};
    test::Rows<char const *, Rect, int, bool> const cases = {
        {"whole", {100, 100, 500, 500}, 1, true},
        {"edges swapped", {500, 500, 100, 100}, 1, true},
        {"interrupted while it was stored", {100, 100, 500, 500}, 0, false},
        {"off every screen", {5000, 5000, 5400, 5400}, 1, false},
        {"within the margin of the screen", {screen.right - 3, 100, screen.right + 400, 500}, 1, false},
    };
    for (auto const &[name, rect, valid, restored] : cases) {
        SCOPED_TRACE(name);
        Store(rect, 0, -1, valid);
        TestDialog dialog(kTemplate);
        dialog.show();
        EXPECT_EQ(dialog.geometry() == QRect(100, 100, 400, 400), restored);
        EXPECT_TRUE(dialog.isVisible());
    }
}

TEST_F(DynamicDialogTest, AMaximisedDialogComesBackMaximisedWithItsNormalPlace) {
    Store({50, 60, 450, 460}, 0, 1);
    {
        TestDialog dialog(kTemplate);
        dialog.show();
        EXPECT_TRUE(dialog.isMaximized());
        EXPECT_TRUE(
            test::Eventually([&] { return dialog.width() > dialog.screen()->availableGeometry().width() * 3 / 4; }));
    }
    EXPECT_EQ(Profile::GetInt(kSection, "State", 0), 1);
    EXPECT_EQ(Profile::GetInt(kSection, "Right", 0), 450);
}

TEST_F(DynamicDialogTest, StoresNothingWithoutKeyOrApplicationKey) {
    {
        TestDialog nameless("");
        nameless.resize(200, 100);
        nameless.show();
        EXPECT_EQ(nameless.size(), QSize(200, 100)); // not stretched
        TestDialog numberless(0U);
        numberless.show();
    }
    {
        TestDialog none(kTemplate);
        none.NoAutoPos();
        none.show();
    }
    {
        cdxCDynamicChildDlg alone(kTemplate);
        alone.show();
        QTest::keyClick(platform::GetDlgItem(alone, 3), Qt::Key_Escape);
        EXPECT_FALSE(alone.isVisible());
        cdxCDynamicPropertyPage page(kTemplate);
        page.show();
        EXPECT_NE(platform::GetDlgItem(page, 3), nullptr);
    }
    Profile::SetRegistryKey("");
    {
        TestDialog dialog(kTemplate);
        dialog.show();
        EXPECT_FALSE(dialog.StoreWindowPosition(kSection) || dialog.RestoreWindowPosition(kSection, 3));
    }
    Profile::SetRegistryKey("Zelvar");
    EXPECT_TRUE(StoredSections().empty());
    {
        TestDialog named("Name");
        named.show();
    }
    EXPECT_EQ(StoredSections(), std::vector<DString>{"Name"});
}

TEST_F(DynamicDialogTest, RunsModallyEndsByItsButtonsAndCanRunAgain) {
    TestDialog dialog(kTemplate);
    QLabel older(&dialog); // is no control of a showing
    dialog.Disable();
    auto const run = [&](int button) {
        auto const seen = test::OnNextDialog([&, button](QWidget &shown) {
            EXPECT_TRUE(shown.isModal());
            EXPECT_EQ(dialog.IsDisabled(), dialog.initialised == 1) << "what was disabled before stays so";
            EXPECT_EQ(shown.findChildren<QPushButton *>().size(), 3);
            test::Click(platform::GetDlgItem(shown, button));
        });
        int const result = dialog.DoModal();
        EXPECT_TRUE(*seen);
        return result;
    };
    EXPECT_EQ(run(1), 1);
    EXPECT_EQ(Profile::GetInt(kSection, "(valid)", 0), 1);
    EXPECT_EQ(run(2), 0);
    EXPECT_EQ(dialog.initialised, 2);
    EXPECT_EQ(older.parentWidget(), &dialog);
}

TEST_F(DynamicDialogTest, WithoutFreedomTheSizeStays) {
    TestDialog dialog(kTemplate, nullptr, cdxCDynamicWnd::FreedomNone, 0);
    dialog.show();
    EXPECT_EQ(dialog.minimumSize(), dialog.maximumSize());
    EXPECT_EQ(dialog.width(), dialog.m_szInitial.cx);
    Store({0, 0, 700, 700});
    TestDialog again(kTemplate, nullptr, cdxCDynamicWnd::FreedomHoriz, 0);
    again.show();
    EXPECT_EQ(again.width(), 700);
    EXPECT_EQ(again.height(), again.m_szInitial.cy);
}

TEST_F(DynamicDialogTest, ReturnPressesTheButtonThatHasTheFocusElseTheDefaultOne) {
    for (auto const &[focused, result] : {std::pair{3, QDialog::Accepted}, {2, QDialog::Rejected}}) {
        TestDialog dialog(kTemplate);
        dialog.show();
        dialog.setResult(-1);
        platform::GetDlgItem(dialog, focused)->setFocus();
        QTest::keyClick(platform::GetDlgItem(dialog, focused), Qt::Key_Return);
        EXPECT_EQ(dialog.result(), result) << focused;
    }
}

TEST_F(DynamicDialogTest, AChildDialogFillsItsPlaceInTheParent) {
    QDialog parent;
    parent.resize(300, 300);
    cdxCDynamicChildDlg child(kTemplate, &parent);
    parent.show();
    child.show();
    cdxCDynamicChildDlg const numbered(7U, &parent);
    cdxCDynamicChildDlg const named("named", &parent);
    EXPECT_FALSE(child.isWindow() || numbered.isWindow() || named.isWindow());
    QRect const list = platform::GetDlgItem(child, 3)->geometry();
    child.resize(child.width() + 40, child.height() + 30);
    EXPECT_EQ(platform::GetDlgItem(child, 3)->geometry(), list.adjusted(0, 0, 40, 30));
    EXPECT_EQ(child.findChild<QScrollBar *>(QString(), Qt::FindDirectChildrenOnly), nullptr) << "nothing to scroll";
    child.resize(child.width() - 100, child.height() - 30);
    EXPECT_EQ(platform::GetDlgItem(child, 3)->geometry(), list); // below its first width it scrolls
    QTest::keyClick(platform::GetDlgItem(child, 3), Qt::Key_Return);
    EXPECT_EQ(child.result(), QDialog::Accepted) << "by its default button";
    child.setResult(QDialog::Rejected);
    QTest::keyClick(platform::GetDlgItem(child, 3), Qt::Key_Escape);
    EXPECT_FALSE(parent.isVisible());
    EXPECT_FALSE(child.isHidden()) << "the key was its parent's";
    child.accept();
    EXPECT_FALSE(child.isHidden());
    EXPECT_EQ(child.result(), QDialog::Accepted);
}

TEST_F(DynamicDialogTest, AChildThatIsTooSmallHasScrollBarsToReachAllOfIt) {
    QWidget parent;
    parent.resize(300, 300);
    cdxCDynamicChildDlg child(kTemplate, &parent);
    child.resize(120, 70); // before it comes up: its place decides
    parent.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&parent));
    EXPECT_EQ(child.size(), QSize(120, 70));
    auto const bars = child.findChildren<QScrollBar *>(QString(), Qt::FindDirectChildrenOnly);
    ASSERT_EQ(bars.size(), 2);
    QScrollBar &across = bars[0]->orientation() == Qt::Horizontal ? *bars[0] : *bars[1];
    QScrollBar &down = bars[0]->orientation() == Qt::Horizontal ? *bars[1] : *bars[0];
    QRect const seen(0, 0, down.x(), across.y());
    QWidget const &list = *platform::GetDlgItem(child, 3);
    QWidget &cancel = *platform::GetDlgItem(child, 2); // is not registered, and scrolls all the same
    QPoint const apart = cancel.pos() - list.pos();
    EXPECT_FALSE(seen.contains(cancel.geometry()));
    across.setValue(across.maximum());
    down.setValue(down.maximum());
    EXPECT_TRUE(seen.contains(cancel.geometry()));
    EXPECT_EQ(cancel.pos() - list.pos(), apart);
    test::Shot(parent, "child-scrolled");
    platform::GetDlgItem(child, 3)->setFocus(); // what gets the keyboard comes into view
    EXPECT_TRUE(seen.contains(list.pos()));
    cancel.setFocus();
    EXPECT_TRUE(seen.contains(cancel.geometry()));
    QWheelEvent wheel(QPointF(5, 5), child.mapToGlobal(QPointF(5, 5)), {}, {0, 240}, Qt::NoButton, {},
                      Qt::NoScrollPhase, false);
    int const before = down.value();
    QApplication::sendEvent(&child, &wheel);
    EXPECT_LT(down.value(), before);
    child.resize(300, 300);
    ASSERT_EQ(child.findChildren<QScrollBar *>(QString(), Qt::FindDirectChildrenOnly), bars) << "it keeps them";
    EXPECT_TRUE(across.isHidden() && down.isHidden());
    EXPECT_EQ(cancel.pos() - list.pos(), apart);
    EXPECT_GT(list.x(), 0);
}

} // namespace
} // namespace zelvar
