#include "zelvar/base/PathStyle.h"
#include "zelvar/base/Report.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/filedlg/NameBytes.h"
#include "zelvar/filedlg/PathQuestions.h"
#include "zelvar/filedlg/PlatformFileDialog.h"
#include "zelvar/filedlg/UndecodedNames.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QDir>
#include <QtGui/QFileSystemModel>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLineEdit>

#include <tuple>
#include <utility>

namespace zelvar {

namespace {

constexpr std::size_t kMostVisits = 100;

void Remember(std::vector<DString> &visits, DString folder) {
    if (visits.size() == kMostVisits)
        visits.erase(visits.begin());
    visits.push_back(std::move(folder));
}

} // namespace

bool PlatformFileDialog::ShowFolder(DString const &folder) {
    if (m_setup.locked)
        return false;
    if (!IsFolder(folder)) {
        Report::UserNotificationEnforced("Folder '%s' not found", folder.c_str());
        return false;
    }
    if (HoldsDeadPlace(folder)) {
        Report::UserNotificationEnforced("Folder '%s' holds a place that does not answer", folder.c_str());
        return false;
    }
    // A name that was typed stays; one that came from a row to be loaded is not in the other folder.
    bool const isOfRows = m_setup.opens && m_selectionText && *m_selectionText == m_name->text();
    QString const name = isOfRows || m_setup.picksFolder ? QString() : m_name->text();
    auto const former = std::exchange(m_folder, std::make_unique<FolderAlias const>(folder));
    m_undecoded->clear();
    setDirectory(m_folder->Path());
    m_name->setText(name);
    m_selectionText.reset();
    m_changed = ChangeTime(folder);
    FillFolderBox();
    return true;
}

void PlatformFileDialog::FillFolderBox() {
    m_folderBox->ResetContent();
    for (DString folder = Folder();; folder = DString(ParentPathOf(folder))) {
        m_folderBox->AddString(folder);
        if (ParentPathOf(folder) == folder || ParentPathOf(folder).empty())
            break;
    }
    DString const home = platform::ToDString(QDir::homePath());
    if (m_folderBox->FindStringExact(home) < 0)
        m_folderBox->AddString(home);
    m_folderBox->SetCurSel(0);
}

bool PlatformFileDialog::GoTo(DString const &folder) {
    DString former = Folder();
    if (folder == former)
        return true;
    if (!ShowFolder(folder))
        return false;
    Remember(m_back, std::move(former));
    m_forward.clear();
    UpdateButtons();
    return true;
}

void PlatformFileDialog::GoUp() {
    DString const parent(ParentPathOf(Folder()));
    if (!parent.empty())
        GoTo(parent);
}

void PlatformFileDialog::Revisit(std::vector<DString> &from, std::vector<DString> &to) {
    if (from.empty())
        return;
    DString const folder = std::move(from.back());
    from.pop_back();
    DString former = Folder();
    if (ShowFolder(folder))
        Remember(to, std::move(former));
    UpdateButtons();
}

void PlatformFileDialog::OnActivated(QModelIndex const &index) {
    // Where a single click activates, this one only selects.
    bool const onlySelects = (QApplication::keyboardModifiers() & (Qt::ControlModifier | Qt::ShiftModifier)) != 0;
    if (m_setup.multiple && onlySelects)
        return;
    if (m_model->isDir(index))
        GoTo(AppendPath(Folder(), NameBytes(Folder(), m_model->fileName(index))));
    else
        accept();
}

void PlatformFileDialog::Refresh() {
    m_changed = ChangeTime(Folder());
    if (m_changed == 0 || HoldsDeadPlace(Folder()))
        return;
    // The toolkit reads a folder only when it comes from another one.
    QSignalBlocker const quiet(m_model);
    m_isListing = true;
    std::ignore = m_model->setRootPath({});
    std::ignore = m_model->setRootPath(m_folder->Path());
}

void PlatformFileDialog::RefreshIfChanged() {
    std::int64_t const changed = ChangeTime(Folder());
    if (changed != 0 && changed != m_changed)
        Refresh();
}

void PlatformFileDialog::changeEvent(QEvent *event) {
    QFileDialog::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        RefreshIfChanged();
}

bool PlatformFileDialog::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() != QEvent::KeyPress)
        return QFileDialog::eventFilter(watched, event);
    auto const *const key = static_cast<QKeyEvent *>(event);
    if (key->key() == Qt::Key_Backspace || key->key() == Qt::Key_Back)
        GoUp();
    else if (key->key() == Qt::Key_Left && (key->modifiers() & Qt::AltModifier) != 0)
        Revisit(m_back, m_forward);
    else
        return QFileDialog::eventFilter(watched, event);
    return true;
}

} // namespace zelvar
