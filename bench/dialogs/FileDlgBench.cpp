// The file dialog service as an application has it: on the shared libraries, with readers.
#include "Folders.h"
#include "Harness.h"
#include "reader/Tiff.h"
#include "zelvar/data/BDINode.h"
#include "zelvar/data/DIOPluginMngr.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/filedlg/FileDlg.h"
#include "zelvar/library/ZelvarInit.h"
#include "zelvar/platform/ui/MainWindow.h"
#include "zelvar/store/DCnfg.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QTimer>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDialog>
#include <QtWidgets/QMainWindow>

#include <algorithm>

void PrepareBenches(int &argc, char **argv);

void PrepareBenches(int &argc, char **argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // Never deleted: behind the end of main the toolkit's own statics are already gone.
    static QApplication const *const application = new QApplication(argc, argv);
    static_cast<void>(application);
}

namespace zelvar::bench {
namespace {

/// Notes when the first dialog has been painted, and closes it.
class FirstDialog : public QObject {
public:
    FirstDialog() {
        qApp->installEventFilter(this);
        m_clock.start();
    }
    [[nodiscard]] double PaintedAfterMs() const { return m_paintedAfter; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override {
        auto *const dialog = qobject_cast<QDialog *>(watched);
        if (m_paintedAfter < 0 && dialog != nullptr && event->type() == QEvent::Paint) {
            m_paintedAfter = static_cast<double>(m_clock.nsecsElapsed()) * 1e-6;
            QTimer::singleShot(0, dialog, &QDialog::reject);
        }
        return false;
    }

private:
    QElapsedTimer m_clock;
    double m_paintedAfter = -1;
};

double OpenRasterDataMs() {
    FirstDialog const first;
    FileDlg request;
    request.OpenRasterData(DIOPluginMngr::Instance(), 0, true, false, nullptr);
    return first.PaintedAfterMs();
}

std::size_t CountFormats() {
    DList<DFileFrmt *> formats;
    DIOPluginMngr::Instance()->BuildFrmtList(0, ~0U, nullptr, formats);
    for (DFileFrmt const *format : formats)
        delete format;
    return formats.size();
}

Register const dialogs("filedlg.open", [] {
    ZelvarInit();
    QMainWindow frame;
    frame.show();
    platform::SetMainWindow(&frame);
    // Nothing has asked for a driver yet: a reader is started for the list of formats.
    Figure("filedlg.open_raster_data_cold", OpenRasterDataMs(), "ms",
           {.limit = 400, .note = "from the call to the first paint"});
    Figure("filedlg.open_raster_data_warm", OpenRasterDataMs(), "ms", {.limit = 400});
    std::size_t count = 0;
    double const list = BestMs(20, [&count] { count = CountFormats(); });
    Figure("filedlg.format_list", list, "ms", {.limit = 10, .note = std::to_string(count) + " formats"});
    DUserCnfg("Options").WriteString("General_Use standard windows file selection dialog", "true");
    Figure("filedlg.open_raster_data_platform_dialog", OpenRasterDataMs(), "ms", {.limit = 400});
    DUserCnfg("Options").RemoveKey("General_Use standard windows file selection dialog");
});

Register const resolving("filedlg.resolve", [] {
    ZelvarInit();
    WarmReaders();
    constexpr int count = 1'000;
    Folder const folder;
    DVectorSafe<DFile> files;
    for (int i = 0; i < count; ++i) {
        DString const path = folder.Path() + "/image " + std::to_string(i) + ".tif";
        Tiff(path).AddPage(16, 16, 1);
        files.push_back(DFile(path));
    }
    DFileFrmt const tiff("GTiff", "GeoTIFF", "*.tif");
    int bits = 0;
    Pair const pair = Compare(
        3,
        [&] {
            DVector<BDIMoniker *> monikers;
            FileDlg::ResolveBDI(0, BDINode_Raster, &tiff, "", files, "*.tif", monikers, "");
            bits += static_cast<int>(monikers.size());
            for (BDIMoniker const *moniker : monikers)
                delete moniker;
        },
        [&] {
            for (DFile const &file : files) {
                RDIDriver *driver = nullptr;
                void *handle = nullptr;
                if (RDIDriverMngr::Instance()->OpenFile({file.GetMoniker(), nullptr}, &driver, &handle, "", nullptr,
                                                        "GTiff")) {
                    bits += driver->GetNumChnl(handle);
                    driver->CloseFile(handle, true);
                }
            }
        });
    Figure("filedlg.resolve_1000_files", pair.firstMs, "ms",
           {.alternatives = {{"opened one by one", pair.secondMs}}, .note = std::to_string(bits) + " items"});
    Figure("filedlg.resolve_to_opening", pair.ratio, "x", "of opening them plainly");
});

} // namespace
} // namespace zelvar::bench
