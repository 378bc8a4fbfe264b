#pragma once

#include <optional>
#include <string>
#include <vector>

namespace zelvar::bench {

/// What a whole process took, from its start to its end.
struct ProcessTime {
    double wallMs = 0;
    double userMs = 0; ///< of it and of those that it waited for
};
/// Runs a program that is looked for as a shell does; its output goes nowhere. Nothing if it is not installed or fails.
std::optional<ProcessTime> TimeProcess(std::vector<std::string> const &words);
/// The medians of some runs of each program, in turn. Nothing for one that is not installed or fails.
std::vector<std::optional<ProcessTime>> TimeInTurn(int runs, std::vector<std::vector<std::string>> const &programs);

} // namespace zelvar::bench
