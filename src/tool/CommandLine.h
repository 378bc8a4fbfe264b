#pragma once

#include "zelvar/base/DString.h"

#include <map>
#include <optional>
#include <set>
#include <vector>

namespace zelvar::tool {

/// How a subcommand ended; the numbers are the exit codes that scripts see.
enum ExitCode { kDone = 0, kNothing = 1, kUsage = 2, kFailed = 3 };

/// An option of a subcommand.
struct OptionSpec {
    enum class Use {
        Once,          ///< may be left out; of several the last counts
        Needed,        ///< the usage shows it as one that must be there
        Repeats,       ///< every one counts
        OptionalValue, ///< a value as "--name=value", or in the word behind where there are too many words
    };
    char const *name = "";  ///< with its dashes
    char const *value = ""; ///< what stands for its value in the usage; empty for a flag
    char const *about = ""; ///< what it does, in a few words
    Use use = Use::Once;

    [[nodiscard]] bool TakesValue() const { return *value != '\0'; }
    /// May stand without a value.
    [[nodiscard]] bool IsFlag() const { return !TakesValue() || use == Use::OptionalValue; }
};

/// What a subcommand accepts.
struct CommandSpec {
    char const *name = "";
    char const *words = ""; ///< those that are no options, as in the usage
    char const *about = ""; ///< sentences; what it does comes first
    std::vector<OptionSpec> options{};
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
/// A whole number from 1 to `most`.
[[nodiscard]] std::optional<int> CountIn(DString const &text, int most);

} // namespace zelvar::tool
