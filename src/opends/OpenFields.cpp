#include "zelvar/opends/OpenFields.h"

#include "zelvar/base/Translation.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/opends/OpenDialogTemplate.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/settings/DfltFldrs.h"
#include "zelvar/store/DCnfg.h"

#include <QtWidgets/QAbstractItemView>
#include <QtWidgets/QCompleter>
#include <QtWidgets/QLineEdit>

#include <utility>

namespace zelvar {

using platform::GetDlgItem;

namespace {
constexpr char kFilterSection[] = "FileFilter";
} // namespace

OpenFields::OpenFields(QWidget &dialog, Actions actions)
    : m_places(GetDlgItem<CZelComboBox>(dialog, kHistoryId)), m_mask(GetDlgItem<QLineEdit>(dialog, kFileFilterId)),
      m_formats(GetDlgItem<CZelComboBox>(dialog, kFileTypeId)) {
    m_places->setLayoutDirection(Qt::LeftToRight); // as its paths are read
    m_places->setInsertPolicy(QComboBox::NoInsert);
    m_places->setAccessibleName(platform::Shown("Go to folder"));
    m_formats->setAccessibleName(platform::Shown("File Type"));
    m_mask->setAccessibleName(platform::Shown("File Name Filter"));

    connect(m_places, &QComboBox::activated, this,
            [this, goTo = std::move(actions.goTo)] { goTo(m_places->GetWindowText()); });
    // While entries are offered, their list takes the keys.
    connect(m_places->lineEdit(), &QLineEdit::returnPressed, this, [this, typed = std::move(actions.typed)] {
        QAbstractItemView const &offered = *m_places->completer()->popup();
        if (offered.isVisible() && !offered.currentIndex().isValid())
            typed();
    });
    connect(m_formats, &QComboBox::activated, this, [this, choose = std::move(actions.chooseFormat)] {
        if (m_formats->currentIndex() >= 0)
            choose(m_formats->GetItemData(m_formats->GetCurSel()));
    });
}

void OpenFields::FillPlaces(DString const &historyKey) {
    DVectorSafe<DString> folders;
    DfltFldrs::Instance()->GetDirHist(historyKey.c_str(), folders, true, true);
    m_places->ResetContent();
    for (DString const &folder : folders)
        m_places->AddString(folder);
    m_places->SetCurSel(-1);
}

void OpenFields::FillFormats(DVector<DFileFrmt *> const &formats, DFileFrmt const *present) {
    for (std::size_t i = 0; i < formats.size(); ++i) {
        if (formats[i] == nullptr || !formats[i]->IsSingleFileConnector())
            continue;
        m_formats->SetItemData(m_formats->AddString(Translated(formats[i]->GetName().c_str())), i);
    }
    // Without a matching format the box stays without a selection.
    m_formats->SetCurSel(-1);
    for (int entry = 0; entry < m_formats->GetCount(); ++entry)
        if (formats[m_formats->GetItemData(entry)] == present)
            m_formats->SetCurSel(entry);
}

DString OpenFields::Mask() const { return platform::ToDString(m_mask->text()); }

void OpenFields::SetMask(DString const &mask) { m_mask->setText(platform::ToQString(mask)); }

DString OpenFields::KeptMask(DString const &key) { return DUserCnfg(kFilterSection).ReadString(key, ""); }

void OpenFields::KeepMask(DString const &key) const { DUserCnfg(kFilterSection).WriteString(key, Mask()); }

} // namespace zelvar
