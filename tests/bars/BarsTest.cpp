#include "support/GuiTest.h"
#include "zelvar/bars/CZelDockBar.h"
#include "zelvar/bars/CZelToolBar.h"
#include "zelvar/bars/CZelToolbarComboBoxButton.h"
#include "zelvar/bars/DockState.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/controls/CZelImageList.h"
#include "zelvar/layout/core/SplitPlaces.h"
#include "zelvar/xml/XMLNode.h"

#include <QtGui/QIcon>
#include <QtGui/QPainter>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QLayout>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QToolButton>

namespace zelvar {
namespace {

TEST(BringOntoScreen, LeavesWhatCanBeSeenAndFetchesTheRest) {
    std::vector<Rect> const screens{{0, 0, 800, 600}, {800, 0, 1600, 600}};
    constexpr int kHuge = 2'000'000'000;
    test::Rows<Rect, Rect> const cases = {
        {{100, 100, 300, 200}, {100, 100, 300, 200}},
        {{760, 100, 960, 200}, {760, 100, 960, 200}}, // over the edge between two screens
        {{-160, 10, 40, 110}, {-160, 10, 40, 110}},   // just enough of its caption
        {{-161, 10, 39, 110}, {0, 10, 200, 110}},
        {{100, 580, 300, 680}, {100, 580, 300, 680}},
        {{100, 581, 300, 681}, {100, 500, 300, 600}},
        {{100, -1, 300, 99}, {100, 0, 300, 100}}, // a caption above the edge cannot be taken hold of
        {{5000, 5000, 5200, 5100}, {1400, 500, 1600, 600}},
        {{700, 700, 900, 800}, {600, 500, 800, 600}}, // as far from either
        {{-kHuge, -kHuge, kHuge, kHuge}, {0, 0, 800, 600}},
        {{kHuge, kHuge, -kHuge, -kHuge}, {1560, 560, 1600, 600}}};
    for (auto const &[rect, expected] : cases)
        EXPECT_EQ(BringOntoScreen(rect, screens), expected) << rect.left << ", " << rect.top;
    EXPECT_EQ(BringOntoScreen({1, 2, 101, 102}, {}).left, 1);
}

bool IsInReach(CZelDockBar const &bar) {
    QRect const at = bar.geometry();
    Rect const rect{at.left(), at.top(), at.left() + at.width(), at.top() + at.height()};
    return BringOntoScreen(rect, ScreenRects()) == rect;
}

enum Commands : int { kOpen = 11, kPan, kZoom, kMeasure, kGrid, kScale };

/// A window with five bars on its left, a list in each, and two tool bars at the top.
struct Frame {
    Frame() {
        window.setCentralWidget(new QListWidget);
        for (CZelDockBar *const bar : {layers, channels, history, log, info}) {
            bar->setWidget(new QListWidget);
            window.addDockWidget(Qt::LeftDockWidgetArea, bar);
        }
        for (int const id : {kOpen, kPan, kZoom, kMeasure})
            tools->InsertButton(id, -1, "Tool");
        window.addToolBar(tools);
        view->InsertButton(kGrid, -1, "Grid");
        window.addToolBar(view);
        window.resize(1000, 800);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    /// Something else than what it begins with.
    void Rearrange() {
        channels->Dock(window, Qt::RightDockWidgetArea);
        history->Dock(window, Qt::RightDockWidgetArea);
        EXPECT_TRUE(log->AttachToTabWnd(*history));
        info->Float({150, 120, 400, 320});
        layers->ShowControlBar(false);
        window.resizeDocks({channels, history}, {240, 240}, Qt::Horizontal);
        window.resizeDocks({channels, history}, {450, 250}, Qt::Vertical);
        tools->MoveButton(kMeasure, 0);
        tools->ShowButton(kPan, false);
        window.addToolBar(Qt::BottomToolBarArea, view);
        window.layout()->activate();
        history->raise();
        QApplication::processEvents();
    }
    [[nodiscard]] DString State() const { return CZelDockBar::SaveState(window)->SaveText(); }
    bool Load(DString const &text) {
        XMLNode root;
        EXPECT_TRUE(root.LoadText(text)) << text;
        bool const loaded = CZelDockBar::LoadState(window, root);
        QApplication::processEvents();
        return loaded;
    }
    QMainWindow window;
    CZelDockBar *layers = new CZelDockBar("Layers", 1);
    CZelDockBar *channels = new CZelDockBar("Channels", 2);
    CZelDockBar *history = new CZelDockBar("History", 3);
    CZelDockBar *log = new CZelDockBar("Log", 0); // by its name
    CZelDockBar *info = new CZelDockBar("Information", 5);
    CZelToolBar *tools = new CZelToolBar("Tools", 21);
    CZelToolBar *view = new CZelToolBar("View", 22);
};

TEST(CZelDockBar, AnotherWindowWithTheSameBarsGetsTheSameArrangement) {
    Frame first;
    first.Rearrange();
    DString const state = first.State();
    Frame second;
    EXPECT_NE(second.State(), state);
    EXPECT_TRUE(second.Load(state));
    EXPECT_EQ(second.State(), state);
    EXPECT_EQ(second.window.dockWidgetArea(second.channels), Qt::RightDockWidgetArea);
    EXPECT_EQ(second.channels->width(), 240);
    EXPECT_GT(second.channels->height(), second.history->height() + 100);
    EXPECT_EQ(second.window.tabifiedDockWidgets(second.history).value(0), second.log);
    EXPECT_TRUE(second.log->visibleRegion().isEmpty() && !second.history->visibleRegion().isEmpty()) << "in front";
    EXPECT_TRUE(second.layers->isHidden() && second.info->isFloating());
    EXPECT_EQ(second.info->geometry(), QRect(150, 120, 250, 200));
    EXPECT_EQ(second.window.toolBarArea(second.view), Qt::BottomToolBarArea);
    test::Shot(second.window, "bars-restored");
    // The first one's own state brings nothing out of place.
    EXPECT_TRUE(first.Load(state));
    EXPECT_EQ(first.State(), state);
}

TEST(SplitPlaces, NumberStretchesAlongAndAcrossASideInTurn) {
    // One above two, the right one of which is split again: whether the side is upright or not.
    std::vector<Rect> const areas{{0, 0, 100, 40}, {0, 50, 40, 100}, {50, 50, 100, 70}, {50, 80, 100, 100}};
    EXPECT_EQ(SplitPlaces(areas, true), (std::vector<SplitPlace>{{0}, {1, 0}, {1, 1, 0}, {1, 1, 1}}));
    EXPECT_EQ(SplitPlaces(areas, false), (std::vector<SplitPlace>{{0, 0}, {0, 1, 0}, {0, 1, 1, 0}, {0, 1, 1, 1}}));
    EXPECT_EQ(SplitPlaces({{0, 0, 9, 9}, {1, 1, 9, 9}}, true), (std::vector<SplitPlace>{{0, 0}, {0, 1}}));
}

TEST(CZelDockBar, BarsBesideOthersOfTheirSideKeepTheirPlaces) {
    Frame first;
    first.window.splitDockWidget(first.layers, first.channels, Qt::Horizontal);
    first.window.splitDockWidget(first.channels, first.history, Qt::Vertical);
    EXPECT_TRUE(first.log->AttachToTabWnd(*first.history));
    QApplication::processEvents();
    Frame second;
    EXPECT_TRUE(second.Load(first.State()));
    EXPECT_EQ(second.State(), first.State());
    test::Shot(second.window, "bars-beside");
    EXPECT_GT(second.channels->x(), second.layers->geometry().right());
    EXPECT_EQ(second.channels->y(), second.layers->y());
    EXPECT_EQ(second.log->x(), second.channels->x()) << "in front of its tabs";
    EXPECT_GT(second.log->y(), second.channels->geometry().bottom());
    EXPECT_GT(second.info->y(), second.layers->geometry().bottom());
}

TEST(CZelDockBar, AWindowThatIsShownLaterHasTheLoadedSizes) {
    Frame first;
    first.Rearrange();
    Frame second;
    second.window.hide();
    EXPECT_TRUE(second.Load(first.State()));
    second.window.show();
    QApplication::processEvents();
    EXPECT_EQ(second.channels->width(), 240);
    EXPECT_TRUE(second.layers->isHidden());
}

TEST(CZelDockBar, WhatIsNotNamedStaysAndWhatIsNotKnownIsPassedOver) {
    Frame frame;
    frame.history->Float({100, 100, 300, 300});
    EXPECT_TRUE(frame.Load("<DOCKBAR_DATA><BAR id='2' side='bottom'/><BAR id='77' side='top'/><X/>text"
                           "<BAR id='2' side='top'/><TOOLBAR id='21'><BUTTON id='9'/><BUTTON id='14'/></TOOLBAR>"
                           "</DOCKBAR_DATA>"));
    EXPECT_EQ(frame.window.dockWidgetArea(frame.channels), Qt::BottomDockWidgetArea) << "where it is named first";
    EXPECT_EQ(frame.window.dockWidgetArea(frame.layers), Qt::LeftDockWidgetArea);
    EXPECT_TRUE(frame.history->isFloating());
    EXPECT_TRUE(frame.Load("<DOCKBAR_DATA><BAR id='3' side='left' order='4'/><BAR id='2' side='left' order='3'/>"
                           "<TOOLBAR id='21' side='left' order='2'/><TOOLBAR id='22' side='left' order='1'/>"
                           "</DOCKBAR_DATA>"));
    EXPECT_EQ(frame.window.dockWidgetArea(frame.channels), Qt::LeftDockWidgetArea);
    EXPECT_FALSE(frame.history->isFloating());
    EXPECT_LT(frame.channels->y(), frame.history->y()) << "by its own order, whichever is named first";
    EXPECT_LT(frame.view->y(), frame.tools->y());
    EXPECT_EQ(frame.tools->GetItemID(0), kMeasure);
    EXPECT_EQ(frame.tools->GetItemID(3), kZoom) << "the others keep their order behind it";
    DString const before = frame.State();
    EXPECT_FALSE(frame.Load("<DOCKBARS><BAR id='2' side='top'/></DOCKBARS>"));
    EXPECT_EQ(frame.State(), before);
}

TEST(CZelDockBar, HostileStatesLeaveEveryBarInReach) {
    char const *const values[] = {
        "nan", "-1",   "0",          "1e308", "99999999999999999999", "-9223372036854775808", "0x7f",
        "",    "left", "2147483647", "true"};
    Frame frame;
    for (DString const value : values) {
        DString text = "<DOCKBAR_DATA version='" + value + "'>";
        for (char const *const id : {"1", "2", "3", "5"})
            for (char const *const floating : {"true", value.c_str()}) {
                text += Format("<BAR id='%s' floating='%s'", id, floating);
                for (char const *const name :
                     {"side", "order", "tabs", "front", "left", "top", "width", "height", "size", "length"})
                    text += Format(" %s='%s'", name, value.c_str());
                text += "/>";
            }
        char const *const raw = value.c_str();
        text += Format("<BAR id='%s' name='%s'/><TOOLBAR id='21' order='%s' side='%s'><BUTTON id='%s'/><SEPARATOR/>"
                       "</TOOLBAR></DOCKBAR_DATA>",
                       raw, raw, raw, raw, raw);
        EXPECT_TRUE(frame.Load(text)) << value;
        for (CZelDockBar const *const bar : {frame.layers, frame.channels, frame.history, frame.info}) {
            EXPECT_TRUE(bar->isFloating()) << value;
            EXPECT_TRUE(IsInReach(*bar)) << value << " puts it at " << bar->x() << ", " << bar->y();
        }
        EXPECT_EQ(frame.tools->GetCount(), 4);
    }
    frame.Rearrange(); // and the window still works
    EXPECT_EQ(frame.window.dockWidgetArea(frame.channels), Qt::RightDockWidgetArea);
}

TEST(CZelDockBar, F6WalksTheBarsAndTheMiddleBothWays) {
    Frame frame;
    frame.channels->Dock(frame.window, Qt::RightDockWidgetArea);
    EXPECT_TRUE(frame.history->AttachToTabWnd(*frame.channels));
    frame.log->ShowControlBar(false);
    frame.info->Float({100, 100, 300, 300});
    QApplication::processEvents();
    QWidget *const middle = frame.window.centralWidget();
    frame.window.activateWindow();
    middle->setFocus();
    ASSERT_TRUE(test::Eventually([&] { return QApplication::focusWidget() == middle; }));
    auto const comesTo = [](Qt::KeyboardModifier modifier, QWidget const *next) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_F6, modifier);
        return test::Eventually([&] { return QApplication::focusWidget() == next; });
    };
    for (CZelDockBar const *const next : {frame.layers, frame.channels, frame.history, frame.info})
        EXPECT_TRUE(comesTo(Qt::NoModifier, next->widget())) << next->windowTitle().toStdString();
    EXPECT_TRUE(comesTo(Qt::NoModifier, middle) && comesTo(Qt::NoModifier, frame.layers->widget()));
    EXPECT_TRUE(comesTo(Qt::ShiftModifier, middle) && comesTo(Qt::ShiftModifier, frame.info->widget()));
    middle->hide();
    EXPECT_TRUE(comesTo(Qt::NoModifier, frame.layers->widget()));
    delete frame.window.takeCentralWidget();
    EXPECT_TRUE(comesTo(Qt::ShiftModifier, frame.info->widget()));
    frame.window.activateWindow();
    frame.channels->ShowControlBar(true, true);
    EXPECT_TRUE(test::Eventually([&] { return QApplication::focusWidget() == frame.channels->widget(); }));
    auto *const close = frame.layers->findChild<QAbstractButton *>("qt_dockwidget_closebutton");
    ASSERT_NE(close, nullptr);
    close->setFocus(Qt::TabFocusReason);
    QTest::keyClick(close, Qt::Key_Space);
    EXPECT_TRUE(frame.layers->isHidden() && !frame.layers->toggleViewAction()->isChecked());
    frame.layers->toggleViewAction()->trigger();
    EXPECT_TRUE(frame.layers->isVisible());
}

TEST(CZelDockBar, AStateTakesABarNowhereThatTheBarItselfRefuses) {
    Frame frame;
    frame.channels->setFeatures(QDockWidget::NoDockWidgetFeatures);
    frame.history->setAllowedAreas(Qt::LeftDockWidgetArea | Qt::RightDockWidgetArea);
    frame.view->setAllowedAreas(Qt::TopToolBarArea);
    EXPECT_TRUE(frame.Load("<DOCKBAR_DATA><BAR id='2' side='left' visible='false' floating='true'/>"
                           "<BAR id='3' side='bottom'/><TOOLBAR id='22' side='left'/></DOCKBAR_DATA>"));
    EXPECT_TRUE(frame.channels->isVisible()) << "nothing could bring it back";
    EXPECT_FALSE(frame.channels->isFloating());
    EXPECT_EQ(frame.window.dockWidgetArea(frame.history), Qt::LeftDockWidgetArea);
    EXPECT_EQ(frame.window.toolBarArea(frame.view), Qt::TopToolBarArea);
}

TEST(CZelDockBar, ABarThatFloatsComesBackToItsPlaceAndOneFarAwayIsFetched) {
    Frame frame;
    frame.channels->Float({-5000, 90000, -4800, 90100});
    EXPECT_TRUE(IsInReach(*frame.channels));
    EXPECT_FALSE(frame.layers->AttachToTabWnd(*frame.channels)) << "tabs are where bars are docked";
    EXPECT_FALSE(frame.layers->AttachToTabWnd(*frame.layers));
    frame.channels->setFloating(false);
    QApplication::processEvents();
    EXPECT_GT(frame.channels->y(), frame.layers->y());
    EXPECT_LT(frame.channels->y(), frame.history->y()) << "between the two that it stood between";
    QMainWindow inner; // bars of a window within another one are not its own
    inner.setParent(frame.window.centralWidget());
    auto *const other = new CZelDockBar("Inner", 9);
    other->Dock(inner, Qt::LeftDockWidgetArea);
    EXPECT_EQ(CZelDockBar::BarsOf(frame.window).size(), 5);
    EXPECT_EQ(CZelDockBar::BarsOf(inner), QList<CZelDockBar *>{other});
}

struct Buttons {
    Buttons() {
        CZelImageList::RegisterIcon(4711, "no-such-theme-icon", "star");
        images.Create();
        bar.SetImages(&images);
        for (int const id : {kOpen, kPan, kZoom, kMeasure, kGrid})
            bar.InsertButton(id, images.GetIcon(4711, nullptr), Format("Tool %d", id));
        for (int const id : {kPan, kZoom, kMeasure})
            bar.SetButtonStyle(id, CZelToolBar::TBBS_CHECKGROUP);
        bar.SetButtonStyle(kGrid, CZelToolBar::TBBS_CHECKBOX);
        QObject::connect(&bar, &CZelToolBar::Command, [this](int id) { told.push_back(id); });
        bar.resize(400, 30);
        bar.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&bar));
    }
    [[nodiscard]] QToolButton *Button(int id) const {
        return dynamic_cast<QToolButton *>(bar.widgetForAction(bar.GetButton(id)));
    }
    CZelImageList images;
    CZelToolBar bar{"Tools", 7};
    std::vector<int> told;
};

TEST(CZelToolBar, OneButtonOfAGroupIsDownAndTheOthersAreTheirOwn) {
    Buttons buttons;
    CZelToolBar &bar = buttons.bar;
    EXPECT_EQ(bar.InsertButton(kPan, -1, "again"), nullptr);
    bar.PressButton(kPan);
    EXPECT_TRUE(buttons.told.empty()) << "the program has done it itself";
    test::Click(buttons.Button(kZoom));
    EXPECT_TRUE(bar.IsButtonPressed(kZoom) && !bar.IsButtonPressed(kPan));
    test::Click(buttons.Button(kZoom));
    EXPECT_TRUE(bar.IsButtonPressed(kZoom)) << "a radio button stays down";
    test::Click(buttons.Button(kGrid));
    test::Click(buttons.Button(kOpen));
    EXPECT_TRUE(bar.IsButtonPressed(kGrid) && bar.IsButtonPressed(kZoom) && !bar.IsButtonPressed(kOpen));
    EXPECT_EQ(buttons.told, (std::vector<int>{kZoom, kZoom, kGrid, kOpen}));
    bar.SetButtonShortcut(kOpen, QKeySequence(Qt::CTRL | Qt::Key_O));
    EXPECT_EQ(buttons.Button(kOpen)->toolTip(), "Tool 11 (Ctrl+O)");
    EXPECT_TRUE(bar.RemoveButton(kOpen) && !bar.RemoveButton(kOpen));
    EXPECT_EQ(bar.CommandToIndex(kPan), 0);
    bar.SetTextPlace(CZelToolBar::TextPlace::Beside);
    EXPECT_EQ(buttons.Button(kPan)->toolButtonStyle(), Qt::ToolButtonTextBesideIcon);
}

TEST(CZelToolBar, ItsUserCustomizesIt) {
    Buttons buttons;
    CZelToolBar &bar = buttons.bar;
    auto const customize = [&bar](QDialogButtonBox::StandardButton end, std::function<void(QListWidget &)> act) {
        auto const done = test::OnNextDialog([end, act = std::move(act)](QWidget &dialog) {
            act(*dialog.findChild<QListWidget *>());
            test::Shot(dialog, "tool-bar-customize");
            test::Click(dialog.findChild<QDialogButtonBox *>()->button(end));
        });
        EXPECT_EQ(bar.Customize(), end == QDialogButtonBox::Ok);
        EXPECT_TRUE(*done);
        return bar.GetItemID(0) * (bar.IsButtonShown(kPan) ? 1 : -1);
    };
    auto const hideFirst = [](QListWidget &list) {
        QList<QPushButton *> const pushed = list.window()->findChildren<QPushButton *>(); // up, down, reset
        for (int const row : {list.count() - 1, 1}) {                                     // none goes beyond an end
            EXPECT_EQ(pushed[0]->isEnabled(), list.currentRow() > 0);
            EXPECT_EQ(pushed[1]->isEnabled(), list.currentRow() + 1 < list.count());
            list.setCurrentRow(row);
        }
        QTest::keyClick(&list, Qt::Key_Space);
        test::Click(pushed[0]);
        list.window()->findChild<QCheckBox *>()->click();
    };
    QSize const small = bar.iconSize();
    EXPECT_EQ(customize(QDialogButtonBox::Cancel, hideFirst), kOpen);
    EXPECT_EQ(customize(QDialogButtonBox::Ok, hideFirst), -kPan);
    EXPECT_GT(bar.iconSize().width(), small.width());
    auto const reset = [](QListWidget &list) {
        EXPECT_EQ(list.currentRow(), 0);
        test::Click(list.window()->findChildren<QPushButton *>().value(2));
    };
    EXPECT_EQ(customize(QDialogButtonBox::Ok, reset), kOpen);
    EXPECT_EQ(bar.iconSize(), small);
}

TEST(CZelToolBar, TabComesToOneButtonAndArrowsWalkOverThoseThatCanBePressed) {
    Buttons buttons;
    CZelToolBar &bar = buttons.bar;
    bar.EnableButton(kOpen, false);
    bar.ShowButton(kZoom, false);
    auto const reachable = [&] {
        std::vector<int> ids;
        for (int const id : {kOpen, kPan, kZoom, kMeasure, kGrid})
            if ((buttons.Button(id)->focusPolicy() & Qt::TabFocus) != 0)
                ids.push_back(id);
        return ids;
    };
    EXPECT_EQ(reachable(), std::vector<int>{kPan});
    buttons.Button(kPan)->setFocus();
    auto const press = [&](int key) {
        QTest::keyClick(QApplication::focusWidget(), static_cast<Qt::Key>(key));
        return dynamic_cast<QToolButton *>(QApplication::focusWidget());
    };
    EXPECT_EQ(press(Qt::Key_Right), buttons.Button(kMeasure)) << "past the hidden one";
    EXPECT_EQ(reachable(), std::vector<int>{kMeasure});
    EXPECT_EQ(press(Qt::Key_Down), buttons.Button(kMeasure));
    EXPECT_EQ(press(Qt::Key_End), buttons.Button(kGrid));
    EXPECT_EQ(press(Qt::Key_Right), buttons.Button(kGrid)) << "the end";
    EXPECT_EQ(press(Qt::Key_Home), buttons.Button(kPan));
    bar.setLayoutDirection(Qt::RightToLeft);
    EXPECT_EQ(press(Qt::Key_Left), buttons.Button(kMeasure));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    EXPECT_EQ(buttons.told, std::vector<int>{kMeasure});
    bar.EnableButton(kMeasure, false);
    EXPECT_EQ(reachable(), std::vector<int>{kPan}) << "what Tab came to cannot be pressed any more";
    bar.ShowButton(kPan, false);
    EXPECT_TRUE(test::Eventually([&] { return reachable() == std::vector<int>{kGrid}; })) << "nor pressed unseen";
    bar.ShowButton(kPan, true);
    QApplication::processEvents();
    test::Shot(bar, "tool-bar-right-to-left");
    bar.setLayoutDirection(Qt::LeftToRight);
    bar.EnableLargeIcons(true);
    bar.SetTextPlace(CZelToolBar::TextPlace::Below);
    QApplication::processEvents();
    bar.resize(bar.sizeHint().width() * 2 / 3, bar.sizeHint().height());
    auto *const more = bar.findChild<QToolButton *>("qt_toolbar_ext_button");
    ASSERT_TRUE(test::Eventually([&] { return more->isVisible(); }));
    test::Shot(bar, "tool-bar-narrow");
    buttons.Button(kPan)->setFocus();
    EXPECT_EQ(press(Qt::Key_End), more) << "the way to those that have no room";
    bar.EnableButton(kPan, false);
    EXPECT_EQ(more->focusPolicy(), Qt::TabFocus) << "nothing else is left to come to";
}

TEST(CZelToolBar, ItsArrangementIsSavedWithSeparatorsAndBoxes) {
    auto const fill = [](CZelToolBar &bar) {
        bar.InsertButton(kOpen, -1, "Open");
        bar.AddSeparator();
        bar.AddComboBox(new CZelToolbarComboBoxButton(kScale, "Scale", 5));
        bar.InsertButton(kPan, -1, "Pan");
    };
    CZelToolBar first("Tools");
    fill(first);
    EXPECT_TRUE(first.MoveButton(kScale, 0) && !first.MoveButton(kZoom, 0));
    first.ShowButton(kOpen, false);
    XMLNode saved("TOOLBAR");
    first.SaveButtons(saved);
    CZelToolBar second("Tools");
    fill(second);
    second.AddSeparator(); // a newer version has more
    second.InsertButton(kGrid, -1, "Grid");
    second.LoadButtons(saved);
    std::vector<int> ids;
    for (int i = 0; i < second.GetCount(); ++i)
        ids.push_back(second.GetItemID(i));
    EXPECT_EQ(ids, (std::vector<int>{kScale, kOpen, 0, kPan, 0, kGrid}));
    EXPECT_FALSE(second.IsButtonShown(kOpen));
    second.show();
    auto *const combo = second.findChild<CZelComboBox *>();
    ASSERT_NE(combo, nullptr);
    EXPECT_TRUE(combo->isVisible()) << "it has been moved, not lost";
    second.activateWindow();
    combo->setFocus();
    ASSERT_TRUE(test::Eventually([&] { return combo->hasFocus(); }));
    QTest::keyClick(combo, Qt::Key_Right);
    EXPECT_EQ(QApplication::focusWidget(), second.widgetForAction(second.GetButton(kPan))) << "past the hidden one";
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Left);
    EXPECT_TRUE(combo->hasFocus());
}

TEST(CZelToolbarComboBoxButton, AllBoxesOfACommandShowTheSameChoice) {
    CZelToolBar first("First");
    CZelToolBar second("Second");
    std::vector<DString> told;
    CZelToolbarComboBoxButton *boxes[2] = {};
    for (int i = 0; i < 2; ++i) {
        boxes[i] = new CZelToolbarComboBoxButton(kScale, "Scale", 8);
        for (char const *const text : {"50 %", "100 %", "200 %"})
            boxes[i]->AddItem(text, static_cast<std::uint64_t>(i));
        EXPECT_TRUE((i == 0 ? first : second).AddComboBox(boxes[i]));
    }
    EXPECT_FALSE(first.AddComboBox(nullptr));
    for (CZelToolBar *const bar : {&first, &second})
        QObject::connect(bar, &CZelToolBar::Command, [&, bar](int id) {
            EXPECT_EQ(id, kScale);
            told.push_back(bar->windowTitle().toStdString() + " " + CZelToolbarComboBoxButton::GetByCmd(id)->GetText());
        });
    first.show();
    second.show();
    EXPECT_TRUE(boxes[0]->SelectItem("100 %"));
    EXPECT_FALSE(boxes[0]->SelectItem("300 %"));
    EXPECT_EQ(boxes[1]->GetText(), "100 %");
    EXPECT_TRUE(told.empty());
    QTest::keyClick(&boxes[1]->GetComboBox(), Qt::Key_Down);
    EXPECT_EQ(boxes[0]->GetText(), "200 %");
    boxes[0]->SetEditable(true);
    CZelComboBox &box = boxes[0]->GetComboBox(); // it has the focus for its edit field
    box.lineEdit()->selectAll();
    QTest::keyClicks(&box, "75 %");
    QTest::keyClick(&box, Qt::Key_Return);
    EXPECT_EQ(boxes[1]->GetCurSel(), -1) << "it has no such entry and cannot show it";
    box.lineEdit()->setText("50 %");
    QTest::keyClick(&box, Qt::Key_Return);
    EXPECT_EQ(boxes[1]->GetText(), "50 %");
    EXPECT_EQ(told, (std::vector<DString>{"Second 200 %", "First 75 %", "First 50 %"})) << "each once";

    second.setOrientation(Qt::Vertical);
    EXPECT_TRUE(boxes[1]->IsShownAsButton());
    auto *const button = boxes[1]->defaultWidget()->findChild<QToolButton *>();
    EXPECT_TRUE(button->isVisible());
    EXPECT_EQ(button->text(), "50 %");
    Q_EMIT button->menu()->aboutToShow();
    ASSERT_EQ(button->menu()->actions().size(), 3);
    EXPECT_TRUE(button->menu()->actions()[0]->isChecked());
    button->menu()->actions()[2]->trigger();
    EXPECT_EQ(boxes[0]->GetText(), "200 %");
    EXPECT_EQ(told.back(), "Second 200 %");
    EXPECT_TRUE(first.RemoveButton(kScale));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(CZelToolbarComboBoxButton::GetByCmd(kScale), boxes[1]);
}

TEST(CZelImageList, PicturesAreDrawnCopiedAndWashedOut) {
    CZelImageList images;
    images.Create();
    int const red = images.GetRect(Rgb(255, 0, 0), Rgb(0, 0, 0));
    images.SetPictureSide(32);
    CZelImageList copy;
    copy.Copy(images);
    images.Clear();
    EXPECT_EQ(copy.GetPictureSide(), 32);
    ImageDescription described;
    EXPECT_TRUE(copy.GetImageInfo(red, described));
    EXPECT_EQ(described.fill, Rgb(255, 0, 0));
    EXPECT_FALSE(copy.GetImageInfo(red + 1, described));
    QImage paper(80, 40, QImage::Format_RGB32);
    paper.fill(Qt::white);
    QPainter painter(&paper);
    EXPECT_TRUE(copy.Draw(painter, {4, 4}, red) && copy.Draw(painter, {44, 4}, red, false));
    EXPECT_FALSE(copy.Draw(painter, {0, 0}, 7));
    EXPECT_EQ(paper.pixelColor(20, 20), QColor(255, 0, 0));
    EXPECT_GT(paper.pixelColor(60, 20).green(), 100);
    QIcon const icon = copy.ExtractIcon(red);
    EXPECT_TRUE(copy.ExtractIcon(-1).isNull());
    copy.Clear();
    EXPECT_EQ(icon.pixmap(QSize(24, 24)).toImage().pixelColor(12, 12), QColor(255, 0, 0));
    EXPECT_LT(icon.pixmap(QSize(24, 24), QIcon::Disabled).toImage().pixelColor(12, 12).alpha(), 128);
}

} // namespace
} // namespace zelvar
