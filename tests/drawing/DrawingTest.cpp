#include "support/Ink.h"
#include "support/ScriptedDriver.h"
#include "support/Test.h"
#include "zelvar/drawing/DrawImgToDC.h"
#include "zelvar/drawing/DrawTextBlock.h"
#include "zelvar/drawing/OffscreenSurface.h"
#include "zelvar/drawing/RoundRectGradient.h"

#include <QtGui/QPainter>

namespace zelvar {
namespace {

constexpr QRgb kPaper = 0xFFFFFFFF;

/// White paper, and who draws on it.
struct Paper {
    Paper(int width, int height, int ratio = 1) : image(width * ratio, height * ratio, QImage::Format_RGB32) {
        image.setDevicePixelRatio(ratio);
        image.fill(kPaper);
        painter.begin(&image);
    }
    QImage image;
    QPainter painter;
};

/// The smallest rectangle around what is not paper.
QRect InkOf(QImage const &image) {
    return test::InkOf(image, [](QColor const &color) { return color != QColor(kPaper); }).place;
}

TEST(RoundRectGradient, FillsFromTheFirstColourToTheSecond) {
    for (auto const &[vertical, first, last] :
         {std::tuple{true, QPoint(60, 11), QPoint(60, 48)}, {false, QPoint(11, 30), QPoint(107, 30)}}) {
        Paper paper(120, 60);
        RoundRectGradient(&paper.painter, {10, 10, 110, 50}, 8, Rgb(250, 0, 0), Rgb(0, 0, 250), vertical, 0, 0);
        QRgb const begin = paper.image.pixel(first);
        QRgb const end = paper.image.pixel(last);
        EXPECT_TRUE(qRed(begin) > 225 && qBlue(begin) < 25 && qBlue(end) > 225 && qRed(end) < 25) << vertical;
        EXPECT_EQ(InkOf(paper.image), QRect(10, 10, 99, 40)); // the right edge is moved in by one
        EXPECT_EQ(paper.image.pixel(10, 10), kPaper);         // rounded off
        EXPECT_EQ(paper.image.pixel(108, 49), kPaper);
    }
}

TEST(RoundRectGradient, DrawsABorderOnlyIfItHasAWidth) {
    Paper paper(120, 60);
    ColorRef const yellow = Rgb(255, 255, 0);
    RoundRectGradient(&paper.painter, {10, 10, 110, 50}, 8, yellow, yellow, true, 1, Rgb(0, 0, 255));
    for (QPoint const edge : {QPoint(10, 30), QPoint(109, 30), QPoint(60, 50)}) // below it lies on the edge itself
        EXPECT_EQ(paper.image.pixel(edge), qRgb(0, 0, 255)) << edge.x();
    EXPECT_EQ(paper.image.pixel(60, 30), qRgb(255, 255, 0));
    for (int x = 20; x < 100; ++x) // without a notch anywhere
        ASSERT_EQ(paper.image.pixel(x, 10), qRgb(0, 0, 255)) << x;
}

TEST(RoundRectGradient, AnEmptyRectangleDrawsNothingAndNoRadiusAllOfIt) {
    Paper paper(30, 30);
    RoundRectGradient(&paper.painter, {10, 10, 11, 20}, 3, 0, 0, true, 2, 0);
    EXPECT_TRUE(InkOf(paper.image).isEmpty());
    RoundRectGradient(&paper.painter, {10, 5, 21, 20}, 0, 0, 0, true, 0, 0);
    EXPECT_EQ(InkOf(paper.image), QRect(10, 5, 10, 15));
    for (QPoint const corner : {QPoint(10, 5), QPoint(19, 5), QPoint(19, 19), QPoint(10, 19)})
        EXPECT_EQ(paper.image.pixel(corner), qRgb(0, 0, 0));
}

CnfgLdr::TextBlock Block(DString text) {
    return {
        .x = 20, .y = 30, .font = "Liberation Sans", .size = 40, .weight = 700, .color = 0, .text = std::move(text)};
}
QImage DrawnText(DString const &text) {
    Paper paper(600, 300);
    DrawTextBlock(&paper.painter, Block(text));
    return paper.image;
}

TEST(DrawTextBlock, ANameGetsItsSignAndOtherTextNone) {
    QRect const with = InkOf(DrawnText("Morvane222"));
    QRect const without = InkOf(DrawnText("Morvane223"));
    EXPECT_GT(with.right(), without.right() + 5);
    EXPECT_GE(with.left(), 20);
    EXPECT_EQ(with.left(), without.left());
    EXPECT_LE(without.height(), 40);
}

TEST(DrawTextBlock, TheSignOfASecondLineStandsOneLineLower) {
    QImage const first = DrawnText("Morvane222\nx");
    QImage const second = DrawnText("x\nMorvane222");
    int const textEnd = InkOf(DrawnText("Morvane223")).right();
    QRect const beside(textEnd + 2, 0, 60, 300);
    QRect const a = InkOf(first.copy(beside));
    QRect const b = InkOf(second.copy(beside));
    ASSERT_FALSE(a.isEmpty());
    EXPECT_EQ(a.left(), b.left());
    EXPECT_NEAR(b.top() - a.top(), 40, 2); // a line of that font height
}

TEST(DrawTextBlock, NothingIsDrawnBeyondTheFarEdgeAndThePainterIsLeftAsItWas) {
    Paper paper(1200, 100);
    QPainter &painter = paper.painter;
    painter.setPen(Qt::green);
    QFont const font = painter.font();
    CnfgLdr::TextBlock block = Block("mmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmm");
    block.x = 800;
    DrawTextBlock(&painter, block);
    EXPECT_EQ(InkOf(paper.image).right(), 999);
    EXPECT_EQ(painter.pen().color(), QColor(Qt::green));
    EXPECT_EQ(painter.font(), font);
    EXPECT_FALSE(painter.hasClipping());
}

DCanvas SmallCanvas() {
    DCanvas canvas;
    canvas.SetSize(2, 2);
    canvas.SetPixel(0, 0, Rgb(1, 2, 3));
    canvas.SetPixel(1, 0, Rgb(255, 0, 0));
    canvas.SetPixel(0, 1, Rgb(0, 255, 0));
    canvas.SetPixel(1, 1, Rgb(0, 0, 255));
    return canvas;
}

TEST(OffscreenSurface, ShowsACanvasUprightAndPicksPixelsWhenScaled) {
    DCanvas const canvas = SmallCanvas();
    OffscreenSurface surface;
    surface.Show(nullptr, &canvas);
    EXPECT_EQ(surface.GetWidth(), 2);
    EXPECT_EQ(surface.GetImage().pixel(0, 0), qRgb(1, 2, 3));
    EXPECT_EQ(surface.GetImage().pixel(0, 1), qRgb(0, 255, 0));
    surface.ShowScaled(nullptr, &canvas, 5, 3);
    QImage const &image = surface.GetImage();
    ASSERT_EQ(image.size(), QSize(5, 3));
    EXPECT_EQ(image.pixel(2, 0), qRgb(1, 2, 3)); // 2 * 2 / 5 is 0
    EXPECT_EQ(image.pixel(3, 1), qRgb(255, 0, 0));
    EXPECT_EQ(image.pixel(4, 2), qRgb(0, 0, 255));
}

TEST(OffscreenSurface, KeepsItsPictureWhileTheSizeStays) {
    OffscreenSurface surface;
    surface.Resize(nullptr, 10, 10);
    surface.GetDC()->fillRect(0, 0, 10, 10, Qt::white);
    surface.Resize(nullptr, 10, 10);
    Paper paper(10, 10);
    paper.painter.fillRect(0, 0, 10, 10, Qt::red);
    surface.CopyTo(&paper.painter, 5, 0);
    EXPECT_EQ(paper.image.pixel(5, 5), kPaper);
    EXPECT_EQ(paper.image.pixel(4, 5), qRgb(255, 0, 0));
    surface.Resize(nullptr, 11, 10);
    EXPECT_EQ(surface.GetImage().pixel(5, 5), qRgb(0, 0, 0));
    surface.Resize(nullptr, 0, 10);
    EXPECT_EQ(surface.GetDC(), nullptr);
    EXPECT_EQ(surface.GetWidth(), 0);
}

TEST(OffscreenSurface, HasThePixelsOfItsDevice) {
    Paper device(10, 10, 2);
    DCanvas const canvas = SmallCanvas();
    OffscreenSurface surface;
    surface.ShowScaled(&device.painter, &canvas, 4, 4);
    EXPECT_EQ(surface.GetImage().size(), QSize(8, 8));
    surface.CopyTo(&device.painter, 0, 0);
    EXPECT_EQ(device.image.pixel(7, 7), qRgb(0, 0, 255));
    EXPECT_EQ(device.image.pixel(8, 8), kPaper);
}

TEST(DrawImgToDC, PutsAWideImageIntoTheMiddleOfATallPlace) {
    test::ScriptedDrivers const drivers;
    test::ScriptedRasterDriver &driver = test::ScriptedDrivers::AddRaster("scripted");
    driver.SetImage("/wide", {.width = 40,
                              .height = 60,
                              .channels = 3,
                              .type = RDI_UInt16,
                              .geo = {.numSlices = 3, .numTimeFrames = 1},
                              .sample = [](int channel, int x, int) { return channel == 0 ? 100 + x : 500 - x; }});
    Paper paper(60, 100);
    EXPECT_TRUE(DrawImgToDC("/wide", &paper.painter, {10, 10, 50, 90}));
    EXPECT_EQ(InkOf(paper.image), QRect(10, 40, 40, 20));
    QRgb const left = paper.image.pixel(10, 50);
    EXPECT_TRUE(qRed(left) < 10 && qBlue(left) > 245 && qRed(paper.image.pixel(49, 50)) > 245);
    EXPECT_EQ(driver.opens, driver.closes);
}

TEST(DrawImgToDC, TwoChannelsAreGreyFromTheFirstOneThatFailsIsBlackAndWhatNoDriverOpensDrawsNothing) {
    test::ScriptedDrivers const drivers;
    test::ScriptedRasterDriver &driver = test::ScriptedDrivers::AddRaster("scripted");
    driver.SetImage("/grey", {.width = 10, .height = 10, .channels = 2, .sample = [](int channel, int x, int) {
                                  return channel == 0 ? 10 * x : 255;
                              }});
    driver.SetImage("/broken", {.readFails = true});
    Paper paper(20, 20, 2);
    EXPECT_FALSE(DrawImgToDC("/missing", &paper.painter, {0, 0, 20, 20}));
    EXPECT_FALSE(DrawImgToDC(nullptr, &paper.painter, {0, 0, 20, 20}));
    EXPECT_TRUE(InkOf(paper.image).isEmpty());
    ASSERT_TRUE(DrawImgToDC("/grey", &paper.painter, {0, 0, 20, 20}));
    QRgb const right = paper.image.pixel(39, 20);
    EXPECT_EQ(qRed(right), qBlue(right));
    EXPECT_GT(qRed(right), 200);
    EXPECT_TRUE(DrawImgToDC("/broken", &paper.painter, {0, 0, 20, 20}));
    EXPECT_EQ(paper.image.pixel(39, 20), qRgb(0, 0, 0));
}

} // namespace
} // namespace zelvar
