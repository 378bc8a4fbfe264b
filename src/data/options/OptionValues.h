#pragma once

#include "zelvar/data/options/DriverOption.h"

#include <map>

namespace zelvar {

/// Values of options by the options' names. An empty one stands for what the driver does by itself.
using OptionValues = std::map<DString, DString>;

/// What keeps a value from being one of the option.
enum class OptionFault { None, NoNumber, TooSmall, TooLarge, NoChoice, TooLong };
[[nodiscard]] ZELVAR_API OptionFault FaultOf(DriverOption const &option, DString const &value);
/// Whether the driver does the same without the value.
[[nodiscard]] ZELVAR_API bool IsUsual(DriverOption const &option, DString const &value);
/// Of a switch: "YES", "on", "1" and the like.
[[nodiscard]] ZELVAR_API bool IsOn(std::string_view value);

/// What stands behind "?" of a moniker, in the order of the options: those that are not as usual. What is no value of
/// its option, barred, or unknown is left out, and with `Secrets::Leave` so are passwords.
enum class Secrets { Keep, Leave };
[[nodiscard]] ZELVAR_API DString ToOptionText(std::vector<DriverOption> const &options, OptionValues const &values,
                                              Secrets secrets = Secrets::Keep);
/// The values in such a text. The last of one name counts; names are as they are written.
[[nodiscard]] ZELVAR_API OptionValues FromOptionText(std::string_view text);
/// Those of them that are the options', by their own names: cases of names are not regarded.
[[nodiscard]] ZELVAR_API OptionValues ValuesOf(std::vector<DriverOption> const &options, OptionValues const &values);

/// "NAME=value" as it stands in a moniker: what would end the value there is percent-encoded.
[[nodiscard]] ZELVAR_API DString OptionPiece(DString const &name, DString const &value);

} // namespace zelvar
