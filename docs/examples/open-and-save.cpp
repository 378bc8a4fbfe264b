#include "zelvar/Zelvar.h"

#include <QtWidgets/QApplication>
#include <QtWidgets/QMainWindow>

#include <cstdio>

int main(int argc, char **argv) {
    QApplication const application(argc, argv);
    zelvar::Library const library;
    zelvar::DFileFrmt projects("PRJ", "Projects", "*.prj");
    zelvar::FileDlg::pFrmt_prjct = &projects; // the application's documents; GDAL's formats are there
    QMainWindow window;                       // without a main window images come from the platform's dialog
    zelvar::FileDlg load;
    if (load.OpenRasterData(zelvar::DIOPluginMngr::Instance(), 0, true, true, nullptr))
        for (int i = 0; i < load.GetNumSlctFiles(); ++i)
            std::puts(load.GetFile(i)->GetText().c_str());
    zelvar::FileDlg save;
    save.SetInitFile("untitled.prj");
    if (save.OpenPrjct(1))
        std::puts(save.GetPhysFile().c_str());
}
