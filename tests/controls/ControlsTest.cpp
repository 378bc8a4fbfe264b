#include "support/GuiTest.h"
#include "zelvar/controls/CZelButton.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/controls/CZelImageList.h"
#include "zelvar/controls/CZelTabCtrl.h"
#include "zelvar/props/CZelPropList.h"

#include <QtGui/QClipboard>
#include <QtGui/QTextDocument>

namespace zelvar {
namespace {

TEST(CZelComboBox, AnEntryKeepsItsBytesAndItsWord) {
    CZelComboBox combo;
    EXPECT_EQ(combo.AddString("/data/\xff"), 0);
    EXPECT_EQ(combo.GetCurSel(), -1); // nothing is chosen by itself
    EXPECT_EQ(combo.InsertString(0, "/home"), 0);
    EXPECT_TRUE(combo.SetItemData(1, 0xFFFFFFFFFFFFFFFF));
    EXPECT_FALSE(combo.SetItemData(2, 1));
    EXPECT_EQ(combo.GetItemData(1), 0xFFFFFFFFFFFFFFFF);
    EXPECT_EQ(combo.FindStringExact("/data/\xff"), 1);
    combo.SetCurSel(1);
    EXPECT_EQ(combo.GetWindowText(), "/data/\xff");
    combo.SetCurSel(7);
    EXPECT_EQ(combo.GetCurSel(), -1);
}

TEST(CZelComboBox, ATypedTextIsTakenAsItIs) {
    CZelComboBox combo;
    combo.setEditable(true);
    combo.AddString("/home");
    combo.SetWindowText("/home");
    EXPECT_EQ(combo.GetCurSel(), 0);
    combo.lineEdit()->selectAll();
    QTest::keyClicks(combo.lineEdit(), QStringLiteral("/tmp"));
    EXPECT_EQ(combo.GetWindowText(), "/tmp");
    EXPECT_EQ(combo.GetCount(), 1);
}

TEST(CZelComboBox, TheChoiceStaysWhenEntriesComeBeforeIt) {
    CZelComboBox combo;
    combo.AddString("b");
    combo.SetCurSel(0);
    combo.InsertString(0, "a");
    EXPECT_EQ(combo.GetWindowText(), "b");
    EXPECT_EQ(combo.InsertString(99, "c"), 2) << "behind the last one";
    combo.SetWindowText("nothing of these");
    EXPECT_EQ(combo.GetCurSel(), -1) << "no edit field that could hold it";
    combo.ResetContent();
    EXPECT_EQ(combo.GetWindowText(), "");
}

TEST(CZelTabCtrl, APageOutlivesItsTab) {
    CZelTabCtrl tabs;
    auto *const page = new QWidget;
    std::unique_ptr<QWidget> const kept(page);
    tabs.AddTab(new QWidget, "First");
    tabs.AddTab(page, "Second");
    EXPECT_EQ(tabs.InsertTab(new QWidget, "Between", 1), 1);
    EXPECT_EQ(tabs.GetTabLabel(2), "Second");
    EXPECT_TRUE(tabs.RemoveTab(2));
    EXPECT_FALSE(tabs.RemoveTab(2));
    EXPECT_EQ(tabs.GetTabsNum(), 2);
    EXPECT_TRUE(page->isHidden());
}

TEST(CZelTabCtrl, HidingTheActiveTabBringsAnotherOneToTheFront) {
    CZelTabCtrl tabs;
    EXPECT_EQ(tabs.AddTab(new QWidget, "Properties"), 0);
    EXPECT_EQ(tabs.AddTab(new QWidget, "Options"), 1);
    EXPECT_EQ(tabs.AddTab(nullptr, "none"), -1);
    EXPECT_TRUE(tabs.ShowTab(1, false));
    EXPECT_FALSE(tabs.SetActiveTab(1)); // hidden
    EXPECT_TRUE(tabs.ShowTab(1, true, true, false));
    EXPECT_EQ(tabs.GetActiveTab(), 0);
    EXPECT_TRUE(tabs.ShowTab(1));
    EXPECT_EQ(tabs.GetActiveTab(), 1);
    EXPECT_TRUE(tabs.ShowTab(1, false));
    EXPECT_EQ(tabs.GetActiveTab(), 0);
    EXPECT_FALSE(tabs.IsTabVisible(1));
    EXPECT_FALSE(tabs.ShowTab(2));
}

struct Properties {
    Properties() {
        list.EnableHeaderCtrl(true);
        list.SetVSDotNetLook(true);
        auto *const file = new CZelProp("File");
        file->AddSubItem(name);
        file->AddSubItem(note);
        list.AddProperty(file);
        list.resize(300, 200);
        list.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&list));
    }
    void DoubleClick(CZelProp const &prop, int column) const {
        list.Tree().setCurrentItem(list.Tree().topLevelItem(0)); // elsewhere
        QRect const row = list.Tree().visualItemRect(&prop);
        QPoint const at(column == 0 ? row.left() + 5 : list.Tree().columnViewportPosition(1) + 5, row.center().y());
        QTest::mouseClick(list.Tree().viewport(), Qt::LeftButton, {}, at);
        QTest::mouseDClick(list.Tree().viewport(), Qt::LeftButton, {}, at);
    }
    CZelPropList list;
    CZelProp *name = new CZelProp("Name", "", "What the file is called", 101);
    CZelProp *note = new CZelProp("Note", "old", {}, 102);
};

TEST(CZelPropList, GroupsHoldNamedValues) {
    Properties properties;
    CZelProp *const file = properties.list.GetProperty(0);
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(file->IsGroup());
    EXPECT_EQ(file->GetSubItemsCount(), 2);
    EXPECT_EQ(file->GetSubItem(0)->GetData(), 101U);
    EXPECT_EQ(file->GetSubItem(2), nullptr);
    properties.name->SetValue("two\nlines");
    EXPECT_EQ(properties.name->GetValue(), "two\nlines");
    EXPECT_EQ(properties.name->text(1), QStringLiteral("two lines"));
    EXPECT_EQ(properties.list.Tree().headerItem()->text(1), QStringLiteral("Value"));
    EXPECT_EQ(properties.list.GetProperty(1), nullptr);
    test::Shot(properties.list, QStringLiteral("prop-list"));
}

TEST(CZelPropList, AValueIsEditedOnlyWhereAllowedAndItsNameNever) {
    Properties properties;
    int changes = 0;
    QObject::connect(&properties.list, &CZelPropList::PropertyChanged, [&](CZelProp *) { ++changes; });
    auto const editor = [&] { return properties.list.Tree().viewport()->findChild<QLineEdit *>(); };
    properties.DoubleClick(*properties.note, 1);
    EXPECT_EQ(editor(), nullptr);
    properties.note->AllowEdit(true);
    properties.DoubleClick(*properties.note, 0);
    EXPECT_EQ(editor(), nullptr);
    properties.DoubleClick(*properties.note, 1);
    ASSERT_NE(editor(), nullptr);
    QTest::keyClicks(editor(), QStringLiteral("new"));
    QTest::keyClick(editor(), Qt::Key_Return);
    EXPECT_TRUE(test::Eventually([&] { return changes == 1; }));
    EXPECT_EQ(properties.note->GetValue(), "new");
}

TEST(CZelPropList, CopyTakesTheValueAsItIsNotAsItIsShown) {
    Properties properties;
    properties.note->SetValue("/data/two  blanks\n");
    properties.list.Tree().setCurrentItem(properties.note);
    QTest::keyClick(&properties.list.Tree(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("/data/two  blanks\n"));
}

TEST(CZelPropList, ATipShowsAValueLetterForLetter) {
    Properties properties;
    properties.note->SetValue("/data/R&D.tif");
    EXPECT_EQ(properties.note->toolTip(1), QStringLiteral("/data/R&D.tif")) << "no markup, so nothing is escaped";
    properties.note->SetValue("a <b>bold</b> name");
    EXPECT_TRUE(properties.note->toolTip(1).contains(QStringLiteral("&lt;b&gt;")));
    EXPECT_TRUE(Qt::mightBeRichText(properties.note->toolTip(1))) << "or the escapes would show";
}

TEST(CZelPropList, AGroupIsShadedFromEdgeToEdge) {
    Properties const properties;
    QTreeWidget &tree = properties.list.Tree();
    tree.setCurrentItem(properties.note);
    QRect const group = tree.visualItemRect(properties.list.GetProperty(0));
    QColor const shade = properties.list.palette().color(QPalette::Window);
    EXPECT_EQ(test::ColorAt(*tree.viewport(), {1, group.top() + 3}), shade) << "beside the mark of opening";
    EXPECT_EQ(test::ColorAt(*tree.viewport(), {tree.viewport()->width() - 3, group.top() + 3}), shade);
    QRect const row = tree.visualItemRect(properties.name);
    EXPECT_NE(test::ColorAt(*tree.viewport(), {1, row.top() + 3}), shade);
}

TEST(CZelPropList, NamesGetTheirRoomUntilTheUserSetsIt) {
    Properties properties;
    QTreeWidget &tree = properties.list.Tree();
    properties.name->setText(0, QString(200, u'n'));
    properties.list.resize(400, 200);
    EXPECT_EQ(tree.columnWidth(0), 240) << "no more than three fifths";
    properties.name->setText(0, QStringLiteral("Name"));
    properties.list.resize(300, 200);
    EXPECT_LT(tree.columnWidth(0), 150);
    tree.setColumnWidth(0, 150); // as a drag of the heading does
    properties.list.resize(600, 200);
    EXPECT_EQ(tree.columnWidth(0), 300) << "its share of the new width";
}

TEST(CZelPropList, TheDescriptionOfTheCurrentPropertyIsShownAsPlainText) {
    Properties properties;
    auto const *const area = properties.list.findChild<QLabel *>();
    ASSERT_NE(area, nullptr);
    EXPECT_FALSE(area->isVisible());
    properties.list.EnableDescriptionArea(true);
    properties.list.Tree().setCurrentItem(properties.name);
    EXPECT_EQ(area->text(), QStringLiteral("What the file is called"));
    EXPECT_EQ(area->textFormat(), Qt::PlainText);
    properties.list.Tree().setCurrentItem(properties.note);
    EXPECT_EQ(area->text(), QString());
}

TEST(CZelImageList, IconsComeByRegisteredNumberOrByFile) {
    CZelImageList images;
    EXPECT_EQ(images.GetHandle(), nullptr);
    EXPECT_EQ(images.GetIcon(42, "picture.png"), -1); // not created
    images.Create();
    EXPECT_EQ(images.GetIcon(42, nullptr), -1);
    CZelImageList::RegisterIcon(42, "folder", "folder");
    EXPECT_EQ(images.GetIcon(42, nullptr), 0);
    EXPECT_EQ(images.GetIcon(42, ""), 0);
    EXPECT_EQ(images.GetIcon(42, "picture.png"), 1);
    EXPECT_EQ(images.GetHandle()->Get(1).name, "picture.png");
    images.Clear();
    EXPECT_EQ(images.GetCount(), 0);
}

TEST(CZelButton, APictureHasANameForThoseWhoDoNotSeeIt) {
    CZelButton button;
    button.SetImage("star");
    button.SetTooltip("Add to favorites");
    button.SetCheckStyle();
    EXPECT_EQ(button.accessibleName(), QStringLiteral("Add to favorites"));
    button.resize(30, 24);
    button.show();
    test::Click(&button);
    EXPECT_TRUE(button.GetCheck());
    EXPECT_FALSE(button.icon().pixmap(16, 16).isNull());
    test::Shot(button, QStringLiteral("button"));
}

} // namespace
} // namespace zelvar
