#include "images/Processes.h"

#include <algorithm>
#include <chrono>

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

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace

std::optional<ProcessTime> TimeProcess(std::vector<std::string> const &words) {
    std::vector<char *> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string const &word : words)
        arguments.push_back(const_cast<char *>(word.c_str()));
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    for (int const file : {STDOUT_FILENO, STDERR_FILENO})
        posix_spawn_file_actions_addopen(&files, file, "/dev/null", O_WRONLY, 0);
    pid_t process = -1;
    auto const begin = std::chrono::steady_clock::now();
    int const error = posix_spawnp(&process, arguments.front(), &files, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    int status = 0;
    rusage usage{};
    if (error != 0 || wait4(process, &status, 0, &usage) != process || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return std::nullopt;
    double const wall = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
    return ProcessTime{.wallMs = wall, .userMs = MsOf(usage.ru_utime)};
}

std::vector<std::optional<ProcessTime>> TimeInTurn(int runs, std::vector<std::vector<std::string>> const &programs) {
    std::vector<std::vector<double>> walls(programs.size());
    std::vector<std::vector<double>> users(programs.size());
    for (int run = 0; run < runs; ++run)
        for (std::size_t i = 0; i < programs.size(); ++i)
            if (auto const time = TimeProcess(programs[i])) {
                walls[i].push_back(time->wallMs);
                users[i].push_back(time->userMs);
            }
    std::vector<std::optional<ProcessTime>> medians(programs.size());
    for (std::size_t i = 0; i < programs.size(); ++i)
        if (!walls[i].empty())
            medians[i] = ProcessTime{.wallMs = Median(walls[i]), .userMs = Median(users[i])};
    return medians;
}

} // namespace zelvar::bench
