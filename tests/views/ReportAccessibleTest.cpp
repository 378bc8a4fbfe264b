#include "zelvar/views/ReportAccessible.h"

#include "support/ReportStage.h"
#include "support/ScreenReader.h"

namespace zelvar {
namespace {

using test::FillStored;
using test::Stage;
using test::StatesOf;
using test::TellingView;

struct Accessible : testing::Test {
    Accessible() { FillStored(view, 50); }
    QAccessibleInterface &Table() {
        QAccessibleInterface *const table = QAccessible::queryAccessibleInterface(&view);
        EXPECT_NE(dynamic_cast<ReportAccessible *>(table), nullptr);
        return *table;
    }
    TellingView view;
};

TEST_F(Accessible, ATableHasRowsOfCellsWithNamesAndPlaces) {
    Stage const stage(view);
    QAccessibleInterface &table = Table();
    EXPECT_EQ(table.role(), QAccessible::Table);
    QAccessibleInterface *const row = table.child(7);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->role(), QAccessible::Row);
    EXPECT_EQ(row->text(QAccessible::Name), QStringLiteral("row 7, 700 KB, table"));
    EXPECT_EQ(row->parent(), &table);
    EXPECT_EQ(table.indexOfChild(row), 7);
    QAccessibleInterface *const cell = table.tableInterface()->cellAt(7, 1);
    ASSERT_NE(cell, nullptr);
    EXPECT_EQ(cell->text(QAccessible::Name), QStringLiteral("700 KB"));
    EXPECT_EQ(cell->parent(), row);
    EXPECT_EQ(row->child(1), cell);
    EXPECT_EQ(row->indexOfChild(cell), 1);
    for (QAccessibleInterface const *other : {cell, QAccessible::queryAccessibleInterface(view.viewport())})
        EXPECT_EQ(table.indexOfChild(other), -1) << "a part of a part, or what has no open field in it";
    EXPECT_EQ(cell->tableCellInterface()->rowIndex(), 7);
    EXPECT_EQ(table.tableInterface()->columnDescription(1), QStringLiteral("Size"));
    QPoint const at = view.viewport()->mapToGlobal(stage.Middle(7, 1));
    EXPECT_EQ(cell->rect().center(), at - QPoint(1, 1));
    EXPECT_EQ(row->rect().width(), view.ColumnsWidth());
    EXPECT_EQ(table.childAt(at.x(), at.y()), row);
    EXPECT_EQ(row->childAt(at.x(), at.y()), cell);
    EXPECT_EQ(table.child(6)->childAt(at.x(), at.y()), nullptr);
    EXPECT_EQ(StatesOf(table.child(49)), "selectable multi focusable offscreen invisible");
    QAccessibleInterface *const heading = table.child(50);
    for (auto const &[part, states] :
         {std::pair{row, "selectable multi focusable"}, {cell, "selectable multi"}, {heading, ""}})
        EXPECT_EQ(StatesOf(part), states);
    view.setEnabled(false);
    EXPECT_EQ(StatesOf(row) + StatesOf(heading), "disabled selectable multi focusabledisabled");
    view.DeleteAllItems();
    EXPECT_EQ(StatesOf(row), "invalid");
}

TEST_F(Accessible, OneColumnIsAList) {
    view.DeleteColumn(2);
    view.DeleteColumn(1);
    EXPECT_EQ(Table().role(), QAccessible::List);
    EXPECT_TRUE(Table().child(0)->role() == QAccessible::ListItem && Table().child(0)->childCount() == 0);
}

TEST_F(Accessible, StatesFollowTheSelectionAndRowsCanBeSelectedFromOutside) {
    Stage stage(view);
    test::ScreenReader const reader;
    stage.Click(2);
    std::string const row = "row 2, 200 KB, image";
    EXPECT_EQ(reader.Take(), (std::vector{"focus " + row, "select " + row}));
    stage.Click(4, Qt::ControlModifier);
    QAccessibleTableInterface &table = *Table().tableInterface();
    EXPECT_EQ(table.selectedRows(), (QList<int>{2, 4}));
    EXPECT_EQ(std::pair(table.selectedRowCount(), table.selectedCellCount()), std::pair(2, 6));
    EXPECT_EQ(table.selectedCells().size(), 6);
    EXPECT_EQ(table.selectedCells()[4], table.cellAt(4, 1));
    EXPECT_EQ(StatesOf(Table().child(2)), "selectable multi selected focusable");
    EXPECT_EQ(StatesOf(Table().child(4)), "selectable multi selected focusable focused active");
    EXPECT_EQ(StatesOf(table.cellAt(4, 0)), "selectable multi selected active");
    EXPECT_EQ(Table().focusChild(), Table().child(4));
    EXPECT_TRUE(table.selectRow(6) && table.unselectRow(2));
    EXPECT_EQ(stage.Selected(), "4 6");
    EXPECT_FALSE(table.selectRow(50) || table.selectRow(-1) || table.unselectRow(-1));
    view.clearFocus();
    EXPECT_EQ(StatesOf(Table().child(4)), "selectable multi selected focusable active");
    view.ModifyStyle(0, LVS_SINGLESEL);
    EXPECT_EQ(StatesOf(Table().child(5)), "selectable focusable");
}

TEST_F(Accessible, HeadingsAndAnOpenFieldStandBehindTheRows) {
    Stage const stage(view);
    QAccessibleInterface &table = Table();
    ASSERT_EQ(table.childCount(), 51);
    QAccessibleInterface *const headings = table.child(50);
    EXPECT_EQ(headings->text(QAccessible::Name), "Name, Size, Kind");
    EXPECT_EQ(table.indexOfChild(headings), 50);
    QAccessibleInterface *const size = headings->child(1);
    EXPECT_EQ(size->role(), QAccessible::ColumnHeader);
    EXPECT_EQ(size->text(QAccessible::Name), "Size");
    EXPECT_EQ(table.child(7)->child(1)->tableCellInterface()->columnHeaderCells(), QList{size});
    QPoint const at = size->rect().center();
    EXPECT_EQ(table.childAt(at.x(), at.y()), headings);
    EXPECT_EQ(headings->childAt(at.x(), at.y()), size);
    int pressed = -1;
    QObject::connect(&view, &ReportView::ColumnClick, [&](int col) { pressed = col; });
    size->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(pressed, 1);
    test::ScreenReader const reader;
    view.SetSortMark(1, false);
    EXPECT_EQ(reader.Take(), std::vector<std::string>{"words sorted descending"});
    EXPECT_EQ(headings->child(0)->text(QAccessible::Description), "");

    view.ShowHeader(false);
    EXPECT_EQ(table.childCount(), 50);
    QLineEdit field(view.viewport());
    field.show();
    ASSERT_EQ(table.childCount(), 51);
    EXPECT_EQ(table.indexOfChild(table.child(50)), 50);
    EXPECT_EQ(table.child(50)->child(0), QAccessible::queryAccessibleInterface(&field));
    field.hide();
    EXPECT_EQ(table.child(50), nullptr);
}

TEST_F(Accessible, MillionsOfRowsCostNothingUntilAskedForAndThenOnlyTheLast) {
    view.ModifyStyle(0, LVS_OWNERDATA);
    view.SetItemCountEx(10'000'000);
    QAccessibleInterface &table = Table();
    EXPECT_EQ(table.childCount(), 10'000'001);
    static int told = 0;
    platform::AnnounceThrough([](QAccessibleEvent *event) { told += event->type() == QAccessible::SelectionWithin; });
    view.SetItemState(-1, LVIS_SELECTED, LVIS_SELECTED);
    platform::AnnounceThrough(nullptr);
    EXPECT_EQ(told, 1);
    QAccessibleInterface *const row = table.child(0);
    QAccessible::Id const second = QAccessible::uniqueId(table.child(1));
    for (int other = 2; other < 4096; ++other)
        std::ignore = table.child(other);
    QAccessibleInterface *const cell = row->child(0); // the 4,097th part
    EXPECT_EQ(QAccessible::accessibleInterface(second), nullptr) << "the oldest but for the cell's own row made room";
    EXPECT_EQ(table.child(0), row);
    EXPECT_EQ(cell->parent(), row);
}

} // namespace
} // namespace zelvar
