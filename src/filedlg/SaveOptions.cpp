#include "zelvar/filedlg/SaveOptions.h"

#include "zelvar/data/DriverOptions.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/opends/DriverOptionChoice.h"
#include "zelvar/opends/OptionPage.h"
#include "zelvar/platform/ui/Text.h"

#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QVBoxLayout>

namespace zelvar {

namespace {

constexpr std::chrono::seconds kPatience{2};
constexpr int kLines = 9; // of text, that the page is high

} // namespace

SaveOptions::SaveOptions(QWidget &dialog, DString const &given)
    : QWidget(&dialog), m_dialog(dialog),
      m_choice(std::make_unique<DriverOptionChoice>(DriverOptionChoice::Use::Writing)),
      m_button(new QPushButton(platform::Shown("Options..."), this)), m_area(new QScrollArea(this)) {
    m_choice->SetGiven(given);
    m_button->setCheckable(true);
    m_button->setAutoDefault(false);
    m_button->setObjectName("options");
    m_area->setWidgetResizable(true);
    m_area->setAccessibleName(platform::Shown("Options"));
    m_area->setFixedHeight(fontMetrics().lineSpacing() * kLines);
    m_area->hide();
    auto *const lines = new QVBoxLayout(this);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->addWidget(m_button, 0, Qt::AlignLeft);
    lines->addWidget(m_area);
    connect(m_button, &QPushButton::clicked, this, &SaveOptions::Unfold);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    hide();
}

SaveOptions::~SaveOptions() = default;

void SaveOptions::ShowDriver(DString const &driverId) {
    Keep();
    {
        RequestScope const scope(RequestKind::Probe, {}, kPatience);
        m_choice->SetDriver(driverId, DriverOptions(driverId));
    }
    delete m_area->takeWidget();
    m_page = nullptr;
    if (m_choice->HasPage()) {
        m_page = new OptionPage(driverId, m_choice->Options(), nullptr);
        m_page->SetValues(m_choice->ValuesFor({}, {}));
        m_area->setWidget(m_page);
    }
    setVisible(m_page != nullptr);
    Unfold(m_page != nullptr && (m_button->isChecked() || !m_page->Text().empty()));
}

void SaveOptions::Unfold(bool unfold) {
    m_button->setChecked(unfold);
    if (m_area->isHidden() != unfold)
        return;
    int const growth = m_area->height() + layout()->spacing();
    m_area->setVisible(unfold);
    m_dialog.layout()->activate();
    m_dialog.resize(m_dialog.width(), m_dialog.height() + (unfold ? growth : -growth));
}

void SaveOptions::Keep() {
    if (m_page != nullptr && m_page->Text() != ToOptionText(m_choice->Options(), m_choice->ValuesFor({}, {})))
        m_choice->Change({DString()}, m_page->Values());
}

DString SaveOptions::Take() {
    Keep();
    m_choice->Save();
    return m_choice->TextFor({}, {});
}

} // namespace zelvar
