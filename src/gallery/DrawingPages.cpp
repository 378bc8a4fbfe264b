#include "zelvar/base/Translation.h"
#include "zelvar/data/RDIDriver.h"
#include "zelvar/drawing/DrawTextBlock.h"
#include "zelvar/drawing/OffscreenSurface.h"
#include "zelvar/drawing/RoundRectGradient.h"
#include "zelvar/gallery/Gallery.h"
#include "zelvar/gallery/PageForm.h"
#include "zelvar/opends/CImgPreviewStatic.h"
#include "zelvar/pixels/ScaleDataBuf.h"
#include "zelvar/platform/ui/PaletteColors.h"
#include "zelvar/platform/ui/SystemColor.h"

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtGui/QPainter>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QSlider>

#include <cmath>
#include <memory>
#include <vector>

namespace zelvar::gallery {

namespace {

constexpr int kSide = 180; // of the picture, pixels

/// A 16-bit image of blurred spots on a slope, most of its values far below the largest: as a camera gives it.
std::vector<std::uint16_t> Samples(int gain) {
    std::vector<std::uint16_t> samples;
    samples.reserve(static_cast<std::size_t>(kSide) * kSide);
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x) {
            double const spots = std::pow(std::sin(x * 0.12) * std::sin(y * 0.09 + 1), 8);
            samples.push_back(static_cast<std::uint16_t>(400 + x + spots * 60 * gain));
        }
    return samples;
}

/// What the drawing helpers make: the samples reduced to bytes, on an off-screen surface, under gradients and texts.
class Picture : public QWidget {
public:
    Picture() {
        setMinimumSize(620, 240);
        setFocusPolicy(Qt::NoFocus);
        SetGain(20);
    }
    void SetGain(int gain) {
        std::vector<std::uint16_t> samples = Samples(gain);
        auto *const bytes = reinterpret_cast<unsigned char *>(samples.data());
        ScaleDataBuf(RDI_UInt16, bytes, kSide, kSide);
        m_canvas.SetSize(kSide, kSide);
        for (int y = 0; y < kSide; ++y)
            for (int x = 0; x < kSide; ++x) {
                unsigned const value = bytes[y * kSide + x];
                m_canvas.SetPixel(x, y, Rgb(value / 3, value, value / 2));
            }
        update();
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        m_surface.Show(&painter, &m_canvas);
        m_surface.CopyTo(&painter, 0, 10);
        RoundRectGradient(&painter, {200, 10, 400, 60}, 12, Rgb(70, 110, 190), Rgb(200, 220, 250), true, 1,
                          Rgb(40, 60, 110));
        RoundRectGradient(&painter, {200, 80, 400, 130}, 25, Rgb(250, 210, 120), Rgb(220, 90, 60), false, 0, 0);
        CnfgLdr::TextBlock block;
        block.x = 200;
        block.y = 150;
        block.size = 20;
        block.weight = 700;
        block.color = platform::ToColorRef(platform::Themed(QColor(30, 30, 30)));
        block.text = "Morvane222\ntext block";
        DrawTextBlock(&painter, block);
    }

private:
    DCanvas m_canvas;
    OffscreenSurface m_surface;
};

QWidget *MakeDrawingPage() {
    auto *const page = new PageForm;
    auto *const picture = new Picture;
    auto *const gain = new QSlider(Qt::Horizontal);
    gain->setRange(1, 1000);
    gain->setValue(20);
    gain->setMinimumWidth(240);
    page->Add("&Brightness of the spots:", gain);
    page->AddWide("Picture", picture, true);
    QObject::connect(gain, &QSlider::valueChanged, page, [=](int value) {
        picture->SetGain(value);
        page->Say(Format(Translated("Samples from 400 to %d, three standard deviations of them spread over 0 to 255"),
                         400 + kSide + 60 * value));
    });
    return page;
}

QWidget *MakeImagePage() {
    auto *const page = new PageForm;
    auto *const preview = new CImgPreviewStatic;
    auto *const file = new QLineEdit;
    auto const folder = std::make_shared<QTemporaryDir>(); // lives as long as the page
    QString const sample = folder->filePath("sample.png");
    QImage picture(240, 160, QImage::Format_RGB32);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            picture.setPixel(x, y, qRgb(x, y, 255 - x));
    if (picture.save(sample))
        file->setText(sample);
    auto const show = [preview, file, folder] { preview->SetImgFile(QFile::encodeName(file->text()).constData()); };
    page->Add("&Image file:", file);
    page->AddWide("Image", preview, true);
    page->Say("Another file is shown when its name is entered");
    QObject::connect(file, &QLineEdit::editingFinished, preview, show);
    show();
    return page;
}

} // namespace

std::vector<Page> DrawingPages() {
    return {
        {"image-file", Mark("Image file"), "CImgPreviewStatic DrawImgToDC", MakeImagePage},
        {"drawing", Mark("Drawing"), "OffscreenSurface ScaleDataBuf RoundRectGradient DrawTextBlock", MakeDrawingPage}};
}

} // namespace zelvar::gallery
