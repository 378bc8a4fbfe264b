#include "zelvar/base/PathStyle.h"
#include "zelvar/base/Report.h"
#include "zelvar/data/PlaceCheck.h"
#include "zelvar/filedlg/NameBytes.h"
#include "zelvar/filedlg/PathQuestions.h"
#include "zelvar/filedlg/PlatformFileDialog.h"
#include "zelvar/filedlg/TypedPaths.h"
#include "zelvar/filedlg/core/TypedNames.h"
#include "zelvar/platform/ui/ModalLoop.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QFileSystemModel>
#include <QtWidgets/QAbstractItemView>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMessageBox>

#include <algorithm>

namespace zelvar {

void PlatformFileDialog::AcceptFolder() {
    DString const folder = PickedFolder();
    if (CanPick(folder)) {
        m_chosen = {folder};
        done(Accepted);
    } else if (GoTo(folder)) { // the file that it must hold may be further down
        m_name->clear();
    }
}

DString PlatformFileDialog::PickedFolder() const {
    bool const isOfRows = m_selectionText && *m_selectionText == m_name->text();
    std::vector<DString> const paths = isOfRows ? SelectedPaths(true) : PathsTyped();
    return paths.empty() ? Folder() : paths.front();
}

bool PlatformFileDialog::CanPick(DString const &folder) const {
    return IsFolder(folder) && (m_setup.folderMasks.empty() || HoldsMatch(folder, m_setup.folderMasks));
}

void PlatformFileDialog::accept() {
    if (m_setup.picksFolder)
        return AcceptFolder();
    bool const isEmpty = m_name->text().isEmpty();
    bool const isOfRows = isEmpty || (m_selectionText && *m_selectionText == m_name->text());
    // A long selection does not fit into the field.
    std::vector<DString> paths = isOfRows ? SelectedPaths(false) : std::vector<DString>();
    bool const areListed = !paths.empty() && m_setup.opens;
    if (paths.empty() && isEmpty)
        paths = SelectedPaths(true);
    if (paths.empty())
        paths = PathsTyped();
    if (paths.empty())
        return;
    if (!areListed && std::any_of(paths.begin(), paths.end(), [this](DString const &path) { return IsNoFile(path); }))
        return;
    if (m_setup.opens) {
        if (!std::all_of(paths.begin(), paths.end(), [this](DString &path) { return Typed().IsReadyForLoading(path); }))
            return;
    } else {
        paths.resize(1);
        paths.front() = Typed().Complete(std::move(paths.front()));
        if (IsNoFile(paths.front()) || !Typed().IsReadyForSaving(paths.front()) || !MayReplace(paths.front()))
            return;
    }
    m_chosen = std::move(paths);
    done(Accepted);
}

std::vector<DString> PlatformFileDialog::SelectedPaths(bool folders) const {
    std::vector<DString> paths;
    for (QModelIndex const &row : m_views.front()->selectionModel()->selectedRows())
        if (folders == m_model->isDir(row))
            paths.push_back(AppendPath(Folder(), NameBytes(Folder(), m_model->fileName(row))));
    return paths;
}

std::vector<DString> PlatformFileDialog::PathsTyped() const {
    if (m_name->text().trimmed().isEmpty())
        return {};
    if (m_name->text() == platform::ToQString(m_givenName))
        return {AbsolutePath(Folder(), m_givenName)};
    return Typed().Read(platform::ToDString(m_name->text()));
}

TypedPaths PlatformFileDialog::Typed() const { return {m_setup, Folder(), m_types->currentIndex()}; }

bool PlatformFileDialog::IsNoFile(DString const &path) {
    if (m_setup.locked && (ParentPathOf(path) != Folder() || IsFolder(path))) {
        Report::UserNotificationEnforced("The folder cannot be changed here");
        return true;
    }
    if (!DoesPlaceAnswer(path)) {
        Report::UserWarning("'%s' does not answer", path.c_str());
        return true;
    }
    if (IsFolder(path)) {
        if (GoTo(path))
            m_name->clear();
        return true;
    }
    // A "?" may be meant for a name to save under, where a "*" hardly is.
    bool const isMask = m_setup.opens ? IsMask(FileNameOf(path)) : FileNameOf(path).find('*') != DString::npos;
    if (isMask && !IsThere(path)) {
        ApplyMasks(DString(FileNameOf(path)));
        return true;
    }
    return false;
}

bool PlatformFileDialog::MayReplace(DString const &path) {
    if (!m_setup.asksOverwrite || !IsThere(path))
        return true;
    QMessageBox question(
        QMessageBox::Warning, windowTitle(),
        platform::Shown("%1 already exists.\nDo you want to replace it?").arg(platform::ToQString(FileNameOf(path))),
        QMessageBox::Yes | QMessageBox::No, this);
    question.setTextFormat(Qt::PlainText);
    question.setDefaultButton(QMessageBox::No);
    return platform::RunModal(question) == QMessageBox::Yes;
}

} // namespace zelvar
