#include "zelvar/opends/ImageExtraWnd.h"

#include "zelvar/base/DFile.h"
#include "zelvar/opends/FormPage.h"
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
    m_page = new FormPage(ParseHtmlForm(html), nullptr);
    connect(m_page, &FormPage::Pressed, this, &ImageExtraWnd::OnPressed);
    setWidget(m_page);
}

DString ImageExtraWnd::ReadOptionText() const {
    return m_page == nullptr || m_optionsName.empty() ? DString() : MakeOptionText(m_page->Fields());
}

void ImageExtraWnd::ApplyOptions() { m_optionText = ReadOptionText(); }

void ImageExtraWnd::OnPressed(QString const &id) {
    if (id != "Apply")
        return;
    DString text = ReadOptionText();
    if (text == m_optionText)
        return;
    m_optionText = std::move(text);
    if (m_applyMsg != 0)
        platform::PostMessage(m_owner.isNull() ? parent() : m_owner.data(), m_applyMsg);
}

} // namespace zelvar
