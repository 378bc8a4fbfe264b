#include "Processes.h"

#include <algorithm>
#include <cstdlib>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zelvar::bench {

namespace {

double MsOf(timeval const &time) {
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

/// As a shell finds it.
bool IsInstalled(std::string const &program) {
    if (program.find('/') != std::string::npos)
        return access(program.c_str(), X_OK) == 0;
    char const *const path = std::getenv("PATH");
    std::string const folders = path == nullptr ? "" : path;
    for (std::size_t at = 0; at <= folders.size();) {
        std::size_t const end = std::min(folders.find(':', at), folders.size());
        if (access((folders.substr(at, end - at) + "/" + program).c_str(), X_OK) == 0)
            return true;
        at = end + 1;
    }
    return false;
}

/// The times of each program in turn; empty for one that is not installed.
std::vector<std::vector<ProcessTime>> TimeInTurn(int rounds, std::function<void()> const &first,
                                                 std::vector<Program> const &programs) {
    std::vector<std::vector<ProcessTime>> times(programs.size());
    for (int round = 0; round < rounds; ++round) {
        first();
        for (std::size_t i = 0; i < programs.size(); ++i)
            if (std::optional<ProcessTime> const time = TimeProcess(programs[i]))
                times[i].push_back(*time);
    }
    return times;
}

double MedianOf(std::vector<ProcessTime> const &times, double ProcessTime::*part) {
    std::vector<double> values;
    values.reserve(times.size());
    for (ProcessTime const &time : times)
        values.push_back(time.*part);
    return Median(std::move(values));
}

Alternative AsAlternative(Program const &program, std::vector<ProcessTime> const &times) {
    return {program.name, times.empty() ? std::nullopt : std::optional(MedianOf(times, &ProcessTime::wallMs))};
}

} // namespace

std::optional<ProcessTime> TimeProcess(Program const &program, std::string const &errors) {
    if (!IsInstalled(program.words.front()))
        return std::nullopt;
    std::vector<char *> arguments;
    arguments.reserve(program.words.size() + 1);
    for (std::string const &word : program.words)
        arguments.push_back(const_cast<char *>(word.c_str()));
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t process = -1;
    int status = 0;
    rusage usage{};
    bool isDone = false;
    double const wall = Ms([&] {
        int const error = posix_spawnp(&process, arguments.front(), &files, nullptr, arguments.data(), environ);
        isDone = error == 0 && wait4(process, &status, 0, &usage) == process;
    });
    posix_spawn_file_actions_destroy(&files);
    if (!isDone || !WIFEXITED(status) || WEXITSTATUS(status) != program.exitCode)
        Fail(program.name + " fails, status " + std::to_string(status));
    return ProcessTime{.wallMs = wall, .userMs = MsOf(usage.ru_utime)};
}

std::vector<Alternative> TimesBeside(int rounds, std::function<void()> const &ours,
                                     std::vector<Program> const &programs) {
    std::vector<std::vector<ProcessTime>> const times = TimeInTurn(rounds, ours, programs);
    std::vector<Alternative> alternatives;
    for (std::size_t i = 0; i < programs.size(); ++i)
        alternatives.push_back(AsAlternative(programs[i], times[i]));
    return alternatives;
}

void FigureOfProcesses(std::string const &name, std::optional<double> limit, std::string const &note, int runs,
                       Program const &ours, std::vector<Program> const &others) {
    std::vector<Program> programs{ours};
    programs.insert(programs.end(), others.begin(), others.end());
    std::vector<std::vector<ProcessTime>> const times = TimeInTurn(
        runs, [] {}, programs);
    if (times.front().empty())
        Fail(ours.words.front() + " is not there");
    Beside beside{.limit = limit, .note = note};
    for (std::size_t i = 1; i < programs.size(); ++i)
        beside.alternatives.push_back(AsAlternative(programs[i], times[i]));
    Figure(name, MedianOf(times.front(), &ProcessTime::wallMs), "ms", beside);
    Figure(name + ".user", MedianOf(times.front(), &ProcessTime::userMs), "ms",
           "of processors; readers that end behind it are left out");
}

} // namespace zelvar::bench
