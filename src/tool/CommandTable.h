#pragma once

#include "zelvar/tool/CommandLine.h"

#include <span>
#include <utility>
#include <vector>

namespace zelvar::tool {

/// Every subcommand with its words and options: what is parsed, what the usage says and what "--help" prints come from
/// this one table.
[[nodiscard]] std::vector<CommandSpec> const &AllCommands();

/// The one of that name; null if there is none.
[[nodiscard]] CommandSpec const *FindCommand(std::string_view name);
/// The one of that name, which must exist.
[[nodiscard]] CommandSpec const &SpecOf(std::string_view name);

/// "ls PLACE [--folders] ...", without the program's name.
[[nodiscard]] DString Synopsis(CommandSpec const &spec);

/// What the words in capitals stand for that `text` uses.
[[nodiscard]] std::vector<std::pair<char const *, char const *>> WordsIn(std::string_view text);
/// Each exit code with what it says.
[[nodiscard]] std::span<std::pair<ExitCode, char const *> const> ExitCodes();

/// All subcommands, a line each, with what their words stand for.
[[nodiscard]] DString UsageText();
/// What one subcommand does, takes and prints.
[[nodiscard]] DString HelpText(CommandSpec const &spec);

} // namespace zelvar::tool
