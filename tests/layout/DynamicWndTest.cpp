#include "support/GuiTest.h"
#include "zelvar/layout/WindowClassStyle.h"
#include "zelvar/layout/cdxCDynamicWnd.h"
#include "zelvar/platform/ui/ControlId.h"

#include <QtCore/QEvent>
#include <QtWidgets/QScrollArea>

namespace zelvar {

static void PrintTo(Size const &size, std::ostream *out) { *out << '(' << size.cx << ", " << size.cy << ')'; }

namespace {

/// An engine with its protected members open, and a table of its own.
struct Engine : cdxCDynamicWnd {
    using cdxCDynamicWnd::__dynEntry; // NOLINT(bugprone-reserved-identifier): applications use this name
    using cdxCDynamicWnd::DoCreateLayoutInfo;
    using cdxCDynamicWnd::m_bIsAntiFlickering;
    using cdxCDynamicWnd::m_bUseScrollPos;
    using cdxCDynamicWnd::m_iDisabled;
    using cdxCDynamicWnd::m_szMax;
    using cdxCDynamicWnd::m_szMin;
    using cdxCDynamicWnd::StartAntiFlickering;

    explicit Engine(Freedom freedom = FreedomAll, unsigned flags = 0) : cdxCDynamicWnd(freedom, flags) {}
    void OnInitialized() override { ++initialized; }
    void OnDestroying() override { ++destroying; }
    __dynEntry const *__getDynMap(__dynEntry const *) const override { return table.empty() ? nullptr : table.data(); }

    std::vector<__dynEntry> table;
    int initialized = 0;
    int destroying = 0;
};

/// Counts what the toolkit is asked to do with a widget.
struct MoveCounter : QObject {
    explicit MoveCounter(QWidget *watched) : QObject(watched) { watched->installEventFilter(this); }
    bool eventFilter(QObject *, QEvent *event) override {
        moves += event->type() == QEvent::Move || event->type() == QEvent::Resize ? 1 : 0;
        paints += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
    int moves = 0;
    int paints = 0;
};

struct DynamicWndTest : testing::Test {
    DynamicWndTest() {
        window.resize(400, 300);
        for (int id = 1; id <= 3; ++id) {
            auto *const child = new QPushButton(&window);
            child->setGeometry(100 * id - 90, 10, 80, 20);
            platform::SetDlgCtrlID(*child, id);
            children.push_back(child);
        }
        window.show();
    }
    /// As a window of the given client size.
    void Resize(int width, int height) {
        window.resize(width, height);
        engine.DoOnSize(0, width, height);
    }

    /// What is registered for a child that must be.
    [[nodiscard]] cdxCDynamicWnd::Position PositionOf(int child) const {
        cdxCDynamicWnd::Position position;
        EXPECT_TRUE(engine.GetControlPosition(children[static_cast<std::size_t>(child)], position));
        return position;
    }

    QWidget window;
    std::vector<QPushButton *> children;
    Engine engine;
};

TEST_F(DynamicWndTest, ChildrenFollowAndComeBackExactly) {
    engine.DoInitWindow(window);
    EXPECT_TRUE(engine.AddSzControl(children[0], cdxCDynamicWnd::ModeGrow, cdxCDynamicWnd::ModeFixed));
    EXPECT_TRUE(engine.AddSzControl(2, 100, 50, 100, 50));
    EXPECT_EQ(engine.GetCtrlCount(), 2U);
    QDialog above(&window);
    EXPECT_TRUE(engine.AddSzControl(&above, cdxCDynamicWnd::BotRight));
    QRect const apart = above.geometry();
    for (int width = 401; width < 460; width += 7)
        Resize(width, 331);
    Resize(433, 331);
    EXPECT_EQ(children[0]->geometry(), QRect(10, 10, 113, 20));
    EXPECT_EQ(children[1]->geometry(), QRect(143, 25, 80, 20));
    EXPECT_EQ(children[2]->geometry(), QRect(210, 10, 80, 20)); // never registered
    EXPECT_EQ(above.geometry(), apart) << "a window stands where it is";
    Resize(400, 300);
    EXPECT_EQ(children[0]->geometry(), QRect(10, 10, 80, 20));
}

TEST_F(DynamicWndTest, AChildThatStaysCostsNoCallAndOthersAreDrawnInOnePass) {
    engine.DoInitWindow(window);
    engine.AddSzControl(children[0], cdxCDynamicWnd::TopLeft);
    engine.AddSzControl(children[1], cdxCDynamicWnd::TopRight);
    ASSERT_TRUE(test::Eventually([&] { return window.isVisible(); }));
    MoveCounter const staying(children[0]);
    MoveCounter const moving(children[1]);
    QCoreApplication::processEvents();
    int const paintsBefore = moving.paints;
    Resize(450, 300);
    EXPECT_EQ(staying.moves, 0);
    EXPECT_EQ(moving.moves, 1);
    EXPECT_EQ(moving.paints, paintsBefore) << "painted in the middle of a pass";
    EXPECT_TRUE(test::Eventually([&] { return moving.paints == paintsBefore + 1; }));
    Resize(450, 310); // nothing moves
    EXPECT_EQ(moving.moves, 1);
    EXPECT_TRUE(window.updatesEnabled());
}

TEST_F(DynamicWndTest, ADeadChildIsForgottenWhateverTheWindowTellsOfIt) {
    engine.DoInitWindow(window);
    engine.AllControls(cdxCDynamicWnd::BotRight);
    EXPECT_EQ(engine.GetCtrlCount(), 3U);
    delete children[1];
    EXPECT_EQ(engine.GetCtrlCount(), 2U);
    engine.DoOnParentNotify(2, nullptr);
    engine.DoOnParentNotify(1, children[0]);
    EXPECT_EQ(engine.GetCtrlCount(), 2U);
    engine.DoOnParentNotify(2, children[0]);
    EXPECT_EQ(engine.GetCtrlCount(), 1U);
    Resize(500, 400);
    EXPECT_EQ(children[2]->pos(), QPoint(310, 110));
}

TEST_F(DynamicWndTest, RegistrationFailsWithoutChildOrWindow) {
    EXPECT_FALSE(engine.AddSzControl(children[0], cdxCDynamicWnd::TopLeft)); // no window yet
    engine.DoInitWindow(window);
    EXPECT_FALSE(engine.AddSzControl(99, cdxCDynamicWnd::TopLeft));
    EXPECT_FALSE(engine.AddSzControl(static_cast<QWidget *>(nullptr), cdxCDynamicWnd::TopLeft));
    EXPECT_FALSE(engine.AddSzControl(children[0], children[1], true)); // that one is not registered
    EXPECT_FALSE(engine.UpdateControlPosition(nullptr) || engine.RemSzControl(children[0], true));
    cdxCDynamicWnd::Position position;
    EXPECT_FALSE(engine.GetControlPosition(children[0], position));
}

TEST_F(DynamicWndTest, LikeAnotherTakesItsPlaceAndMovesWhateverTheArgumentSays) {
    engine.DoInitWindow(window);
    engine.AddSzControl(children[0], cdxCDynamicWnd::BotRight);
    Resize(450, 340);
    EXPECT_TRUE(engine.AddSzControl(2, children[0], false));
    EXPECT_EQ(children[1]->geometry(), children[0]->geometry());
    EXPECT_EQ(PositionOf(1), (LayoutPosition{10, 10, 90, 30, 100, 100, 100, 100, 0, 0}));
}

TEST_F(DynamicWndTest, OneAxisFormsLeaveTheOther) {
    engine.DoInitWindow(window);
    engine.AddSzXControl(1, 20, 40);
    engine.AddSzYControl(children[1], cdxCDynamicWnd::ModeMove, {30, 40});
    EXPECT_EQ(PositionOf(0), (LayoutPosition{10, 10, 90, 30, 20, 0, 40, 0, 0, 0}));
    EXPECT_EQ(PositionOf(1), (LayoutPosition{110, 10, 190, 30, 0, 100, 0, 100, 30, 40}));
}

TEST_F(DynamicWndTest, AllControlsSparesTheRegisteredUnlessTold) {
    engine.DoInitWindow(window);
    engine.AddSzControl(children[0], cdxCDynamicWnd::TopLeft);
    engine.AllControls(cdxCDynamicWnd::ModeMove, cdxCDynamicWnd::ModeFixed);
    Resize(410, 300);
    EXPECT_EQ(children[0]->x(), 10);
    EXPECT_EQ(children[1]->x(), 120);
    engine.AllControls(cdxCDynamicWnd::TopRight, true);
    Resize(420, 300);
    EXPECT_EQ(children[0]->x(), 30); // registered at 10 with the window 10 wider than at first
}

TEST_F(DynamicWndTest, ARemovedChildGoesBackWhenTold) {
    engine.DoInitWindow(window);
    engine.AllControls(cdxCDynamicWnd::BotRight);
    Resize(500, 400);
    EXPECT_TRUE(engine.RemSzControl(children[0], true));
    EXPECT_EQ(children[0]->geometry(), QRect(10, 10, 80, 20));
    EXPECT_TRUE(engine.RemSzControl(children[1], false));
    EXPECT_EQ(children[1]->pos(), QPoint(210, 110));
    EXPECT_EQ(engine.GetCtrlCount(), 1U);
}

TEST_F(DynamicWndTest, TheClassTableRegistersPercentagesModesAndTheRest) {
    engine.table = {{1, 1, {10, 20, 30, 40}}, {2, 2, {1, 2, 0, 0}}, {1, 77, {1, 1, 1, 1}}, {1, 0, {5, 5, 5, 5}}, {}};
    engine.DoInitWindow(window);
    EXPECT_EQ(PositionOf(0), (LayoutPosition{10, 10, 90, 30, 10, 20, 30, 40, 0, 0}));
    EXPECT_EQ(PositionOf(1), (LayoutPosition{110, 10, 190, 30, 0, 100, 100, 100, 0, 0}));
    EXPECT_EQ(PositionOf(2).x1, 5);
    EXPECT_EQ(engine.GetCtrlCount(), 3U);
    Engine smaller;
    smaller.table = {{1, 3, {100, 50, 100, 50}}, {}};
    smaller.DoInitWindow(window, {380, 280});
    EXPECT_EQ(children[2]->pos(), QPoint(230, 20)) << "it stands at once where it belongs";
}

TEST_F(DynamicWndTest, DisabledMinimisedOrUnboundItDoesNothing) {
    engine.DoOnSize(0, 10, 10);
    engine.Layout();
    engine.DoInitWindow(window);
    EXPECT_EQ(engine.initialized, 1);
    engine.AddSzControl(children[0], cdxCDynamicWnd::BotRight);
    engine.Disable();
    Resize(500, 400);
    EXPECT_EQ(children[0]->pos(), QPoint(10, 10));
    EXPECT_TRUE(engine.Enable() && engine.Enable());
    EXPECT_EQ(engine.m_iDisabled, -1);
    EXPECT_FALSE(engine.IsDisabled());
    engine.DoOnSize(1, 500, 400);
    EXPECT_EQ(children[0]->pos(), QPoint(10, 10));
    window.showMinimized();
    EXPECT_EQ(engine.DoCreateLayoutInfo(), nullptr);
    EXPECT_EQ(engine.GetBorderSize(), Size{});
    window.showNormal();
    engine.DoOnDestroy();
    engine.DoOnDestroy();
    EXPECT_EQ(engine.destroying, 1);
    EXPECT_FALSE(engine.IsWindow());
    EXPECT_EQ(engine.GetCtrlCount(), 0U);
}

TEST_F(DynamicWndTest, AWindowThatDiesFirstLeavesAnEngineWithoutWindow) {
    auto *const other = new QWidget;
    new QWidget(other);
    engine.DoInitWindow(*other);
    engine.AllControls(cdxCDynamicWnd::BotRight);
    delete other;
    EXPECT_FALSE(engine.IsWindow());
    EXPECT_EQ(engine.GetCtrlCount(), 0U);
    engine.Layout();
    EXPECT_EQ(engine.GetCurrentClientSize(), Size{});
}

TEST_F(DynamicWndTest, LimitsFollowFreedomAndCountTheFrame) {
    Engine narrow(cdxCDynamicWnd::FreedomHoriz, 0);
    cdxCDynamicWnd::MinMaxInfo info{{1, 1}, {2, 2}};
    narrow.DoOnGetMinMaxInfo(info);
    EXPECT_EQ(info.ptMaxTrackSize, (Point{2, 2})); // no window
    narrow.DoInitWindow(window);
    Size const border = narrow.GetBorderSize();
    narrow.DoOnGetMinMaxInfo(info);
    EXPECT_EQ(info.ptMinTrackSize, (Point{400 + border.cx, 300 + border.cy}));
    EXPECT_EQ(info.ptMaxTrackSize, (Point{2, 300 + border.cy})); // the width's limit is left as it was
    narrow.m_szMax.cx = 900;
    narrow.DoOnGetMinMaxInfo(info);
    EXPECT_EQ(info.ptMaxTrackSize.x, 900 + border.cx);
}

TEST_F(DynamicWndTest, SizingChangesTheClassStyleForAMomentAndLosesItsOtherBits) {
    constexpr std::uint32_t other = 0x800;
    SetClassStyle(window, other | CS_HREDRAW);
    Engine flickering(cdxCDynamicWnd::FreedomAll, cdxCDynamicWnd::FlagAntiFlicker);
    flickering.DoOnSizing(8, {});
    flickering.DoInitWindow(window);
    flickering.DoOnSizing(8, {});
    EXPECT_TRUE(flickering.m_bIsAntiFlickering);
    EXPECT_EQ(GetClassStyle(window), 0U);
    EXPECT_TRUE(test::Eventually([&] { return !flickering.m_bIsAntiFlickering; }));
    EXPECT_EQ(GetClassStyle(window), CS_HREDRAW);
    for (int const edge : {2, 6, 8, 1, 3}) { // the first ones leave the upper left corner where it is
        flickering.DoOnSizing(edge, {});
        EXPECT_EQ(GetClassStyle(window), edge % 2 == 0 ? 0 : CS_HREDRAW | CS_VREDRAW) << edge;
        flickering.DoOnTimer(1); // another timer
        EXPECT_TRUE(flickering.m_bIsAntiFlickering);
        flickering.DoOnTimer(29028);
        EXPECT_EQ(GetClassStyle(window), CS_HREDRAW);
    }
}

TEST_F(DynamicWndTest, ChildrenOfAScrollingWindowMoveWithItsBarsAndDoNotShrink) {
    QScrollArea area;
    area.resize(200, 200);
    auto *const child = new QPushButton(area.viewport());
    child->setGeometry(50, 50, 40, 20);
    area.show();
    engine.m_bUseScrollPos = true;
    engine.DoInitWindow(area);
    engine.AddSzControl(child, cdxCDynamicWnd::BotRight);
    area.verticalScrollBar()->setRange(0, 100);
    area.verticalScrollBar()->setValue(30);
    engine.Layout();
    EXPECT_EQ(child->pos(), QPoint(50, 20));
    area.resize(260, 150);
    engine.Layout();
    EXPECT_EQ(child->y(), 20);
    EXPECT_GT(child->x(), 50);
}

} // namespace
} // namespace zelvar
