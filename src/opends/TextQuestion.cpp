#include "zelvar/opends/TextQuestion.h"

#include "zelvar/platform/ui/ModalLoop.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QPointer>
#include <QtWidgets/QInputDialog>
#include <QtWidgets/QLineEdit>

namespace zelvar {

namespace {

constexpr int kColumns = 48; // of letters, that the window is wide: names and its title have room

/// False if the user cancels or the owner is gone.
bool Ask(QInputDialog &question, QPointer<QWidget> const &owner) {
    question.setMinimumWidth(question.fontMetrics().averageCharWidth() * kColumns);
    question.setOkButtonText(platform::Shown("OK"));
    question.setCancelButtonText(platform::Shown("Cancel"));
    return platform::RunModal(question) == QDialog::Accepted && !owner.isNull();
}

} // namespace

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
    if (!Ask(question, owner))
        return std::nullopt;
    return DString(Trimmed(platform::ToDString(question.textValue())));
}

std::optional<Secret> AskForPassword(QWidget *parent, DString const &label) {
    QInputDialog question(parent);
    question.setWindowTitle(platform::Shown("Password"));
    question.setLabelText(platform::ToQString(label));
    question.setTextEchoMode(QLineEdit::Password);
    if (!Ask(question, parent))
        return std::nullopt;
    DString typed = platform::ToDString(question.textValue());
    return Secret::TakenFrom(typed);
}

} // namespace zelvar
