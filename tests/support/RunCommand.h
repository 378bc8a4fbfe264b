#pragma once

#include "support/Processes.h"
#include "zelvar/base/DString.h"

namespace zelvar::test {

struct Outcome {
    int exitCode = -1;
    std::string out;
    std::string err;
};

/// Runs the command as a script does, with `variables` as "NAME=value" in its environment.
inline Outcome Zelvar(std::vector<std::string> const &words, std::string const &variables = {},
                      std::string const &outFile = {}) {
    TempFolder const scratch;
    std::string line = variables + " " + Quoted(ZELVAR_COMMAND);
    for (std::string const &word : words)
        line += " " + Quoted(word);
    line +=
        " >" + Quoted(outFile.empty() ? scratch / "out" : outFile) + " 2>" + Quoted(scratch / "err") + " </dev/null";
    int const status = std::system(line.c_str()); // NOLINT(cert-env33-c,concurrency-mt-unsafe): a script is played
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFile(scratch / "out"), ReadFile(scratch / "err")};
}

/// The column of each line, 0 for the first.
inline std::vector<std::string> Column(std::string const &lines, std::size_t column) {
    std::vector<std::string> cells;
    for (DString const &line : Split(lines, '\n'))
        if (std::vector<DString> const row = Split(line, '\t'); row.size() > column && !line.empty())
            cells.push_back(row[column]);
    return cells;
}

} // namespace zelvar::test
