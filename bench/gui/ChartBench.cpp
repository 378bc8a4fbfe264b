#include "Harness.h"
#include "zelvar/charts/CHstgCtrl.h"
#include "zelvar/charts/CPlotCtrl.h"
#include "zelvar/pixels/DHstg.h"

#include <QtGui/QImage>
#include <QtGui/QPainter>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

namespace {

using namespace zelvar;

constexpr int kPoints = 1'000'000;
constexpr int kWidth = 800;
constexpr int kHeight = 600;

std::vector<PlotPoint> RandomPoints(bool ordered) {
    std::mt19937_64 random(7);
    std::vector<PlotPoint> points(kPoints);
    for (PlotPoint &point : points)
        point = {static_cast<double>(random() % 1'000'000), static_cast<double>(random() % 1'000'000)};
    if (ordered)
        std::sort(points.begin(), points.end(), [](auto const &a, auto const &b) { return a.x < b.x; });
    return points;
}

void Fill(CPlotCtrl &plot, std::vector<PlotPoint> const &points, bool lines) {
    plot.resize(kWidth, kHeight);
    plot.Clear();
    for (PlotPoint const &point : points)
        plot.AddData(point.x, point.y, nullptr, nullptr);
    plot.SetDataMaxX(1e6);
    plot.SetDataMaxY(1e6);
    plot.SetTickX(1e5);
    plot.SetTickY(1e5);
    plot.DrawLine(lines);
}

/// Each point and line in turn.
double DrawnInTurnMs(std::vector<PlotPoint> const &points, bool lines, int runs) {
    PlotGeometry const geometry({kWidth, kHeight}, {60, 20, 20, 32}, {.maxX = 1e6, .maxY = 1e6});
    QImage image(kWidth, kHeight, QImage::Format_RGB32);
    return bench::BestMs(runs, [&] {
        image.fill(Qt::white);
        QPainter painter(&image);
        painter.setPen(QPen(QColor(230, 0, 0), 1));
        painter.setBrush(QColor(230, 0, 0));
        QPoint last(geometry.DataToWndX(points[0].x), geometry.DataToWndY(points[0].y));
        for (PlotPoint const &point : points) {
            QPoint const at(geometry.DataToWndX(point.x), geometry.DataToWndY(point.y));
            if (lines && at != last)
                painter.drawLine(last, at);
            last = at;
            painter.drawEllipse(at.x() - 3, at.y() - 3, 5, 5);
        }
    });
}

bench::Register const plots("chart.plot", [] {
    QImage target(kWidth, kHeight, QImage::Format_RGB32);
    std::vector<PlotPoint> const anyOrder = RandomPoints(false);
    std::vector<PlotPoint> const ordered = RandomPoints(true);
    CPlotCtrl plot;
    auto const render = [&] {
        plot.UpdtPlot();
        plot.render(&target);
    };
    auto const beside = [](double limit, double inTurnMs) {
        return bench::Beside{.limit = limit, .alternatives = {{"each in turn", inTurnMs}}};
    };
    Fill(plot, anyOrder, false);
    bench::Figure("chart.plot_1e6_markers", bench::BestMs(5, render), "ms",
                  beside(50, DrawnInTurnMs(anyOrder, false, 1)));
    bench::Figure("chart.plot_repaint", bench::BestMs(50, [&] { plot.render(&target); }), "ms", {.limit = 1});
    double x = 0;
    bench::Figure("chart.plot_select", bench::BestMs(20, [&] { plot.SlctData(x += 7, 0); }), "ms", {.limit = 3});
    Fill(plot, ordered, true);
    bench::Figure("chart.plot_1e6_lines_in_order", bench::BestMs(5, render), "ms",
                  beside(60, DrawnInTurnMs(ordered, true, 1)));
    Fill(plot, anyOrder, true);
    double const ours = bench::BestMs(2, render);
    double const others = DrawnInTurnMs(anyOrder, true, 2);
    bench::Figure("chart.plot_1e6_lines_any_order", ours / others, "x",
                  {.limit = 1, .note = "of drawing each in turn"});
    bench::Figure("chart.plot_1e6_lines_any_order_ms", ours, "ms", {.alternatives = {{"each in turn", others}}});
});

// How a plot grows; line and markers, repainted after a change.
bench::Register const growing("chart.growth", [] {
    QImage target(kWidth, kHeight, QImage::Format_RGB32);
    std::optional<double> first;
    for (int const count : {100'000, 1'000'000, 10'000'000}) {
        CPlotCtrl plot;
        plot.resize(kWidth, kHeight);
        std::size_t const before = bench::ResidentBytes();
        for (int i = 0; i < count; ++i)
            plot.AddData(i, static_cast<double>((i * 7919LL) % 1'000'003), nullptr, nullptr);
        double const bytes = static_cast<double>(bench::ResidentBytes() - before) / count;
        plot.SetTickX(count / 10.0);
        plot.SetTickY(1e5);
        plot.DrawLine(true);
        DString const name = "chart.plot_" + std::to_string(count);
        double const ms = bench::BestMs(3, [&] {
            plot.UpdtPlot();
            plot.render(&target);
        });
        bench::Figure(name + "_repaint", ms, "ms", count < 10'000'000 ? bench::Beside{} : bench::Beside{.limit = 100});
        if (first)
            bench::Figure(name + "_to_linear", ms / count / *first, "x",
                          {.limit = 1, .note = "a point, beside one of 100,000"});
        else
            first = ms / count;
        bench::Figure(name + "_memory", bytes, "bytes", {.limit = 40, .note = "a point"});
    }
});

bench::Register const histograms("chart.histogram", [] {
    constexpr std::size_t count = 20'000'000;
    std::vector<std::uint16_t> samples(count);
    std::mt19937_64 random(9);
    for (std::uint16_t &sample : samples)
        sample = static_cast<std::uint16_t>(random() % 5000 + random() % 5000);
    std::vector<std::uint32_t> table(65536);
    int slots = 0;
    bench::Pair const pair = bench::Compare(
        7, [&] { slots += DHstg::FromSamples<std::uint16_t>(samples, 256).m_numSlot; },
        [&] {
            std::fill(table.begin(), table.end(), 0);
            for (std::uint16_t const sample : samples)
                ++table[sample];
        });
    bench::Figure("chart.histogram_2e7_samples", pair.firstMs, "ms",
                  {.alternatives = {{"a plain pass that counts", pair.secondMs}}});
    bench::Figure("chart.histogram_to_plain_pass", pair.ratio, "x", {.limit = 1.5});
});

} // namespace
