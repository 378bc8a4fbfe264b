#include "Folders.h"
#include "Harness.h"
#include "zelvar/library/ZelvarInit.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/DlgOpenDS.h"

#include <QtCore/QElapsedTimer>
#include <QtWidgets/QApplication>

#include <algorithm>

namespace zelvar::bench {
namespace {

constexpr unsigned kFiles = 100'000;

double Milliseconds(QElapsedTimer const &timer) { return static_cast<double>(timer.nsecsElapsed()) / 1e6; }

/// From the call that fills the list to its rows: the listing inside the call, the wait for the tick, and the tick,
/// which merges and paints them.
double FillMs(std::string const &path, DSListCtrl::Mode mode, int rows) {
    DSListCtrl list;
    list.SetMode(DSListCtrl::ModeRecursive);
    list.Create(0, {0, 0, 600, 500}, DT_DATA, nullptr, 3);
    list.SetMode(mode);
    list.Sort(0, true);
    list.ApplyFileFilter("*.*", nullptr);
    list.show();
    QApplication::processEvents();
    RefItemPtr<DataSourceItem> const folder(NtwDataSourceItem::CreateItem(path.c_str(), nullptr, nullptr));

    QElapsedTimer timer;
    timer.start();
    list.ResetItems({folder});
    while (list.GetNumRow() < rows)
        QApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
    return Milliseconds(timer);
}

/// The folders' bare listing and the filled list in turn: the medians of the ratios and of the list's time.
struct Compared {
    double ratio = 0;
    double fillMs = 0;
};
Compared CompareToBare(std::string const &path, std::vector<std::string> const &folders, DSListCtrl::Mode mode) {
    std::vector<double> ratios;
    std::vector<double> fills;
    for (int run = 0; run < 5; ++run) {
        double const bare = BestMs(1, [&] {
            for (std::string const &folder : folders)
                ListBare(folder);
        });
        fills.push_back(FillMs(path, mode, kFiles));
        ratios.push_back(fills.back() / bare);
    }
    return {Median(ratios), Median(fills)};
}

/// From the call that opens the dialog on the folder, the window made, to its rows.
struct Opened {
    double firstRowMs = 0;
    double allRowsMs = 0;
};
Opened OpenMs(std::string const &path, int rows) {
    DFileFrmt all("", "All Files", "*.*");
    DVector<DFileFrmt *> const formats{&all};
    Folder const empty;
    DlgOpenDS *const dialog = DlgOpenDS::CreateDialogObject(formats, &all, DT_DATA, nullptr, nullptr);
    dialog->SetInitDir(empty.Path().c_str());
    dialog->open();
    QApplication::processEvents();
    Opened opened;
    QElapsedTimer timer;
    timer.start();
    dialog->GoToDir(path, false);
    while (dialog->MainList()->GetNumRow() == 0)
        QApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
    opened.firstRowMs = Milliseconds(timer);
    while (dialog->MainList()->GetNumRow() < rows)
        QApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
    opened.allRowsMs = Milliseconds(timer);
    dialog->close();
    DlgOpenDS::DeleteDialogObject(dialog);
    return opened;
}

Register const reg("folderlist", [] {
    ZelvarInit();
    {
        Folder const once;
        Folder const twice;
        Fill(once.Path(), kFiles);
        Fill(twice.Path(), 2 * kFiles);
        Compared const filled = CompareToBare(once.Path(), {once.Path()}, DSListCtrl::ModeFiles);
        Figure("folderlist.100k_by_name_filled", filled.fillMs, "ms", "the tick of the list's timer included");
        Figure("folderlist.100k_by_name_to_bare", filled.ratio, "x",
               {.limit = 3, .note = "of directory entries plus statx"});
        std::vector<double> toBare;
        std::vector<double> first;
        std::vector<double> whole;
        for (int run = 0; run < 5; ++run) {
            double const bare = BestMs(1, [&] { ListBare(once.Path()); });
            Opened const opened = OpenMs(once.Path(), kFiles);
            first.push_back(opened.firstRowMs);
            whole.push_back(opened.allRowsMs);
            toBare.push_back(opened.allRowsMs / bare);
        }
        Figure("folderlist.dialog_100k_first_row", Median(first), "ms", "in the open dialog, both panes, by name");
        Figure("folderlist.dialog_100k_all_rows", Median(whole), "ms", {.limit = 350});
        Figure("folderlist.dialog_100k_to_bare", Median(toBare), "x",
               {.limit = 2, .note = "of directory entries plus statx"});
        std::vector<double> ratios;
        std::vector<double> ratiosOfBare;
        for (int run = 0; run < 5; ++run) {
            double const bareSingle = BestMs(1, [&] { ListBare(once.Path()); });
            ratiosOfBare.push_back(BestMs(1, [&] { ListBare(twice.Path()); }) / bareSingle);
            double const single = FillMs(once.Path(), DSListCtrl::ModeFiles, kFiles);
            ratios.push_back(FillMs(twice.Path(), DSListCtrl::ModeFiles, 2 * kFiles) / single);
        }
        Figure("folderlist.200k_to_100k", Median(ratios), "x",
               {.limit = 2.2, .alternatives = {{"the bare walk", Median(ratiosOfBare)}}});
    }
    {
        Folder const folder;
        std::vector<std::string> folders;
        for (unsigned i = 0; i < 200; ++i) {
            folders.push_back(folder.Path() + "/folder " + std::to_string(i));
            std::filesystem::create_directory(folders.back());
            Fill(folders.back(), kFiles / 200);
        }
        Figure("folderlist.100k_in_200_folders_to_bare",
               CompareToBare(folder.Path(), folders, DSListCtrl::ModeRecursive).ratio, "x",
               {.limit = 3, .note = "of directory entries plus statx"});
    }
});

} // namespace
} // namespace zelvar::bench
