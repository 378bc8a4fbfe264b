#include "Harness.h"
#include "zelvar/thematic/TmtcListCtrl.h"

#include <QtGui/QImage>

namespace {

using namespace zelvar;

bench::Register const thematic("thematic", [] {
    TmtcListCtrl list;
    list.resize(800, 600);
    for (int i = 0; i < 1'000; ++i) {
        auto *const group = TmtcListCtrl::Group::Create("Rule", std::to_string(i), Rgb(0, 0, 128), Rgb(0, 0, 255), 0);
        for (int j = 0; j < 10; ++j)
            group->AddTail(TmtcListCtrl::Item::Create("Item " + std::to_string(j), -1, 0, true));
        list.AddTail(group);
    }
    QImage target(800, 600, QImage::Format_RGB32);
    bench::Figure("thematic.paint_1000_groups_of_10", bench::BestMs(20, [&] { list.render(&target); }), "ms",
                  {.limit = 10, .note = "with the layout of all"});
    int y = 0;
    bench::Figure("thematic.mouse_move",
                  bench::BestMs(20,
                                [&] {
                                    TmtcListCtrl::HITTEST hit;
                                    list.HitTest({400, y += 7}, &hit);
                                }),
                  "ms", {.limit = 1});
});

} // namespace
