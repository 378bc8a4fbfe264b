#include "support/GuiTest.h"
#include "zelvar/controls/ButtonContent.h"
#include "zelvar/controls/CDownBmpButton.h"
#include "zelvar/controls/CZelCustomButton.h"
#include "zelvar/controls/ControlColors.h"
#include "zelvar/platform/ui/PaletteColors.h"

#include <QtGui/QAccessible>
#include <QtTest/QSignalSpy>

namespace zelvar {
namespace {

using Align = CZelButton::Align;
using Side = CZelButton::ImageSide;

TEST(ButtonContent, StandsWhereItIsToldAndMirroredWhereOneReadsFromTheRight) {
    QRect const area(10, 0, 100, 40);
    QSize const image(16, 16);
    QSize const text(30, 14);
    for (auto const &[side, align, direction, imageAt, textAt] :
         test::Rows<Side, Align, Qt::LayoutDirection, QPoint, QPoint>{
             {Side::Before, Align::Before, Qt::LeftToRight, {10, 12}, {30, 13}},
             {Side::Before, Align::Behind, Qt::LeftToRight, {60, 12}, {80, 13}},
             {Side::Before, Align::Center, Qt::LeftToRight, {35, 12}, {55, 13}},
             {Side::Behind, Align::Before, Qt::LeftToRight, {44, 12}, {10, 13}},
             {Side::Above, Align::Center, Qt::LeftToRight, {52, 3}, {45, 23}},
             {Side::Before, Align::Before, Qt::RightToLeft, {94, 12}, {60, 13}}}) {
        ContentPlaces const expected{.image = QRect(imageAt, image), .text = QRect(textAt, text)};
        EXPECT_EQ(LayOutContent(area, image, text, side, align, direction), expected);
    }
    ContentPlaces const narrow = LayOutContent(QRect(0, 0, 40, 20), image, text, Side::Before, Align::Center, {});
    EXPECT_EQ(narrow.text.width(), 20) << "the text is cut, the picture is not";
    EXPECT_EQ(LayOutContent(area, QSize(), text, Side::Behind, Align::Before, {}).text.left(), 10);
}

TEST(CZelButton, APictureAboveTheTextMakesItHigher) {
    CZelButton button;
    button.SetWindowText("&Add");
    ImageList images;
    images.Add({.name = "no-such-icon", .fallback = "star"});
    for (auto const &[image, isShown] : {std::pair{-1, false}, {0, true}}) {
        button.SetImage(&images, image);
        EXPECT_NE(button.icon().isNull(), isShown) << image;
    }
    QSize const beside = button.sizeHint();
    for (auto const align : {Align::Before, Align::Behind}) { // the content keeps off the edges
        button.SetAlign(align);
        EXPECT_EQ(button.sizeHint() - beside, QSize(8, 0));
        button.SetImage(&images, -1);
        EXPECT_EQ(button.sizeHint(), button.QPushButton::sizeHint()) << "there is one content only";
        button.SetImage(&images, 0);
    }
    button.SetImageSide(Side::Above);
    EXPECT_GT(button.sizeHint().height(), beside.height());
    EXPECT_LE(button.sizeHint().width(), beside.width());
    EXPECT_EQ(button.GetWindowText(), "&Add");
}

struct CustomButton {
    CustomButton() {
        button.SetWindowText("Go");
        button.SetRadius(0);
        button.SetFaceColor(Rgb(200, 0, 0));
        button.SetBorder(Rgb(0, 0, 255), 2);
        button.resize(100, 40);
        button.show();
    }
    QColor Face() { return test::ColorAt(button, {50, 5}); }
    CZelCustomButton button;
};

TEST(CZelCustomButton, ShowsTheColoursItWasGivenInEachState) {
    CustomButton custom;
    EXPECT_EQ(custom.Face(), QColor(200, 0, 0));
    EXPECT_EQ(test::ColorAt(custom.button, {1, 20}), QColor(0, 0, 255));
    EXPECT_EQ(test::ColorAt(custom.button, {98, 38}), QColor(0, 0, 255));
    custom.button.SetPressedColor(Rgb(0, 100, 0), Rgb(0, 100, 0));
    QTest::mousePress(&custom.button, Qt::LeftButton);
    EXPECT_EQ(custom.Face(), QColor(0, 100, 0));
    QTest::mouseRelease(&custom.button, Qt::LeftButton);
    EXPECT_EQ(custom.Face(), QColor(200, 0, 0));
    custom.button.SetFaceColor(Rgb(0, 0, 0), Rgb(255, 255, 255));
    EXPECT_LT(custom.Face().lightness(), 80);
    EXPECT_GT(test::ColorAt(custom.button, {50, 35}).lightness(), 200);
    custom.button.SetGradientVertical(false);
    EXPECT_LT(test::ColorAt(custom.button, {5, 35}).lightness(), 80);
}

TEST(CZelCustomButton, ADisabledFaceFadesAndItsTextIsStillRead) {
    CustomButton custom;
    for (ColorRef const face : {Rgb(200, 0, 0), Rgb(0, 0, 0), Rgb(255, 255, 255), Rgb(128, 128, 128)}) {
        custom.button.SetFaceColor(face);
        custom.button.setEnabled(true);
        QColor const strong = custom.Face();
        custom.button.setEnabled(false);
        QColor const window = custom.button.palette().color(QPalette::Window);
        EXPECT_LE(platform::Contrast(custom.Face(), window), platform::Contrast(strong, window));
        EXPECT_GE(test::StrongestContrast(test::PictureOf(custom.button), {30, 8, 40, 24}), 3) << face;
    }
}

TEST(CZelCustomButton, StrongColoursOfTheDesktopComeFirst) {
    EXPECT_FALSE(UsesHighContrast(QApplication::palette()));
    CustomButton custom;
    QPalette strong;
    strong.setColor(QPalette::Button, Qt::black);
    strong.setColor(QPalette::ButtonText, Qt::yellow);
    custom.button.setPalette(strong);
    EXPECT_EQ(custom.Face(), QColor(Qt::black));
    EXPECT_EQ(test::ColorAt(custom.button, {1, 20}), QColor(Qt::yellow));
}

struct DropButton {
    DropButton() : clicks(&button, &CDownBmpButton::clicked), drops(&button, &CDownBmpButton::DropDown) {
        action = menu.addAction(QStringLiteral("Action"));
        button.LoadBitmaps("star");
        button.SetTooltip("Favorites");
        button.SetMenu(&menu);
        button.show();
        button.setFocus();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&button));
    }
    /// Whether the menu opened, with the button down behind it; it is closed again.
    bool Opens(std::function<void()> const &act) {
        bool down = false;
        auto const shown = QObject::connect(&menu, &QMenu::aboutToShow, &menu, [&] {
            down = button.IsDropped();
            QMetaObject::invokeMethod(&menu, &QMenu::close, Qt::QueuedConnection);
        });
        act();
        QObject::disconnect(shown);
        EXPECT_FALSE(button.IsDropped());
        return down;
    }
    QMenu menu;
    QAction *action;
    CDownBmpButton button;
    QSignalSpy clicks;
    QSignalSpy drops;
};

TEST(CDownBmpButton, ActsOnThePictureAndDropsOnTheArrow) {
    DropButton drop;
    QTest::mouseClick(&drop.button, Qt::LeftButton, {}, QPoint(5, 5));
    EXPECT_EQ(drop.clicks.count(), 1);
    QPoint const arrow = drop.button.ArrowRect().center();
    EXPECT_TRUE(drop.Opens([&] { QTest::mouseClick(&drop.button, Qt::LeftButton, {}, arrow); }));
    drop.button.setLayoutDirection(Qt::RightToLeft);
    EXPECT_EQ(drop.button.ArrowRect().left(), 0);
    drop.button.SetWholeDropDown(true);
    EXPECT_TRUE(drop.Opens([&] { QTest::mouseClick(&drop.button, Qt::LeftButton, {}, QPoint(25, 5)); }));
    drop.button.SetMenu(nullptr);
    EXPECT_TRUE(drop.button.ArrowRect().isEmpty());
    drop.button.SetDropDown(true);
    QTest::mousePress(&drop.button, Qt::LeftButton, {}, drop.button.ArrowRect().center());
    EXPECT_EQ(drop.drops.count(), 1) << "at the press";
    EXPECT_EQ(drop.clicks.count(), 1);
}

TEST(CDownBmpButton, TheKeyboardDoesBoth) {
    DropButton drop;
    for (Qt::Key const key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter})
        QTest::keyClick(&drop.button, key);
    EXPECT_TRUE(drop.Opens([&] { QTest::keyClick(&drop.button, Qt::Key_F4); }));
    EXPECT_TRUE(drop.Opens([&] { QTest::keyClick(&drop.button, Qt::Key_Down, Qt::AltModifier); }));
    EXPECT_FALSE(drop.Opens([&] { QTest::keyClick(&drop.button, Qt::Key_Down); }));
    drop.button.SetWholeDropDown(true);
    for (auto const &[key, opens] : {std::pair{Qt::Key_Space, true}, {Qt::Key_Return, true}, {Qt::Key_Down, false}})
        EXPECT_EQ(drop.Opens([&, press = key] { QTest::keyClick(&drop.button, press); }), opens) << key;
    EXPECT_EQ(drop.clicks.count(), 3);
}

TEST(CDownBmpButton, MayBeDeletedByWhatItsMenuStarts) {
    QMenu menu;
    auto button = std::make_unique<CDownBmpButton>();
    button->SetMenu(&menu);
    menu.addAction(QStringLiteral("Close"));
    button->show();
    auto const close = [&] {
        button.reset();
        menu.close();
    };
    QObject::connect(&menu, &QMenu::aboutToShow, &menu, close, Qt::QueuedConnection);
    button->ShowDropDown();
    EXPECT_EQ(button, nullptr);
}

TEST(CDownBmpButton, EachStateHasItsPicture) {
    using Image = ImageDescription;
    auto const colored = [](ColorRef c) {
        return Image{.kind = Image::Kind::Shape, .shape = Image::Shapes::Rectangle, .fill = c, .border = c};
    };
    CDownBmpButton button;
    button.SetBitmaps(colored(Rgb(1, 2, 3)), colored(Rgb(4, 5, 6)), colored(Rgb(7, 8, 9)), colored(Rgb(10, 11, 12)));
    auto const shown = [&] { return test::ColorAt(button, button.rect().center()); };
    button.resize(button.sizeHint());
    EXPECT_EQ(shown(), QColor(1, 2, 3));
    button.setDown(true);
    EXPECT_EQ(shown(), QColor(4, 5, 6));
    button.setDown(false);
    button.show();
    button.setFocus();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&button));
    EXPECT_EQ(shown(), QColor(7, 8, 9));
    button.setEnabled(false);
    EXPECT_EQ(shown(), QColor(10, 11, 12));
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&button)->role(), QAccessible::Button);
}

} // namespace
} // namespace zelvar
