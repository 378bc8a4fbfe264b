// Ctrl+A in the open dialog, where a file of import options is installed and none of the files has any: each is asked.
#include "Folders.h"
#include "Harness.h"
#include "reader/Tiff.h"
#include "zelvar/library/ZelvarInit.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/DlgOpenDS.h"

#include <QtCore/QElapsedTimer>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QApplication>

#include <algorithm>
#include <fstream>

namespace zelvar::bench {
namespace {

constexpr int kFiles = 20'000;
constexpr int kWatchedMs = 3'000;

/// The longest turn of the event loop, in ms, within some time.
double LongestTurnMs(int within) {
    QElapsedTimer all;
    all.start();
    double longest = 0;
    while (all.elapsed() < within) {
        QElapsedTimer turn;
        turn.start();
        QCoreApplication::processEvents();
        longest = std::max(longest, static_cast<double>(turn.nsecsElapsed()) * 1e-6);
    }
    return longest;
}

Register const selection("opends.select_all", [] {
    ZelvarInit();
    Folder const templates;
    std::ofstream(templates.Path() + "/extras.xml")
        << "<DataSourceExtras><DataSourceOptions driver='PNG' template='t.html'/></DataSourceExtras>";
    std::ofstream(templates.Path() + "/t.html") << "<p><input name=GAMMA>";
    qputenv("ZELVAR_TEMPLATES_DIR", templates.Path().c_str());
    Folder const images;
    for (int i = 0; i < kFiles; ++i)
        Tiff(images.Path() + "/image " + std::to_string(i) + ".tif").AddPage(4, 4, 1);
    DFileFrmt all("", "All Files", "*.*");
    DVector<DFileFrmt *> const formats{&all};
    DlgOpenDS *const dialog = DlgOpenDS::CreateDialogObject(formats, &all, DT_DATA, nullptr, nullptr);
    dialog->SetInitDir(images.Path().c_str());
    dialog->SetMultiSelect(true);
    dialog->open();
    QElapsedTimer listing;
    listing.start();
    while (dialog->MainList()->GetItemCount() < kFiles && listing.elapsed() < 60'000)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    LongestTurnMs(kWatchedMs / 3); // what else the listing brings
    QElapsedTimer key;
    key.start();
    QKeyEvent press(QEvent::KeyPress, Qt::Key_A, Qt::ControlModifier);
    QApplication::sendEvent(dialog->MainList(), &press);
    double const pressed = static_cast<double>(key.nsecsElapsed()) * 1e-6;
    double const longest = std::max(pressed, LongestTurnMs(kWatchedMs));
    Figure("opends.select_all_20000", longest, "ms",
           {.limit = 100, .note = std::to_string(dialog->MainList()->GetSelectedCount()) + " rows selected"});
    dialog->close();
    DlgOpenDS::DeleteDialogObject(dialog);
    qunsetenv("ZELVAR_TEMPLATES_DIR");
});

} // namespace
} // namespace zelvar::bench
