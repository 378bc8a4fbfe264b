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

QImage Paper(int width, int height, qreal ratio = 1) {
    QImage image(qRound(width * ratio), qRound(height * ratio), QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(kPaper);
    return image;
}

/// The smallest rectangle around what is not paper.
QRect InkOf(QImage const &image, QRect const &within) {
    QRect ink;
    for (int y = within.top(); y <= within.bottom(); ++y)
        for (int x = within.left(); x <= within.right(); ++x)
            if (image.pixel(x, y) != kPaper)
                ink = ink.united(QRect(x, y, 1, 1));
    return ink;
}
QRect InkOf(QImage const &image) { return InkOf(image, image.rect()); }

TEST(RoundRectGradient, FillsFromTheFirstColourToTheSecond) {
    for (auto const &[vertical, first, last] :
         {std::tuple{true, QPoint(60, 11), QPoint(60, 48)}, {false, QPoint(11, 30), QPoint(107, 30)}}) {
        QImage image = Paper(120, 60);
        {
            QPainter painter(&image);
            RoundRectGradient(&painter, {10, 10, 110, 50}, 8, Rgb(250, 0, 0), Rgb(0, 0, 250), vertical, 0, 0);
        }
        EXPECT_GT(qRed(image.pixel(first)), 225);
        EXPECT_LT(qBlue(image.pixel(first)), 25);
        EXPECT_GT(qBlue(image.pixel(last)), 225);
        EXPECT_LT(qRed(image.pixel(last)), 25);
        EXPECT_EQ(InkOf(image), QRect(10, 10, 99, 40)); // the right edge is moved in by one
        EXPECT_EQ(image.pixel(10, 10), kPaper);         // rounded off
        EXPECT_EQ(image.pixel(108, 49), kPaper);
    }
}

TEST(RoundRectGradient, DrawsABorderOnlyIfItHasAWidth) {
    QImage image = Paper(120, 60);
    QPainter painter(&image);
    RoundRectGradient(&painter, {10, 10, 110, 50}, 8, Rgb(255, 255, 0), Rgb(255, 255, 0), true, 1, Rgb(0, 0, 255));
    painter.end();
    EXPECT_EQ(image.pixel(10, 30), qRgb(0, 0, 255));
    EXPECT_EQ(image.pixel(109, 30), qRgb(0, 0, 255));
    EXPECT_EQ(image.pixel(60, 10), qRgb(0, 0, 255));
    EXPECT_EQ(image.pixel(60, 50), qRgb(0, 0, 255)); // below, the outline lies on the edge itself
    EXPECT_EQ(image.pixel(60, 30), qRgb(255, 255, 0));
    for (int x = 20; x < 100; ++x) // without a notch anywhere
        ASSERT_EQ(image.pixel(x, 10), qRgb(0, 0, 255)) << x;
}

TEST(RoundRectGradient, AnEmptyRectangleDrawsNothingAndNoRadiusAllOfIt) {
    QImage image = Paper(30, 30);
    QPainter painter(&image);
    RoundRectGradient(&painter, {10, 10, 11, 20}, 3, 0, 0, true, 2, 0);
    EXPECT_TRUE(InkOf(image).isEmpty());
    RoundRectGradient(&painter, {10, 10, 21, 20}, 0, 0, 0, true, 0, 0);
    EXPECT_EQ(InkOf(image), QRect(10, 10, 10, 10));
    for (QPoint const corner : {QPoint(10, 10), QPoint(19, 10), QPoint(19, 19), QPoint(10, 19)})
        EXPECT_EQ(image.pixel(corner), qRgb(0, 0, 0));
}

CnfgLdr::TextBlock Block(DString text, int size = 40) {
    return {.x = 20,
            .y = 30,
            .font = "Liberation Sans",
            .size = size,
            .weight = 700,
            .color = Rgb(0, 0, 0),
            .text = std::move(text)};
}
QImage DrawnText(CnfgLdr::TextBlock const &block) {
    QImage image = Paper(600, 300);
    QPainter painter(&image);
    DrawTextBlock(&painter, block);
    return image;
}

TEST(DrawTextBlock, ANameGetsItsSignAndOtherTextNone) {
    QRect const with = InkOf(DrawnText(Block("Morvane222")));
    QRect const without = InkOf(DrawnText(Block("Morvane223")));
    EXPECT_GT(with.right(), without.right() + 5);
    EXPECT_GE(with.left(), 20);
    EXPECT_EQ(with.left(), without.left());
    EXPECT_LE(without.height(), 40);
}

TEST(DrawTextBlock, TheSignOfASecondLineStandsOneLineLower) {
    QImage const first = DrawnText(Block("Morvane222\nx"));
    QImage const second = DrawnText(Block("x\nMorvane222"));
    int const textEnd = InkOf(DrawnText(Block("Morvane223"))).right();
    QRect const beside(textEnd + 2, 0, 60, 300);
    QRect const a = InkOf(first, beside);
    QRect const b = InkOf(second, beside);
    ASSERT_FALSE(a.isEmpty());
    EXPECT_EQ(a.left(), b.left());
    EXPECT_NEAR(b.top() - a.top(), 40, 2); // a line of that font height
}

TEST(DrawTextBlock, NothingIsDrawnBeyondTheFarEdgeAndThePainterIsLeftAsItWas) {
    QImage image = Paper(1200, 100);
    QPainter painter(&image);
    painter.setPen(Qt::green);
    QFont const font = painter.font();
    CnfgLdr::TextBlock block = Block("mmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmm");
    block.x = 800;
    DrawTextBlock(&painter, block);
    EXPECT_EQ(InkOf(image).right(), 999);
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
    QImage image = Paper(10, 10);
    image.fill(Qt::red);
    {
        QPainter painter(&image);
        surface.CopyTo(&painter, 5, 0);
    }
    EXPECT_EQ(image.pixel(5, 5), kPaper);
    EXPECT_EQ(image.pixel(4, 5), qRgb(255, 0, 0));
    surface.Resize(nullptr, 11, 10);
    EXPECT_EQ(surface.GetImage().pixel(5, 5), qRgb(0, 0, 0));
    surface.Resize(nullptr, 0, 10);
    EXPECT_EQ(surface.GetDC(), nullptr);
    EXPECT_EQ(surface.GetWidth(), 0);
}

TEST(OffscreenSurface, HasThePixelsOfItsDevice) {
    QImage device = Paper(10, 10, 2);
    QPainter painter(&device);
    DCanvas const canvas = SmallCanvas();
    OffscreenSurface surface;
    surface.ShowScaled(&painter, &canvas, 4, 4);
    EXPECT_EQ(surface.GetImage().size(), QSize(8, 8));
    surface.CopyTo(&painter, 0, 0);
    painter.end();
    EXPECT_EQ(device.pixel(7, 7), qRgb(0, 0, 255));
    EXPECT_EQ(device.pixel(8, 8), kPaper);
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
    QImage image = Paper(60, 100);
    QPainter painter(&image);
    EXPECT_TRUE(DrawImgToDC("/wide", &painter, {10, 10, 50, 90}));
    EXPECT_EQ(InkOf(image), QRect(10, 40, 40, 20));
    EXPECT_LT(qRed(image.pixel(10, 50)), 10);
    EXPECT_GT(qRed(image.pixel(49, 50)), 245);
    EXPECT_GT(qBlue(image.pixel(10, 50)), 245);
    EXPECT_EQ(driver.opens, driver.closes);
}

TEST(DrawImgToDC, TwoChannelsAreGreyFromTheFirstAndOneThatFailsIsBlack) {
    test::ScriptedDrivers const drivers;
    test::ScriptedRasterDriver &driver = test::ScriptedDrivers::AddRaster("scripted");
    driver.SetImage("/grey", {.width = 10, .height = 10, .channels = 2, .sample = [](int channel, int x, int) {
                                  return channel == 0 ? 10 * x : 255;
                              }});
    driver.SetImage("/broken", {.readFails = true});
    QImage image = Paper(20, 20, 2);
    QPainter painter(&image);
    ASSERT_TRUE(DrawImgToDC("/grey", &painter, {0, 0, 20, 20}));
    QRgb const right = image.pixel(39, 20);
    EXPECT_EQ(qRed(right), qBlue(right));
    EXPECT_GT(qRed(right), 200);
    EXPECT_TRUE(DrawImgToDC("/broken", &painter, {0, 0, 20, 20}));
    EXPECT_EQ(image.pixel(39, 20), qRgb(0, 0, 0));
}

TEST(DrawImgToDC, WhatNoDriverOpensDrawsNothing) {
    test::ScriptedDrivers const drivers;
    QImage image = Paper(20, 20);
    QPainter painter(&image);
    EXPECT_FALSE(DrawImgToDC("/missing", &painter, {0, 0, 20, 20}));
    EXPECT_FALSE(DrawImgToDC(nullptr, &painter, {0, 0, 20, 20}));
    EXPECT_TRUE(InkOf(image).isEmpty());
}

} // namespace
} // namespace zelvar
