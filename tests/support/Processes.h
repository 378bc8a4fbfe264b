#pragma once

#include "support/Test.h"

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zelvar::test {

/// The children of a process with their states; 'Z' has ended, and nobody has asked about it.
inline std::map<pid_t, char> ChildrenOf(pid_t process) {
    std::map<pid_t, char> children;
    for (auto const &entry : std::filesystem::directory_iterator("/proc")) {
        std::string const name = entry.path().filename();
        if (name.find_first_not_of("0123456789") != std::string::npos)
            continue;
        std::ifstream stat(entry.path() / "stat");
        std::string line;
        std::getline(stat, line);                    // nothing of one that ends meanwhile
        std::size_t const nameEnd = line.rfind(')'); // the name may hold any sign
        char state = 0;
        pid_t parent = 0;
        if (nameEnd != std::string::npos && std::sscanf(line.c_str() + nameEnd, ") %c %d", &state, &parent) == 2 &&
            parent == process)
            children[std::stoi(name)] = state;
    }
    return children;
}

/// Starts a program by its words; the numbers of descriptors that it inherits are as they are there.
inline pid_t Spawn(std::vector<std::string> words, std::vector<std::pair<int, int>> const &inherited) {
    std::vector<char *> arguments;
    for (std::string &word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (auto const &[from, to] : inherited)
        posix_spawn_file_actions_adddup2(&actions, from, to);
    pid_t process = -1;
    EXPECT_EQ(posix_spawn(&process, arguments.front(), &actions, nullptr, arguments.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    return process;
}

/// A word as a shell reads it.
inline std::string Quoted(std::string const &word) {
    std::string quoted = "'";
    for (char const c : word)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

/// Runs `body` in a process of its own; its result is the exit status.
inline pid_t InChild(std::function<int()> const &body) {
    pid_t const child = fork();
    if (child == 0)
        _exit(body());
    return child;
}

/// The exit status of a child, once it has ended; -1 of one that a signal has ended.
inline int StatusOf(pid_t child) {
    int status = -1;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// No file of this process may grow beyond so much, as on a disk that is full.
class FullDisk : Pinned {
public:
    explicit FullDisk(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &m_former);
        rlimit const limit{.rlim_cur = bytes, .rlim_max = m_former.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &m_former);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    rlimit m_former{};
    void (*m_handler)(int);
};

/// How many entries a folder has.
inline std::size_t CountIn(std::string const &folder) {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

} // namespace zelvar::test
