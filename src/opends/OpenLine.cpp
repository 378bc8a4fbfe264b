#include "zelvar/opends/OpenLine.h"

#include "zelvar/base/Translation.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/platform/ui/EllipsisLabel.h"
#include "zelvar/platform/ui/Text.h"

#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QStyle>

namespace zelvar {

QString ShownReason(DString const &reason) {
    QStringList lines = platform::ToQString(reason).split('\n');
    for (QString &line : lines)
        line = platform::ToShownName(platform::ToDString(line));
    return lines.join('\n');
}

OpenLine::OpenLine(QWidget *parent)
    : QWidget(parent), m_sign(new QLabel(this)), m_label(new platform::EllipsisLabel(this)),
      m_drivers(new CZelComboBox(this)) {
    auto *const row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(m_sign);
    row->addWidget(m_label, 1);
    row->addWidget(m_drivers);
    m_label->setAccessibleName(platform::Shown("What OK will do"));
    m_drivers->setAccessibleName(platform::Shown("Driver"));
    m_drivers->SetTooltip(Translated("Several drivers can read this"));
    m_drivers->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_sign->hide();
    m_drivers->hide();
    connect(m_drivers, &QComboBox::activated, this, [this](int index) {
        if (m_onDriver)
            m_onDriver(index);
    });
}

void OpenLine::Show(OpenOutcome const &outcome) {
    QString const text = platform::ToQString(outcome.text);
    m_label->SetText(text);
    m_label->setToolTip(outcome.reason.empty() ? QString()
                                               : platform::ToToolTip(text + "\n" + ShownReason(outcome.reason)));
    if (outcome.isUsable == m_sign->isHidden())
        return;
    int const side = fontMetrics().height();
    if (!outcome.isUsable)
        m_sign->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning, nullptr, this).pixmap(side, side));
    m_sign->setVisible(!outcome.isUsable);
}

void OpenLine::AddAtEnd(QWidget *widget) { layout()->addWidget(widget); }

void OpenLine::ShowDrivers(std::vector<DString> const &drivers, int chosen) {
    if (drivers != m_shownDrivers) {
        m_shownDrivers = drivers;
        m_drivers->ResetContent();
        for (DString const &id : drivers) {
            int const entry = m_drivers->AddString(id);
            if (RDIDriver const *const driver = RDIDriverMngr::Instance()->GetDriver(id.c_str()))
                m_drivers->setItemData(entry, platform::ToToolTip(platform::ToQString(driver->GetInfo())),
                                       Qt::ToolTipRole);
        }
        m_drivers->setVisible(drivers.size() > 1);
    }
    if (m_drivers->GetCurSel() != chosen)
        m_drivers->SetCurSel(chosen);
}

} // namespace zelvar
