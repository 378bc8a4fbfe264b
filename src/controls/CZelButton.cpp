#include "zelvar/controls/CZelButton.h"

#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/Text.h"

namespace zelvar {

CZelButton::CZelButton(QWidget *parent) : QPushButton(parent) {
    setAutoDefault(false);
    setIconSize(QSize(platform::kSmallPicture, platform::kSmallPicture));
}

void CZelButton::SetImage(DString const &name) {
    setIcon(name.empty() ? QIcon() : platform::ResourceIcon(platform::ToQString(name)));
}

void CZelButton::SetTooltip(DString const &text) {
    setToolTip(platform::ToToolTip(platform::ToQString(text)));
    if (this->text().isEmpty())
        setAccessibleName(platform::ToQString(text));
}

} // namespace zelvar
