#include "support/GuiTest.h"
#include "support/Ink.h"
#include "zelvar/layout/cdxCDynamicDialog.h"
#include "zelvar/layout/cdxCSizeIconCtrl.h"

namespace zelvar {
namespace {

constexpr int kGripId = 59936;

struct SizeIconTest : testing::Test {
    SizeIconTest() {
        dialog.resize(300, 200);
        dialog.show();
        grip = platform::GetDlgItem<cdxCSizeIconCtrl>(dialog, kGripId);
    }
    cdxCDynamicDialog dialog{0U};
    cdxCSizeIconCtrl *grip = nullptr;

    /// Pixels of the grip that differ from its background.
    [[nodiscard]] int InkCount() const {
        QImage const image = grip->grab().toImage();
        return test::InkOf(image, [&](QColor const &color) { return color != image.pixelColor(0, 0); }).count;
    }
};

TEST_F(SizeIconTest, KeepsToTheCorner) {
    ASSERT_NE(grip, nullptr);
    EXPECT_TRUE(grip->isVisible());
    EXPECT_EQ(grip->geometry().bottomRight(), dialog.rect().bottomRight());
    dialog.resize(400, 260);
    EXPECT_EQ(grip->geometry().bottomRight(), dialog.rect().bottomRight());
    EXPECT_GT(InkCount(), 10);
    EXPECT_EQ(grip->cursor().shape(), Qt::SizeFDiagCursor);
}

TEST_F(SizeIconTest, DraggingItSizesTheWindowAndADoubleClickDoesNothing) {
    dialog.move(10, 10); // room to grow on a small screen
    QSize const before = dialog.size();
    QTest::mouseDClick(grip, Qt::LeftButton);
    EXPECT_EQ(dialog.size(), before);
    QPoint const at = grip->rect().center();
    QTest::mousePress(grip, Qt::LeftButton, {}, at);
    QTest::mouseMove(grip, at + QPoint(50, 30));
    QTest::mouseRelease(grip, Qt::LeftButton, {}, at);
    EXPECT_EQ(dialog.size(), before + QSize(50, 30));
}

TEST_F(SizeIconTest, AMaximisedWindowShowsNone) {
    dialog.showMaximized();
    ASSERT_TRUE(test::Eventually([&] { return dialog.isMaximized(); }));
    EXPECT_EQ(InkCount(), 0);
    EXPECT_NE(grip->cursor().shape(), Qt::SizeFDiagCursor);
    cdxCSizeIconCtrl always(false);
    EXPECT_FALSE(always.Create(nullptr, 1));
    ASSERT_TRUE(always.Create(&dialog, 7));
    always.show();
    EXPECT_TRUE(always.isVisible());
    EXPECT_EQ(always.cursor().shape(), Qt::SizeFDiagCursor);
    dialog.showNormal();
    EXPECT_TRUE(test::Eventually([&] { return grip->cursor().shape() == Qt::SizeFDiagCursor && InkCount() > 10; }));
}

TEST_F(SizeIconTest, OnlyTheFlagBringsIt) {
    cdxCDynamicDialog plain(0U, nullptr, cdxCDynamicWnd::FreedomAll, 0);
    plain.show();
    EXPECT_EQ(platform::GetDlgItem(plain, kGripId), nullptr);
}

} // namespace
} // namespace zelvar
