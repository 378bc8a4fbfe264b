#include "zelvar/opends/TextQuestion.h"

#include "zelvar/platform/ui/ModalLoop.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QPointer>
#include <QtWidgets/QInputDialog>

namespace zelvar {

std::optional<DString> AskForText(QWidget *parent, char const *title, char const *label, DString const &text,
                                  std::vector<DString> const &choices) {
    QPointer<QWidget> const owner(parent);
    QInputDialog question(parent);
    question.setWindowTitle(platform::Shown(title));
    question.setLabelText(platform::Shown(label));
    if (!choices.empty()) {
        QStringList items;
        for (DString const &choice : choices)
            items << platform::ToQString(choice);
        question.setComboBoxItems(items);
        question.setComboBoxEditable(true);
    }
    question.setTextValue(platform::ToQString(text));
    question.setOkButtonText(platform::Shown("OK"));
    question.setCancelButtonText(platform::Shown("Cancel"));
    if (platform::RunModal(question) != QDialog::Accepted || owner.isNull())
        return std::nullopt;
    return DString(Trimmed(platform::ToDString(question.textValue())));
}

} // namespace zelvar
