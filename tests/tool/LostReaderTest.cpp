#include "support/SilentMount.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

namespace zelvar {
namespace {

/// The processes that one has started and that are still there.
std::vector<pid_t> ChildrenOf(pid_t process) {
    std::vector<pid_t> children;
    for (auto const &task : std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
        std::ifstream list(task.path() / "children");
        for (pid_t child = 0; list >> child;)
            children.push_back(child);
    }
    return children;
}

TEST(LostReader, InfoTellsInOneLineThatAFileHasEndedItsReader) {
    test::SilentMount mount("image.tif");
    if (!mount.IsMounted()) {
        EXPECT_NE(getuid(), 0U) << "the superuser can mount";
        return;
    }
    std::array<int, 2> pipeEnds{};
    ASSERT_EQ(pipe2(pipeEnds.data(), O_CLOEXEC), 0);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, pipeEnds[1], STDERR_FILENO);
    std::string command = ZELVAR_COMMAND;
    std::string word = "info";
    std::string file = mount.File();
    std::array<char *, 4> words{command.data(), word.data(), file.data(), nullptr};
    pid_t process = -1;
    ASSERT_EQ(posix_spawn(&process, command.c_str(), &files, nullptr, words.data(), environ), 0);
    posix_spawn_file_actions_destroy(&files);
    close(pipeEnds[1]);

    while (!mount.IsSomebodyHeld())
        std::this_thread::yield();
    for (pid_t const reader : ChildrenOf(process))
        kill(reader, SIGKILL);
    mount.Answer();

    std::string told;
    std::array<char, 4096> bytes{};
    for (ssize_t got = 0; (got = read(pipeEnds[0], bytes.data(), bytes.size())) > 0;)
        told.append(bytes.data(), static_cast<std::size_t>(got));
    close(pipeEnds[0]);
    int status = 0;
    ASSERT_EQ(waitpid(process, &status, 0), process);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 3) << status;
    EXPECT_EQ(told, "zelvar: cannot read '" + file + "': its reader was ended by signal 9 (Killed)\n");
}

} // namespace
} // namespace zelvar
