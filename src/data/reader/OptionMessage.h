#pragma once

#include "zelvar/data/options/DriverOption.h"
#include "zelvar/data/wire/Messages.h"

#include <memory>
#include <vector>

namespace zelvar {

/// Options of a driver as they go over the wire, and back. What comes back is not trusted: kinds that are unknown are
/// texts, and figures that make no sense are left out.
[[nodiscard]] ZELVAR_API std::vector<std::unique_ptr<wire::OptionFactsT>>
OptionsToWire(std::vector<DriverOption> const &options);
[[nodiscard]] std::vector<DriverOption> OptionsFromWire(std::vector<std::unique_ptr<wire::OptionFactsT>> &&facts);

} // namespace zelvar
