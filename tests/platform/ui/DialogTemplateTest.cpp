#include "zelvar/platform/ui/DialogTemplate.h"

#include "support/GuiTest.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/EllipsisLabel.h"

#include <QtGui/QFont>
#include <QtGui/QHelpEvent>
#include <QtGui/QTextDocument>
#include <QtWidgets/QDialog>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QToolTip>

namespace zelvar::platform {
namespace {

constexpr DialogItem kItems[] = {
    {.id = 1, .kind = ControlKind::DefaultButton, .text = "OK", .x = 129, .y = 61, .w = 50, .h = 14},
    {.id = 2, .kind = ControlKind::Button, .text = "Cancel", .x = 183, .y = 61, .w = 50, .h = 14},
    {.id = 10, .kind = ControlKind::Place, .x = 7, .y = 7, .w = 20, .h = 10},
    {.id = 11, .kind = ControlKind::CenteredLabel, .text = "Go to folder", .x = 7, .y = 20, .w = 100, .h = 8},
    {.id = 12, .kind = ControlKind::Combo, .x = 7, .y = 30, .w = 100, .h = 81},
    {.id = 13, .kind = ControlKind::CenteredLabel, .text = "File Name &Filter", .x = 130, .y = 20, .w = 103, .h = 8},
    {.id = 14, .kind = ControlKind::Edit, .x = 130, .y = 30, .w = 103, .h = 14},
    {.id = 15, .kind = ControlKind::CheckBox, .text = "Open as Read-Only", .x = 9, .y = 47, .w = 74, .h = 10},
    {.id = 16, .kind = ControlKind::CheckBox, .text = "Unused", .x = 87, .y = 47, .w = 74, .h = 10, .visible = false},
    {.id = 17, .kind = ControlKind::EllipsisLabel, .text = "", .x = 7, .y = 62, .w = 110, .h = 13},
};
constexpr DialogTemplate kTemplate{.id = 900, .caption = "Trial", .width = 240, .height = 80, .items = kItems};

class BuiltDialog : public testing::TestWithParam<int> {
protected:
    void SetUp() override {
        QFont font = dialog.font();
        font.setPixelSize(GetParam());
        dialog.setFont(font);
        BuildDialog(dialog, kTemplate);
    }
    QDialog dialog;
};
INSTANTIATE_TEST_SUITE_P(FontPixels, BuiltDialog, testing::Values(12, 18));

TEST_P(BuiltDialog, EveryControlIsFoundByItsIdAndHoldsItsText) {
    dialog.show();
    test::Shot(dialog, QStringLiteral("dialog-template-%1").arg(GetParam()));
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Trial"));
    for (DialogItem const &item : kItems) {
        SCOPED_TRACE(item.id);
        QWidget *const control = GetDlgItem(dialog, item.id);
        ASSERT_NE(control, nullptr);
        EXPECT_EQ(control->isVisible(), item.visible && item.kind != ControlKind::Place);
        EXPECT_TRUE(dialog.rect().contains(control->geometry()));
        bool const textMatters = item.kind != ControlKind::Edit && item.kind != ControlKind::Combo;
        if (textMatters && control->isVisible()) {
            EXPECT_LE(control->minimumSizeHint().width(), control->width()) << "the text is clipped";
        }
    }
    EXPECT_NE(GetDlgItem<QPushButton>(dialog, 1), nullptr);
    EXPECT_EQ(GetDlgItem<QLineEdit>(dialog, 1), nullptr);
    EXPECT_EQ(GetDlgItem(dialog, 99), nullptr);
}

TEST_P(BuiltDialog, UnitsAreQuartersAndEighthsOfTheFont) {
    Size const base = DialogBaseUnits(dialog.font());
    EXPECT_EQ(dialog.size(), QSize(240 * base.cx / 4, 80 * base.cy / 8));
    EXPECT_EQ(MapDialogRect(dialog, {4, 8, 8, 16}), (Rect{base.cx, base.cy, base.cx * 2, base.cy * 2}));
    EXPECT_EQ(MapDialogRect(dialog, {-8, -16, 0, 0}).left, -2 * base.cx);
    EXPECT_EQ(GetDlgItem(dialog, 10)->width(), base.cx * 5);
}

TEST_P(BuiltDialog, AComboIsAsHighAsAnEditAndNamedByTheLabelAboveIt) {
    auto *const combo = GetDlgItem<QComboBox>(dialog, 12);
    auto *const edit = GetDlgItem<QLineEdit>(dialog, 14);
    ASSERT_TRUE(combo != nullptr && edit != nullptr);
    EXPECT_NEAR(combo->height(), edit->height(), 2);
    EXPECT_EQ(combo->accessibleName(), QStringLiteral("Go to folder"));
    EXPECT_EQ(edit->accessibleName(), QStringLiteral("File Name Filter"));
    EXPECT_EQ(GetDlgItem<QLabel>(dialog, 13)->buddy(), edit); // its letter goes there
    EXPECT_EQ(GetDlgItem<QLabel>(dialog, 11)->buddy(), combo);
}

TEST(DialogTemplate, EachKindIsTheControlThatItsNameSays) {
    std::pair<ControlKind, char const *> const cases[] = {{ControlKind::Button, "QPushButton"},
                                                          {ControlKind::RadioButton, "QRadioButton"},
                                                          {ControlKind::RightLabel, "QLabel"},
                                                          {ControlKind::ReadOnlyEdit, "QLineEdit"},
                                                          {ControlKind::MultiLineEdit, "QPlainTextEdit"},
                                                          {ControlKind::DropDownList, "QComboBox"},
                                                          {ControlKind::Group, "QGroupBox"},
                                                          {ControlKind::Progress, "QProgressBar"}};
    for (auto const &[kind, className] : cases) {
        SCOPED_TRACE(className);
        DialogItem const items[] = {{.id = 5, .kind = kind, .text = "<b>&Text</b>", .w = 60, .h = 40}};
        QDialog dialog;
        BuildDialog(dialog, {.width = 100, .height = 50, .items = items});
        QWidget const &control = *GetDlgItem(dialog, 5);
        EXPECT_STREQ(control.metaObject()->className(), className);
        EXPECT_EQ(control.property("readOnly").toBool(), kind == ControlKind::ReadOnlyEdit);
        EXPECT_FALSE(control.property("editable").toBool() || control.property("default").toBool());
        EXPECT_EQ(control.property("textFormat").toInt(), Qt::PlainText);
    }
}

TEST(DialogTemplate, TheRoomOfAComboIsThatOfItsListAndEntriesDoNotWidenIt) {
    DialogItem const items[] = {{.id = 1, .kind = ControlKind::DropDownList, .x = 20, .w = 60, .h = 14},
                                {.id = 2, .kind = ControlKind::DropDownList, .x = 20, .y = 20, .w = 60, .h = 20},
                                {.id = 3, .kind = ControlKind::DropDownList, .x = 20, .y = 40, .w = 60, .h = 140},
                                {.id = 4, .kind = ControlKind::Label, .text = "&Room", .x = 24, .y = 4},
                                {.kind = ControlKind::Label, .text = "Beside", .x = 25},
                                {.kind = ControlKind::Label, .text = "Below", .x = 20, .y = 5},
                                {.kind = ControlKind::Label, .text = "Near", .x = 20, .y = 31},
                                {.kind = ControlKind::Label, .text = "Far", .y = 36},
                                {.id = 5, .kind = ControlKind::Label, .text = "A caption", .y = 200, .w = 9, .h = 9},
                                {.id = 6, .kind = ControlKind::Edit, .x = 10, .y = 200, .w = 80, .h = 14}};
    QDialog dialog;
    BuildDialog(dialog, {.width = 100, .height = 60, .items = items});
    auto *const low = GetDlgItem<QComboBox>(dialog, 2);
    auto *const high = GetDlgItem<QComboBox>(dialog, 3);
    EXPECT_EQ(GetDlgItem(dialog, 6)->x(), GetDlgItem(dialog, 5)->geometry().right() + 1 + 4);
    EXPECT_EQ(GetDlgItem(dialog, 6)->geometry().right() + 1, MapDialogRect(dialog, {0, 0, 90, 0}).right);
    EXPECT_EQ(low->maxVisibleItems(), 3);
    EXPECT_GT(high->maxVisibleItems(), 8);
    EXPECT_EQ(low->height(), GetDlgItem(dialog, 1)->height());
    for (auto const &[id, name] : {std::pair{1, "Room"}, {2, "Below"}, {3, "Near"}})
        EXPECT_EQ(GetDlgItem(dialog, id)->accessibleName(), name);
    EXPECT_EQ(high->height(), low->height());
    int const width = high->width();
    high->addItem(QString(500, u'W'));
    dialog.show();
    EXPECT_EQ(high->width(), width);
}

TEST(DialogTemplate, AFactoryMayMakeAControl) {
    QDialog dialog;
    BuildDialog(dialog, kTemplate, [](QWidget &, DialogItem const &item) -> QWidget * {
        return item.id == 14 ? new QListWidget : nullptr;
    });
    EXPECT_NE(GetDlgItem<QListWidget>(dialog, 14), nullptr);
    EXPECT_NE(GetDlgItem<QComboBox>(dialog, 12), nullptr);
}

TEST(ControlId, TheChildrenOfAViewportCountAsTheAreasOwn) {
    QListWidget list;
    auto *const inside = new QLineEdit(list.viewport());
    SetDlgCtrlID(*inside, 1001);
    EXPECT_EQ(GetDlgItem(list, 1001), inside);
    EXPECT_EQ(GetDlgItem(list, 0), nullptr); // a child without an id is nobody's number 0
}

TEST(EllipsisLabel, TextIsCutWhereItDoesNotFitAndTheWholeIsItsTipWithoutMarkup) {
    EllipsisLabel label;
    label.SetText(QStringLiteral("<b>a name</b> & another"));
    label.resize(label.sizeHint());
    EXPECT_EQ(label.ShownText(), label.Text());
    label.resize(label.width() - 1, label.height());
    EXPECT_TRUE(label.ShownText().endsWith(QChar(0x2026)));
    label.show();
    QPoint const inside(2, 2);
    QHelpEvent ask(QEvent::ToolTip, inside, label.mapToGlobal(inside));
    QApplication::sendEvent(&label, &ask);
    QTextDocument tip; // reads the tip as the toolkit does
    ASSERT_TRUE(Qt::mightBeRichText(QToolTip::text()));
    tip.setHtml(QToolTip::text());
    EXPECT_EQ(tip.toPlainText(), label.Text());
    QToolTip::hideText();
    EXPECT_EQ(label.accessibleName(), label.Text());
    label.SetText(QStringLiteral("one\ntwo"));
    label.resize(300, label.height());
    EXPECT_EQ(label.ShownText(), QStringLiteral("one two"));
    label.setAccessibleName("Selected");
    label.SetText("three");
    EXPECT_EQ(label.accessibleName() + ": " + label.accessibleDescription(), "Selected: three");
}

} // namespace
} // namespace zelvar::platform
