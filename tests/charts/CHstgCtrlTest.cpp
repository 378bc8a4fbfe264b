#include "zelvar/charts/CHstgCtrl.h"

#include "support/GuiTest.h"

#include <QtGui/QAccessible>

namespace zelvar {
namespace {

constexpr QRgb kWhite = qRgb(255, 255, 255);
constexpr QRgb kBlack = qRgb(0, 0, 0);
constexpr QRgb kRed = qRgb(255, 0, 0);
constexpr QRgb kBlue = qRgb(0, 0, 200);

class ChartParent : public QWidget {
public:
    int numHeard = 0;

protected:
    bool event(QEvent *event) override {
        if (event->type() == WM_CHART_SELECTED)
            ++numHeard;
        return QWidget::event(event);
    }
};

/// An area of 300 by 100 pixels, 3 slots with 2, 6 and 0 of 8 values.
struct HistogramStage {
    DHstg histogram{3, 0, 9};
    ChartParent parent;
    CHstgCtrl &chart = *new CHstgCtrl(&parent);
    HistogramStage() {
        for (double const value : {0.0, 1.0, 3.0, 3.5, 4.0, 4.5, 5.0, 5.9})
            histogram.AddValue(value);
        chart.resize(350, 140);
        chart.SetHstg(&histogram);
        parent.resize(360, 150);
        parent.show();
    }
    [[nodiscard]] QImage Picture() { return test::PictureOf(chart); }
    void ClickAt(int x, int y = 60) {
        QTest::mouseClick(&chart, Qt::LeftButton, {}, QPoint(x, y));
        QCoreApplication::processEvents();
    }
};

TEST(CHstgCtrl, DrawsABarASlot) {
    HistogramStage stage;
    stage.chart.DrawFreq(false);
    stage.chart.Refresh();
    QImage picture = stage.Picture();
    EXPECT_EQ(picture.pixel(85, 110), kRed);  // 25 of 100 pixels high: from 95
    EXPECT_EQ(picture.pixel(85, 95), kBlack); // its edge
    EXPECT_EQ(picture.pixel(85, 94), kWhite);
    EXPECT_EQ(picture.pixel(185, 46), kRed); // 75 high: from 45
    EXPECT_EQ(picture.pixel(185, 44), kWhite);
    EXPECT_EQ(picture.pixel(285, 110), kWhite); // empty
    EXPECT_EQ(picture.pixel(34, 16), kBlack);   // the axis begins five pixels above
    EXPECT_EQ(picture.pixel(31, 100), kBlack);  // the mark at 20 %

    stage.chart.SetMaxPerc(0.5);
    EXPECT_EQ(stage.Picture().pixel(185, 10), kRed); // not clipped
    stage.chart.SetAutoScale(true);
    stage.chart.Refresh();
    EXPECT_EQ(stage.Picture().pixel(185, 44), kWhite); // 0.75 takes a whole axis
    stage.chart.SetHstg(nullptr);
    picture = stage.Picture();
    EXPECT_EQ(picture.pixel(85, 110), kWhite);
    EXPECT_EQ(picture.pixel(31, 100), kBlack);
}

TEST(CHstgCtrl, ClicksSelectWhateverTheirHeightAndAlwaysTell) {
    HistogramStage stage;
    stage.ClickAt(185, 2);
    EXPECT_EQ(stage.chart.GetSlctSlot(), 1);
    EXPECT_EQ(stage.Picture().pixel(185, 110), kBlue);
    QAccessibleInterface *const reader = QAccessible::queryAccessibleInterface(&stage.chart);
    EXPECT_EQ(reader->text(QAccessible::Description), "3 to 6: 6; 3 slots from 0 to 9, 8 values");
    EXPECT_EQ(reader->valueInterface()->currentValue(), 6.0);
    stage.ClickAt(185);
    EXPECT_EQ(stage.chart.GetSlctSlot(), -1);
    stage.ClickAt(285);
    EXPECT_EQ(stage.chart.GetSlctSlot(), 2);
    stage.ClickAt(10); // in the margin
    EXPECT_EQ(stage.chart.GetSlctSlot(), -1);
    stage.ClickAt(10);
    EXPECT_EQ(stage.parent.numHeard, 5);
    stage.ClickAt(185);
    QTest::mouseDClick(&stage.chart, Qt::LeftButton, {}, QPoint(185, 60));
    EXPECT_EQ(stage.chart.GetSlctSlot(), 1);
}

TEST(CHstgCtrl, TextsAreWhole) {
    HistogramStage stage;
    QImage const picture = stage.Picture();
    auto const isInked = [&](QRect const &area) { return test::StrongestContrast(picture, area) > 4.5; };
    EXPECT_TRUE(isInked({6, 15, 4, 10}) && isInked({29, 15, 2, 10})); // "100%" is wider than its rectangle
    EXPECT_TRUE(isInked({330, 126, 19, 10}));                         // the label behind the last slot
}

TEST(CHstgCtrl, KeysMoveTheSelection) {
    HistogramStage stage;
    std::vector<int> seen;
    for (Qt::Key const key : {Qt::Key_Left, Qt::Key_Right, Qt::Key_Left, Qt::Key_Home, Qt::Key_Left, Qt::Key_End}) {
        QTest::keyClick(&stage.chart, key);
        seen.push_back(stage.chart.GetSlctSlot());
    }
    EXPECT_EQ(seen, (std::vector<int>{2, 2, 1, 0, 0, 2}));
    QCoreApplication::processEvents();
    EXPECT_EQ(stage.parent.numHeard, 4);
    stage.chart.SetHstg(nullptr);
    QTest::keyClick(&stage.chart, Qt::Key_Home);
    EXPECT_EQ(stage.chart.GetSlctSlot(), 2); // kept, though nothing has it
    EXPECT_EQ(stage.chart.SelectionText(), "");
}

TEST(CHstgCtrl, OddSharesAndSizesNeverCrash) {
    HistogramStage stage;
    for (double const odd : {0.0, -1.0, 1e-300, HUGE_VAL, std::nan("")}) {
        stage.chart.SetMaxPerc(odd);
        EXPECT_FALSE(stage.Picture().isNull());
    }
    DHstg const empty(1'000, 0, 0);
    stage.chart.SetHstg(&empty);
    stage.chart.resize(2, 2);
    EXPECT_FALSE(stage.Picture().isNull());
}

} // namespace
} // namespace zelvar
