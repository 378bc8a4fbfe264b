#include "zelvar/opends/OptionPage.h"

#include "zelvar/opends/FormPage.h"
#include "zelvar/opends/form/OptionForm.h"
#include "zelvar/platform/ui/PaletteColors.h"
#include "zelvar/platform/ui/Text.h"

#include <QtWidgets/QLineEdit>
#include <QtWidgets/QVBoxLayout>

#include <algorithm>
#include <utility>

namespace zelvar {

OptionPage::OptionPage(DString const &title, std::vector<DriverOption> options, QWidget *parent)
    : QWidget(parent), m_options(std::move(options)), m_page(new FormPage(MakeOptionForm(title, m_options), this)) {
    auto *const whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(m_page);
    connect(m_page, &FormPage::Changed, this, &OptionPage::Tell);
    connect(m_page, &FormPage::Typed, this, [this](QLineEdit *field) { ShowFault(*field); });
    connect(m_page, &FormPage::Pressed, this, [this] {
        DString const told = m_told;
        SetValues({});
        m_told = told;
        Tell();
    });
}

void OptionPage::SetValues(OptionValues const &values) {
    for (DriverOption const &option : m_options) {
        auto const value = values.find(option.name);
        m_page->SetValue(option.name, ShownValue(option, value == values.end() ? DString() : value->second));
    }
    m_told = Text();
}

OptionValues OptionPage::Values() const { return m_page->Values(); }

void OptionPage::Tell() {
    DString text = Text();
    if (std::exchange(m_told, text) != text)
        Q_EMIT Changed();
}

void OptionPage::ShowFault(QLineEdit &field) const {
    DString const name = platform::ToDString(field.objectName());
    auto const option =
        std::find_if(m_options.begin(), m_options.end(), [&](DriverOption const &known) { return known.name == name; });
    if (option == m_options.end())
        return;
    DString const fault = FaultText(*option, platform::ToDString(field.text()));
    QPalette palette; // without a fault that of the page
    if (!fault.empty())
        palette.setColor(QPalette::Text, platform::IsPaletteDark() ? QColor(255, 130, 120) : QColor(190, 0, 0));
    field.setPalette(palette);
    field.setToolTip(platform::ToQString(fault.empty() ? option->description : fault));
    field.setAccessibleDescription(field.toolTip());
}

} // namespace zelvar
