// A tree control filled item by item beside bare models, and the walk over it.
#include "Harness.h"
#include "zelvar/lists/CTreeCtrlItr.h"
#include "zelvar/lists/CZelTreeCtrl.h"
#include "zelvar/views/TreeModel.h"

#include <QtGui/QStandardItemModel>
#include <QtWidgets/QApplication>

#include <cstdio>
#include <memory>
#include <vector>

namespace zelvar::bench {
namespace {

constexpr int kItems = 100'000;
constexpr int kBranches = 100; // of as many items each, collapsed
constexpr int kRounds = 5;

std::vector<DString> Names() {
    std::vector<DString> names;
    for (int i = 0; i < kItems; ++i)
        names.push_back("item " + std::to_string(i));
    return names;
}

double FillControl(CZelTreeCtrl &tree, std::vector<DString> const &names, bool branches) {
    tree.DeleteAllItems();
    HTREEITEM parent = TVI_ROOT;
    return BestMs(1, [&] {
        for (int i = 0; i < kItems; ++i) {
            bool const branch = branches && i % (kItems / kBranches) == 0;
            HTREEITEM const item = tree.AddItem(names[static_cast<std::size_t>(i)], static_cast<std::uint64_t>(i),
                                                branch ? TVI_ROOT : parent, TVI_LAST);
            parent = branch ? item : parent;
        }
    });
}

double FillBareNodes(std::vector<DString> const &names) {
    TreeModel model;
    TreeNode &root = *model.Nodes().Root();
    return BestMs(1, [&] {
        for (DString const &name : names)
            model.Insert(root, root.LastChild(), {.mask = TVIF_TEXT | TVIF_PARAM}, name);
    });
}

double FillStandardModel(std::vector<DString> const &names) {
    QStandardItemModel model;
    return BestMs(1, [&] {
        for (DString const &name : names)
            model.appendRow(new QStandardItem(QString::fromStdString(name)));
    });
}

/// The best of some rounds of something that is set up anew each time.
template <class Round>
double BestOf(Round &&round) {
    double best = round();
    for (int i = 1; i < kRounds; ++i)
        best = std::min(best, round());
    return best;
}

Register const trees("tree", [] {
    std::vector<DString> const names = Names();
    CZelTreeCtrl tree;
    tree.resize(400, 600);
    tree.InitImages();
    tree.show();
    QApplication::processEvents();

    double const nodes = BestOf([&] { return FillBareNodes(names); });
    double const standard = BestOf([&] { return FillStandardModel(names); });
    double const flat = BestOf([&] { return FillControl(tree, names, false); });
    double const collapsed = BestOf([&] { return FillControl(tree, names, true); });
    Beside const beside{.limit = 2 * standard,
                        .alternatives = {{"QStandardItemModel", standard}, {"our bare nodes", nodes}}};
    Figure("tree.add_100k_items", flat, "ms", beside);
    Figure("tree.add_100k_items_collapsed", collapsed, "ms", beside);
    Figure("tree.add_100k_to_bare_model", flat / standard, "x", {.limit = 2});
    Figure("tree.add_100k_to_bare_nodes", flat / nodes, "x", {.limit = 2});

    FillControl(tree, names, true);
    Figure("tree.walk_100k_items",
           BestMs(kRounds,
                  [&] {
                      int steps = 0;
                      CTreeCtrlItr item(&tree, nullptr);
                      for (item.Frst(); item.Cont(); item.Next())
                          ++steps;
                      if (steps != kItems)
                          std::fprintf(stderr, "the walk lost items\n");
                  }),
           "ms", {.limit = 30});
    Figure("tree.first_100k_items", BestOf([&] {
               tree.DeleteAllItems();
               return BestMs(1, [&] {
                   for (DString const &name : names)
                       tree.AddItem(name, 0, TVI_ROOT, TVI_FIRST);
               });
           }),
           "ms", "each before all others");
    Figure("tree.layout_100k_items", BestMs(1, [&] { tree.EnsureVisible(tree.GetRootItem()); }), "ms", {.limit = 100});
    Figure("tree.delete_100k_items", BestMs(1, [&] { tree.DeleteAllItems(); }), "ms", {.limit = 100});
});

} // namespace
} // namespace zelvar::bench
