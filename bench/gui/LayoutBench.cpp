#include "Harness.h"
#include "zelvar/layout/cdxCDynamicWnd.h"

#include <QtWidgets/QGridLayout>
#include <QtWidgets/QWidget>

#include <vector>

namespace zelvar::bench {
namespace {

constexpr int kChildren = 10'000;
constexpr int kColumns = 40;

// A pass over 10,000 children that all move, beside setting the same rectangles by hand and beside a grid of the
// toolkit, all with real widgets.
Register const layout("layout", [] {
    QWidget window;
    std::vector<QWidget *> children;
    for (int i = 0; i < kChildren; ++i) {
        auto *const child = new QWidget(&window);
        child->setGeometry(i % kColumns * 24, i / kColumns * 30, 20, 20);
        children.push_back(child);
    }
    window.resize(1000, 800);
    window.show();
    cdxCDynamicWnd engine(cdxCDynamicWnd::FreedomAll, 0);
    engine.DoInitWindow(window);
    engine.AllControls(cdxCDynamicWnd::BotRight);

    QWidget other;
    auto *const grid = new QGridLayout(&other);
    grid->setContentsMargins({});
    for (int i = 0; i < kChildren; ++i) {
        auto *const child = new QWidget;
        child->setFixedSize(20, 20);
        grid->addWidget(child, 1 + i / kColumns, 1 + i % kColumns);
    }
    grid->setRowStretch(0, 1); // what the window grows by, so that all move
    grid->setColumnStretch(0, 1);
    grid->setSizeConstraint(QLayout::SetNoConstraint);
    QSize const least = grid->minimumSize();
    other.resize(least);
    other.show();

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
        for (int i = 0; i < kChildren; ++i)
            children[static_cast<std::size_t>(i)]->setGeometry(i % kColumns * 24 + 1 + step,
                                                               i / kColumns * 30 + 1 + step, 20, 20);
        window.setUpdatesEnabled(true);
    };
    auto const byGrid = [&] {
        step = (step + 1) % 50;
        other.setUpdatesEnabled(false);
        other.resize(least.width() + 1 + step, least.height() + 1 + step);
        grid->activate();
        other.setUpdatesEnabled(true);
    };
    // Apart from each other: a third one would have the caches to itself each time.
    Pair const pair = Compare(51, byEngine, byHand);
    Pair const gridPair = Compare(51, byGrid, byHand);
    Figure("layout.10000_moving_children", pair.firstMs, "ms", {.alternatives = {{"by hand", pair.secondMs}}});
    Figure("layout.ratio_to_by_hand", pair.ratio, "x",
           {.limit = 1.05, .alternatives = {{"a grid of the toolkit", gridPair.ratio}}});
});

} // namespace
} // namespace zelvar::bench
