#include "zelvar/drawing/OffscreenSurface.h"

#include <QtGui/QPainter>

#include <algorithm>
#include <cmath>
#include <vector>

namespace zelvar {

namespace {

qreal RatioOf(QPainter *reference) {
    return reference == nullptr || reference->device() == nullptr ? 1.0 : reference->device()->devicePixelRatioF();
}

/// For each pixel of `targetSize` the pixel of `sourceSize` that is picked.
std::vector<int> PickedPixels(int targetSize, int sourceSize) {
    std::vector<int> picked(static_cast<std::size_t>(targetSize));
    for (int i = 0; i < targetSize; ++i)
        picked[static_cast<std::size_t>(i)] =
            std::min(static_cast<int>(std::int64_t{i} * sourceSize / targetSize), sourceSize - 1);
    return picked;
}

} // namespace

QImage ImageOver(DCanvas const &canvas) {
    if (!canvas.HasData())
        return {};
    return {canvas.Row(0), canvas.GetWidth(), canvas.GetHeight(), qsizetype{3} * canvas.GetWidth(),
            QImage::Format_RGB888};
}

OffscreenSurface::OffscreenSurface() = default;
OffscreenSurface::~OffscreenSurface() = default;

void OffscreenSurface::Resize(QPainter *reference, int width, int height) {
    qreal const ratio = RatioOf(reference);
    if (width == m_width && height == m_height && (m_image.isNull() || m_image.devicePixelRatio() == ratio))
        return;
    Clear();
    if (width < 1 || height < 1)
        return;
    QImage image(static_cast<int>(std::ceil(width * ratio)), static_cast<int>(std::ceil(height * ratio)),
                 QImage::Format_RGB32);
    if (image.isNull())
        return;
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::black);
    m_image = std::move(image);
    m_width = width;
    m_height = height;
}

void OffscreenSurface::Clear() {
    m_painter.reset();
    m_image = QImage();
    m_width = m_height = 0;
}

void OffscreenSurface::Show(QPainter *reference, DCanvas const *canvas) {
    if (canvas != nullptr)
        ShowScaled(reference, canvas, canvas->GetWidth(), canvas->GetHeight());
}

void OffscreenSurface::ShowScaled(QPainter *reference, DCanvas const *canvas, int width, int height) {
    if (canvas == nullptr || !canvas->HasData())
        return;
    m_painter.reset();
    Resize(reference, width, height);
    if (m_image.isNull())
        return;
    std::vector<int> const columns = PickedPixels(m_image.width(), canvas->GetWidth());
    std::vector<int> const rows = PickedPixels(m_image.height(), canvas->GetHeight());
    for (int y = 0; y < m_image.height(); ++y) {
        std::uint8_t const *const source = canvas->Row(rows[static_cast<std::size_t>(y)]);
        auto *target = reinterpret_cast<QRgb *>(m_image.scanLine(y));
        for (int const column : columns) {
            std::uint8_t const *const pixel = source + std::size_t{3} * static_cast<std::size_t>(column);
            *target++ = qRgb(pixel[0], pixel[1], pixel[2]);
        }
    }
}

QPainter *OffscreenSurface::GetDC() {
    if (m_image.isNull())
        return nullptr;
    if (m_painter == nullptr) {
        m_painter = std::make_unique<QPainter>(&m_image);
        // What is placed by coordinates, an axis or a label, must not be turned where the application reads from the
        // right.
        m_painter->setLayoutDirection(Qt::LeftToRight);
    }
    return m_painter.get();
}

QImage &OffscreenSurface::GetPixels() {
    m_painter.reset();
    return m_image;
}

void OffscreenSurface::CopyTo(QPainter *target, int x, int y) {
    m_painter.reset();
    if (target != nullptr && !m_image.isNull())
        target->drawImage(QPoint(x, y), m_image);
}

} // namespace zelvar
