// "Filter & Find" over 100,000 items beside a list widget that is filled anew.
#include "Harness.h"
#include "zelvar/dialogs/DlgFltrFind.h"
#include "zelvar/platform/ui/ControlId.h"

#include <QtWidgets/QApplication>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListWidget>

#include <algorithm>
#include <cstdio>

namespace zelvar::bench {
namespace {

constexpr int kItems = 100'000;
constexpr int kRounds = 7;

std::vector<DString> Names() {
    std::vector<DString> names;
    for (int i = 0; i < kItems; ++i)
        names.push_back(Format("Mean of channel %05d after smoothing", i * 7919 % kItems));
    return names;
}

/// What a letter costs in a list widget: two texts in lower case an item, one line an item found, then the paint.
double LetterInListWidget(QListWidget &list, std::vector<DString> const &names, QString const &wanted) {
    return BestMs(kRounds, [&] {
        list.clear();
        for (DString const &name : names)
            if (QString const text = QString::fromStdString(name); text.toLower().contains(wanted.toLower()))
                list.addItem("<Features> " + text);
        QApplication::processEvents();
    });
}

Register const filterFind("filter_find", [] {
    std::vector<DString> const names = Names();
    DlgFltrFind dialog("");
    for (DString const &name : names)
        dialog.AddItem(name, name.back() == '1' ? "Odd" : "Even", "Features", "A feature", 0);
    double const show = BestMs(1, [&] {
        dialog.show();
        QApplication::processEvents();
    });
    auto &find = *platform::GetDlgItem<QLineEdit>(dialog, 1981);
    auto &lines = *platform::GetDlgItem<QListView>(dialog, 1983);
    // The letter that leaves all of them, and one behind it that leaves few: each is painted.
    auto const letter = [&](QString const &before, QString const &after) {
        double best = 1e9;
        for (int round = 0; round < kRounds; ++round) {
            find.setText(before);
            QApplication::processEvents();
            best = std::min(best, BestMs(1, [&] {
                                find.setText(after);
                                QApplication::processEvents();
                            }));
        }
        return best;
    };
    double const all = letter("", "M");
    if (lines.model()->rowCount() != kItems)
        std::fprintf(stderr, "not all items are listed\n");
    double const few = letter("1234", "12345");

    QListWidget widget;
    widget.resize(lines.size());
    widget.setUniformItemSizes(true);
    widget.show();
    QApplication::processEvents();
    auto const beside = [&](QString const &wanted) {
        return Beside{.limit = 30,
                      .alternatives = {{"a QListWidget filled anew", LetterInListWidget(widget, names, wanted)}}};
    };
    Figure("filter_find.letter_100k", all, "ms", beside("M"));
    Figure("filter_find.letter_100k_few_left", few, "ms", beside("12345"));
    Figure("filter_find.show_100k", show, "ms", "sorted the first time");
});

} // namespace
} // namespace zelvar::bench
