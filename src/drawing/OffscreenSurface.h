#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/pixels/DCanvas.h"

#include <QtGui/QImage>

#include <memory>

class QPainter;

namespace zelvar {

/// Off-screen surface: a picture in memory to draw on, with the pixels of the device that it will be shown on. It is
/// kept between paints while the size stays. User interface thread.
class ZELVAR_API OffscreenSurface {
public:
    OffscreenSurface();
    ~OffscreenSurface();
    OffscreenSurface(OffscreenSurface const &) = delete;
    OffscreenSurface &operator=(OffscreenSurface const &) = delete;

    /// Makes a black surface of that size in the pixel ratio of `reference` (may be null). Nothing happens if size and
    /// ratio are as they were; a side below 1 clears.
    void Resize(QPainter *reference, int width, int height);
    void Clear();
    /// The canvas at its own size.
    void Show(QPainter *reference, DCanvas const *canvas);
    /// The canvas brought to a size by picking its nearest pixels.
    void ShowScaled(QPainter *reference, DCanvas const *canvas, int width, int height);

    [[nodiscard]] int GetWidth() const { return m_width; }
    [[nodiscard]] int GetHeight() const { return m_height; }
    /// Draws on the surface; null while it is empty. It belongs to the surface and ends with the next `Resize`, `Clear`
    /// or `CopyTo`.
    [[nodiscard]] QPainter *GetDC();
    /// The device's pixels to write to, 32 bits each; ends the drawing of `GetDC`.
    [[nodiscard]] QImage &GetPixels();
    /// Copies the surface to `target`, its upper left corner at (`x`, `y`).
    void CopyTo(QPainter *target, int x, int y);
    [[nodiscard]] QImage const &GetImage() const { return m_image; }

private:
    int m_width = 0;
    int m_height = 0;
    QImage m_image;
    std::unique_ptr<QPainter> m_painter; ///< while someone draws
};

/// The canvas as an image that shares its pixels: only while the canvas lives unchanged.
[[nodiscard]] ZELVAR_API QImage ImageOver(DCanvas const &canvas);

} // namespace zelvar
