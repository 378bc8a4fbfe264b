#pragma once

#include "Harness.h"

#include <string>
#include <vector>

namespace zelvar::bench {

/// A program that is looked for as a shell does, and its arguments.
struct Program {
    std::string name; ///< in figures
    std::vector<std::string> words;
    int exitCode = 0; ///< any other means that it failed
};

/// What a whole process took, from its start to its end.
struct ProcessTime {
    double wallMs = 0;
    double userMs = 0; ///< of it and of those that it waited for
};
/// Runs it with its output thrown away; its errors as well, or written to that file. Nothing if it is not installed.
/// One that fails ends the bench: what it took means nothing.
std::optional<ProcessTime> TimeProcess(Program const &program, std::string const &errors = "/dev/null");

/// Our program and the others in turn: its median time with theirs beside it, and what it took of a processor.
void FigureOfProcesses(std::string const &name, std::optional<double> limit, std::string const &note, int runs,
                       Program const &ours, std::vector<Program> const &others);

/// The medians of some rounds of the programs, as alternatives to what `ours` measures in each round.
std::vector<Alternative> TimesBeside(int rounds, std::function<void()> const &ours,
                                     std::vector<Program> const &programs);

} // namespace zelvar::bench
