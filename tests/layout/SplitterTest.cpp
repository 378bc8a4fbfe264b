#include "support/GuiTest.h"
#include "zelvar/layout/DSplitterWnd.h"
#include "zelvar/layout/SplitterBar.h"
#include "zelvar/platform/ui/ControlId.h"

#include <QtGui/QAccessible>
#include <QtWidgets/QPlainTextEdit>

namespace zelvar {
namespace {

QWidget *NewLabel() { return new QLabel; }
constexpr PaneClass kLabel{"QLabel", &NewLabel};

std::unique_ptr<DSplitterWnd> Columns(int count, DSplitterWnd::PaneOwner *owner = nullptr) {
    auto splitter = std::make_unique<DSplitterWnd>();
    splitter->SetPaneOwner(owner);
    splitter->CreateStaticEx(nullptr, 1, count, 1, 5, &kLabel, 1000);
    splitter->resize(303, 100);
    for (int col = 0; col < count; ++col) {
        splitter->CreateView(0, col, &kLabel, {100, 100});
        splitter->SetColumnInfo(col, 100, 10);
    }
    splitter->RecalcLayout();
    return splitter;
}

int Current(DSplitterWnd const &splitter, int col) {
    int cur = 0;
    int ideal = 0;
    int min = 0;
    splitter.GetColumnInfo(col, cur, ideal, min);
    return cur;
}

TEST(SplitterLayout, TracksTakeTheirIdealSizeAndTheLastTheRest) {
    std::vector<SplitterTrack> tracks{{.ideal = 100, .minimum = 10}, {.ideal = 50, .minimum = 10}, {.ideal = 1}};
    LayOutTracks(tracks, 300, 3);
    EXPECT_TRUE(tracks[0].current == 100 && tracks[1].current == 50 && tracks[2].current == 144);
    LayOutTracks(tracks, 108, 3);
    EXPECT_TRUE(tracks[1].current == 0 && tracks[2].current == 2) << "five pixels are below its minimum";
    LayOutTracks(tracks, -5, 3);
    EXPECT_EQ(tracks[0].current, 0);
}

TEST(Splitter, PanesStandInsideAOnePixelBorderThreePixelsApart) {
    auto const splitter = Columns(2);
    splitter->show();
    QImage const picture = test::PictureOf(*splitter);
    auto const at = [&](int x, int y) { return picture.pixelColor(x, y).red(); };
    for (int const left : {0, 103}) // around each pane
        EXPECT_TRUE(at(left, 0) == 191 && at(left, 50) == 191 && at(left + 50, 0) == 191 && at(left + 50, 99) == 191);
    EXPECT_TRUE(at(99, 50) == 191 && at(302, 50) == 191 && at(100, 50) == 255 && at(102, 99) == 255);
    for (auto const &[rows, cols] : {std::pair{0, 1}, {1, 0}, {-1, -1}, {1, 100'000}, {100'000, 1}})
        EXPECT_EQ(splitter->CreateStaticEx(nullptr, rows, cols, 5, 5, &kLabel, 7), 0);
    EXPECT_EQ(splitter->GetPane(0, 0)->geometry(), QRect(1, 1, 98, 98));
    EXPECT_EQ(splitter->GetPane(0, 1)->geometry(), QRect(104, 1, 198, 98));
    EXPECT_EQ(platform::GetDlgCtrlID(*splitter->GetPane(0, 1)), static_cast<int>(DSplitterWnd::IdFromRowCol(0, 1)));
}

TEST(Splitter, ATextTooNarrowForItsScrollBarHasNone) {
    constexpr PaneClass text{"QPlainTextEdit", []() -> QWidget * { return new QPlainTextEdit("Some words"); }};
    auto const splitter = Columns(2);
    splitter->DeleteView(0, 0);
    splitter->CreateView(0, 0, &text, {100, 100});
    auto const &pane = dynamic_cast<QPlainTextEdit &>(*splitter->GetPane(0, 0));
    for (int const width : {100, 14, 100}) { // where the bar would come and go for ever
        splitter->SetColumnInfo(0, width, 10);
        splitter->RecalcLayout();
        EXPECT_EQ(pane.verticalScrollBarPolicy(), width == 14 ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded);
    }
}

TEST(Splitter, ABarFollowsTheMouseAndKeepsTheMinimaOnBothSides) {
    auto const splitter = Columns(2);
    splitter->show();
    QTest::mousePress(splitter.get(), Qt::LeftButton, {}, {101, 50});
    auto const moveTo = [&](int x) {
        QMouseEvent move(QEvent::MouseMove, QPointF(x, 50), splitter->mapToGlobal(QPointF(x, 50)), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(splitter.get(), &move);
    };
    moveTo(151);
    EXPECT_EQ(Current(*splitter, 0), 150);
    moveTo(-40);
    EXPECT_EQ(Current(*splitter, 0), 10);
    moveTo(1000);
    EXPECT_EQ(Current(*splitter, 1), 10);
    QTest::mouseRelease(splitter.get(), Qt::LeftButton, {}, {300, 50});
    moveTo(50);
    EXPECT_EQ(Current(*splitter, 1), 10) << "released";
    for (int const x : {289, 290, 292, 293}) {
        moveTo(x);
        EXPECT_EQ(splitter->cursor().shape() == Qt::SplitHCursor, x == 290 || x == 292) << x;
    }
    splitter->CreateStaticEx(nullptr, 2, 1, 2, 1, nullptr, 7);
    splitter->SetRowInfo(0, 49, 10);
    splitter->RecalcLayout();
    moveTo(50);
    EXPECT_EQ(splitter->cursor().shape(), Qt::SplitVCursor);
}

TEST(Splitter, SplittingFailsWholeWhenItDoesNotFitAndSucceedsWithAPane) {
    auto const splitter = Columns(1);
    EXPECT_EQ(splitter->StaticSplitColumn(295, nullptr), 0);
    EXPECT_EQ(splitter->GetColumnCount(), 1);
    EXPECT_EQ(splitter->StaticSplitColumn(200, nullptr), 1);
    EXPECT_EQ(splitter->GetColumnCount(), 2);
    EXPECT_TRUE(Current(*splitter, 0) == 200 && Current(*splitter, 1) == 100);
    splitter->StaticDeleteColumn(0);
    ASSERT_EQ(splitter->GetColumnCount(), 1);
    EXPECT_NE(splitter->GetPane(0, 0), nullptr) << "the pane behind has taken its place";
    EXPECT_EQ(Current(*splitter, 0), 303);
}

SplitterBar *FocusedBar() { return qobject_cast<SplitterBar *>(QApplication::focusWidget()); }

TEST(Splitter, ABarMovesByTheArrowKeysWithinItsLimits) {
    auto const splitter = Columns(3);
    splitter->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(splitter.get()));
    ASSERT_TRUE(splitter->MoveBarsByKeyboard());
    SplitterBar *const bar = FocusedBar();
    ASSERT_NE(bar, nullptr);
    EXPECT_EQ(bar->geometry(), QRect(100, 0, 3, 100));
    test::Rows<Qt::Key, Qt::KeyboardModifiers, int> const steps = {
        {Qt::Key_Right, {}, 110},
        {Qt::Key_Left, Qt::ShiftModifier, 109},
        {Qt::Key_Down, {}, 109}, // a bar between columns moves sideways only
        {Qt::Key_Home, {}, 10},
        {Qt::Key_End, {}, 303 - 2 * (3 + 10)}}; // room for the minima behind
    for (auto const &[key, modifiers, position] : steps) {
        QTest::keyClick(bar, key, modifiers);
        EXPECT_EQ(Current(*splitter, 0), position) << key;
        EXPECT_EQ(bar->geometry().left(), position) << "it stays over what is drawn";
    }
    QKeyEvent forOthers(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier);
    QKeyEvent shortcut(QEvent::ShortcutOverride, Qt::Key_F5, Qt::NoModifier);
    shortcut.ignore();
    for (QKeyEvent *const event : {&forOthers, &shortcut})
        QApplication::sendEvent(bar, event);
    EXPECT_TRUE(!forOthers.isAccepted() && shortcut.isAccepted());
    EXPECT_EQ(test::ColorAt(*bar, {1, 50}), bar->palette().color(QPalette::Highlight));
}

TEST(Splitter, TheKeysLeadRoundAllBarsAndEscapePutsThemBack) {
    auto const splitter = Columns(2);
    auto *const nested = new DSplitterWnd;
    nested->CreateStaticEx(splitter->GetPane(0, 1), 2, 1, 2, 1, &kLabel, 1001);
    nested->SetRowInfo(0, 40, 10);
    nested->CreateView(0, 0, &kLabel, {100, 40});
    nested->resize(100, 90);
    auto *const edit = new QLineEdit(splitter->GetPane(0, 0));
    splitter->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(splitter.get()));
    edit->setFocus();
    ASSERT_TRUE(splitter->MoveBarsByKeyboard());
    SplitterBar *const column = FocusedBar();
    QTest::keyClick(column, Qt::Key_Right);
    QTest::keyClick(column, Qt::Key_F8);
    SplitterBar *const row = FocusedBar();
    ASSERT_TRUE(row != nullptr && row != column);
    EXPECT_EQ(row->Orientation(), Qt::Horizontal);
    QTest::keyClick(row, Qt::Key_Up);
    EXPECT_EQ(row->Position(), 30);
    for (Qt::Key const key : {Qt::Key_Down, Qt::Key_Left})
        QTest::keyClick(row, key);
    EXPECT_EQ(row->Position(), 40);
    EXPECT_EQ(row->accessibleName(), "Bar between rows");
    QTest::keyClick(row, Qt::Key_Up);
    QTest::keyClick(row, Qt::Key_Tab);
    EXPECT_EQ(FocusedBar(), column) << "round";
    QTest::keyClick(column, Qt::Key_F8, Qt::ShiftModifier);
    EXPECT_EQ(FocusedBar(), row) << "and back";
    QTest::keyClick(column, Qt::Key_Escape);
    EXPECT_TRUE(edit->hasFocus() && Current(*splitter, 0) == 100 && row->Position() == 40);

    splitter->MoveBarsByKeyboard();
    QTest::keyClick(column, Qt::Key_Right);
    QTest::keyClick(column, Qt::Key_Return);
    EXPECT_TRUE(edit->hasFocus());
    EXPECT_EQ(Current(*splitter, 0), 110) << "kept";
    splitter->MoveBarsByKeyboard();
    edit->hide();
    QTest::keyClick(column, Qt::Key_Return);
    EXPECT_FALSE(column->hasFocus()) << "though nobody is there to take it back";
}

TEST(Splitter, BarsAreNoTabStopsAndAddedAndRemovedWithTheirTracks) {
    auto const splitter = Columns(1);
    EXPECT_FALSE(splitter->MoveBarsByKeyboard()) << "there is none";
    ASSERT_EQ(splitter->StaticSplitColumn(100, nullptr), 1);
    auto const bars = [&] { return splitter->findChildren<SplitterBar *>(); };
    ASSERT_EQ(bars().size(), 1);
    EXPECT_EQ(bars().front()->focusPolicy(), Qt::NoFocus);
    splitter->StaticDeleteColumn(1);
    EXPECT_TRUE(bars().isEmpty());
}

TEST(Splitter, AScreenReaderReadsAndMovesABar) {
    auto const splitter = Columns(2);
    splitter->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(splitter.get()));
    splitter->MoveBarsByKeyboard();
    QAccessibleInterface *const bar = QAccessible::queryAccessibleInterface(FocusedBar());
    ASSERT_NE(bar, nullptr);
    EXPECT_EQ(bar->role(), QAccessible::Splitter);
    EXPECT_EQ(bar->text(QAccessible::Name), "Bar between columns");
    EXPECT_TRUE(bar->text(QAccessible::Description).startsWith("Arrow keys move it"));
    EXPECT_TRUE(bar->state().focusable && bar->state().focused);
    QAccessibleValueInterface *const value = bar->valueInterface();
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->currentValue().toInt(), 100);
    EXPECT_TRUE(value->minimumValue().toInt() == 10 && value->maximumValue().toInt() == 290);
    value->setCurrentValue(5000);
    EXPECT_EQ(Current(*splitter, 0), 290);
}

/// Counts what it is asked and makes what it is told.
struct Owner : DSplitterWnd::PaneOwner {
    QWidget *object = nullptr;
    bool makesWindow = true;
    bool doesLayout = false;
    int objects = 0, windows = 0, deleted = 0;

    QWidget *CreateViewObj(DSplitterWnd *, int, int, PaneClass const *, Size) override { return ++objects, object; }
    int CreateViewWnd(DSplitterWnd *, QWidget *pane, int, int, Rect const &, QWidget *parent, unsigned) override {
        ++windows;
        if (makesWindow)
            pane->setParent(parent);
        return makesWindow ? 1 : 0;
    }
    void DeleteView(DSplitterWnd *splitter, int row, int col) override {
        ++deleted;
        delete splitter->GetPane(row, col);
    }
    bool RecalcLayout(DSplitterWnd *) override { return doesLayout; }
};

TEST(Splitter, AnOwnerThatMakesNoObjectStillMakesTheWindowAndMayDoTheLayout) {
    Owner owner;
    auto const splitter = Columns(2, &owner);
    EXPECT_TRUE(owner.objects == 2 && owner.windows == 2);
    QRect const before = splitter->GetPane(0, 0)->geometry();
    owner.doesLayout = true;
    splitter->resize(400, 200);
    EXPECT_EQ(splitter->GetPane(0, 0)->geometry(), before);
    splitter->DeleteView(0, 0);
    EXPECT_TRUE(owner.deleted == 1 && splitter->GetPane(0, 0) == nullptr);
    EXPECT_EQ(splitter->CreateView(0, 1, &kLabel, {}), 0) << "that cell is taken";
}

} // namespace
} // namespace zelvar
