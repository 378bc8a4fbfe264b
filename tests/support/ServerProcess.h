#pragma once

#include "support/TestFiles.h"

#include <csignal>
#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace zelvar::test {

/// A port of the loopback interface that nobody has at this moment.
[[nodiscard]] int FreePort();

/// Whether somebody takes connections there now.
[[nodiscard]] bool TakesConnections(int port);

/// A program that runs beside a test: a server, or what makes one ready. It ends with the object, and with this process
/// however that goes.
class ServerProcess : Pinned {
public:
    struct Program {
        std::vector<std::string> words{}; ///< its path or name first
        std::string log{};                ///< the file that gets what it says, at its end
        std::string input{};              ///< a file; empty for nothing
        std::string user{};               ///< for one that refuses the superuser; empty for who runs the test
        int ending = SIGKILL;             ///< how it is ended at once
    };
    ServerProcess() = default;
    ~ServerProcess() { End(); }
    /// Starts it and waits until `isReady`; false if it ends before, and then what it said is in the log.
    [[nodiscard]] bool Start(Program const &program, std::function<bool()> const &isReady);
    /// Ends it at once.
    void End();
    /// Runs a program to its end; whether it succeeded.
    [[nodiscard]] static bool Succeeds(Program const &program);

private:
    pid_t m_process = -1;
    int m_ending = SIGKILL;
};

/// Tries `start` with a free port, again where somebody else has taken that meanwhile; the port, or 0.
[[nodiscard]] int StartAtFreePort(std::function<bool(int port)> const &start);

} // namespace zelvar::test
