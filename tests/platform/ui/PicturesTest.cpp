#include "zelvar/platform/ui/Pictures.h"

#include "support/GuiTest.h"
#include "zelvar/platform/ui/PaletteColors.h"
#include "zelvar/platform/ui/SystemColor.h"

#include <QtCore/QBuffer>
#include <QtGui/QBitmap>
#include <QtGui/QGuiApplication>

namespace zelvar::platform {
namespace {

char const *const kNames[] = {
    "folder",        "folder-up",       "file",          "image",        "table",     "container", "drive",
    "drive-optical", "drive-removable", "drive-network", "server",       "share",     "database",  "star",
    "panel",         "restore-layout",  "recursive",     "link-overlay", "size-grip", "stop",      "warning",
    "information",   "vector",          "computer",      "network",      "home"};

/// How much of it is not transparent.
long Ink(QPixmap const &pixmap) {
    QImage const image = pixmap.toImage().convertToFormat(QImage::Format_ARGB32);
    long total = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            total += qAlpha(image.pixel(x, y));
    return total;
}

/// A red picture in a file.
DString WriteRed(test::TempFolder const &folder, char const *name, QSize size) {
    QImage red(size, QImage::Format_RGB32);
    red.fill(Qt::red);
    QByteArray png;
    QBuffer buffer(&png);
    EXPECT_TRUE(red.save(&buffer, "PNG"));
    return folder.Write(name, {png.constData(), static_cast<std::size_t>(png.size())});
}

TEST(Pictures, EachOfOursIsADifferentPicture) {
    std::vector<QImage> images;
    for (char const *name : kNames) {
        SCOPED_TRACE(name);
        QPixmap const picture = ResourcePicture(QString::fromLatin1(name), 1);
        EXPECT_GT(Ink(picture), 255);
        for (QImage const &other : images)
            EXPECT_NE(picture.toImage(), other);
        images.push_back(picture.toImage());
    }
}

TEST(Pictures, AListsPictureHasThePixelsOfTheDeviceAndIsMadeOnce) {
    ImageList list;
    int const index = list.Add({.name = "no-such-icon-anywhere", .fallback = "folder"});
    QPixmap const picture = ListPicture(&list, index, 2);
    EXPECT_EQ(picture.size(), QSize(32, 32));
    EXPECT_EQ(picture.deviceIndependentSize(), QSizeF(16, 16));
    EXPECT_EQ(ListPicture(&list, index, 2).cacheKey(), picture.cacheKey());
    EXPECT_NE(ListPicture(&list, index, 1).cacheKey(), picture.cacheKey());
    EXPECT_EQ(picture.toImage(), ResourcePicture(QStringLiteral("folder"), 2).toImage());
    EXPECT_TRUE(ListPicture(&list, 1, 1).isNull() && ListPicture(&list, -1, 1).isNull());
    EXPECT_TRUE(ListPicture(nullptr, 0, 1).isNull());
}

TEST(Pictures, TheDesktopsNamesAndStripsLeadToOurPicturesWhereTheThemeHasNone) {
    QImage const drive = ResourcePicture(QStringLiteral("drive"), 2).toImage();
    EXPECT_EQ(Picture({.name = "no-such-icon", .fallback = "drive-harddisk"}, 2).toImage(), drive);
    EXPECT_EQ(Picture({.kind = ImageDescription::Kind::Strip, .name = "drive"}, 2).toImage(), drive);
    QImage const plain = ResourcePicture(QStringLiteral("file"), 2).toImage();
    EXPECT_EQ(Picture({.kind = ImageDescription::Kind::Strip, .name = "drive", .index = 1}, 2).toImage(), plain);
    char const *const wide = ":/qt-project.org/styles/commonstyle/images/fusion_groupbox.png"; // 98 x 38 pixels
    EXPECT_EQ(StripCount(wide), 2);
    for (int index = 0; index < 3; ++index)
        EXPECT_EQ(Picture({.kind = ImageDescription::Kind::Strip, .name = wide, .index = index}, 1, 38).toImage() ==
                      QImage(wide).copy(index * 38, 0, 38, 38).convertToFormat(QImage::Format_ARGB32_Premultiplied),
                  index < 2);
}

TEST(Pictures, AFileIsReadByTheBytesOfItsNameAndANameOfNothingShowsAPlainFile) {
    test::TempFolder const folder;
    DString const path = WriteRed(folder, "\xff.png", {16, 16});
    QPixmap const picture = Picture({.kind = ImageDescription::Kind::File, .name = path}, 1);
    EXPECT_EQ(picture.toImage().pixelColor(8, 8), QColor(Qt::red));

    QImage const plain = ResourcePicture(QStringLiteral("file"), 1).toImage();
    EXPECT_EQ(Picture({.kind = ImageDescription::Kind::File, .name = path + ".gone"}, 1).toImage(), plain);
    EXPECT_EQ(Picture({.name = "no-such-icon-anywhere", .fallback = "unheard-of"}, 1).toImage(), plain);
}

TEST(Pictures, WhatIsNoPictureShowsAPlainFile) {
    QImage const plain = ResourcePicture(QStringLiteral("file"), 1).toImage();
    test::TempFolder const folder;
    for (auto const &[name, bytes] :
         test::Rows<char const *, std::string>{{"empty.png", ""},
                                               {"text.png", "no picture"},
                                               {"cut.png", "\x89PNG\r\n\x1A\n"},
                                               {"cut.bmp", "BM" + std::string(60, '\xFF')},
                                               {"huge.png", std::string(std::size_t{5} << 20U, 'x')}})
        EXPECT_EQ(Picture({.kind = ImageDescription::Kind::File, .name = folder.Write(name, bytes)}, 1).toImage(),
                  plain)
            << name;
    EXPECT_EQ(Picture({.kind = ImageDescription::Kind::File, .name = folder.Path()}, 1).toImage(), plain);
    EXPECT_EQ(Picture({.kind = ImageDescription::Kind::Strip, .name = "drive", .index = -1}, 1).toImage(), plain);
    EXPECT_EQ(Picture({.kind = ImageDescription::Kind::Strip, .name = "../../etc"}, 1).toImage(), plain);
    EXPECT_EQ(Picture({}, 1).toImage(), plain);
}

TEST(Pictures, AnOblongFileIsFittedWithItsShapeKept) {
    test::TempFolder const folder;
    DString const path = WriteRed(folder, "wide.png", {40, 10});
    QImage const image = Picture({.kind = ImageDescription::Kind::File, .name = path}, 2).toImage();
    EXPECT_EQ(image.size(), QSize(32, 32));
    EXPECT_EQ(image.pixelColor(16, 16), QColor(Qt::red));
    EXPECT_EQ(image.pixelColor(16, 8).alpha(), 0);
    EXPECT_EQ(image.pixelColor(1, 16), QColor(Qt::red));
}

TEST(Pictures, TheMarkOfALinkCoversTheLowerLeftCornerAndNothingElse) {
    for (qreal const ratio : {1.0, 1.25, 2.0}) {
        SCOPED_TRACE(ratio);
        QImage const bare = Picture({.name = "no-such", .fallback = "folder"}, ratio).toImage();
        QImage const link = Picture({.name = "no-such", .fallback = "folder", .linkOverlay = true}, ratio).toImage();
        ASSERT_EQ(link.size(), bare.size());
        EXPECT_EQ(bare.width(), static_cast<int>(16 * ratio));
        int const half = bare.width() / 2;
        QRect const corner(0, half, half, bare.height() - half);
        EXPECT_NE(link.copy(corner), bare.copy(corner));
        QRect const opposite(half + 2, 0, bare.width() - half - 2, half - 2);
        EXPECT_EQ(link.copy(opposite), bare.copy(opposite));
    }
}

TEST(Pictures, AShapeFillsItsBoxOfASquareOfSixteenUnits) {
    using Shapes = ImageDescription::Shapes;
    test::Rows<Shapes, QRect, QRgb> const shapes = {{Shapes::Rectangle, {2, 2, 12, 12}, qRgb(255, 0, 0)},
                                                    {Shapes::SmallCircle, {4, 4, 8, 8}, qRgb(255, 0, 0)},
                                                    {Shapes::Circle, {1, 1, 15, 14}, qRgb(255, 0, 0)},
                                                    {Shapes::DottedCircle, {1, 1, 15, 14}, qRgb(0, 0, 255)}};
    for (auto const &[shape, box, middle] : shapes) {
        auto const kind = ImageDescription::Kind::Shape;
        QImage const image = Picture({.kind = kind, .shape = shape, .fill = 0xFF, .border = 0xFF0000}, 1).toImage();
        EXPECT_EQ(QRegion(QBitmap::fromImage(image.createAlphaMask())).boundingRect(), box);
        EXPECT_EQ(image.pixel(8, 8), middle);
        EXPECT_GT(image.pixelColor(box.left() + box.width() / 2, box.top()).blue(), 200) << "its line goes round";
    }
}

TEST(Pictures, ADisabledIconIsPaler) {
    QIcon const icon = ResourceIcon(QStringLiteral("stop"));
    auto const ink = [&icon](QIcon::Mode mode) { return Ink(icon.pixmap(QSize(24, 24), 1, mode)); };
    EXPECT_GT(ink(QIcon::Disabled), 0);
    EXPECT_LT(ink(QIcon::Disabled), ink(QIcon::Normal) / 2);
}

TEST(SystemColor, ColoursKeepRedInTheLowestByte) {
    EXPECT_EQ(ToColorRef(QColor(1, 2, 3)), 0x030201U);
    EXPECT_EQ(ToQColor(0x030201U), QColor(1, 2, 3));
    EXPECT_EQ(SystemColor(COLOR_HIGHLIGHT), ToColorRef(QGuiApplication::palette().color(QPalette::Highlight)));
    EXPECT_EQ(SystemColor(999), 0U);
}

TEST(PaletteColors, AFixedColourTurnsWithTheDesktopsPalette) {
    EXPECT_EQ(Mixed(QColor(10, 20, 30), QColor(30, 60, 90), 0.5), QColor(20, 40, 60));
    EXPECT_EQ(Themed(QColor(230, 20, 10)), QColor(230, 20, 10));
    test::DarkPalette const dark;
    for (auto const &[color, themed] :
         {std::pair{QRgb{0xFFFFFFFF}, QRgb{0xFF232323}}, {0xFF000000, 0xFFF0F0F0}, {0xFFFF0000, 0xFFFF1414}})
        EXPECT_EQ(Themed(color).rgb(), themed) << color; // the hue stays
}

} // namespace
} // namespace zelvar::platform
