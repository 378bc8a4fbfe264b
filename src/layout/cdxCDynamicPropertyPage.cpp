#include "zelvar/layout/cdxCDynamicPropertyPage.h"

namespace zelvar {

// The id and the name say which page it is; nothing is kept under them.
cdxCDynamicPropertyPage::cdxCDynamicPropertyPage(unsigned /*templateId*/, Freedom freedom, unsigned flags)
    : DynamicHost(freedom, flags) {
    m_bUseScrollPos = true;
}

cdxCDynamicPropertyPage::cdxCDynamicPropertyPage(char const * /*templateName*/, Freedom freedom, unsigned flags)
    : DynamicHost(freedom, flags) {
    m_bUseScrollPos = true;
}

cdxCDynamicPropertyPage::cdxCDynamicPropertyPage(platform::DialogTemplate const &dialogTemplate, Freedom freedom,
                                                 unsigned flags)
    : cdxCDynamicPropertyPage(0U, freedom, flags) {
    SetTemplate(dialogTemplate);
}

cdxCDynamicPropertyPage::~cdxCDynamicPropertyPage() { DoOnDestroy(); }

} // namespace zelvar
