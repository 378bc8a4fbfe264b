#pragma once

#include "zelvar/tool/CommandLine.h"

namespace zelvar::tool {

/// The manual page of the whole command, in section 1, in the macros of man(7).
[[nodiscard]] DString ManualPage(DString const &version);
/// The page of one subcommand: "zelvar-ls".
[[nodiscard]] DString ManualPage(CommandSpec const &spec, DString const &version);

/// What a bash reads to complete subcommands, their options, and the words that an option takes; files otherwise.
[[nodiscard]] DString BashCompletion();

} // namespace zelvar::tool
