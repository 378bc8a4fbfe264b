#include "zelvar/charts/CPlotCtrl.h"

#include "support/GuiTest.h"
#include "zelvar/charts/PlotPainter.h"
#include "zelvar/platform/ui/Convert.h"

#include <QtGui/QAccessible>
#include <QtGui/QPainter>

#include <random>

namespace zelvar {
namespace {

constexpr QRgb kRed = qRgb(230, 0, 0);
constexpr QRgb kBlue = qRgb(0, 0, 255);
constexpr QRgb kBlack = qRgb(0, 0, 0);

/// A window that hears what its chart says.
class ChartParent : public QWidget {
public:
    std::vector<platform::MessageParam> heard;

protected:
    bool event(QEvent *event) override { return m_messages.Dispatch(*event) || QWidget::event(event); }

private:
    void OnSelected(platform::MessageParam first, platform::MessageParam) { heard.push_back(first); }
    platform::MessageMap m_messages = [this] {
        platform::MessageMap map;
        map.On(WM_CHART_SELECTED, this, &ChartParent::OnSelected);
        return map;
    }();
};

/// A plot area of 200 by 100 pixels for x and y from 0 to 100, without ticks.
struct PlotStage {
    ChartParent parent;
    CPlotCtrl &plot = *new CPlotCtrl(&parent);
    PlotStage() {
        plot.resize(280, 152);
        plot.SetDataMaxX(100);
        plot.SetDataMaxY(100);
        plot.SetTickX(0);
        plot.SetTickY(-1);
        plot.SetCaptionX("");
        plot.SetCaptionY("");
    }
    void Show() {
        parent.resize(300, 200);
        parent.show();
    }
    [[nodiscard]] QImage Picture() { return test::PictureOf(plot); }
};

QPoint At(CPlotCtrl const &plot, double x, double y) {
    return {plot.Geometry().DataToWndX(x), plot.Geometry().DataToWndY(y)};
}

TEST(CPlotCtrl, DrawsFrameAxesTicksAndMarkers) {
    PlotStage stage;
    stage.plot.SetTickX(50);
    stage.plot.SetTickY(50);
    stage.plot.AddData(50, 50, nullptr, nullptr);
    stage.plot.AddData(101, 50, nullptr, nullptr); // the range grows with it
    EXPECT_EQ(stage.plot.Geometry().Range().maxX, 101);
    stage.plot.SetDataMaxX(100);
    QImage const picture = stage.Picture();
    auto const at = [&](int x, int y) { return picture.pixel(x, y); };
    EXPECT_EQ(at(0, 0), kBlack);
    EXPECT_EQ(at(279, 151), kBlack);
    EXPECT_EQ(at(5, 5), qRgb(255, 255, 255));
    for (int x : {59, 60}) // two pixels wide
        EXPECT_EQ(at(x, 40), kBlack) << x;
    EXPECT_NE(at(61, 40), kBlack);
    for (int const off : {1, 4, 5}) { // the ticks at 50, five pixels long
        for (QRgb const color : {at(160, stage.plot.Geometry().PlotMaxY() + off), at(59 - off, 70)})
            EXPECT_EQ(color == kBlack, off < 5) << off;
    }
    QPoint const center = At(stage.plot, 50, 50);
    EXPECT_EQ(at(center.x() - 3, center.y()), kRed);
    EXPECT_EQ(at(center.x() + 2, center.y()), kRed); // right and bottom lie outside the ellipse
    EXPECT_NE(at(center.x() + 3, center.y()), kRed);
    int dots = 0;
    for (int y = 20; y < 60; ++y)
        dots += at(160, y) == kBlack ? 1 : 0;
    EXPECT_GT(dots, 15); // three on, three off
    EXPECT_LT(dots, 25);
    stage.plot.DrawGrid(false);
    EXPECT_EQ(stage.Picture().pixel(160, 30), qRgb(255, 255, 255));
}

/// Every line and marker drawn in turn.
void DrawInTurn(QPainter &painter, PlotGeometry const &geometry, std::vector<PlotPoint> const &points, bool lines,
                std::size_t selected) {
    QPoint last;
    for (std::size_t i = 0; i < points.size(); ++i) {
        QPoint const at(geometry.DataToWndX(points[i].x), geometry.DataToWndY(points[i].y));
        painter.setPen(QPen(QColor(kRed), 1));
        if (lines && i > 0 && at != last)
            painter.drawLine(last, at);
        last = at;
        if (!geometry.IsInRange(points[i]))
            continue;
        painter.setBrush(QColor(kRed));
        painter.drawEllipse(at.x() - 3, at.y() - 3, 5, 5);
        if (i != selected)
            continue;
        painter.setBrush(Qt::blue);
        painter.drawEllipse(at.x() - 4, at.y() - 4, 7, 7);
    }
}

TEST(CPlotCtrl, ThePictureIsThatOfDrawingEachPointAndLineInTurn) {
    PlotGeometry const geometry({280, 152}, {60, 20, 20, 32}, {.maxX = 100, .maxY = 100});
    std::mt19937 random(5);
    auto const number = [&] { return static_cast<double>(random() % 13'000) / 100 - 15; }; // some lie outside
    for (std::size_t const count : {1UL, 2UL, 300UL, 20000UL})
        for (bool const ordered : {false, true})
            for (bool const lines : {false, true})
                for (double const ratio : {1.0, 1.5, 2.0}) {
                    SCOPED_TRACE(std::to_string(count) + (ordered ? " ordered" : "") + (lines ? " lines" : "") +
                                 " at " + std::to_string(ratio));
                    std::vector<PlotPoint> points(count);
                    for (PlotPoint &point : points)
                        point = {number(), number()};
                    if (ordered)
                        std::sort(points.begin(), points.end(), [](auto &a, auto &b) { return a.x < b.x; });
                    std::size_t const selected = count / 2;
                    QImage expected(static_cast<int>(280 * ratio), static_cast<int>(152 * ratio), QImage::Format_RGB32);
                    expected.setDevicePixelRatio(ratio);
                    expected.fill(Qt::white);
                    QPainter painter(&expected);
                    OffscreenSurface surface;
                    surface.Resize(&painter, 280, 152);
                    surface.GetDC()->fillRect(0, 0, 280, 152, Qt::white);
                    DrawInTurn(painter, geometry, points, lines, selected);
                    painter.end();
                    DrawPlotData(surface, geometry, points, lines, selected, {});
                    ASSERT_EQ(surface.GetPixels(), expected);
                }
}

TEST(CPlotCtrl, OddValuesNeverHangOrCrash) {
    PlotStage stage;
    double const nan = std::numeric_limits<double>::quiet_NaN();
    stage.plot.DrawLine(true);
    for (double const odd : {nan, HUGE_VAL, -HUGE_VAL, 1e308, -1e308, 0.0})
        stage.plot.AddData(odd, -odd, "odd", nullptr);
    for (double const odd : {nan, HUGE_VAL, -1.0, 0.0, 1e308, 1e-300}) {
        stage.plot.SetDataMaxX(odd);
        stage.plot.SetDataMaxY(odd);
        stage.plot.SetTickX(odd);
        stage.plot.SetTickY(odd);
        for (bool const everyTick : {false, true}) {
            stage.plot.DrawEveryXTick(everyTick);
            EXPECT_FALSE(stage.Picture().isNull());
        }
        stage.plot.SlctData(odd, 0);
    }
    stage.plot.resize(3, 3); // smaller than its margins
    EXPECT_FALSE(stage.Picture().isNull());
}

TEST(CPlotCtrl, AClickSelectsByXAndTellsTheParent) {
    PlotStage stage;
    stage.plot.AddData(20, 10, "first", "a");
    stage.plot.AddData(20, 90, nullptr, "b");
    stage.plot.AddData(60, 50, nullptr, nullptr);
    stage.Show();
    QTest::mouseClick(&stage.plot, Qt::LeftButton, {}, At(stage.plot, 20, 90));
    EXPECT_TRUE(stage.parent.heard.empty()); // posted
    QCoreApplication::processEvents();
    ASSERT_EQ(stage.parent.heard.size(), 1U);
    auto const *const point = reinterpret_cast<CPlotCtrl::DataPoint const *>(stage.parent.heard[0]);
    EXPECT_EQ(point, stage.plot.GetSlctData());
    EXPECT_EQ(WM_CHART_SELECTED, 0x8065); // applications know the number
    EXPECT_EQ(point->info, "a");          // of two with one x the first
    QImage const picture = stage.Picture();
    QPoint const marker = At(stage.plot, 20, 10);
    EXPECT_EQ(picture.pixel(marker), kBlue);
    EXPECT_EQ(picture.pixel(marker.x() - 4, marker.y()), kRed);

    QTest::mouseClick(&stage.plot, Qt::LeftButton, {}, At(stage.plot, 20, 10)); // again: none
    EXPECT_EQ(stage.plot.GetSlctData(), nullptr);
    QTest::mouseClick(&stage.plot, Qt::LeftButton, {}, At(stage.plot, 60, 5));
    QTest::mouseClick(&stage.plot, Qt::LeftButton, {}, At(stage.plot, 40, 5)); // too far from all
    EXPECT_EQ(stage.plot.GetSlctData(), nullptr);
    QTest::mouseClick(&stage.plot, Qt::LeftButton, {}, QPoint(59, 50)); // in the margin
    QTest::mouseClick(&stage.plot, Qt::RightButton, {}, At(stage.plot, 60, 5));
    QCoreApplication::processEvents();
    EXPECT_EQ(stage.parent.heard.size(), 2U); // letting go tells nobody
    QTest::mouseClick(&stage.plot, Qt::LeftButton, {}, At(stage.plot, 60, 5));
    QTest::mouseDClick(&stage.plot, Qt::LeftButton, {}, At(stage.plot, 60, 5));
    EXPECT_NE(stage.plot.GetSlctData(), nullptr); // the second press does not let go
}

TEST(CPlotCtrl, KeysMoveTheSelectionAndTellTheParent) {
    PlotStage stage;
    stage.plot.AddData(60, 1, nullptr, nullptr);
    stage.plot.AddData(20, 2, nullptr, nullptr);
    stage.plot.AddData(40, 3, nullptr, nullptr);
    stage.Show();
    std::vector<double> seen;
    for (Qt::Key const key : {Qt::Key_Right, Qt::Key_Right, Qt::Key_End, Qt::Key_Right, Qt::Key_Left, Qt::Key_Home}) {
        QTest::keyClick(&stage.plot, key);
        seen.push_back(stage.plot.GetSlctData()->x);
    }
    EXPECT_EQ(seen, (std::vector<double>{20, 40, 60, 60, 40, 20}));
    QCoreApplication::processEvents();
    EXPECT_EQ(stage.parent.heard.size(), 5U); // at the end nothing moved
}

TEST(CPlotCtrl, ScreenReadersGetTheSelection) {
    PlotStage stage;
    stage.plot.SetTitle("Growth");
    stage.plot.AddData(20, 10, "first", nullptr);
    QAccessibleInterface *const chart = QAccessible::queryAccessibleInterface(&stage.plot);
    EXPECT_EQ(chart->role(), QAccessible::Chart);
    EXPECT_EQ(chart->text(QAccessible::Description), "Growth: 1 points, x 0 to 100, y 0 to 100");
    QTest::keyClick(&stage.plot, Qt::Key_Right);
    EXPECT_EQ(chart->text(QAccessible::Value), "first: x 20, y 10");
    EXPECT_EQ(chart->valueInterface()->maximumValue(), 100.0);
    stage.plot.setAccessibleName("Cells");
    EXPECT_EQ(chart->text(QAccessible::Name), "Cells");
}

TEST(CPlotCtrl, ClearKeepsTheScaleAndSelectsNothingNew) {
    PlotStage stage;
    stage.plot.AddData(200, 10, nullptr, nullptr);
    stage.plot.SlctData(200, 0);
    ASSERT_NE(stage.plot.GetSlctData(), nullptr);
    stage.plot.Clear();
    EXPECT_EQ(stage.plot.GetSlctData(), nullptr);
    stage.plot.AddData(20, 10, nullptr, nullptr);
    EXPECT_EQ(stage.plot.GetSlctData(), nullptr);
    EXPECT_EQ(stage.plot.Geometry().Range().maxX, 200);
    int const top = stage.plot.Geometry().PlotMinY();
    stage.plot.DrawTitle(true);
    stage.plot.DrawTitle(true);
    EXPECT_EQ(stage.plot.Geometry().PlotMinY(), top + 20);
    stage.plot.DrawTitle(false);
    EXPECT_EQ(stage.plot.Geometry().PlotMinY(), top + 10);
}

TEST(CPlotCtrl, TextsAreWholeAndFollowADarkPalette) {
    PlotStage stage;
    stage.plot.SetTitle("gy");
    stage.plot.DrawTitle(true);
    stage.plot.SetCaptionX("Hours");
    stage.plot.SetCaptionY("Cells");
    stage.plot.AddData(50, 50, nullptr, nullptr);
    stage.plot.SlctData(50, 0);
    stage.Show();
    EXPECT_GT(test::StrongestContrast(stage.Picture(), {100, 20, 120, 4}), 4.5); // what hangs below the line
    for (Rect const &text : {stage.plot.Geometry().CaptionXRect(), stage.plot.Geometry().CaptionYRect()})
        EXPECT_GT(test::StrongestContrast(stage.Picture(), platform::ToQRect(text)), 4.5) << text.top;
    QPoint const marker = At(stage.plot, 50, 50);
    QRgb const ground = stage.Picture().pixel(5, 5);
    test::DarkPalette const dark;
    QImage const picture = stage.Picture();
    EXPECT_EQ(picture.pixelColor(5, 5), stage.plot.palette().color(QPalette::Base));
    EXPECT_NE(picture.pixel(5, 5), ground);
    for (QRect const &area : {QRect(100, 10, 120, 14), QRect(marker.x(), marker.y() - 10, 8, 10)})
        EXPECT_GE(test::StrongestContrast(picture, area), 4.5) << area.top();
}

} // namespace
} // namespace zelvar
