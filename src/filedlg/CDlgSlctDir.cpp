#include "zelvar/filedlg/CDlgSlctDir.h"

#include "zelvar/filedlg/PlatformFileDialog.h"
#include "zelvar/platform/ui/ModalLoop.h"
#include "zelvar/settings/DfltFldrs.h"
#include "zelvar/store/DCnfg.h"

#include <QtCore/QPointer>

namespace zelvar {

namespace {

constexpr char const *kSection = "Settings";

/// The open browser, if it was given a folder to start in: one without does not keep a second one away.
QPointer<QWidget> &OpenBrowser() {
    static QPointer<QWidget> browser;
    return browser;
}

} // namespace

DString const CDlgSlctDir::strPrtclDir = "Protocol Operation Folder";

void CDlgSlctDir::FindInitDir() {
    if (!m_key.empty() && m_initDir.empty())
        m_initDir = Profile::GetString(kSection, m_key, "");
    if (!m_initDir.empty())
        return;
    DVectorSafe<DString> history;
    DfltFldrs::Instance()->GetDirHist(m_key.c_str(), history, true, true);
    m_initDir = history[0];
}

int CDlgSlctDir::DoBrowse() {
    if (QWidget *const open = OpenBrowser()) {
        open->raise();
        open->activateWindow();
        return 0;
    }
    FindInitDir();
    auto dialog = PlatformFileDialog::Make({.picksFolder = true,
                                            .makesFolders = m_bNoNewFolderHidden,
                                            .title = m_title,
                                            .folder = PlatformFileDialog::StartFolder(m_initDir),
                                            .folderMasks = m_filter},
                                           m_hwndOwner);
    if (!m_initDir.empty()) {
        OpenBrowser() = dialog.get();
        dialog->setWindowFlag(Qt::WindowStaysOnTopHint);
    }
    bool const accepted = platform::RunModal(*dialog) == QDialog::Accepted;
    OpenBrowser() = nullptr;
    if (accepted)
        m_path = dialog->Chosen().front();
    PlatformFileDialog::End(std::move(dialog));
    if (!accepted)
        return 0;
    m_image = 0;
    if (!m_key.empty())
        Profile::WriteString(kSection, m_key, m_path);
    return 1;
}

} // namespace zelvar
