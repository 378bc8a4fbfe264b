#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/connections/Secret.h"

#include <optional>
#include <vector>

class QWidget;

namespace zelvar {

/// A text without blanks at its ends, which may be empty, or nothing if the user cancels or `parent` is gone. Modal.
/// With `choices` one of those or any other. Texts as they were marked for translation.
[[nodiscard]] std::optional<DString> AskForText(QWidget *parent, char const *title, char const *label,
                                                DString const &text, std::vector<DString> const &choices = {});

/// A password, shown as dots: as it was typed, or nothing. `label` is in the user's language.
[[nodiscard]] std::optional<Secret> AskForPassword(QWidget *parent, DString const &label);

} // namespace zelvar
