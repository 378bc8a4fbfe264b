#include "zelvar/opends/PreviewBar.h"

#include "support/ImageFiles.h"
#include "support/OpenDialogHand.h"
#include "support/RealDrivers.h"
#include "support/ScriptedDriver.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/model/PlaceResolver.h"
#include "zelvar/opends/ImagePreviewWnd.h"
#include "zelvar/opends/ValueScale.h"

#include <QtTest/QSignalSpy>
#include <QtWidgets/QSpinBox>

namespace zelvar::test {
namespace {

/// The control that a user knows by this name; null for one that is not there.
template <class Control>
Control *Named(QWidget const &parent, char const *name) {
    for (auto *const control : parent.findChildren<Control *>())
        if (control->accessibleName() == name && control->isVisible())
            return control;
    return nullptr;
}

TEST(PreviewBarAlone, OffersWhatThereIsToChooseAndTellsOfWhatIsChosen) {
    PreviewBar bar;
    // As they are shown at first; empty for no such control.
    Rows<ImageExtent, QString, QString, QString> const cases = {{{1, 1, 1}, "", "", ""},
                                                                {{2, 1, 0}, "1 / 2", "", ""},
                                                                {{3, 1, 1}, "Colours", "", ""},
                                                                {{1, 120, 1}, "", "1 / 120", ""},
                                                                {{65536, 5, 7}, "Colours", "1 / 5", "1 / 7"}};
    for (auto const &[extent, channel, slice, frame] : cases) {
        bar.ShowExtent(extent);
        QCoreApplication::processEvents();
        for (auto const &[name, text] : {std::pair("Channel", channel), {"Slice", slice}, {"Frame", frame}}) {
            auto const *const number = Named<QSpinBox>(bar, name);
            EXPECT_EQ(number == nullptr ? QString() : number->text(), text) << name;
        }
        EXPECT_EQ(Named<QComboBox>(bar, "Stretch") != nullptr, channel + slice + frame != "");
        EXPECT_EQ(bar.Choice(), PreviewChoice());
    }
    QSignalSpy const chosen(&bar, &PreviewBar::Chosen);
    auto *const channel = Named<QSpinBox>(bar, "Channel");
    QTest::keyClick(channel, Qt::Key_Up);
    channel->selectAll();
    QTest::keyClicks(channel, "65536");
    EXPECT_EQ(bar.Choice().channel, 0) << "what is typed counts when it is complete";
    QTest::keyClick(channel, Qt::Key_Return);
    QTest::keyClick(Named<QSpinBox>(bar, "Slice"), Qt::Key_Up);
    QTest::keyClick(Named<QSpinBox>(bar, "Frame"), Qt::Key_PageUp);
    QTest::keyClick(Named<QComboBox>(bar, "Stretch"), Qt::Key_Down);
    EXPECT_EQ(bar.Choice(), (PreviewChoice{65535, 1, 6, PreviewChoice::Stretch::Full}));
    EXPECT_EQ(chosen.count(), 5);
    bar.Reset();
    EXPECT_EQ(bar.Choice(), PreviewChoice());
    QTest::keyClick(Named<QSpinBox>(bar, "Slice"), Qt::Key_Up);
    QTest::keyClick(Named<QComboBox>(bar, "Stretch"), Qt::Key_Down);
    EXPECT_EQ(bar.Choice(), PreviewChoice()) << "of what is not known yet nothing is chosen";
    EXPECT_EQ(Named<QSpinBox>(bar, "Slice")->text(), "1 / 5");
    EXPECT_EQ(chosen.count(), 5);
    bar.ShowExtent({});
    EXPECT_TRUE(bar.isHidden());
}

TEST(ValueScale, TellsValuesWithTheDigitsThatTheyHave) {
    for (auto const &[value, text] : {std::pair(0.0, "0"),
                                      {-12.0, "-12"},
                                      {4'294'967'295.0, "4294967295"},
                                      {0.125, "0.125"},
                                      {1.0 / 3, "0.333333"},
                                      {-1.5e-7, "-1.5e-07"},
                                      {3.4e38, "3.4e+38"}})
        EXPECT_EQ(ValueText(value), text);
}

/// Has a gate for those who want the values.
struct ValuesDriver : ScriptedRasterDriver {
    ValuesDriver() : ScriptedRasterDriver("VALUES") {}
    bool ReadBlockRsmpl(void *handle, int channel, double x, double y, double width, double height, void *buffer,
                        int outWidth, int outHeight, int resampling, bool usePyramid, bool clip) override {
        if (resampling == AsStored)
            valuesGate.Pass();
        return ScriptedRasterDriver::ReadBlockRsmpl(handle, channel, x, y, width, height, buffer, outWidth, outHeight,
                                                    resampling, usePyramid, clip);
    }
    Gate valuesGate;
};

struct PreviewPane : testing::Test {
    PreviewPane() {
        pane.Create({0, 0, 300, 300}, DT_DATA, nullptr, 7);
        pane.AddPreviewBar();
        pane.show();
    }
    ~PreviewPane() override { driver.valuesGate.Open(); }
    void Show(char const *name, ScriptedImage image) {
        DString const path = folder.Write(name, "x");
        driver.SetImage(path, std::move(image));
        pane.ShowProps(ItemFromPlace(path), "");
    }
    /// The middle of the picture becomes this grey, and its values are known.
    [[nodiscard]] bool Becomes(unsigned grey) {
        return Eventually([&] {
            DCanvas const &canvas = pane.Preview()->GetCanvas();
            return !pane.IsReading() && pane.Preview()->GetMode() == ImagePreviewWnd::ModeCanvas &&
                   canvas.GetPixel(canvas.GetWidth() / 2, canvas.GetHeight() / 2) == Rgb(grey, grey, grey);
        });
    }
    void Point(QPoint place) { QTest::mouseMove(pane.Preview(), place); }
    [[nodiscard]] QString PointedText() const { return pane.Bar()->Scale()->PointedText(); }

    ScriptedDrivers drivers;
    ValuesDriver &driver = ScriptedDrivers::Add(std::make_unique<ValuesDriver>());
    TempFolder folder;
    DSPropertyWnd pane;
};

/// 2 channels of 3 slices at 4 times, 4 * 2 pixels each.
ScriptedImage Stack() {
    return {.width = 16,
            .height = 6,
            .channels = 2,
            .geo = {.numSlices = 3, .numTimeFrames = 4},
            .sample = [](int c, int x, int y) { return 100 * c + 10 * (y / 2) + x / 4; }};
}

TEST_F(PreviewPane, ShowsWhatIsChosenUntilAnotherItemIsShown) {
    Show("stack.img", Stack());
    ASSERT_TRUE(Becomes(0));
    auto const press = [&](char const *name, Qt::Key key) { QTest::keyClick(Named<QSpinBox>(pane, name), key); };
    press("Slice", Qt::Key_Up);
    ASSERT_TRUE(Becomes(10));
    EXPECT_TRUE(Eventually([&] { return pane.Bar()->Scale()->toolTip() == "Channel 1: 10 to 10"; }));
    press("Frame", Qt::Key_PageUp);
    press("Channel", Qt::Key_Up);
    ASSERT_TRUE(Becomes(113));
    EXPECT_TRUE(Eventually([&] { return pane.Bar()->Scale()->toolTip() == "Channel 2: 113 to 113"; }));
    EXPECT_EQ(pane.GetOptionString(), "");
    for (DString const &opened : driver.opened)
        EXPECT_EQ(opened, folder / "stack.img") << "what is chosen is no part of the moniker";
    Show("other.img", Stack());
    EXPECT_EQ(pane.Bar()->Choice(), PreviewChoice());
    ASSERT_TRUE(Becomes(0));
    EXPECT_EQ(Named<QSpinBox>(pane, "Slice")->text(), "1 / 3");
    pane.Clear();
    EXPECT_TRUE(pane.Bar()->isHidden());
}

TEST_F(PreviewPane, NeitherValuesNorFormerChoicesKeepAPictureWaiting) {
    driver.valuesGate.Close();
    Show("stack.img", Stack());
    ASSERT_TRUE(Eventually([&] { return pane.Preview()->GetMode() == ImagePreviewWnd::ModeCanvas; }));
    driver.valuesGate.AwaitCaller();
    EXPECT_EQ(pane.Bar()->Scale()->toolTip(), "") << "the picture came before its values";
    auto *const slice = Named<QSpinBox>(pane, "Slice");
    QTest::keyClick(slice, Qt::Key_Up);
    QTest::keyClick(slice, Qt::Key_Up);
    int const opens = driver.opens;
    driver.valuesGate.Open();
    ASSERT_TRUE(Becomes(20));
    EXPECT_EQ(driver.opens, opens + 2) << "the choice between was never read";
    EXPECT_TRUE(Eventually([&] { return pane.Bar()->Scale()->toolTip() == "Channel 1: 20 to 20"; }));
}

TEST_F(PreviewPane, TheValueUnderThePointerNeedsNoReading) {
    Show("wide.img", {.width = 40, .height = 20, .type = RDI_Float32, .sample = [](int, int x, int) {
                          return x < 20 ? double{NAN} : x + 0.5;
                      }});
    ASSERT_TRUE(Eventually([&] { return pane.Bar()->Scale()->toolTip() == "Channel 1: 20.5 to 39.5"; }));
    EXPECT_EQ(Named<QComboBox>(pane, "Stretch"), nullptr) << "one plane leaves nothing to choose";
    int const reads = driver.reads;
    QRect const picture = pane.Preview()->PictureRect();
    EXPECT_LE(pane.Preview()->height() + pane.Bar()->height(), pane.height());
    for (auto const &[place, text] : {std::pair(picture.bottomRight(), "39.5"),
                                      {picture.topLeft(), "no data"},
                                      {picture.bottomLeft() + QPoint(0, 2), ""}}) {
        Point(place);
        EXPECT_TRUE(Eventually([&, text = text] { return PointedText() == text; })) << PointedText().toStdString();
    }
    EXPECT_EQ(driver.reads, reads);
    Shot(pane, "PreviewBar-values");
}

TEST(PreviewBarInDialog, IsThereByItsFeatureAndLeavesTheDialogItsKeys) {
    UseRealDrivers();
    EnsureDrivers();
    TempFolder folder;
    DString const path = folder / "a.tif";
    WriteImage(
        path, {.width = 300, .height = 200, .channels = 6, .type = GDT_UInt16, .sample = [](int channel, int x, int y) {
                   return 1000 + 10 * x + 500 * channel * std::sin(y / (10.0 + channel));
               }});
    DFileFrmt all{"", "All Files (*.*)", "*.*"};
    QFont const former = QApplication::font();
    for (unsigned const features : {kOpenAll & ~kOpenPreviewBar, unsigned{kOpenPreviewBar}, unsigned{kOpenAll}}) {
        bool const isLast = features == kOpenAll; // dark and large
        std::optional<DarkPalette> dark;
        if (isLast) {
            dark.emplace();
            QFont large = former;
            large.setPixelSize(QFontInfo(former).pixelSize() * 3 / 2);
            QApplication::setFont(large);
        }
        DlgOpenDS::SetFeatures(features);
        DialogPtr const dialog(DlgOpenDS::CreateDialogObject({&all}, &all, DT_DATA, "PreviewBar", nullptr));
        dialog->SetBDIFilter(BDINode_Raster);
        dialog->SetInitDir(folder.Path().c_str());
        DSListCtrl *list = nullptr;
        RunWhen(
            *dialog, [&] { return (list = dialog->MainList()) != nullptr && RowOf(*list, "a.tif") >= 0; },
            [&] {
                DSPropertyWnd &pane = *dialog->PropertyWnd();
                QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, PlaceOf(*list, "a.tif"));
                ASSERT_TRUE(Eventually([&] { return !pane.IsReading() && pane.Preview()->GetMode() == 0; }));
                ASSERT_EQ(pane.Bar() != nullptr, (features & kOpenPreviewBar) != 0);
                if (pane.Bar() == nullptr) {
                    EXPECT_EQ(pane.Preview()->geometry(), pane.Preview()->parentWidget()->rect());
                    return;
                }
                ASSERT_TRUE(Eventually([&] { return pane.Bar()->Scale()->toolTip().startsWith("Channel 1: "); }));
                EXPECT_TRUE(Eventually([&] {
                    return pane.Preview()->height() + pane.Bar()->height() == pane.Preview()->parentWidget()->height();
                }));
                auto *const channel = Named<QSpinBox>(pane, "Channel");
                QTest::keyClick(dialog->focusWidget(), Qt::Key_H, Qt::AltModifier);
                ASSERT_EQ(dialog->focusWidget(), channel) << "is reached by keys";
                channel->selectAll();
                QTest::keyClicks(channel, "5");
                QTest::keyClick(channel, Qt::Key_Return);
                EXPECT_TRUE(dialog->isVisible()) << "Return is the field's";
                ASSERT_TRUE(Eventually([&] { return pane.Bar()->Scale()->toolTip().startsWith("Channel 5: "); }));
                QTest::mouseMove(pane.Preview(), pane.Preview()->PictureRect().center());
                EXPECT_TRUE(Eventually([&] { return !pane.Bar()->Scale()->PointedText().isEmpty(); }));
                Shot(*dialog, isLast ? "PreviewBar-dark-large" : "PreviewBar");
                dialog->resize(dialog->minimumSize());
                QCoreApplication::processEvents();
                Shot(*dialog, isLast ? "PreviewBar-dark-large-narrow" : "PreviewBar-narrow");
                PressOk(*dialog);
            });
        if ((features & kOpenPreviewBar) != 0) {
            ASSERT_EQ(dialog->GetSelectedNodePaths().size(), 1U);
            EXPECT_EQ(dialog->GetSelectedNodePaths()[0].GetText(), path);
        }
    }
    QApplication::setFont(former);
}

} // namespace
} // namespace zelvar::test
