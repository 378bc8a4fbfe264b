#pragma once

#include "zelvar/base/DString.h"

#include <map>
#include <optional>
#include <set>
#include <vector>

namespace zelvar::tool {

/// How a subcommand ended; the numbers are the exit codes that scripts see.
enum ExitCode { kDone = 0, kNothing = 1, kUsage = 2, kFailed = 3 };

/// What a subcommand accepts.
struct CommandSpec {
    DString usage;            ///< one line, without the program's name
    std::set<DString> flags;  ///< options without a value
    std::set<DString> values; ///< options with one; given twice, both are kept
    /// Those of the flags that may have one: as "--name=value", or in the word behind where there are too many words.
    std::set<DString> optionalValues{};
    std::size_t minArguments = 0; ///< words that are no options
    std::size_t maxArguments = 0;
};

/// The words behind a subcommand, sorted out.
struct Arguments {
    std::vector<DString> words;
    std::set<DString> flags;
    std::map<DString, std::vector<DString>> values;

    [[nodiscard]] bool Has(DString const &flag) const { return flags.contains(flag); }
    /// The last value given for the option, or `fallback`.
    [[nodiscard]] DString Value(DString const &option, DString const &fallback = {}) const;
    [[nodiscard]] std::vector<DString> All(DString const &option) const;
};

/// Options may stand before or behind the words, values as "--name value" or "--name=value"; "--" ends the options.
/// Nothing, with the reason in `error`, if the words do not fit.
[[nodiscard]] std::optional<Arguments> ParseArguments(CommandSpec const &spec, std::vector<DString> const &words,
                                                      DString &error);

/// "640x480": both sides from 1 to 16384.
struct WindowSize {
    int width = 0;
    int height = 0;
};
[[nodiscard]] std::optional<WindowSize> ParseSize(DString const &text);

} // namespace zelvar::tool
