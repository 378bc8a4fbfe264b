#include "zelvar/base/NormalPath.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/base/Report.h"
#include "zelvar/data/PlaceCheck.h"
#include "zelvar/filedlg/NameBytes.h"
#include "zelvar/filedlg/PathQuestions.h"
#include "zelvar/filedlg/PlatformFileDialog.h"
#include "zelvar/filedlg/core/TypedNames.h"
#include "zelvar/platform/ui/ModalLoop.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QDir>
#include <QtGui/QFileSystemModel>
#include <QtWidgets/QAbstractItemView>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMessageBox>

#include <algorithm>
#include <climits>

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
    std::vector<DString> const paths = isOfRows ? SelectedPaths(true) : TypedPaths();
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
        paths = TypedPaths();
    if (paths.empty())
        return;
    if (!areListed && std::any_of(paths.begin(), paths.end(), [this](DString const &path) { return IsNoFile(path); }))
        return;
    if (m_setup.opens) {
        if (!std::all_of(paths.begin(), paths.end(), [this](DString &path) { return IsReadyForLoading(path); }))
            return;
    } else {
        paths.resize(1);
        paths.front() = WithExtension(std::move(paths.front()), ExtensionToAdd(), OfferedMasks());
        if (IsNoFile(paths.front()) || !IsReadyForSaving(paths.front()))
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

std::vector<DString> PlatformFileDialog::TypedPaths() const {
    if (m_name->text().trimmed().isEmpty())
        return {};
    if (m_name->text() == platform::ToQString(m_givenName))
        return {AbsolutePath(Folder(), m_givenName)};
    DString const typed = platform::ToDString(m_name->text());
    std::vector<DString> const names = SplitTypedNames(typed);
    bool const isOneName = names.size() > 1 && !m_setup.multiple;
    std::vector<DString> paths;
    if (isOneName || IsThere(PathOf(typed))) // such a file may have quotes or blanks about its name
        paths.push_back(PathOf(typed));
    else
        std::transform(names.begin(), names.end(), std::back_inserter(paths),
                       [this](DString const &name) { return PathOf(name); });
    return paths;
}

DString PlatformFileDialog::PathOf(DString const &typed) const {
    bool const ofHome = typed == "~" || typed.starts_with("~/");
    DString const text = ofHome ? platform::ToDString(QDir::homePath()) + typed.substr(1) : typed;
    DString const path = NormalPath(text.starts_with('/') ? text : AppendPath(Folder(), text), &DoesPlaceAnswer);
    return DoesPlaceAnswer(path) ? PathBytes("/", path) : path;
}

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

bool PlatformFileDialog::IsReadyForLoading(DString &path) const {
    if (IsThere(path))
        return true;
    DString extended = PathBytes("/", WithExtension(path, ExtensionToAdd(), OfferedMasks()));
    if (IsThere(extended)) {
        path = std::move(extended);
        return true;
    }
    Report::UserWarning("File '%s' not found", path.c_str());
    return false;
}

bool PlatformFileDialog::IsReadyForSaving(DString const &path) {
    DString const folder(ParentPathOf(path));
    if (!IsFolder(folder)) {
        Report::UserNotificationEnforced("Folder '%s' not found", folder.c_str());
        return false;
    }
    if (FileNameOf(path).size() > NAME_MAX) {
        Report::UserWarning("The name is too long");
        return false;
    }
    if (IsThere(path)) {
        if (IsWritable(path))
            return !m_setup.asksOverwrite || MayReplace(path);
        Report::UserWarning("File '%s' is read-only", path.c_str());
        return false;
    }
    if (IsWritable(folder))
        return true;
    Report::UserWarning("Nothing can be saved in the folder '%s'", folder.c_str());
    return false;
}

bool PlatformFileDialog::MayReplace(DString const &path) {
    QMessageBox question(
        QMessageBox::Warning, windowTitle(),
        platform::Shown("%1 already exists.\nDo you want to replace it?").arg(platform::ToQString(FileNameOf(path))),
        QMessageBox::Yes | QMessageBox::No, this);
    question.setTextFormat(Qt::PlainText);
    question.setDefaultButton(QMessageBox::No);
    return platform::RunModal(question) == QMessageBox::Yes;
}

DString PlatformFileDialog::OfferedMasks() const {
    std::vector<DString> masks{m_setup.defaultExtension.find('*') != DString::npos ? m_setup.defaultExtension : ""};
    for (FileFilter const &filter : m_setup.filters)
        masks.push_back(filter.masks);
    return JoinNotEmpty(masks, ';');
}

DString PlatformFileDialog::ExtensionToAdd() const {
    auto const chosen = static_cast<std::size_t>(std::max(0, m_types->currentIndex()));
    return DefaultExtension(chosen < m_setup.filters.size() ? m_setup.filters[chosen].masks : DString(),
                            m_setup.defaultExtension);
}

} // namespace zelvar
