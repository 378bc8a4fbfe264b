#include "zelvar/charts/PlotPainter.h"

#include "zelvar/base/Aside.h"
#include "zelvar/charts/ChartText.h"
#include "zelvar/charts/core/MarkerField.h"
#include "zelvar/drawing/OffscreenSurface.h"

#include <QtGui/QPainter>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <future>
#include <optional>
#include <utility>

namespace zelvar {

namespace {

constexpr int kManyLabels = 45; // from here on the x labels are smaller
constexpr int kUsualFont = 75;  // tenths of a point
constexpr int kSmallFont = 65;
constexpr int kRadius = 3; // of a marker; pixels
constexpr int kSelectedRadius = 4;

/// The ellipse in the half-open rectangle around a place.
void DrawMarker(QPainter &painter, int x, int y, int radius) {
    painter.drawEllipse(x - radius, y - radius, 2 * radius - 1, 2 * radius - 1);
}

/// The pixels of a marker at a logical pixel, as the painter draws it on a device of that ratio.
MarkerShape ShapeAt(int x, int y, double ratio) {
    constexpr int reach = kRadius + 2; // logical pixels around the place
    auto const extent = static_cast<int>(std::ceil((std::max(x, y) + reach) * ratio)) + 1;
    QImage image(extent, extent, QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setPen(QPen(Qt::black, 1));
    painter.setBrush(Qt::black);
    DrawMarker(painter, x, y, kRadius);
    painter.end();

    auto const centerX = static_cast<int>(std::floor(x * ratio));
    auto const centerY = static_cast<int>(std::floor(y * ratio));
    int const around = extent - std::max(centerX, centerY);
    MarkerShape shape;
    for (int row = std::max(0, centerY - around); row < extent; ++row) {
        auto const *const pixels = reinterpret_cast<QRgb const *>(image.constScanLine(row));
        int first = -1;
        int last = -1;
        for (int column = std::max(0, centerX - around); column < extent; ++column) {
            if (pixels[column] != qRgb(0, 0, 0))
                continue;
            first = first < 0 ? column : first;
            last = column;
        }
        if (first < 0)
            continue;
        if (shape.spans.empty())
            shape.top = row - centerY;
        shape.spans.emplace_back(first - centerX, last - centerX);
    }
    return shape;
}

void FillPixels(QImage &image, PixelRows const &pixels, QRgb color) {
    for (int y = 0; y < std::min(image.height(), pixels.Height()); ++y) {
        auto *const target = reinterpret_cast<QRgb *>(image.scanLine(y));
        PixelRows::Word const *const row = pixels.Row(y);
        for (int word = 0; word * PixelRows::kBits < image.width(); ++word)
            for (PixelRows::Word bits = row[word]; bits != 0; bits &= bits - 1)
                if (int const x = word * PixelRows::kBits + std::countr_zero(bits); x < image.width())
                    target[x] = color;
    }
}

/// The lines of a polyline. Those that follow each other in one column of pixels become one.
class LineRun {
public:
    void To(int x, int y) {
        if (m_hasStarted && x == m_x) {
            m_top = std::min(m_top, y);
            m_bottom = std::max(m_bottom, y);
        } else {
            EndColumn();
            if (m_hasStarted)
                m_lines.emplace_back(m_x, m_y, x, y);
            m_top = m_bottom = y;
        }
        m_hasStarted = true;
        m_x = x;
        m_y = y;
    }
    /// The next point begins a line of its own.
    void Break() {
        EndColumn();
        m_hasStarted = false;
    }
    void Draw(QPainter &painter) {
        Break();
        painter.drawLines(m_lines);
        m_lines.clear();
    }

private:
    void EndColumn() {
        if (m_hasStarted && m_top != m_bottom)
            m_lines.emplace_back(m_x, m_top, m_x, m_bottom);
    }

    QVector<QLine> m_lines;
    bool m_hasStarted = false;
    int m_x = 0;
    int m_y = 0;
    int m_top = 0;
    int m_bottom = 0;
};

bool IsPlace(PlotPoint point) { return std::isfinite(point.x) && std::isfinite(point.y); }

/// What points become in pixels. One thread at a time.
class PlotTracer {
public:
    PlotTracer(OffscreenSurface const &surface, PlotGeometry const &geometry, std::span<PlotPoint const> points)
        : m_geometry(geometry), m_points(points), m_field(surface.GetWidth(), surface.GetHeight()) {}

    /// Points from `first` to before `last`; the lines to them begin at the one before, if `isLed`.
    void Trace(std::size_t first, std::size_t last, bool withLines, bool isLed) {
        constexpr std::size_t together = 512; // points
        std::array<Point, together> pixels;
        LineRun run = std::exchange(m_run, {}); // of this thread alone: no line of the cache is written by both
        bool any = false;
        for (std::size_t begin = withLines && isLed ? first - 1 : first; begin < last; begin += together) {
            auto const part = m_points.subspan(begin, std::min(together, last - begin));
            m_geometry.DataToWnd(part, pixels);
            for (std::size_t i = 0; i < part.size(); ++i) {
                bool const isPlace = IsPlace(part[i]);
                if (withLines && isPlace)
                    run.To(pixels[i].x, pixels[i].y);
                else if (withLines)
                    run.Break();
                if (isPlace && begin + i >= first && m_geometry.IsInRange(part[i])) {
                    m_field.Add(pixels[i].x, pixels[i].y);
                    any = true;
                }
            }
        }
        m_run = std::move(run);
        m_hasMarkers = m_hasMarkers || any;
    }
    [[nodiscard]] LineRun &Lines() { return m_run; }
    /// False without a point to mark.
    [[nodiscard]] bool HasMarkers() const { return m_hasMarkers; }
    [[nodiscard]] MarkerField &Markers() { return m_field; }

private:
    PlotGeometry const &m_geometry;
    std::span<PlotPoint const> m_points;
    MarkerField m_field;
    LineRun m_run;
    bool m_hasMarkers = false;
};

/// Points from `first` to before `last`, all in one colour: lines to them, which begin at the one before, and above
/// these the markers.
void DrawSpan(OffscreenSurface &surface, PlotGeometry const &geometry, std::span<PlotPoint const> points,
              bool withLines, std::size_t first, std::size_t last, QColor const &color) {
    if (first == last)
        return;
    // Points to a thread: for fewer it costs more than it saves, and the lines of more take memory.
    std::size_t const together = std::clamp<std::size_t>((last - first) / 32, 8192, 262'144);
    QPainter *const painter = withLines ? surface.GetDC() : nullptr;
    if (painter != nullptr)
        painter->setPen(QPen(color, 1));
    PlotTracer here(surface, geometry, points);
    PlotTracer there(surface, geometry, points); // on the second thread
    for (std::size_t begin = first; begin < last;) {
        std::size_t const middle = std::min(begin + together, last);
        std::size_t const end = std::min(middle + together, last);
        std::future<void> other;
        if (middle < end)
            other = DoAside([&, middle, end] { there.Trace(middle, end, painter != nullptr, true); });
        here.Trace(begin, middle, painter != nullptr, begin > 0);
        if (painter != nullptr)
            here.Lines().Draw(*painter);
        if (other.valid())
            other.get();
        if (painter != nullptr)
            there.Lines().Draw(*painter);
        begin = end;
    }
    if (!here.HasMarkers() && !there.HasMarkers())
        return;
    here.Markers().Add(there.Markers());
    double const ratio = surface.GetImage().devicePixelRatio();
    PixelRows const pixels = here.Markers().Render(ratio, [ratio](int x, int y) { return ShapeAt(x, y, ratio); });
    FillPixels(surface.GetPixels(), pixels, color.rgb());
}

} // namespace

void DrawPlotAxes(QPainter &painter, PlotGeometry const &geometry, ChartColors const &colors) {
    QPen pen(colors.ink, 2);
    pen.setCapStyle(Qt::SquareCap);
    pen.setJoinStyle(Qt::MiterJoin);
    painter.setPen(pen);
    QPoint const corner(geometry.PlotMinX(), geometry.PlotMaxY());
    QPoint const path[] = {{geometry.PlotMinX(), geometry.PlotMinY()}, corner, {geometry.PlotMaxX(), corner.y()}};
    painter.drawPolyline(path, 3);
}

void DrawPlotTickMarks(QPainter &painter, PlotGeometry const &geometry, PlotTexts const &texts,
                       ChartColors const &colors) {
    if (!geometry.HasTickMarks())
        return;
    QPen tick(colors.ink, 2);
    tick.setCapStyle(Qt::FlatCap);
    QPen grid(colors.ink, 1);
    grid.setCapStyle(Qt::FlatCap);
    grid.setDashPattern({3, 3});
    QFont const usual = ChartFont("Arial Narrow", kUsualFont);

    painter.setFont(texts.numXLabels < kManyLabels ? usual : ChartFont("Arial Narrow", kSmallFont));
    int const bottom = geometry.PlotMaxY();
    for (TickMark const &mark : texts.ticksX) {
        painter.setPen(tick);
        painter.drawLine(mark.pixel, bottom, mark.pixel, bottom + 5);
        DrawLabel(painter, mark.label, mark.labelRect, LabelAlign::Center);
        if (texts.drawGrid && mark.hasGrid) {
            painter.setPen(grid);
            painter.drawLine(mark.pixel, bottom, mark.pixel, geometry.PlotMinY());
        }
    }
    painter.setFont(usual);
    int const left = geometry.PlotMinX();
    for (TickMark const &mark : texts.ticksY) {
        painter.setPen(tick);
        painter.drawLine(left, mark.pixel, left - 5, mark.pixel);
        DrawLabel(painter, mark.label, mark.labelRect, LabelAlign::Right);
        if (texts.drawGrid && mark.hasGrid) {
            painter.setPen(grid);
            painter.drawLine(left, mark.pixel, geometry.PlotMaxX(), mark.pixel);
        }
    }
    painter.setPen(tick);
    if (!texts.title.empty())
        DrawLabel(painter, texts.title, geometry.TitleRect(), LabelAlign::Center);
    if (!texts.captionX.empty())
        DrawLabel(painter, texts.captionX, geometry.CaptionXRect(), LabelAlign::Center);
    if (!texts.captionY.empty()) {
        constexpr int height = 65; // a cell ten pixels high
        constexpr double upwards = 90.0;
        painter.setFont(ChartFont("Arial", height));
        DrawRotatedText(painter, texts.captionY, geometry.CaptionYRect(), upwards);
    }
}

void DrawPlotData(OffscreenSurface &surface, PlotGeometry const &geometry, std::span<PlotPoint const> points,
                  bool withLines, std::optional<std::size_t> selected, ChartColors const &colors) {
    bool const shows = selected && *selected < points.size() && geometry.IsInRange(points[*selected]);
    // All is of one colour but the selected point: what comes before it lies under it, the rest above.
    std::size_t const cut = shows ? *selected + 1 : points.size();
    DrawSpan(surface, geometry, points, withLines, 0, cut, colors.point);
    if (QPainter *const painter = surface.GetDC(); shows && painter != nullptr) {
        painter->setPen(QPen(colors.point, 1));
        painter->setBrush(colors.selectedPoint);
        PlotPoint const point = points[cut - 1];
        DrawMarker(*painter, geometry.DataToWndX(point.x), geometry.DataToWndY(point.y), kSelectedRadius);
    }
    DrawSpan(surface, geometry, points, withLines, cut, points.size(), colors.point);
}

} // namespace zelvar
