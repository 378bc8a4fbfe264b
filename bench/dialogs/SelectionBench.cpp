// Selecting in the open dialog: all at once, where a file of import options is installed and none of the files has any,
// so that each is asked; and one after the other, with all that the dialog tells of a file and without.
#include "Folders.h"
#include "Harness.h"
#include "reader/Tiff.h"
#include "zelvar/library/ZelvarInit.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/DSPropertyWnd.h"
#include "zelvar/opends/DlgOpenDS.h"
#include "zelvar/opends/ImagePreviewWnd.h"
#include "zelvar/opends/OpenFeatures.h"

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

/// Words that no number is in, so that files of these names are no series.
std::string WordOf(int number) {
    std::string word;
    for (; number > 0 || word.empty(); number /= 26)
        word += static_cast<char>('a' + number % 26);
    return word;
}

/// The dialog over a folder of that many images, as it stands once all rows are there.
class OpenOver {
public:
    OpenOver(int files, unsigned side) {
        for (int i = 0; i < files; ++i)
            Tiff(m_images.Path() + "/image " + WordOf(i) + ".tif").AddPage(side, side, 1);
        dialog = DlgOpenDS::CreateDialogObject({&m_all}, &m_all, DT_DATA, nullptr, nullptr);
        dialog->SetInitDir(m_images.Path().c_str());
        dialog->SetMultiSelect(true);
        dialog->open();
        Wait([&] { return dialog->MainList()->GetItemCount() >= files; });
        LongestTurnMs(kWatchedMs / 3); // what else the listing brings
    }
    ~OpenOver() {
        dialog->close();
        DlgOpenDS::DeleteDialogObject(dialog);
    }
    OpenOver(OpenOver const &) = delete;
    OpenOver &operator=(OpenOver const &) = delete;

    template <class Ready>
    static void Wait(Ready const &isReady) {
        QElapsedTimer waited;
        waited.start();
        while (!isReady())
            if (QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50); waited.elapsed() > 60'000)
                Fail("the dialog does not come to an end");
    }
    /// Milliseconds of the key itself.
    [[nodiscard]] double Press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const {
        return Ms([&] {
            QKeyEvent press(QEvent::KeyPress, key, modifiers);
            QApplication::sendEvent(dialog->MainList(), &press);
        });
    }

    DlgOpenDS *dialog = nullptr;

private:
    Folder m_images;
    DFileFrmt m_all{"", "All Files", "*.*"};
};

Register const selection("opends.select_all", [] {
    ZelvarInit();
    Folder const templates;
    std::ofstream(templates.Path() + "/extras.xml")
        << "<DataSourceExtras><DataSourceOptions driver='PNG' template='t.html'/></DataSourceExtras>";
    std::ofstream(templates.Path() + "/t.html") << "<p><input name=GAMMA>";
    qputenv("ZELVAR_TEMPLATES_DIR", templates.Path().c_str());
    OpenOver const open(kFiles, 4);
    double const pressed = open.Press(Qt::Key_A, Qt::ControlModifier);
    double const longest = std::max(pressed, LongestTurnMs(kWatchedMs));
    Figure("opends.select_all_20000", longest, "ms",
           {.limit = 100, .note = std::to_string(open.dialog->MainList()->GetSelectedCount()) + " rows selected"});
    qunsetenv("ZELVAR_TEMPLATES_DIR");
});

/// What a step to the next file costs: the key with the turn of the event loop behind it, and until the picture stands.
struct Step {
    std::vector<double> turns;
    std::vector<double> pictures;
};

void TakeSteps(unsigned features, Step &step) {
    constexpr int kSteps = 40;
    DlgOpenDS::SetFeatures(features);
    OpenOver const open(kSteps + 1, 512);
    ImagePreviewWnd const &preview = *open.dialog->PropertyWnd()->Preview();
    open.dialog->MainList()->setFocus();
    for (int i = 0; i < kSteps; ++i) {
        QElapsedTimer all;
        all.start();
        step.turns.push_back(open.Press(Qt::Key_Down) + Ms([] { QCoreApplication::processEvents(); }));
        OpenOver::Wait([&] { return preview.GetMode() == ImagePreviewWnd::ModeCanvas; });
        step.pictures.push_back(static_cast<double>(all.nsecsElapsed()) * 1e-6);
        LongestTurnMs(30); // the values and what else comes behind the picture
    }
    DlgOpenDS::SetFeatures(kOpenAll);
}

Register const steps("opends.select_next", [] {
    ZelvarInit();
    Step all;
    Step plain;
    for (int round = 0; round < 3; ++round) {
        TakeSteps(kOpenAll, all);
        TakeSteps(kOpenPlain, plain);
    }
    Figure("opends.select_next", Median(all.turns), "ms",
           {.alternatives = {{"without what stands beside the panes", Median(plain.turns)}},
            .note = "the key and the turn of the event loop behind it"});
    Figure("opends.select_next.picture", Median(all.pictures), "ms",
           {.alternatives = {{"without what stands beside the panes", Median(plain.pictures)}},
            .note = "until the picture of 512 x 512 pixels stands"});
});

} // namespace
} // namespace zelvar::bench
