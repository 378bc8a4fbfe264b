#include "support/GuiTest.h"
#include "zelvar/base/DCnfg.h"
#include "zelvar/layout/cdxCDynamicDialog.h"
#include "zelvar/layout/cdxCSizeIconCtrl.h"
#include "zelvar/platform/ui/ControlId.h"

#include <QtGui/QGuiApplication>
#include <QtGui/QScreen>
#include <QtTest/QTest>
#include <QtWidgets/QPushButton>

#include <gtest/gtest.h>

namespace zelvar {
namespace {

/// A window with two children, ids 1 and 2, served by an engine.
class Served : public cdxCDynamicWnd {
public:
    explicit Served(unsigned flags = 0) : cdxCDynamicWnd(FreedomAll, flags) {
        window.resize(200, 100);
        for (QPushButton *child : {&first, &second})
            child->setParent(&window);
        first.setGeometry(10, 10, 50, 20);
        second.setGeometry(100, 50, 80, 30);
        platform::SetDlgCtrlID(first, 1);
        platform::SetDlgCtrlID(second, 2);
        DoInitWindow(window);
    }
    ~Served() override { DoOnDestroy(); }
    Served(Served const &) = delete;
    Served &operator=(Served const &) = delete;

    void Grow(int dx, int dy) {
        window.resize(200 + dx, 100 + dy);
        DoOnSize(SizeRestored);
    }

    QWidget window;
    QPushButton first;
    QPushButton second;
};

TEST(DynamicWindow, ChildrenFollowByIdByModeAndByExample) {
    Served served;
    EXPECT_TRUE(served.AddSzControl(1, cdxCDynamicWnd::ModeGrow, cdxCDynamicWnd::ModeHalf, Size{}, false));
    EXPECT_TRUE(served.AddSzControl(&served.second, cdxCDynamicWnd::BotRight, Size{}, false));
    served.Grow(33, 20);
    EXPECT_EQ(served.first.geometry(), QRect(10, 20, 83, 20));
    EXPECT_EQ(served.second.geometry(), QRect(133, 70, 80, 30));

    EXPECT_TRUE(served.AddSzControl(&served.second, &served.first, false));
    EXPECT_EQ(served.second.geometry(), served.first.geometry()) << "it moves at once whatever the last argument says";
}

TEST(DynamicWindow, WhatDoesNotExistIsRefused) {
    Served served;
    EXPECT_FALSE(served.AddSzControl(7, cdxCDynamicWnd::TopLeft, Size{}, true));
    EXPECT_FALSE(served.AddSzControl(&served.first, &served.second, true)) << "nothing to take as an example";
    EXPECT_FALSE(served.RemSzControl(&served.first, true));
    served.DoOnDestroy();
    EXPECT_FALSE(served.AddSzControl(&served.first, cdxCDynamicWnd::TopLeft, Size{}, true));
    EXPECT_EQ(served.GetCurrentClientSize(), Size{});
}

TEST(DynamicWindow, UnregisteredAndUnchangedChildrenAreLeftAlone) {
    Served served;
    served.AddSzControl(&served.first, cdxCDynamicWnd::TopLeft, Size{}, false);
    served.second.move(1, 1);
    served.Grow(50, 50);
    EXPECT_EQ(served.first.geometry(), QRect(10, 10, 50, 20));
    EXPECT_EQ(served.second.pos(), QPoint(1, 1));
    EXPECT_TRUE(served.RemSzControl(&served.first, false));
    EXPECT_EQ(served.GetCtrlCount(), 0U);
}

TEST(DynamicWindow, AllControlsRegistersDirectChildrenOnce) {
    Served served;
    served.AddSzControl(&served.first, cdxCDynamicWnd::TopLeft, Size{}, false);
    QPushButton grandchild(&served.second);
    served.AllControls(cdxCDynamicWnd::BotRight, false, true);
    EXPECT_EQ(served.GetCtrlCount(), 2U);
    served.Grow(10, 10);
    EXPECT_EQ(served.first.pos(), QPoint(10, 10)) << "registered before and not overwritten";
    EXPECT_EQ(served.second.pos(), QPoint(110, 60));
}

TEST(DynamicWindow, DisablingNestsAndADestroyedChildIsForgotten) {
    Served served;
    auto *child = new QPushButton(&served.window);
    child->setGeometry(0, 0, 10, 10);
    served.AddSzControl(child, cdxCDynamicWnd::BotRight, Size{}, false);
    served.Disable();
    served.Disable();
    EXPECT_FALSE(served.Enable());
    served.Grow(10, 10);
    EXPECT_EQ(child->pos(), QPoint(0, 0));
    EXPECT_TRUE(served.Enable());
    EXPECT_TRUE(served.Enable()) << "one too many leaves it enabled";
    served.Grow(20, 20);
    EXPECT_EQ(child->pos(), QPoint(20, 20));
    served.DoOnParentNotify(cdxCDynamicWnd::kChildDestroyed, child);
    delete child;
    EXPECT_EQ(served.GetCtrlCount(), 0U);
    served.Grow(30, 30);
}

TEST(DynamicWindow, TrackSizesFollowFreedomAndTheInitialSize) {
    Served served;
    cdxCDynamicWnd::MinMaxInfo info;
    served.SetMaxSize({500, 0});
    served.DoOnGetMinMaxInfo(info);
    Size const border = served.GetBorderSize();
    EXPECT_EQ(info.minTrack, (Size{200 + border.cx, 100 + border.cy}));
    EXPECT_EQ(info.maxTrack, (Size{500 + border.cx, 0}));
}

TEST(DynamicWindow, SizingAtTheFarCornerKeepsWhatIsDrawnUntilTheTimer) {
    Served served(cdxCDynamicWnd::FlagAntiFlicker);
    served.DoOnSizing(8);
    EXPECT_TRUE(served.window.testAttribute(Qt::WA_StaticContents));
    EXPECT_TRUE(test::Eventually([&] { return !served.window.testAttribute(Qt::WA_StaticContents); }));
}

TEST(DynamicWindow, TheGripSitsInTheCornerAndFollowsIt) {
    Served served(cdxCDynamicWnd::FlagSizeIcon);
    auto *grip = platform::GetDlgItem<cdxCSizeIconCtrl>(served.window, cdxCDynamicWnd::kSizeIconId);
    ASSERT_NE(grip, nullptr);
    served.Grow(40, 30);
    EXPECT_EQ(grip->geometry().bottomRight(), served.window.rect().bottomRight());
}

/// A dialog with one child that fills it.
class FilledDialog : public cdxCDynamicDialog {
public:
    explicit FilledDialog(unsigned id) : cdxCDynamicDialog(id, nullptr, FreedomAll, FlagSizeIcon | FlagAntiFlicker) {}
    QPushButton *child = nullptr;
    int initialized = 0;

protected:
    bool OnInitDialog() override {
        ++initialized;
        resize(200, 100);
        child = new QPushButton(this);
        child->setGeometry(rect());
        cdxCDynamicDialog::OnInitDialog();
        AddSzControl(child, 0, 0, 100, 100, Size{}, true);
        return true;
    }
};

constexpr char kSection[] = "WindowPositions\\ID=0x000004d2"; // of the dialog with id 1234

TEST(DynamicDialog, OpensTenPercentLargerAndRemembersWhereItWasLeft) {
    auto const closed = test::OnNextDialog([](QWidget &dialog) {
        EXPECT_EQ(dialog.size(), QSize(220, 110));
        dialog.setGeometry(50, 60, 300, 200);
    });
    QRect left;
    {
        FilledDialog dialog(1234);
        EXPECT_EQ(dialog.DoModal(), QDialog::Rejected);
        EXPECT_EQ(dialog.initialized, 1);
        EXPECT_EQ(dialog.child->size(), QSize(300, 200));
        left = dialog.geometry();
    }
    ASSERT_TRUE(*closed);
    EXPECT_EQ(Profile::GetInt(kSection, "(valid)", 0), 1);

    FilledDialog again(1234);
    again.show();
    EXPECT_EQ(again.size(), left.size());
    EXPECT_EQ(again.child->size(), left.size());
}

TEST(DynamicDialog, AnInterruptedStoreOrAPlaceOffTheScreensFallsBackToTheCentre) {
    QRect const screens = QGuiApplication::primaryScreen()->virtualGeometry();
    struct Case {
        char const *name;
        int valid;
        int left;
        bool restored;
    };
    Case const cases[] = {
        {"interrupted", 0, 100, false},
        {"three pixels inside the edge", 1, screens.right() - 2, false},
        {"ten pixels inside the edge", 1, screens.right() - 9, true},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.name);
        for (auto const &[name, value] : {std::pair("Left", c.left), std::pair("Right", c.left + 300),
                                          std::pair("Top", 100), std::pair("Bottom", 300), std::pair("State", -1),
                                          std::pair("Visibility", 1), std::pair("(valid)", c.valid)})
            ASSERT_TRUE(Profile::WriteInt(kSection, name, value));
        FilledDialog dialog(1234);
        dialog.show();
        EXPECT_EQ(dialog.size(), c.restored ? QSize(300, 200) : QSize(220, 110));
    }
}

TEST(DynamicDialog, WithoutAnIdNothingIsStoredAndNothingStretched) {
    FilledDialog dialog(0);
    dialog.show();
    EXPECT_EQ(dialog.size(), QSize(200, 100));
    EXPECT_EQ(dialog.AutoPosKey(), "");
    EXPECT_EQ(dialog.minimumSize(), QSize(200, 100)) << "it cannot be made smaller than it was designed";
}

} // namespace
} // namespace zelvar
