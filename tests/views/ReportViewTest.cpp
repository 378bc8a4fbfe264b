#include "zelvar/views/ReportView.h"

#include "support/ReportStage.h"
#include "zelvar/platform/ui/ControlId.h"

#include <QtCore/QEvent>
#include <QtGui/QContextMenuEvent>
#include <QtGui/QHelpEvent>
#include <QtWidgets/QToolTip>

namespace zelvar {
namespace {

using test::FillStored;
using test::Stage;
using test::TellingView;

class VirtualView : public TellingView {
public:
    explicit VirtualView(int rows) {
        ModifyStyle(0, LVS_OWNERDATA);
        InsertColumn(0, "Name", LVCFMT_LEFT, 200);
        SetItemCountEx(rows);
    }
    mutable int asked = 0;

protected:
    void OnGetDispInfo(DispInfo &info) const override {
        ++asked;
        std::snprintf(info.pszText, static_cast<std::size_t>(info.cchTextMax), "virtual %d", info.iItem);
    }
};

TEST(ReportView, TheMouseSelectsAsEverywhere) {
    TellingView view;
    FillStored(view, 10);
    Stage stage(view);
    test::Rows<int, Qt::KeyboardModifiers, Qt::MouseButton, char const *> const steps = {
        {4, {}, Qt::LeftButton, "4"},
        {6, Qt::ShiftModifier, Qt::LeftButton, "4 5 6"},
        {8, Qt::ControlModifier, Qt::LeftButton, "4 5 6 8"},
        {5, {}, Qt::RightButton, "4 5 6 8"},
        {0, {}, Qt::RightButton, "0"}};
    for (auto const &[row, modifiers, button, selected] : steps) {
        stage.Click(row, modifiers, button);
        EXPECT_EQ(stage.Selected(), selected);
        EXPECT_EQ(view.GetFocusRow(), row) << selected;
    }
    for (QPoint const at : {QPoint(20, view.viewport()->height() - 2), QPoint(350, stage.Middle(3).y())}) {
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, at);
        EXPECT_EQ(stage.Selected(), "0") << "a click below the rows or beside the columns leaves the selection";
    }
}

TEST(ReportView, TheKeyboardReachesEverything) {
    TellingView view;
    FillStored(view, 100);
    Stage stage(view);
    int const page = view.GetCountPerPage() - 1;
    test::Rows<Qt::Key, Qt::KeyboardModifiers, int, int> const steps = {
        // rows selected, focus
        {Qt::Key_Down, {}, 1, 0},
        {Qt::Key_Down, {}, 1, 1},
        {Qt::Key_Down, Qt::ShiftModifier, 2, 2},
        {Qt::Key_Down, Qt::ControlModifier, 2, 3},
        {Qt::Key_Space, Qt::ControlModifier, 3, 3},
        {Qt::Key_Space, Qt::ControlModifier, 2, 3},
        {Qt::Key_Space, {}, 1, 3},
        {Qt::Key_Home, Qt::ShiftModifier, 4, 0},
        {Qt::Key_Up, {}, 1, 0},
        {Qt::Key_PageDown, {}, 1, page},
        {Qt::Key_PageUp, Qt::ShiftModifier, page + 1, 0},
        {Qt::Key_End, {}, 1, 99},
        {Qt::Key_A, Qt::ControlModifier, 100, 99},
        {Qt::Key_Home, {}, 1, 0}};
    for (auto const &[key, modifiers, selected, focus] : steps) {
        stage.Key(key, modifiers);
        EXPECT_EQ(view.GetSelectedCount(), selected) << key;
        EXPECT_EQ(view.GetFocusRow(), focus) << key;
        Rect const row = view.GetItemRect(focus);
        EXPECT_EQ(row.Intersected(view.GetClientRect()).Height(), row.Height()) << "the focus is wholly seen";
    }
    view.ModifyStyle(0, LVS_SINGLESEL);
    stage.Key(Qt::Key_Down);
    stage.Key(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(stage.Selected(), "1") << "no key selects two";
}

TEST(ReportView, KeysOfTheDialogAreLeftToItAndItsOwnAreNot) {
    TellingView view;
    FillStored(view, 3);
    test::Rows<Qt::Key, bool> const keys = {{Qt::Key_Return, false}, {Qt::Key_Enter, false}, {Qt::Key_Escape, false},
                                            {Qt::Key_F5, false},     {Qt::Key_A, true},      {Qt::Key_Down, true},
                                            {Qt::Key_Left, true},    {Qt::Key_Space, true}};
    for (auto const &[key, isOwn] : keys) {
        QKeyEvent event(QEvent::KeyPress, key, key == Qt::Key_A ? Qt::ControlModifier : Qt::NoModifier);
        QApplication::sendEvent(&view, &event);
        EXPECT_EQ(event.isAccepted(), isOwn) << key;
    }
}

TEST(ReportView, TypingGoesToTheNextRowThatBeginsSo) {
    TellingView view;
    view.InsertColumn(0, "Name", LVCFMT_LEFT, 150);
    for (char const *name : {"alpha", "Beta", "beach", "gamma"})
        view.InsertItem({.row = 100, .text = name});
    Stage stage(view);
    QTest::keyClicks(&view, QStringLiteral("b"));
    EXPECT_EQ(stage.Selected(), "1");
    QTest::keyClicks(&view, QStringLiteral("ea"));
    EXPECT_EQ(stage.Selected(), "2"); // "bea"
}

TEST(ReportView, ClicksAreToldInOrder) {
    TellingView view;
    FillStored(view, 5);
    Stage stage(view);
    for (auto const signal : {&ReportView::Click, &ReportView::RightClick, &ReportView::DoubleClick})
        QObject::connect(&view, signal, [&view](int row, int col) { view.Tell(Format("told of %d %d", row, col)); });
    QObject::connect(&view, &ReportView::ColumnClick, [&view](int col) { view.Tell(Format("told of %d", col)); });
    stage.Click(1);
    EXPECT_EQ(view.Take(), "row 1=3, click 1, told of 1 0");
    constexpr unsigned both = LVNI_FOCUSED | LVNI_SELECTED;
    test::Rows<int, unsigned, int> const following = {{0, LVNI_FOCUSED, 1},
                                                      {1, LVNI_FOCUSED, -1},
                                                      {0, both, 1},
                                                      {1, both, -1},
                                                      {1, LVNI_SELECTED, -1},
                                                      {3, 0, 4},
                                                      {4, 0, -1}};
    for (auto const &[from, flags, next] : following)
        EXPECT_EQ(view.GetNextItem(from, flags), next) << from;
    QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, stage.Middle(1));
    EXPECT_EQ(view.Take(), "") << "no button had gone down";
    QTest::mousePress(view.viewport(), Qt::LeftButton, {}, stage.Middle(1));
    QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, QPoint(-5, 5));
    EXPECT_EQ(view.Take(), "") << "it went up outside";
    QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, stage.Middle(1));
    EXPECT_EQ(view.Take(), "double 1, told of 1 0");
    stage.Click(3, {}, Qt::RightButton, 1);
    EXPECT_EQ(view.Take(), "row 1=0, row 3=3, right 3, told of 3 1");
    stage.ClickHeading(2);
    EXPECT_EQ(view.Take(), "heading 2, told of 2");
    view.takes = true;
    stage.Click(3);
    stage.Click(3, {}, Qt::RightButton);
    QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, stage.Middle(3));
    stage.ClickHeading(0);
    EXPECT_EQ(view.Take(), "click 3, right 3, double 3, heading 0");
    std::string heard;
    QObject::connect(&view, &ReportView::ContextMenu, [&heard](QPoint) { heard = "menu"; });
    QContextMenuEvent menu(QContextMenuEvent::Keyboard, QPoint(), QPoint());
    QApplication::sendEvent(view.viewport(), &menu);
    EXPECT_EQ(heard, "menu");
}

TEST(ReportView, AVirtualListAsksOnlyForWhatIsSeen) {
    VirtualView view(10'000'000);
    Stage stage(view);
    view.asked = 0;
    view.grab();
    EXPECT_GT(view.asked, 0);
    EXPECT_LT(view.asked, 3 * (view.GetCountPerPage() + 2));
    stage.Key(Qt::Key_End);
    EXPECT_EQ(view.GetFocusRow(), 9'999'999);
    EXPECT_EQ(view.GetItemText(9'999'999, 0), "virtual 9999999");
    view.Take();
    stage.Key(Qt::Key_Home, Qt::ShiftModifier);
    EXPECT_EQ(view.Take(), "row 9999999=2, row 0=3, rows 1-9999998=2"); // one word for ten million rows
    EXPECT_EQ(view.GetSelectedCount(), 10'000'000);
    view.SetItemCountEx(3, LVSICF_NOINVALIDATEALL | LVSICF_NOSCROLL);
    EXPECT_EQ(stage.Selected(), "0 1 2");
    EXPECT_EQ(view.InsertItem({.row = 0, .text = "x"}), -1);
}

TEST(ReportView, ScrollingKeepsWholeRowsOnTop) {
    VirtualView view(1000);
    Stage stage(view);
    view.EnsureVisible(500);
    EXPECT_EQ(view.GetItemRect(500).bottom, view.GetCountPerPage() * view.RowHeight());
    view.EnsureVisible(100);
    EXPECT_EQ(view.GetItemRect(100).top, 0);
    view.SetItemCountEx(1500, LVSICF_NOINVALIDATEALL | LVSICF_NOSCROLL);
    EXPECT_EQ(view.GetTopIndex(), 100);
    EXPECT_EQ(view.verticalScrollBar()->maximum(), 1500 - view.GetCountPerPage());
}

TEST(ReportView, GroupsStandInTheirOrderAndTheKeyboardFollowsTheEye) {
    TellingView view;
    view.EnableGroupView(true);
    view.InsertGroup("Drives", 1);
    view.InsertGroup("Empty", 2);
    view.InsertGroup("Favorites", 4);
    view.InsertColumn(0, "", LVCFMT_LEFT, 200);
    for (auto const &[text, group] : {std::pair{"home", 4}, {"C:", 1}, {"work", 4}, {"D:", 1}})
        view.InsertItem({.row = 100, .text = text, .group = group});
    Stage stage(view);
    int const header = view.Geometry().GroupHeaderHeight();
    for (auto const &[row, headers, rows] : {std::tuple{1, 1, 0}, {3, 1, 1}, {0, 2, 2}, {2, 2, 3}})
        EXPECT_EQ(view.GetItemRect(row).top, headers * header + rows * view.RowHeight());
    stage.Click(3);
    stage.Key(Qt::Key_Down);
    EXPECT_EQ(stage.Selected(), "0");
    stage.Click(1, Qt::ShiftModifier);
    EXPECT_EQ(stage.Selected(), "0 1 3");
    QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, QPoint(20, header / 2));
    EXPECT_EQ(stage.Selected(), "0 1 3") << "a group's header is no row";
    QImage const picture = test::PictureOf(*view.viewport());
    for (int const row : {1, 0}) // each header is read
        EXPECT_GT(test::StrongestContrast(picture, {4, view.GetItemRect(row).top - header, 80, header}), 3);
    test::Shot(view, QStringLiteral("report-groups"));
    view.DeleteItem(1);
    view.DeleteItem(2);
    EXPECT_EQ(view.GetItemRect(0).top, header) << "a group without rows shows no header";
}

TEST(ReportView, StoredTextsFollowTheirColumns) {
    TellingView view;
    FillStored(view, 2);
    EXPECT_TRUE(view.SetItemImage(1, 3) && view.SetItemWord(1, 5) && view.SetItemGroup(1, 7));
    EXPECT_TRUE(view.GetItemImage(1) == 3 && view.GetItemWord(1) == 5 && view.GetItemGroup(1) == 7);
    EXPECT_EQ(view.DeleteColumn(1), 1);
    view.InsertColumn(1, "New", LVCFMT_LEFT, 50);
    EXPECT_EQ(view.GetItemText(1, 1) + view.GetItemText(1, 2), "table");
    ReportColumn column;
    ASSERT_TRUE(view.GetColumn(2, column));
    EXPECT_EQ(column.subItem, 2);
    EXPECT_EQ(view.DeleteColumn(3), 0);
    EXPECT_FALSE(view.SetItemText(0, 3, "beyond") || view.DeleteItem(2) || view.SetItemImage(2, 0) ||
                 view.SetItemWord(2, 0) || view.SetItemGroup(2, 0));
}

TEST(ReportView, ColumnsMayBeReorderedAndFitTheirContent) {
    TellingView view;
    FillStored(view, 3);
    Stage stage(view);
    ASSERT_TRUE(view.SetColumnOrderArray({2, 0, 1}));
    EXPECT_FALSE(view.SetColumnOrderArray({2, 2, 1}));
    EXPECT_EQ(view.GetColumnOrderArray(), (std::vector<int>{2, 0, 1}));
    for (int const row : {0, 2}) {
        view.SetItemText(row, 0, "the widest of all these names");
        view.SetColumnWidth(0, LVSCW_AUTOSIZE);
        EXPECT_EQ(view.GetColumnWidth(0),
                  view.fontMetrics().horizontalAdvance(QStringLiteral("the widest of all these names")) + 8);
        view.SetItemText(row, 0, "short");
    }
    view.SetColumnWidth(1, LVSCW_AUTOSIZE_USEHEADER);
    EXPECT_EQ(view.ColumnsWidth(), view.viewport()->width()) << "the last column takes the rest";
    EXPECT_EQ(view.horizontalScrollBar()->maximum(), 0);
}

TEST(ReportView, CellsStandBelowTheirHeadingsFromEitherSide) {
    TellingView view;
    ImageList images;
    images.Add({.name = "no-such-icon", .fallback = "folder"});
    view.SetImageList(&images);
    FillStored(view, 3);
    Stage stage(view);
    view.SetColumnOrderArray({2, 0, 1});
    auto const agree = [&] {
        for (int col = 0; col < view.GetColumnCount(); ++col) {
            int const left = view.GetHeaderCtrl()->sectionViewportPosition(col);
            int const right = left + view.GetColumnWidth(col);
            Rect const icon = view.GetSubItemRect(1, col, LVIR_ICON);
            Rect const label = view.GetSubItemRect(1, col, LVIR_LABEL);
            EXPECT_EQ(view.ColumnLeft(col), left);
            EXPECT_EQ(std::minmax({icon.left, icon.right, label.left, label.right}), std::pair(left, right));
            EXPECT_EQ(view.isRightToLeft() ? icon.left : icon.right, view.isRightToLeft() ? label.right : label.left);
            for (int const x : {left, right - 1})
                EXPECT_TRUE(x < 0 || x >= view.viewport()->width() || view.SubItemHitTest({x, 5}).col == col) << x;
        }
    };
    for (Qt::LayoutDirection const direction : {Qt::LeftToRight, Qt::RightToLeft, Qt::LeftToRight}) {
        SCOPED_TRACE(direction);
        view.setLayoutDirection(direction);
        view.SetColumnWidth(1, 80);
        agree();
        view.SetColumnWidth(1, 500);
        view.EnsureColumnVisible(1);
        agree();
        int const former = view.ColumnLeft(1);
        stage.Key(Qt::Key_Left);
        EXPECT_GT(view.ColumnLeft(1), former) << "the key shows what stands on the left";
        stage.Key(Qt::Key_Right);
        EXPECT_EQ(view.ColumnLeft(1), direction == Qt::LeftToRight ? 0 : view.viewport()->width() - 500);
    }
    view.setLayoutDirection(Qt::RightToLeft);
    EXPECT_GT(view.viewport()->mapTo(&view, QPoint()).y(), 10);
    view.ModifyStyle(0, LVS_NOCOLUMNHEADER);
    EXPECT_LT(view.viewport()->mapTo(&view, QPoint()).y(), 4) << "without a header the rows begin at the top";
    view.SetColumnWidth(1, 20);
    view.resize(300, 300);
    EXPECT_EQ(view.SubItemHitTest({view.ColumnLeft(0) + 1, 5}).col, 0) << "the header that is hidden was not resized";
}

int CompareWords(long long first, long long second, long long) { return first < second ? 1 : 0; }

TEST(ReportView, SortingTakesStatesAlong) {
    TellingView view;
    FillStored(view, 5);
    Stage stage(view);
    stage.Click(1);
    view.Take();
    EXPECT_TRUE(view.SortItems(CompareWords, 0));
    EXPECT_EQ(view.GetItemText(0, 0), "row 4");
    EXPECT_EQ(stage.Selected(), "3");
    EXPECT_EQ(view.GetFocusRow(), 3);
    EXPECT_EQ(view.Take(), "") << "nobody selected anything";
}

TEST(ReportView, ACellThatIsCutShowsItsTextAsATip) {
    TellingView view;
    FillStored(view, 2);
    view.SetItemText(1, 1, "123456789012345678901234567890");
    Stage stage(view);
    auto const tipAt = [&](int row, int col) {
        QPoint const at = stage.Middle(row, col);
        QHelpEvent help(QEvent::ToolTip, at, view.viewport()->mapToGlobal(at));
        QApplication::sendEvent(view.viewport(), &help);
        return QToolTip::isVisible() ? QToolTip::text() : QString();
    };
    EXPECT_EQ(tipAt(1, 1), QString()); // not asked for
    view.SetExtendedStyle(LVS_EX_LABELTIP);
    EXPECT_EQ(tipAt(1, 1), QStringLiteral("123456789012345678901234567890"));
    QToolTip::hideText();
    EXPECT_TRUE(test::Eventually([] { return !QToolTip::isVisible(); }));
    EXPECT_EQ(tipAt(0, 1), QString());
}

TEST(ReportView, CreateGivesStylePlaceAndId) {
    struct Owned : ReportView {
        void PreCreateWindow(unsigned &style, Rect &) override { style |= LVS_OWNERDATA; }
        int OnCreate() override { return GetStyle() == (LVS_OWNERDATA | LVS_SINGLESEL | LVS_REPORT) ? 0 : -1; }
    };
    QWidget parent;
    auto *const view = new Owned;
    EXPECT_EQ(view->Create(LVS_SINGLESEL, {5, 6, 105, 206}, &parent, 77), 1);
    EXPECT_EQ(platform::GetDlgItem(parent, 77), view);
    EXPECT_EQ(view->geometry(), QRect(5, 6, 100, 200));
}

TEST(ReportView, WhoComesByTabSeesWhereTheKeyboardIsAlsoWithoutACurrentRow) {
    for (int const rows : {0, 3}) {
        TellingView view;
        FillStored(view, rows);
        Stage const stage(view);
        auto const isFramed = [&] {
            return test::ColorAt(*view.viewport(), {view.viewport()->width() / 2, view.viewport()->height() - 1}) ==
                   view.palette().color(QPalette::Highlight);
        };
        EXPECT_FALSE(isFramed()) << "nobody has used the keyboard";
        QTest::keyClick(&view, Qt::Key_Tab); // there is nowhere to go
        EXPECT_TRUE(isFramed()) << rows;
        view.SetItemState(0, LVIS_FOCUSED, LVIS_FOCUSED);
        EXPECT_EQ(isFramed(), rows == 0);
    }
}

TEST(ReportView, TheSelectionIsMarkedWithoutTheFocusOnlyWhereWanted) {
    TellingView view;
    FillStored(view, 3);
    Stage stage(view);
    stage.Click(1);
    QColor const highlight = view.palette().color(QPalette::Highlight);
    auto const marked = [&] {
        Rect const place = view.GetItemRect(1);
        return test::ColorAt(*view.viewport(), {place.right - 3, place.top + 3}) == highlight;
    };
    EXPECT_TRUE(marked());
    Rect const row = view.GetItemRect(1);
    QColor const dot = test::ColorAt(*view.viewport(), {row.left, row.top + 5});
    EXPECT_NE(dot, test::ColorAt(*view.viewport(), {row.left, row.top + 6})) << "the frame is dotted at the edge";
    view.clearFocus();
    EXPECT_FALSE(marked());
    view.ModifyStyle(0, LVS_SHOWSELALWAYS);
    EXPECT_TRUE(marked());
}

} // namespace
} // namespace zelvar
