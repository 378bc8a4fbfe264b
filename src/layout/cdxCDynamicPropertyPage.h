#pragma once

#include "zelvar/layout/DynamicHost.h"

namespace zelvar {

/// Dynamic property page: a page of a tabbed window whose controls follow its size. It scrolls its children and never
/// stores its position.
class ZELVAR_API cdxCDynamicPropertyPage : public DynamicHost<QWidget> {
    Q_OBJECT
public:
    explicit cdxCDynamicPropertyPage(unsigned templateId, Freedom freedom = FreedomAll, unsigned flags = kDefaultFlags);
    explicit cdxCDynamicPropertyPage(char const *templateName, Freedom freedom = FreedomAll,
                                     unsigned flags = kDefaultFlags);
    /// The controls come from the table.
    explicit cdxCDynamicPropertyPage(platform::DialogTemplate const &dialogTemplate, Freedom freedom = FreedomAll,
                                     unsigned flags = kDefaultFlags);
    ~cdxCDynamicPropertyPage() override;
};

} // namespace zelvar
