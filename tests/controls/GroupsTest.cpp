#include "support/GuiTest.h"
#include "zelvar/controls/CGrpCtrl.h"

#include <QtGui/QAccessible>
#include <QtTest/QSignalSpy>
#include <QtWidgets/QVBoxLayout>

namespace zelvar {
namespace {

using Mode = CGrpCtrl::Mode;

/// A group over another field in a column, with a wide field inside.
struct Column {
    explicit Column(Mode mode)
        : group(new CGrpCtrl), inside(new QLineEdit), below(new QLineEdit), folds(group, &CGrpCtrl::FoldChanged),
          checks(group, &CGrpCtrl::CheckChanged) {
        group->SetWindowText("&Projection");
        group->SetMode(mode);
        inside->setMinimumWidth(300);
        (new QVBoxLayout(&group->Content()))->addWidget(inside);
        auto *const layout = new QVBoxLayout(&window);
        layout->addWidget(group);
        layout->addWidget(below);
        layout->addStretch();
        window.show();
        group->setFocus();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    void Settle() const { window.layout()->activate(); }
    QWidget window;
    CGrpCtrl *group;
    QLineEdit *inside;
    QLineEdit *below;
    QSignalSpy folds;
    QSignalSpy checks;
};

TEST(CGrpCtrl, FoldingGivesItsHeightAwayAndKeepsItsWidth) {
    Column column(Mode::Folds);
    QSize const open = column.group->size();
    int const least = column.group->minimumSizeHint().width();
    int const below = column.below->y();
    column.group->SetFolded(true);
    column.Settle();
    EXPECT_TRUE(column.group->IsFolded() && !column.inside->isVisible());
    EXPECT_LE(column.group->height(), open.height() - column.inside->height());
    EXPECT_GE(column.group->minimumSizeHint().width(), least);
    EXPECT_LE(column.below->y(), below - column.inside->height());
    column.window.resize(column.window.width(), 900);
    column.Settle();
    EXPECT_LE(column.group->height(), open.height() - column.inside->height()) << "no more, however much there is";
    column.group->SetFolded(false);
    column.Settle();
    EXPECT_TRUE(column.inside->isVisible() && column.inside->isEnabled());
    EXPECT_GE(column.group->height(), open.height());
    EXPECT_EQ(column.folds.count(), 2);
    EXPECT_EQ(column.checks.count(), 0);
}

TEST(CGrpCtrl, TheKeyboardFoldsInReadingDirection) {
    Column column(Mode::Folds);
    using Keys = std::vector<Qt::Key>;
    for (auto const &[direction, keys] : test::Rows<Qt::LayoutDirection, Keys>{
             {Qt::LeftToRight,
              {Qt::Key_Left, Qt::Key_Right, Qt::Key_Minus, Qt::Key_Plus, Qt::Key_Space, Qt::Key_Space}},
             {Qt::RightToLeft, {Qt::Key_Right, Qt::Key_Left}}}) {
        column.window.setLayoutDirection(direction);
        for (bool folds = true; Qt::Key const key : keys) { // and unfolds in turn
            QTest::keyClick(column.group, key);
            EXPECT_EQ(column.group->IsFolded(), std::exchange(folds, !folds)) << key;
        }
    }
}

TEST(CGrpCtrl, TheFocusGoesToTheTitleOfWhatIsFoldedAway) {
    Column column(Mode::Folds);
    column.inside->setFocus();
    column.group->SetFolded(true);
    EXPECT_EQ(QApplication::focusWidget(), column.group);
    QTest::keyClick(column.group, Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), column.below);
}

TEST(CGrpCtrl, AFieldHiddenByTheApplicationStaysHidden) {
    Column column(Mode::Folds);
    column.inside->hide();
    column.group->SetFolded(true);
    column.group->SetFolded(false);
    EXPECT_FALSE(column.inside->isVisible());
    column.group->SetFolded(true);
    column.inside->show();
    EXPECT_FALSE(column.inside->isVisible()) << "not while it is folded away";
    column.group->SetMode(Mode::Plain);
    EXPECT_TRUE(column.inside->isVisible() && !column.group->IsFolded());
}

TEST(CGrpCtrl, TheCheckBoxEnablesTheContent) {
    Column column(Mode::Enables);
    QTest::keyClick(column.group, Qt::Key_Space);
    EXPECT_TRUE(!column.group->GetCheck() && column.inside->isVisible() && !column.inside->isEnabled());
    column.group->SetFolded(true);
    column.group->SetCheck(true);
    EXPECT_TRUE(column.inside->isEnabled());
    EXPECT_EQ(column.checks.count(), 2);
    EXPECT_EQ(column.folds.count(), 0);
}

TEST(CGrpCtrl, ScreenReadersHearWhetherItIsFolded) {
    Column column(Mode::Folds);
    QAccessibleInterface *const interface = QAccessible::queryAccessibleInterface(column.group);
    EXPECT_EQ(interface->role(), QAccessible::Grouping);
    EXPECT_EQ(interface->text(QAccessible::Name), QStringLiteral("Projection"));
    EXPECT_TRUE(interface->state().expandable && interface->state().expanded);
    interface->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
    EXPECT_TRUE(column.group->IsFolded() && interface->state().collapsed);
    column.group->SetMode(Mode::Enables);
    EXPECT_EQ(interface->role(), QAccessible::CheckBox);
    EXPECT_TRUE(interface->state().checked && !interface->state().expandable);
}

} // namespace
} // namespace zelvar
