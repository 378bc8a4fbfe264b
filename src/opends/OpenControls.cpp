#include "zelvar/opends/OpenControls.h"

#include "zelvar/controls/CZelButton.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/opends/OpenDialogTemplate.h"
#include "zelvar/opends/OpenLine.h"
#include "zelvar/platform/ui/ControlId.h"

namespace zelvar {

QWidget *MakeOpenControl(QWidget &dialog, platform::DialogItem const &item) {
    if (item.id == kLineId)
        return new OpenLine(&dialog);
    switch (item.kind) {
    case platform::ControlKind::Combo:
    case platform::ControlKind::DropDownList: {
        auto *combo = new CZelComboBox(&dialog);
        combo->SetEditable(item.kind == platform::ControlKind::Combo);
        return combo;
    }
    case platform::ControlKind::Button:
    case platform::ControlKind::CheckButton: {
        if (item.id == kCancelId)
            return nullptr;
        auto *button = new CZelButton(&dialog);
        button->setCheckable(item.kind == platform::ControlKind::CheckButton);
        return button;
    }
    default:
        return nullptr;
    }
}

CZelButton *SetUpToolButton(QWidget &dialog, int id, char const *picture, char const *tip) {
    auto *button = platform::GetDlgItem<CZelButton>(dialog, id);
    button->setFlat(true);
    button->SetImage(picture);
    button->SetTooltip(tip);
    return button;
}

} // namespace zelvar
