#include "Harness.h"
#include "zelvar/layout/cdxCDynamicWnd.h"

#include <QtWidgets/QWidget>

#include <vector>

namespace {

using namespace zelvar;

// A pass over 10,000 children that all move, against setting the same rectangles by hand, both with real widgets.
bench::Register const layout("layout", [] {
    constexpr int count = 10'000;
    QWidget window;
    window.resize(1000, 800);
    std::vector<QWidget *> children;
    for (int i = 0; i < count; ++i) {
        auto *const child = new QWidget(&window);
        child->setGeometry(i % 40 * 24, i / 40 * 30, 20, 20);
        children.push_back(child);
    }
    window.show();
    cdxCDynamicWnd engine(cdxCDynamicWnd::FreedomAll, 0);
    engine.DoInitWindow(window);
    engine.AllControls(cdxCDynamicWnd::BotRight);

    int step = 0;
    auto const resize = [&] { // not measured apart: both pay it
        step = (step + 1) % 50;
        window.resize(1001 + step, 801 + step);
    };
    auto const byEngine = [&] {
        resize();
        engine.Layout();
    };
    auto const byHand = [&] {
        resize();
        window.setUpdatesEnabled(false);
        for (int i = 0; i < count; ++i)
            children[static_cast<std::size_t>(i)]->setGeometry(i % 40 * 24 + 1 + step, i / 40 * 30 + 1 + step, 20, 20);
        window.setUpdatesEnabled(true);
    };
    bench::Pair const pair = bench::Compare(51, byEngine, byHand);
    bench::Figure("layout.10000_moving_children", pair.firstMs, "ms",
                  "by hand " + std::to_string(pair.secondMs) + " ms");
    bench::Figure("layout.ratio_to_by_hand", pair.ratio, "times", "at most 1.05; a grid of the toolkit 1.02");
});

} // namespace
