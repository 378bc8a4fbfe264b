#include "zelvar/filedlg/PathQuestions.h"
#include "zelvar/filedlg/PlatformFileDialog.h"
#include "zelvar/filedlg/ToolkitSettings.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QDir>
#include <QtGui/QFileSystemModel>
#include <QtWidgets/QApplication>

namespace zelvar {

DString PlatformFileDialog::StartFolder(DString wanted) {
    while (wanted.size() > 1 && wanted.ends_with('/'))
        wanted.pop_back();
    for (DString const &folder : {wanted, platform::ToDString(QDir::homePath())})
        if (folder.starts_with('/') && IsFolder(folder) && !HoldsDeadPlace(folder))
            return folder;
    return HoldsDeadPlace("/") ? "/proc/self/ns" : "/"; // a folder that is always there and holds nothing
}

std::unique_ptr<PlatformFileDialog> PlatformFileDialog::Make(Setup const &setup, QWidget *parent) {
    ToolkitSettings const apart;
    return std::unique_ptr<PlatformFileDialog>(new PlatformFileDialog(setup, parent));
}

void PlatformFileDialog::End(std::unique_ptr<PlatformFileDialog> dialog) {
    if (!dialog->m_isListing) {
        ToolkitSettings const apart;
        dialog.reset();
        return;
    }
    PlatformFileDialog *const left = dialog.release();
    left->hide();
    left->setParent(nullptr);
    auto const destroy = [left] {
        ToolkitSettings const apart;
        delete left;
    };
    connect(
        left->m_model, &QFileSystemModel::directoryLoaded, qApp,
        [destroy] { QMetaObject::invokeMethod(qApp, destroy, Qt::QueuedConnection); }, Qt::SingleShotConnection);
}

} // namespace zelvar
