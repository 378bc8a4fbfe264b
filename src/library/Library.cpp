#include "zelvar/base/Translation.h"
#include "zelvar/connections/ConnectionBook.h"
#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/filedlg/CCustomFileDlg.h"
#include "zelvar/filedlg/FileDlg.h"
#include "zelvar/library/ZelvarInit.h"
#include "zelvar/lists/SaveTarget.h"
#include "zelvar/opends/core/FileQuestion.h"
#include "zelvar/platform/ui/Language.h"
#include "zelvar/platform/ui/UserMessages.h"

#include <QtGui/QFont>
#include <QtWidgets/QApplication>

namespace zelvar {

namespace {

bool g_started = false; // user-interface thread only

/// Where a list's contents go is asked by the file dialog service, which stands above the lists.
std::optional<TableTarget> AskByFileDialog(QWidget *, char const *title) {
    FileDlg request;
    if (!request.OpenSaveCSV(title))
        return std::nullopt;
    DFileFrmt const *const format = request.GetFormat();
    return TableTarget{.path = request.GetPhysFile(), .formatId = format == nullptr ? DString() : format->GetID()};
}

std::optional<DString> AskForAnyFile(QWidget *parent, FileQuestion const &question) {
    DString const filter = DString(Translated(question.kind)) + "|*." + question.extension + "||";
    CCustomFileDlg dialog(!question.saves, question.extension, question.saves ? question.name : "", filter, parent);
    dialog.GetOFN().title = Translated(question.title);
    dialog.EnableHistory(false);
    constexpr int ok = 1;
    std::size_t at = dialog.DoModal() == ok ? dialog.GetStartPosition() : 0;
    return at == 0 ? std::nullopt : std::optional(dialog.GetNextPathName(at));
}

} // namespace

void ZelvarInit() {
    if (g_started)
        return;
    g_started = true;
    BeginWithUsersLanguage();
    UseReaderDrivers();
    UseDefinedConnections();
    platform::InstallUserMessages();
    SetSaveTargetProvider(&AskByFileDialog);
    SetFileQuestionProvider(&AskForAnyFile);
    // The faces that documents and users' settings name, by those that are there and as wide.
    for (char const *face : {"MS Shell Dlg", "MS Shell Dlg 2", "MS Sans Serif", "Tahoma"})
        QFont::insertSubstitutions(face, {"Liberation Sans", "Arial"});
}

void ZelvarShutdown() {
    if (!g_started)
        return;
    g_started = false;
    EndReaders();
    SetConnectionFinder({});
    platform::RemoveUserMessages();
    SetSaveTargetProvider(nullptr);
    SetFileQuestionProvider(nullptr);
}

} // namespace zelvar
