// The file dialog service with all of GDAL's formats: a dialog comes up, and what many chosen files become.
#include "Folders.h"
#include "Harness.h"
#include "reader/Tiff.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/DIOPluginMngr.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/data/gdal/GdalDrivers.h"
#include "zelvar/filedlg/FileDlg.h"
#include "zelvar/platform/ui/MainWindow.h"

#include <QtCore/QElapsedTimer>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDialog>
#include <QtWidgets/QMainWindow>

#include <algorithm>
#include <cstdlib>

namespace zelvar::bench {
namespace {

constexpr int kFiles = 1000;

/// Cancels the next dialog when it has been painted, and tells how long after its making that was.
class FirstDialog : public QObject {
public:
    FirstDialog() {
        qApp->installEventFilter(this);
        m_timer.start();
    }
    ~FirstDialog() override { qApp->removeEventFilter(this); }
    FirstDialog(FirstDialog const &) = delete;
    FirstDialog &operator=(FirstDialog const &) = delete;
    [[nodiscard]] double PaintedMs() const { return m_painted; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override {
        auto *const dialog =
            event->type() == QEvent::Paint && m_painted == 0 ? qobject_cast<QDialog *>(watched) : nullptr;
        if (dialog == nullptr)
            return false;
        m_painted = static_cast<double>(m_timer.nsecsElapsed()) / 1e6;
        QMetaObject::invokeMethod(dialog, &QDialog::reject, Qt::QueuedConnection);
        return false;
    }

private:
    QElapsedTimer m_timer;
    double m_painted = 0;
};

double OpenMs(std::string const &folder) {
    FileDlg request;
    request.SetInitFile(folder);
    FirstDialog const dialog;
    if (request.OpenRasterData(DIOPluginMngr::Instance(), 0, true, false, nullptr) || dialog.PaintedMs() == 0)
        std::abort();
    return dialog.PaintedMs();
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void Resolve(DVectorSafe<DFile> const &files, DFileFrmt const &format) {
    DVector<BDIMoniker *> monikers;
    FileDlg::ResolveBDI(0, BDINode_Raster, &format, "", files, "*.tif", monikers, nullptr);
    if (monikers.size() != kFiles || monikers.front()->GetDrvr() == nullptr)
        std::abort();
    for (BDIMoniker const *moniker : monikers)
        delete moniker;
}

void OpenPlainly(DVectorSafe<DFile> const &files, BDIDrvr &driver) {
    for (DFile const &file : files) {
        BDINode *root = nullptr;
        void *const repository = driver.OpenRepository(file.GetMoniker().c_str(), &root, nullptr);
        if (repository == nullptr)
            std::abort();
        driver.CloseNode(root);
        driver.CloseRepository(repository);
    }
}

Register const kFileDlg("filedlg", [] {
    SetDriverProvider([] { RegisterGdalDrivers(); });
    EnsureDrivers();
    Folder const folder;
    DVectorSafe<DFile> files;
    for (int i = 0; i < kFiles; ++i) {
        std::string const path = folder.Path() + "/" + std::to_string(i) + ".tif";
        Tiff(path).AddPage(16, 16, 1);
        files.push_back(DFile(path));
    }

    QMainWindow application;
    application.show();
    platform::SetMainWindow(&application);
    std::vector<double> opens;
    OpenMs(folder.Path());
    for (int run = 0; run < 9; ++run)
        opens.push_back(OpenMs(folder.Path()));
    Figure("filedlg.open_raster_data", Median(opens), "ms",
           "limit: 400 ms from the call to the painted dialog, all formats, a folder of 1,000 images");
    platform::SetMainWindow(nullptr);

    if (DIOPluginMngr::Instance()->Plugins().size() < 100)
        std::abort();
    double const formats = BestMs(9, [] {
        FileDlg request;
        request.AddIOPluginFilters(DIOPluginMngr::Instance(), 0, nullptr);
    });
    Figure("filedlg.format_list", formats, "ms", "limit: 10 ms for the formats of all plug-ins, in order");

    DFileFrmt const format("GTiff", "TIFF", "*.tif");
    BDIDrvr &driver = *BDIDrvrMngr::Instance()->GetDrvr("GTiff");
    Pair const pair = Compare(
        5, [&] { Resolve(files, format); }, [&] { OpenPlainly(files, driver); });
    Figure("filedlg.resolve_1000_files", pair.firstMs, "ms",
           "opened plainly: " + std::to_string(pair.secondMs) + " ms, ratio " + std::to_string(pair.ratio));
    BDIDrvrMngr::Instance()->Reset();
    DIOPluginMngr::Instance()->Reset();
});

} // namespace
} // namespace zelvar::bench
