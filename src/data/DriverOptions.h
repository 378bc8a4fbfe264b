#pragma once

#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/options/DriverOption.h"

#include <memory>
#include <optional>

namespace zelvar {

/// What the driver of that id says of its options for reading and writing: what may stand behind "?" of a moniker.
/// Asked once a driver and kept; empty for one that is not known, has none, or does not answer in time. May wait as
/// long as a request to a driver may (`RequestScope`). Any thread.
[[nodiscard]] ZELVAR_API std::shared_ptr<DriverOptionLists const> DriverOptions(DString const &driverId);

/// The id of the driver that the data would be read with, told by their first bytes; empty if there is none. Waits
/// likewise.
[[nodiscard]] ZELVAR_API DString TellDriver(BDIMoniker const &moniker);

/// Who is asked about drivers that are far away; null for those of this process. At the start of a program.
struct OptionQuestions {
    std::optional<DriverOptionLists> (*options)(DString const &driverId) = nullptr; ///< nothing: no answer
    DString (*tellDriver)(BDIMoniker const &moniker) = nullptr;
};
ZELVAR_API void SetOptionQuestions(OptionQuestions const *questions);

/// As the two above, of the drivers of this process.
[[nodiscard]] ZELVAR_API DriverOptionLists OptionsHere(DString const &driverId);
[[nodiscard]] ZELVAR_API DString TellDriverHere(BDIMoniker const &moniker);

} // namespace zelvar
