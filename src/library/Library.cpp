#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/library/ZelvarInit.h"
#include "zelvar/platform/ui/UserMessages.h"

#include <QtGui/QFont>
#include <QtWidgets/QApplication>

namespace zelvar {

namespace {

bool g_started = false; // user-interface thread only

} // namespace

void ZelvarInit() {
    if (g_started)
        return;
    g_started = true;
    UseReaderDrivers();
    platform::InstallUserMessages();
    // The faces that documents and users' settings name, by those that are there and as wide.
    for (char const *face : {"MS Shell Dlg", "MS Shell Dlg 2", "MS Sans Serif", "Tahoma"})
        QFont::insertSubstitutions(face, {"Liberation Sans", "Arial"});
}

void ZelvarShutdown() {
    if (!g_started)
        return;
    g_started = false;
    EndReaders();
    platform::RemoveUserMessages();
}

} // namespace zelvar
