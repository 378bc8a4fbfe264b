// Which dialog a request gets, and how each is filled and read.
#include "zelvar/base/PathStyle.h"
#include "zelvar/filedlg/CCustomFileDlg.h"
#include "zelvar/filedlg/FileDlg.h"
#include "zelvar/filedlg/RememberedFolders.h"
#include "zelvar/opends/DlgOpenDS.h"
#include "zelvar/platform/ui/MainWindow.h"
#include "zelvar/settings/DfltFldrs.h"
#include "zelvar/store/DCnfg.h"

#include <QtWidgets/QApplication>

#include <memory>

namespace zelvar {

namespace {

constexpr char kOptionsSection[] = "Options";
constexpr char kStandardDialogOption[] = "General_Use standard windows file selection dialog";

bool IsPresent(char const *text) { return text != nullptr && *text != '\0'; }

/// The library's own dialog is for loading, over the application's main window.
bool TakesOwnDialog(int mode) {
    return DUserCnfg(kOptionsSection).ReadString(kStandardDialogOption, "") != "true" && mode == 0 &&
           platform::IsWindowThread() && platform::HasFrame(platform::MainWindow());
}

/// The place without the options behind it.
DString InitialPlace(DString const &place) {
    bool const mayHaveOptions = place.find('?') != DString::npos && !IsUrl(place) && AnswersSoon(place);
    return mayHaveOptions ? BDIMoniker(place, nullptr).GetSource() : place;
}

/// The path on disk that the platform's dialog begins at, split where its parts are asked for. A folder may be written
/// without a separator at its end.
DFile InitialFile(DString const &place, int mode) {
    if (!AnswersSoon(place))
        return DFile(place);
    DFile const file(InitialMoniker(place, mode).GetPathOnDisk());
    DString const name = file.GetPhysFileName();
    bool const isFolder = !name.empty() && name != "." && name != ".." && file.IsDirectory();
    return isFolder ? DFile(file.GetMoniker() + PathStyle::Native().separator) : file;
}

struct DeleteDialog {
    void operator()(DlgOpenDS *dialog) const { DlgOpenDS::DeleteDialogObject(dialog); }
};

} // namespace

bool FileDlg::OpenMFCFileDlg(int mode, char const *filter, int index, char const *ext, char const *key,
                             DLGTemplate dlgTemplate) {
    if (TakesOwnDialog(mode))
        return OpenMFCFileDlgNew(0, filter, index, ext, key, dlgTemplate);
    if (platform::IsWindowThread())
        return OpenMFCFileDlgOld(mode, filter, index, ext, key);
    bool opened = false;
    return platform::CallOnWindowThread([&] { opened = OpenMFCFileDlgOld(mode, filter, index, ext, key); }) && opened;
}

bool FileDlg::OpenMFCFileDlgNew(int, char const *, int, char const *, char const *key, DLGTemplate dlgTemplate) {
    DVector<DFileFrmt *> const &formats = m_request.offer.All();
    DFileFrmt *const first = formats.empty() ? nullptr : formats.front();
    if (m_request.format == nullptr)
        m_request.format = first;
    std::unique_ptr<DlgOpenDS, DeleteDialog> dialog(
        DlgOpenDS::CreateDialogObject(formats, m_request.format, dlgTemplate, key, nullptr));
    if (dialog == nullptr)
        return false;
    dialog->SetBDIFilter(m_request.nodeMask);
    dialog->SetSeriesMode(m_request.seriesMode);
    dialog->OfferBasket(m_request.multipleFiles);
    dialog->SetOptions(m_request.options);
    // Also an address, a node inside a container or a connection: the dialog looks for it once it can be seen.
    dialog->SetInitDir(InitialPlace(m_request.initFile).c_str());
    dialog->SetTitle(m_request.caption.c_str());
    // Before the dialog runs: after a cancel the current format is the first, not what the caller had.
    m_request.format = first;
    bool const accepted = dialog->DoModal() == QDialog::Accepted;
    if (accepted) {
        m_request.format = dialog->GetFormat();
        for (BDIMoniker const &moniker : dialog->GetSelectedNodePaths())
            m_files.push_back(new BDIMoniker(moniker));
        m_request.isOrdered = dialog->IsOrdered();
        m_request.chckReadOnly = dialog->GetReadOnly();
        m_request.chckEditOnly = dialog->GetEditOnly();
        m_request.dataSourceType = dialog->GetDataSourceType();
    }
    dialog.reset();
    if (m_files.empty() || !accepted)
        return false;
    SaveHistory(key);
    return true;
}

bool FileDlg::OpenMFCFileDlgOld(int mode, char const *filter, int index, char const *ext, char const *key) {
    CCustomFileDlg dialog(mode == 0, ext, nullptr, filter == nullptr ? "" : filter, nullptr, m_request.dlgTmplId);
    OpenFileName &wanted = dialog.GetOFN();
    DVectorSafe<DString> history;
    DfltFldrs::Instance()->GetDirHist(key, history, true, true);
    history = FoldersAmong(history);
    if (!m_request.overwritePrompt)
        wanted.flags &= ~unsigned{OFN_OVERWRITEPROMPT};
    if (m_request.noChangeDir) {
        wanted.flags |= OFN_NOCHANGEDIR | OFN_ENABLEHOOK;
        key = nullptr;
    }
    if (m_request.multipleFiles)
        wanted.flags |= OFN_ALLOWMULTISELECT;
    dialog.EnableHistory(IsPresent(key));
    if (IsPresent(key))
        dialog.SetHistory(history);

    DFile const initial = InitialFile(m_request.initFile, mode);
    DString folder = DFile(initial.GetPhysFilePath()).GetAbsolutePath();
    if (folder.empty() && !history.empty())
        folder = history[0];
    if (!folder.empty() && CanBeginIn(folder, mode))
        wanted.initialDir = folder;
    if (DString const name = initial.GetPhysFileName(); name != "." && name != "..")
        wanted.file = name;
    wanted.title = m_request.caption;
    wanted.filterIndex = index + 1;
    dialog.SetOptions(m_request.options);
    std::vector<DFileFrmt *> const offered = OfferedFormats(); // the entries of the type box are the formats there are
    if (mode != 0 && (DlgOpenDS::GetFeatures() & kOpenOptions) != 0)
        dialog.OfferOptions([&](int type) {
            auto const at = static_cast<std::size_t>(type);
            bool const isPlugin = at < offered.size() && m_request.offer.Owns(offered[at]);
            return isPlugin ? offered[at]->GetID() : DString();
        });
    if (dialog.DoModal() != QDialog::Accepted)
        return false;

    DVectorSafe<DFile> files;
    for (std::size_t at = dialog.GetStartPosition(); at != 0;)
        files.push_back(DFile(dialog.GetNextPathName(at)));
    m_request.chckReadOnly = dialog.GetReadOnly();
    m_request.chckEditOnly = dialog.GetEditOnly();
    auto const chosen = static_cast<std::size_t>(dialog.GetOFN().filterIndex) - 1;
    m_request.format = chosen < offered.size() ? offered[chosen] : nullptr;
    m_request.options = dialog.GetOptions();
    if (!ResolveBDI(mode, m_request.nodeMask, m_request.format, m_request.caption, files, ext, m_files,
                    m_request.options.c_str()))
        return false;
    SaveHistory(key);
    return true;
}

} // namespace zelvar
