#include "zelvar/opends/ImageExtraWnd.h"

#include "zelvar/base/DFile.h"
#include "zelvar/opends/FormPage.h"
#include "zelvar/opends/OptionPage.h"
#include "zelvar/platform/ui/Text.h"

namespace zelvar {

ImageExtraWnd::ImageExtraWnd(QWidget *parent) : QScrollArea(parent) {
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setAccessibleName(platform::Shown("Options"));
}

void ImageExtraWnd::Navigate(DString const &path) {
    if (path.empty() || path == m_pageUrl)
        return;
    m_pageUrl = path;
    DString html;
    DFile(path).ReadAll(html, kMaxPageBytes);
    m_optionPage = nullptr;
    m_page = new FormPage(ParseHtmlForm(html), nullptr);
    connect(m_page, &FormPage::Pressed, this, &ImageExtraWnd::OnPressed);
    setWidget(m_page);
}

void ImageExtraWnd::ShowOptions(DString const &driverId, std::vector<DriverOption> const &options,
                                OptionValues const &values) {
    DString url = "driver:" + driverId; // no path
    if (m_optionPage == nullptr || url != m_pageUrl) {
        m_pageUrl = std::move(url);
        m_page = nullptr;
        m_optionPage = new OptionPage(driverId, options, nullptr);
        connect(m_optionPage, &OptionPage::Changed, this, &ImageExtraWnd::TakeOptions);
        setWidget(m_optionPage);
    }
    m_optionPage->SetValues(values);
    m_optionText = ReadOptionText();
}

OptionValues ImageExtraWnd::GetValues() const {
    return m_optionPage == nullptr ? OptionValues() : m_optionPage->Values();
}

DString ImageExtraWnd::ReadOptionText() const {
    if (m_optionPage != nullptr)
        return m_optionPage->Text();
    return m_page == nullptr || m_optionsName.empty() ? DString() : MakeOptionText(m_page->Fields());
}

void ImageExtraWnd::ApplyOptions() { m_optionText = ReadOptionText(); }

void ImageExtraWnd::OnPressed(QString const &id) {
    if (id == "Apply")
        TakeOptions();
}

void ImageExtraWnd::TakeOptions() {
    DString text = ReadOptionText();
    if (text == m_optionText)
        return;
    m_optionText = std::move(text);
    if (m_applyMsg != 0)
        platform::PostMessage(m_owner.isNull() ? parent() : m_owner.data(), m_applyMsg);
}

} // namespace zelvar
