#include "zelvar/controls/GUITools.h"

#include "support/GuiTest.h"
#include "zelvar/platform/ui/ControlId.h"

#include <QtGui/QScreen>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QGroupBox>
#include <QtWidgets/QPlainTextEdit>

namespace zelvar {
namespace {

TEST(GUITools, ARectangleIsMovedRatherThanCut) {
    constexpr Rect screen{.left = 100, .top = 0, .right = 500, .bottom = 300};
    for (auto const &[rect, kept] : test::Rows<Rect, Rect>{{{100, 0, 500, 300}, {100, 0, 500, 300}},
                                                           {{90, -20, 190, 80}, {100, 0, 200, 100}},
                                                           {{450, 250, 550, 350}, {400, 200, 500, 300}},
                                                           {{0, 10, 900, 20}, {100, 10, 500, 20}},
                                                           {{5000, 5000, 5010, 5010}, {490, 290, 500, 300}}})
        EXPECT_EQ(GUITools::KeepWithin(rect, screen), kept);
}

TEST(GUITools, AWindowStandsOverItsParentAndOnTheScreen) {
    QWidget parent;
    parent.setGeometry(100, 100, 400, 300);
    parent.show();
    QWidget child(&parent, Qt::Dialog);
    child.resize(100, 50);
    GUITools::CenterWindow(child);
    QLabel unsized("It has its own size", &parent, Qt::Dialog);
    GUITools::CenterWindow(unsized);
    EXPECT_EQ(unsized.size(), unsized.sizeHint());
    EXPECT_EQ(child.size(), QSize(100, 50));
    EXPECT_LE((child.frameGeometry().center() - parent.frameGeometry().center()).manhattanLength(), 4);
    QRect const screen = parent.screen()->availableGeometry();
    parent.move(screen.right() - 50, screen.top());
    GUITools::CenterWindow(child);
    EXPECT_TRUE(screen.contains(child.frameGeometry()));
    child.move(-500, 9000);
    child.resize(screen.width() * 2, 50);
    GUITools::KeepOnScreen(child);
    EXPECT_TRUE(screen.contains(child.geometry()));
}

TEST(GUITools, ControlsAreReachedById) {
    QWidget dialog;
    auto *const combo = new QComboBox;
    combo->addItems({QStringLiteral("one"), QStringLiteral("two")});
    std::array<QWidget *, 6> const items{new QLabel,         new QLineEdit, new QCheckBox,
                                         new QPlainTextEdit, new QGroupBox, combo};
    std::array<int, 7> const ids{1, 2, 3, 4, 5, 6, 99};
    for (std::size_t i = 0; i < items.size(); ++i) {
        items[i]->setParent(&dialog);
        platform::SetDlgCtrlID(*items[i], ids[i]);
        EXPECT_TRUE(GUITools::SetItemText(dialog, ids[i], "two"));
        EXPECT_EQ(GUITools::GetItemText(dialog, ids[i]), "two");
    }
    EXPECT_EQ(combo->currentIndex(), 1);
    EXPECT_FALSE(GUITools::SetItemText(dialog, 99, "two"));
    EXPECT_EQ(GUITools::GetItemText(dialog, 99), "");
    EXPECT_EQ(GUITools::EnableItems(dialog, ids, false), 6);
    EXPECT_FALSE(items[2]->isEnabled());
    EXPECT_EQ(GUITools::ShowItems(dialog, std::array{3}, false), 1);
    EXPECT_TRUE(items[2]->isHidden());
}

TEST(GUITools, APathLosesItsMiddleFolders) {
    QFont const font = QApplication::font();
    DString const path = "/data/archive/2024/april/scene.tif";
    // What just fits, and what is shown with a pixel less.
    for (auto const &[fits, below] : test::Rows<DString, char const *>{{path, "/data/…/2024/april/scene.tif"},
                                                                       {"/data/…/april/scene.tif", "/data/…/scene.tif"},
                                                                       {"/data/…/scene.tif", "…/april/scene.tif"}}) {
        int const width = GUITools::TextWidth(font, fits);
        EXPECT_EQ(GUITools::ShortenPath(path, font, width), fits);
        EXPECT_EQ(GUITools::ShortenPath(path, font, width - 1), below);
    }
    for (char const *const below : {"data/…/2024/a.tif", "data/…/a.tif"})
        EXPECT_EQ(GUITools::ShortenPath("data/far/2024/a.tif", font, GUITools::TextWidth(font, below)), below);
    EXPECT_EQ(GUITools::ShortenPath("a/b\xff", font, 1000), "a/b\xEF\xBF\xBD");
    EXPECT_EQ(GUITools::ShortenPath("", font, 0), "");
    for (int width = 0; width < 200; ++width) { // whatever the width, never wider
        DString const shown = GUITools::ShortenPath("/Übersicht/日本語/très-long-fichier.tif", font, width);
        EXPECT_LE(GUITools::TextWidth(font, shown), std::max(width, GUITools::TextWidth(font, "…"))) << shown;
        EXPECT_EQ(ToValidUtf8(shown), shown);
    }
}

TEST(GUITools, DialogUnitsGrowWithTheFont) {
    QWidget widget;
    Size const small = GUITools::DlgUnitsToPixels(widget, {.cx = 100, .cy = 80});
    QFont font = widget.font();
    font.setPixelSize(font.pixelSize() * 2);
    widget.setFont(font);
    Size const large = GUITools::DlgUnitsToPixels(widget, {.cx = 100, .cy = 80});
    EXPECT_NEAR(large.cx, small.cx * 2, small.cx / 5.0);
    EXPECT_NEAR(large.cy, small.cy * 2, small.cy / 5.0);
}

TEST(GUITools, TheBusyPointerIsGivenBack) {
    {
        GUITools::WaitCursor const outer;
        { GUITools::WaitCursor const inner; }
        ASSERT_NE(QApplication::overrideCursor(), nullptr);
        EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
    }
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

} // namespace
} // namespace zelvar
