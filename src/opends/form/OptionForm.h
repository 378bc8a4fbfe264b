#pragma once

#include "zelvar/data/options/OptionValues.h"
#include "zelvar/opends/form/HtmlForm.h"

namespace zelvar {

/// The id of the button that sets all options back to what the driver does by itself.
inline constexpr char const *kResetId = "Reset";

/// A page that asks for a driver's options, a control each, in their order: check boxes, selects and text fields named
/// as the options, with their descriptions. Those that are not taken are shown all the same, but cannot be changed.
/// `title` stands above it.
[[nodiscard]] FormNode MakeOptionForm(DString const &title, std::vector<DriverOption> const &options);

/// What the control of an option holds for a value, where an empty one stands for what is usual.
[[nodiscard]] DString ShownValue(DriverOption const &option, DString const &value);

/// What is wrong with it, in the user's language; empty for nothing.
[[nodiscard]] DString FaultText(DriverOption const &option, DString const &value);

} // namespace zelvar
