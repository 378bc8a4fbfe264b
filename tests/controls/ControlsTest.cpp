#include "support/GuiTest.h"
#include "zelvar/controls/CZelButton.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/controls/CZelImageList.h"
#include "zelvar/controls/CZelPropList.h"
#include "zelvar/controls/CZelTabCtrl.h"

#include <QtGui/QClipboard>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLineEdit>

#include <gtest/gtest.h>

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
        name = new CZelProp("Name", "", "What the file is called", 101);
        note = new CZelProp("Note", "old", {}, 102);
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
    CZelProp *name;
    CZelProp *note;
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

TEST(CZelPropList, CopyTakesTheValue) {
    Properties properties;
    properties.list.Tree().setCurrentItem(properties.note);
    QTest::keyClick(&properties.list.Tree(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("old"));
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
