#include "support/GuiTest.h"
#include "support/Ink.h"
#include "zelvar/controls/CZelColorComboBox.h"
#include "zelvar/controls/CZelImageList.h"
#include "zelvar/controls/CZelImgComboBox.h"
#include "zelvar/controls/IconTabCtrl.h"

#include <QtGui/QAccessible>
#include <QtTest/QSignalSpy>
#include <QtWidgets/QAbstractItemView>
#include <QtWidgets/QColorDialog>
#include <QtWidgets/QTabBar>

namespace zelvar {
namespace {

TEST(CZelComboBox, FindsByStartInAnyCaseAndGoesRound) {
    CZelComboBox combo;
    for (char const *text : {"Nearest", "Bilinear", "Bicubic"})
        combo.AddString(text);
    EXPECT_EQ(combo.FindString("bi"), 1);
    EXPECT_EQ(combo.FindString("bi", 1), 2);
    EXPECT_EQ(combo.FindString("bi", 2), 1);
    EXPECT_EQ(combo.FindString("near", 0), 0) << "itself, once round";
    EXPECT_TRUE(combo.SelectString("bicu") == 2 && combo.SelectString("x") == -1);
    EXPECT_EQ(combo.GetCurSel(), 2);
}

test::Ink InkIn(QImage const &picture, QColor const &color) {
    return test::InkOf(picture, [&](QColor const &here) { return here == color; });
}
int ColorsIn(QImage const &picture, QColor const &color) { return InkIn(picture, color).count; }

struct Pictures {
    Pictures() {
        images.Create();
        red = images.GetRect(Rgb(250, 0, 0), Rgb(250, 0, 0));
        green = images.GetRect(Rgb(0, 250, 0), Rgb(0, 250, 0));
    }
    CZelImageList images;
    int red;
    int green;
};

TEST(CZelImgComboBox, TheFieldShowsTheSelectedPictureAndTheListTheOther) {
    Pictures const pictures;
    CZelImgComboBox combo;
    combo.SetImageList(pictures.images.GetHandle());
    EXPECT_EQ(combo.AddString("Raster", pictures.red, pictures.green), 0);
    EXPECT_EQ(combo.AddString("Band", pictures.red, -1, 2), 1);
    EXPECT_EQ(combo.GetItemSelectedImage(1), pictures.red);
    EXPECT_TRUE(combo.GetItemIndent(1) == 2 && combo.GetItemIndent(2) == -1);
    EXPECT_FALSE(combo.SetItemImage(2, 0) || combo.SetItemIndent(2, 1) || combo.SetItemIndent(-1, 1));
    for (QSize const room : {QSize(40, 16), QSize(16, 40)}) { // in its middle
        QImage const drawn = combo.itemIcon(1).pixmap(room, 1).toImage();
        EXPECT_EQ(ColorsIn(drawn.copy(room.width() / 2 - 6, room.height() / 2 - 6, 12, 12), QColor(250, 0, 0)), 144);
    }
    combo.SetCurSel(0);
    combo.resize(200, 30);
    combo.show();
    QImage const field = combo.grab().toImage();
    EXPECT_GT(ColorsIn(field, QColor(0, 250, 0)), 50);
    EXPECT_EQ(ColorsIn(field, QColor(250, 0, 0)), 0);
    combo.setEnabled(false);
    EXPECT_EQ(ColorsIn(combo.grab().toImage(), QColor(0, 250, 0)), 0) << "washed out";
    combo.SetImageList(nullptr);
    EXPECT_EQ(ColorsIn(combo.grab().toImage(), QColor(0, 250, 0)), 0);
}

TEST(CZelImgComboBox, EntriesOfTheListAreIndentedAtTheirStartingEdge) {
    Pictures const pictures;
    for (Qt::LayoutDirection const direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        CZelImgComboBox combo;
        combo.setLayoutDirection(direction);
        combo.SetImageList(pictures.images.GetHandle());
        combo.AddString("Raster", pictures.red);
        combo.AddString("Band", pictures.red, pictures.red, 2);
        combo.AddString("None", -1);
        combo.SetCurSel(2);
        combo.resize(200, 30);
        combo.show();
        combo.ShowDropDown();
        QAbstractItemView &list = *combo.view();
        auto const columns = [&](int row) {
            QRect const place = list.visualRect(combo.model()->index(row, 0));
            QRect const red = InkIn(list.viewport()->grab(place).toImage(), QColor(250, 0, 0)).place;
            return std::pair(red.left(), red.right());
        };
        auto const [left, right] = columns(0);
        int const step = qRound((direction == Qt::LeftToRight ? 20 : -20) * combo.devicePixelRatioF());
        EXPECT_GE(right - left, 10);
        EXPECT_EQ(columns(1), std::pair(left + step, right + step));
        combo.ShowDropDown(false);
    }
}

struct Colors {
    Colors() : changes(&combo, &CZelColorComboBox::ColorChanged) {
        combo.show();
        combo.setFocus();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&combo));
    }
    CZelColorComboBox combo;
    QSignalSpy changes;
};

TEST(CZelColorComboBox, AnyColourComesBackAndAnUnknownOneGetsAnEntry) {
    Colors colors;
    int const count = colors.combo.GetCount();
    colors.combo.SetColor(Rgb(255, 0, 0));
    EXPECT_EQ(colors.combo.GetWindowText(), "Red");
    EXPECT_EQ(colors.combo.GetCount(), count);
    colors.combo.SetColor(0xFF563412); // the highest byte is no colour
    EXPECT_EQ(colors.combo.GetColor(), Rgb(0x12, 0x34, 0x56));
    EXPECT_EQ(colors.combo.GetWindowText(), "#123456");
    EXPECT_EQ(colors.combo.GetCurSel(), count - 1) << "before the entry for more";
    colors.combo.SetColor(Rgb(0x12, 0x34, 0x56));
    EXPECT_EQ(colors.combo.GetCount(), count + 1);
    EXPECT_EQ(colors.changes.count(), 2);
    test::Shot(colors.combo, QStringLiteral("color-combo"));
    QImage const swatch = colors.combo.itemIcon(count - 1).pixmap(QSize(16, 16), 1).toImage();
    EXPECT_EQ(ColorsIn(swatch, QColor(128, 128, 128)), 60) << "an edge all round";
    EXPECT_GT(ColorsIn(colors.combo.grab().toImage(), QColor(0x12, 0x34, 0x56)), 100);
}

TEST(CZelColorComboBox, AutomaticIsAChoiceOfItsOwn) {
    Colors colors;
    EXPECT_FALSE(colors.combo.SelectAutomatic());
    colors.combo.EnableAutomatic("Automatic", Rgb(0, 0, 0));
    EXPECT_FALSE(colors.combo.IsAutomatic()) << "black stays chosen";
    EXPECT_TRUE(colors.combo.SelectAutomatic() && colors.combo.IsAutomatic());
    EXPECT_EQ(colors.changes.count(), 1);
    colors.combo.EnableAutomatic("Automatic", Rgb(0, 0, 255)); // the application knows another one now
    EXPECT_EQ(colors.combo.GetColor(), Rgb(0, 0, 255));
    EXPECT_EQ(colors.changes.count(), 2);
    colors.combo.EnableAutomatic({}, 0);
    EXPECT_FALSE(colors.combo.IsAutomatic());
    EXPECT_EQ(colors.combo.GetWindowText(), "Blue");
}

TEST(CZelColorComboBox, OtherColoursKeepTheChosenOne) {
    Colors colors;
    colors.combo.SetColor(Rgb(255, 0, 0));
    constexpr CZelColorComboBox::NamedColor two[]{{Rgb(1, 1, 1), "One"}, {Rgb(2, 2, 2), "Two"}};
    colors.combo.SetColors(two);
    EXPECT_EQ(colors.combo.GetColor(), Rgb(255, 0, 0));
    EXPECT_EQ(colors.combo.GetWindowText(), "#FF0000");
    EXPECT_EQ(colors.combo.GetCount(), 4);
    EXPECT_EQ(colors.changes.count(), 1);
}

TEST(CZelColorComboBox, TheLastEntryAsksForAColour) {
    Colors colors;
    auto const chosen = test::OnNextDialog([](QWidget &widget) {
        auto &dialog = dynamic_cast<QColorDialog &>(widget);
        dialog.setCurrentColor(QColor(9, 8, 7));
        dialog.accept();
    });
    colors.combo.ShowDropDown();
    QTest::keyClick(colors.combo.view(), Qt::Key_End);
    QTest::keyClick(colors.combo.view(), Qt::Key_Return);
    EXPECT_TRUE(test::Eventually([&] { return *chosen; }));
    EXPECT_EQ(colors.combo.GetColor(), Rgb(9, 8, 7));
    auto const left = test::OnNextDialog([](QWidget &) {});
    EXPECT_TRUE(!colors.combo.AskForColor() && *left);
    EXPECT_EQ(colors.combo.GetWindowText(), "#090807");
}

TEST(CZelColorComboBox, ArrowKeysStopAtTheLastColour) {
    Colors colors;
    colors.combo.SetCurSel(colors.combo.GetCount() - 2);
    QTest::keyClick(&colors.combo, Qt::Key_Down);
    EXPECT_EQ(colors.combo.GetCurSel(), colors.combo.GetCount() - 2);
    QTest::keyClick(&colors.combo, Qt::Key_Home);
    QTest::keyClick(&colors.combo, Qt::Key_End);
    EXPECT_EQ(colors.combo.GetCurSel(), colors.combo.GetCount() - 2);
}

TEST(CZelTabCtrl, TellsTabsAndPagesApart) {
    CZelTabCtrl tabs;
    auto *const page = new QWidget;
    tabs.AddTab(new QWidget, "First");
    tabs.AddTab(page, "Second");
    EXPECT_EQ(tabs.GetTabFromWnd(page), 1);
    EXPECT_EQ(tabs.GetTabFromWnd(&tabs), -1);
    EXPECT_EQ(tabs.GetTabWnd(2), nullptr);
    tabs.ShowTab(0, false);
    EXPECT_EQ(tabs.GetVisibleTabsNum(), 1);
    EXPECT_TRUE(tabs.SetTabLabel(1, "Third") && tabs.GetTabLabel(1) == "Third");
    EXPECT_FALSE(tabs.SetTabLabel(2, "x") || tabs.SetTabTooltip(2, "x") || tabs.EnableTab(-1));
    std::unique_ptr<QWidget> const kept(page);
    tabs.RemoveAllTabs();
    EXPECT_EQ(tabs.GetTabsNum(), 0);
}

TEST(IconTabCtrl, AHiddenLabelIsTheTipAndTheName) {
    Pictures const pictures;
    IconTabCtrl tabs;
    tabs.SetImageList(pictures.images.GetHandle());
    tabs.AddTab(new QWidget, "&Layers", pictures.red);
    tabs.AddTab(new QWidget, "Plain");
    tabs.resize(300, 100);
    tabs.show();
    int const wide = tabs.tabBar()->tabRect(0).width();
    tabs.ShowLabels(false);
    CZelTabCtrl const &base = tabs;
    EXPECT_EQ(base.GetTabLabel(0), "&Layers");
    EXPECT_LT(tabs.tabBar()->tabRect(0).width(), wide);
    EXPECT_EQ(tabs.tabToolTip(0), QStringLiteral("Layers"));
    QAccessibleInterface *const bar = QAccessible::queryAccessibleInterface(tabs.tabBar());
    EXPECT_EQ(bar->child(0)->text(QAccessible::Name), QStringLiteral("Layers"));
    EXPECT_EQ(tabs.tabText(1), QStringLiteral("Plain")) << "nothing else would be seen";
    EXPECT_GT(ColorsIn(tabs.tabBar()->grab(tabs.tabBar()->tabRect(0)).toImage(), QColor(250, 0, 0)), 50);
    tabs.tabBar()->moveTab(0, 1);
    EXPECT_EQ(tabs.GetTabImage(1), pictures.red) << "a picture goes with its tab";
    tabs.SetTabLabel(1, "Bands");
    tabs.ShowLabels(true);
    EXPECT_EQ(tabs.tabText(1), QStringLiteral("Bands"));
    EXPECT_EQ(tabs.tabToolTip(1), QString());
}

} // namespace
} // namespace zelvar
