#include "zelvar/data/BDINode.h"
#include "zelvar/library/ZelvarInit.h"
#include "zelvar/opends/DlgOpenDS.h"

#include <QtWidgets/QApplication>

#include <cstdio>

int main(int argc, char **argv) {
    QApplication const application(argc, argv);
    zelvar::ZelvarInit();
    zelvar::DFileFrmt all("", "All Files (*.*)", "*.*");
    zelvar::DlgOpenDS *dialog =
        zelvar::DlgOpenDS::CreateDialogObject({&all}, &all, zelvar::DT_DATA, "ImageFolders", nullptr);
    dialog->SetTitle("Open images");
    dialog->SetBDIFilter(zelvar::BDINode_Raster);
    dialog->SetInitDir(argc > 1 ? argv[1] : ".");
    if (dialog->DoModal() == QDialog::Accepted)
        for (zelvar::BDIMoniker const &moniker : dialog->GetSelectedNodePaths())
            std::puts(moniker.GetText().c_str());
    zelvar::DlgOpenDS::DeleteDialogObject(dialog);
    zelvar::ZelvarShutdown();
}
