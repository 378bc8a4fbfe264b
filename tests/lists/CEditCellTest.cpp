#include "zelvar/lists/CEditCell.h"

#include "support/ReportStage.h"
#include "zelvar/lists/CListCtrlFlex.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/views/ReportPainter.h"

namespace zelvar {
namespace {

/// Four columns, the first read-only, the others editable; a parent with id 7 that writes down what it is told.
struct Editing : testing::Test {
    Editing() {
        platform::SetDlgCtrlID(parent, 7);
        platform::SetDlgCtrlID(*list, 8);
        for (int col = 0; col < 4; ++col)
            list->InsertColumn(col, ADICol_String, "C" + std::to_string(col), col != 0, LVCFMT_LEFT, 90, col);
        for (int row = 0; row < kRows; ++row) {
            list->InsertItem(row, "r" + std::to_string(row), 0, nullptr, 0, 0xFFFFFF, 0);
            for (int col = 1; col < 4; ++col)
                list->SetItemText(row, col, At(row, col));
        }
        auto const tell = [this](DString const &what, LabelEditNotify const &notify) {
            told += (told.empty() ? "" : " | ") + what + " " + At(notify.iItem, notify.iSubItem) + " from " +
                    std::to_string(notify.idFrom) + " to " + std::to_string(notify.wParam);
        };
        QObject::connect(list, &CListCtrlFlex::BeginLabelEdit, [this, tell](LabelEditNotify *notify) {
            tell("begin", *notify);
            notify->veto = veto;
        });
        QObject::connect(list, &CListCtrlFlex::EndLabelEdit, [this, tell](LabelEditNotify *notify) {
            tell("end", *notify);
            told += notify->pszText == nullptr ? " null" : " '" + *notify->pszText + "'";
        });
        list->resize(420, 300);
        parent.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&parent));
    }
    static std::string At(int row, int col) { return std::to_string(row) + "," + std::to_string(col); }
    [[nodiscard]] CEditCell *Cell() const { return platform::GetDlgItem<CEditCell>(*list, CEditCell::kControlId); }
    /// "row,col" of the open edit, "none" without one.
    [[nodiscard]] std::string Where() const {
        return Cell() == nullptr ? "none" : At(Cell()->Item(), Cell()->SubItem());
    }
    void Open(int row, int col) {
        list->OnEdit(row, col, false);
        ASSERT_NE(Cell(), nullptr);
        EXPECT_TRUE(Cell()->hasFocus());
        told.clear();
    }
    static constexpr int kRows = 40;
    std::string told; // before the window: closing it ends an edit
    bool veto = false;
    QWidget parent;
    CListCtrlFlex *list = new CListCtrlFlex(&parent);
};

TEST_F(Editing, EveryKeyMovesAsTold) {
    int const page = list->GetCountPerPage();
    list->SetColumnWidth(0, 300); // the third column is out of sight
    test::Rows<char const *, int, int, Qt::Key, Qt::KeyboardModifiers, std::string> const cases = {
        {"Up", 5, 1, Qt::Key_Up, {}, "4,1"},
        {"Up on the first row", 0, 1, Qt::Key_Up, {}, "0,1"},
        {"Down", 5, 1, Qt::Key_Down, {}, "6,1"},
        {"Down on the last row ends", kRows - 1, 1, Qt::Key_Down, {}, "none"},
        {"Ctrl+Home", 5, 2, Qt::Key_Home, Qt::ControlModifier, "0,2"},
        {"Ctrl+End", 5, 2, Qt::Key_End, Qt::ControlModifier, At(kRows - 1, 2)},
        {"Home stays", 5, 2, Qt::Key_Home, {}, "5,2"},
        {"Page Up", 30, 1, Qt::Key_PageUp, {}, At(30 - page, 1)},
        {"Page Up at the top", 2, 1, Qt::Key_PageUp, {}, "0,1"},
        {"Page Down", 2, 1, Qt::Key_PageDown, {}, At(2 + page, 1)},
        {"Page Down at the end", kRows - page, 1, Qt::Key_PageDown, {}, At(kRows - 1, 1)},
        {"Tab", 5, 1, Qt::Key_Tab, {}, "5,2"},
        {"Tab goes round after the third column, over the read-only one", 5, 2, Qt::Key_Tab, {}, "6,1"},
        {"Tab from the fourth column too", 5, 3, Qt::Key_Tab, {}, "6,1"},
        {"Tab on the last row ends", kRows - 1, 2, Qt::Key_Tab, {}, "none"},
        {"Shift+Tab", 5, 2, Qt::Key_Tab, Qt::ShiftModifier, "5,1"},
        {"Shift+Tab into the read-only column comes back", 5, 1, Qt::Key_Tab, Qt::ShiftModifier, "5,1"},
        {"Shift+Tab from the first column, third of the row before", 5, 0, Qt::Key_Backtab, Qt::ShiftModifier, "4,2"},
        {"Shift+Tab at the very start", 0, 0, Qt::Key_Tab, Qt::ShiftModifier, "0,0"},
        {"Return ends", 5, 1, Qt::Key_Return, {}, "none"},
        {"Escape ends", 5, 1, Qt::Key_Escape, {}, "none"}};
    for (auto const &[name, row, col, key, modifiers, expected] : cases) {
        SCOPED_TRACE(name);
        Open(row, col);
        QTest::keyClick(Cell(), key, modifiers);
        EXPECT_EQ(Where(), expected);
        CEditCell const *const cell = Cell();
        EXPECT_TRUE(cell != nullptr ? cell->hasFocus() : list->hasFocus());
        EXPECT_TRUE(cell == nullptr || list->viewport()->rect().contains(cell->geometry().center())) << "out of sight";
        EXPECT_EQ(list->GetFocusRow(), -1) << "the list behind it has moved";
        list->setFocus();
        EXPECT_EQ(Where(), "none");
    }
}

TEST_F(Editing, AnOpenEditGoesWithItsCellAndEndsWithIt) {
    std::tuple<char const *, std::function<void()>, char const *> const cases[] = {
        {"scrolled", [&] { list->verticalScrollBar()->setValue(2); }, "5,1"},
        {"a column before it is widened", [&] { list->SetColumnWidth(0, 120); }, "5,1"},
        {"its own column is widened", [&] { list->SetColumnWidth(1, 140); }, "5,1"},
        {"the window is turned round", [&] { parent.setLayoutDirection(Qt::RightToLeft); }, "5,1"}, // and stays so
        {"a row above comes", [&] { list->InsertItem(0, "new", 0, nullptr, 0, 0xFFFFFF, 0); }, "6,1"},
        {"a row above goes", [&] { list->DeleteItem(0); }, "4,1"},
        {"the rows are turned round", [&] { list->Sort(0, false); }, "4,1"}, // "r9" comes first
        {"a column before it goes", [&] { list->DeleteColumn(0); }, "5,0"},
        {"a column before it comes", [&] { list->InsertColumn(0, ADICol_String, "N", false, LVCFMT_LEFT, 50, 0); },
         "5,2"},
        {"its column goes", [&] { list->DeleteColumn(1); }, "none"},
        {"its row goes", [&] { list->DeleteItem(5); }, "none"},
        {"all rows go", [&] { list->DeleteAllItems(); }, "none"}};
    for (auto const &[name, change, where] : cases) {
        SCOPED_TRACE(name);
        Open(5, 1);
        change();
        EXPECT_EQ(Where(), where);
        if (CEditCell const *const cell = Cell())
            EXPECT_EQ(cell->geometry(),
                      platform::ToQRect(list->GetSubItemRect(cell->Item(), cell->SubItem(), LVIR_LABEL)));
        else
            EXPECT_NE(told.find("from 1001 to 8 null"), std::string::npos) << told;
        list->setFocus();
    }
}

TEST_F(Editing, ReturnCommitsTwiceTheLossOfTheFocusAndAMoveOnceAndEscapeNothing) {
    std::string const once = "end 2,1 from 1001 to 8 'new'";
    auto const press = [this](Qt::Key key) { return [this, key] { QTest::keyClick(Cell(), key); }; };
    std::tuple<std::function<void()>, std::string, char const *, char const *> const cases[] = {
        {press(Qt::Key_Return), once + " | " + once, "new", "none"},
        {press(Qt::Key_Escape), "end 2,1 from 1001 to 8 null", "old", "none"},
        {[this] { parent.setFocus(); }, once, "new", "none"},
        {press(Qt::Key_Down), "begin 3,1 from 8 to 7 | " + once, "new", "3,1"}};
    for (auto const &[act, expected, text, where] : cases) {
        list->SetItemText(2, 1, "old");
        Open(2, 1);
        QTest::keyClicks(Cell(), QStringLiteral("new")); // all was selected
        act();
        EXPECT_EQ(told, expected);
        EXPECT_EQ(list->GetItemText(2, 1), text);
        EXPECT_EQ(Where(), where);
        EXPECT_TRUE(!list->IsInEditing() && parent.isVisible()) << "a new cell says yes before the old one says no";
    }
}

TEST_F(Editing, ADoubleClickOpensAnEditableCellAndSelectsTheRowOfAnother) {
    for (Qt::LayoutDirection const direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        parent.setLayoutDirection(direction);
        told.clear();
        for (auto const &[row, col, where, selected] :
             test::Rows<int, int, char const *, bool>{{3, 2, "3,2", false}, {4, 0, "none", true}}) {
            QPoint const at = platform::ToQRect(list->GetSubItemRect(row, col, LVIR_LABEL)).center();
            QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, at);
            QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, at);
            EXPECT_EQ(Where(), where);
            EXPECT_EQ(list->GetItemState(row, LVIS_SELECTED | LVIS_FOCUSED) != 0, selected);
        }
        EXPECT_EQ(told, "begin 3,2 from 8 to 7 | end 3,2 from 1001 to 8 '3,2'");
    }
}

TEST_F(Editing, AVetoKeepsTheCellShutAndReadOnlyColumnsAreSkippedOnlyWhereWanted) {
    veto = true;
    list->OnEdit(1, 1, false);
    EXPECT_EQ(told + " " + Where(), "begin 1,1 from 8 to 7 none");
    veto = false;
    for (auto const &[row, col, skips, where] :
         test::Rows<int, int, bool, char const *>{{1, 0, true, "1,1"}, {1, 0, false, "1,0"}, {kRows, 1, true, "1,0"}}) {
        list->OnEdit(row, col, skips);
        EXPECT_EQ(Where(), where);
    }
    parent.hide(); // where an edit gets no focus, by whose loss it would end
    told.clear();
    list->OnEdit(3, 1, false);
    list->DeleteItem(3);
    EXPECT_EQ(told + " " + Where(), "begin 3,1 from 8 to 7 | end -1,1 from 1001 to 8 null none");
}

TEST_F(Editing, TheEditGrowsWithItsTextToTheEdgeOfTheListAndNeverShrinks) {
    Open(1, 1);
    QTest::keyClicks(Cell(), QStringLiteral("wwwwwwwwwwwwwww"));
    int const grown = Cell()->width();
    EXPECT_EQ(grown, list->fontMetrics().horizontalAdvance(Cell()->text()) + 5);
    for (int i = 0; i < 12; ++i)
        QTest::keyClick(Cell(), Qt::Key_Backspace);
    EXPECT_EQ(Cell()->width(), grown);
    QTest::keyClicks(Cell(), QString(100, u'w'));
    EXPECT_EQ(Cell()->geometry().right() + 1, list->GetClientRect().right);
    parent.setLayoutDirection(Qt::RightToLeft);
    Open(2, 1);
    int const edge = Cell()->geometry().right();
    QTest::keyClicks(Cell(), QString(100, u'w'));
    EXPECT_EQ(std::pair(Cell()->geometry().left(), Cell()->geometry().right()), std::pair(0, edge));
}

TEST_F(Editing, ThePointerTellsOfAnOpenEditWithWhichAListMayDie) {
    for (auto const &[open, shape] : {std::pair{false, Qt::ArrowCursor}, {true, Qt::IBeamCursor}}) {
        list->OnEdit(5, open ? 1 : -1, false);
        QTest::mouseMove(list->viewport(), {21, 101});
        QTest::mouseMove(list->viewport(), {20, 100});
        EXPECT_EQ(list->viewport()->cursor().shape(), shape);
    }
    told.clear();
    delete list;
    EXPECT_EQ(told, "");
}

} // namespace
} // namespace zelvar
