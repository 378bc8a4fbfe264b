#include "zelvar/data/RDIDriver.h"
#include "zelvar/drawing/DrawTextBlock.h"
#include "zelvar/drawing/OffscreenSurface.h"
#include "zelvar/drawing/RoundRectGradient.h"
#include "zelvar/drawing/core/ScaleDataBuf.h"
#include "zelvar/gallery/Gallery.h"
#include "zelvar/gallery/PageForm.h"

#include <QtGui/QPainter>
#include <QtWidgets/QSlider>

#include <cmath>
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
        block.color = Rgb(30, 30, 30);
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
        page->Say(Format("Samples from 400 to %d, three standard deviations of them spread over 0 to 255",
                         400 + kSide + 60 * value));
    });
    return page;
}

} // namespace

std::vector<Page> DrawingPages() {
    return {{"drawing", "Drawing", "OffscreenSurface ScaleDataBuf RoundRectGradient DrawTextBlock", MakeDrawingPage}};
}

} // namespace zelvar::gallery
