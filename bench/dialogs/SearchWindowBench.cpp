// A search in the open dialog with 100,000 results: how long the window's thread is away, and when there are rows.
#include "Folders.h"
#include "Harness.h"
#include "zelvar/library/ZelvarInit.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/DlgOpenDS.h"
#include "zelvar/opends/OpenSearch.h"

#include <QtCore/QTimer>
#include <QtWidgets/QApplication>

#include <algorithm>
#include <chrono>

namespace zelvar::bench {
namespace {

constexpr unsigned kFolders = 2000;
constexpr unsigned kFilesEach = 50;

using Clock = std::chrono::steady_clock;
double Since(Clock::time_point begin) {
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

struct Searched {
    double firstRow = 0;
    double allRows = 0;
    double longestGap = 0;
};

/// All in ms from the beginning of the search; `column` is what is sorted by from the beginning, -1 for none.
Searched Search(std::string const &path, int column) {
    DFileFrmt all("", "All Files", "*.*");
    DVector<DFileFrmt *> const formats{&all};
    DlgOpenDS *const dialog = DlgOpenDS::CreateDialogObject(formats, &all, DT_DATA, nullptr, nullptr);
    dialog->SetInitDir(path.c_str());
    dialog->open();
    for (DSListCtrl::ItemList roots; roots.empty(); dialog->MainList()->GetRootItems(roots))
        QApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
    Searched searched;
    auto const begin = Clock::now();
    auto last = begin;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &look, [&] {
        searched.longestGap = std::max(searched.longestGap, Since(last));
        last = Clock::now();
    });
    look.start(1);
    dialog->Search()->Begin("scene");
    if (column >= 0)
        dialog->MainList()->Sort(column, true);
    while (dialog->Search()->IsSearching()) {
        QApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
        if (searched.firstRow == 0 && dialog->MainList()->GetNumRow() > 0)
            searched.firstRow = Since(begin);
    }
    searched.allRows = Since(begin);
    if (dialog->MainList()->GetNumRow() != static_cast<int>(kFolders * kFilesEach))
        Fail("not all was found");
    dialog->close();
    DlgOpenDS::DeleteDialogObject(dialog);
    return searched;
}

Register const reg("search.window", [] {
    ZelvarInit();
    Folder const top;
    for (unsigned i = 0; i < kFolders; ++i) {
        std::string const folder = top.Path() + "/group " + std::to_string(i / 50) + "/folder " + std::to_string(i);
        std::filesystem::create_directories(folder);
        Fill(folder, kFilesEach);
    }
    std::vector<double> first;
    std::vector<double> whole;
    std::vector<double> gaps;
    std::vector<double> sortedGaps;
    for (int run = 0; run < 5; ++run) {
        Searched const searched = Search(top.Path(), -1);
        first.push_back(searched.firstRow);
        whole.push_back(searched.allRows);
        gaps.push_back(searched.longestGap);
        sortedGaps.push_back(Search(top.Path(), 0).longestGap);
    }
    Figure("search.window.first_row", Median(first), "ms", "100,000 results in 2,000 folders");
    Figure("search.window.all_rows", Median(whole), "ms", "the same");
    Figure("search.window.longest_gap", Median(gaps), "ms", {.limit = 100, .note = "between two turns of a timer"});
    Figure("search.window.longest_gap_sorted", Median(sortedGaps), "ms", {.limit = 100, .note = "by name"});
});

} // namespace
} // namespace zelvar::bench
