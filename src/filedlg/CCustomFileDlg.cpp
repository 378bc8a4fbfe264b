#include "zelvar/filedlg/CCustomFileDlg.h"

#include "zelvar/filedlg/HistoryRow.h"
#include "zelvar/filedlg/PlatformFileDialog.h"
#include "zelvar/filedlg/SaveOptions.h"
#include "zelvar/layout/cdxCDynamicWndEx.h"
#include "zelvar/platform/ui/ModalLoop.h"
#include "zelvar/store/DCnfg.h"

#include <QtGui/QScreen>
#include <QtWidgets/QLayout>

namespace zelvar {

namespace {

enum Answer { kOk = 1, kCancel = 2 };

DString SizeSection() { return DString(cdxCDynamicWndEx::M_lpszAutoPosProfileSection) + "\\CCustomFileDlg"; }

void RestoreSize(QWidget &dialog, QSize const &usual) {
    QSize const most = dialog.screen()->availableSize();
    QSize const stored(Profile::GetInt(SizeSection(), "Width", usual.width()),
                       Profile::GetInt(SizeSection(), "Height", usual.height()));
    dialog.resize(stored.boundedTo(most).expandedTo(dialog.minimumSizeHint().expandedTo(dialog.minimumSize())));
}

void StoreSize(QWidget const &dialog) {
    if (dialog.isMaximized() || !Profile::HasRegistryKey())
        return;
    Profile::WriteInt(SizeSection(), "Width", dialog.width());
    Profile::WriteInt(SizeSection(), "Height", dialog.height());
}

} // namespace

CCustomFileDlg::CCustomFileDlg(bool open, char const *defaultExtension, char const *fileName, DString filter,
                               QWidget *parent, int templateId)
    : m_open(open), m_defaultExtension(defaultExtension == nullptr ? "" : defaultExtension),
      m_filter(std::move(filter)), m_parent(parent), m_templateId(templateId == 0 ? kHistoryTemplate : templateId) {
    m_ofn.file = fileName == nullptr ? "" : fileName;
}

int CCustomFileDlg::DoModal() {
    m_paths.clear();
    PlatformFileDialog::Setup const setup{
        .opens = m_open,
        .locked = (m_ofn.flags & OFN_NOCHANGEDIR) != 0,
        .multiple = m_open && (m_ofn.flags & OFN_ALLOWMULTISELECT) != 0,
        .asksOverwrite = (m_ofn.flags & OFN_OVERWRITEPROMPT) != 0,
        .title = m_ofn.title,
        .folder = PlatformFileDialog::StartFolder(m_ofn.initialDir),
        .file = m_ofn.file,
        .defaultExtension = m_defaultExtension,
        .filters = ParseFilterText(m_filter),
        .filterIndex = m_ofn.filterIndex - 1,
    };
    auto dialog = PlatformFileDialog::Make(setup, m_parent);
    auto *const row = new HistoryRow(m_templateId, *dialog);
    QObject::connect(row, &HistoryRow::FolderChosen, dialog.get(), &PlatformFileDialog::GoTo);
    dialog->AddRow(*row);
    SaveOptions *const options = m_driverOf ? new SaveOptions(*dialog, m_options) : nullptr;
    if (options != nullptr)
        dialog->AddRow(*options);
    QMargins const margins = dialog->layout()->contentsMargins();
    QSize const designed(row->width() + margins.left() + margins.right(), dialog->sizeHint().height());
    dialog->resize(designed);
    row->OnInitDone(m_hist, m_bHistory && !setup.locked, m_ofn.initialDir);
    RestoreSize(*dialog, designed.expandedTo(dialog->sizeHint()));
    if (options != nullptr) {
        auto const show = [this, options](int filter) { options->ShowDriver(m_driverOf(filter)); };
        QObject::connect(dialog.get(), &PlatformFileDialog::TypeChosen, options, show);
        show(dialog->FilterIndex());
    }

    bool const accepted = platform::RunModal(*dialog) == QDialog::Accepted;
    if (options != nullptr) {
        if (accepted)
            m_options = options->Take();
        options->Fold(); // the size is that without it
    }
    StoreSize(*dialog);
    m_ofn.filterIndex = dialog->FilterIndex() + 1;
    m_bReadOnly = row->IsReadOnly();
    m_bEditOnly = row->IsEditOnly();
    if (accepted)
        m_paths = dialog->Chosen();
    PlatformFileDialog::End(std::move(dialog));
    return accepted ? kOk : kCancel;
}

DString CCustomFileDlg::GetNextPathName(std::size_t &position) const {
    if (position == 0 || position > m_paths.size())
        return position = 0, DString();
    DString path = m_paths[position - 1];
    position = position == m_paths.size() ? 0 : position + 1;
    return path;
}

} // namespace zelvar
