#include "support/GuiTest.h"
#include "zelvar/controls/CZelButton.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/controls/CZelImageList.h"
#include "zelvar/controls/CZelTabCtrl.h"

namespace zelvar {
namespace {

TEST(CZelComboBox, AnEntryKeepsItsBytesAndItsWord) {
    CZelComboBox combo;
    EXPECT_EQ(combo.AddString("/data/\xff"), 0);
    EXPECT_EQ(combo.GetCurSel(), -1); // nothing is chosen by itself
    EXPECT_EQ(combo.InsertString(0, "/home"), 0);
    EXPECT_TRUE(combo.SetItemData(1, 0xFFFFFFFFFFFFFFFF) && !combo.SetItemData(2, 1));
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
    EXPECT_TRUE(tabs.RemoveTab(2) && !tabs.RemoveTab(2));
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
    EXPECT_TRUE(tabs.ShowTab(1, false) && !tabs.IsTabVisible(1));
    EXPECT_EQ(tabs.GetActiveTab(), 0);
    EXPECT_FALSE(tabs.ShowTab(2));
}

TEST(CZelImageList, IconsComeByRegisteredNumberOrByFile) {
    CZelImageList images;
    EXPECT_EQ(images.GetIcon(42, "picture.png"), -1); // not created
    images.Create();
    EXPECT_EQ(images.GetIcon(42, nullptr), -1);
    CZelImageList::RegisterIcon(42, "folder", "folder");
    EXPECT_TRUE(images.GetIcon(42, nullptr) == 0 && images.GetIcon(42, "") == 0);
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
    EXPECT_TRUE(button.GetCheck() && !button.icon().pixmap(16, 16).isNull());
    test::Shot(button, QStringLiteral("button"));
}

} // namespace
} // namespace zelvar
