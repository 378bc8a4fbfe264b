#include "support/ServerProcess.h"

#include "support/LoopbackPort.h"

#include <cstdint>
#include <thread>

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zelvar::test {

namespace {

pid_t Begin(ServerProcess::Program const &program) {
    std::vector<char *> arguments;
    for (std::string const &word : program.words)
        arguments.push_back(const_cast<char *>(word.c_str())); // NOLINT(cppcoreguidelines-pro-type-const-cast)
    arguments.push_back(nullptr);
    passwd const *const user = program.user.empty() || geteuid() != 0
                                   ? nullptr
                                   : getpwnam(program.user.c_str()); // NOLINT(concurrency-mt-unsafe): one thread
    std::string const input = program.input.empty() ? "/dev/null" : program.input;
    pid_t const process = fork();
    if (process != 0)
        return process;
    dup2(open(input.c_str(), O_RDONLY | O_CLOEXEC), 0);
    dup2(open(program.log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644), 1);
    dup2(1, 2);
    close_range(3, ~0U, 0);
    if (user != nullptr) {
        std::ignore = setgroups(0, nullptr);
        std::ignore = setgid(user->pw_gid);
        std::ignore = setuid(user->pw_uid);
    }
    prctl(PR_SET_PDEATHSIG, program.ending); // behind the change of user, which takes it back
    execvp(arguments[0], arguments.data());
    _exit(127);
}

} // namespace

int FreePort() { return LoopbackPort().Number(); }

bool TakesConnections(int port) {
    int const asked = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in const address = Loopback(port);
    bool const isTaken = connect(asked, reinterpret_cast<sockaddr const *>(&address), sizeof address) == 0;
    close(asked);
    return isTaken;
}

int StartAtFreePort(std::function<bool(int port)> const &start) {
    for (int i = 0; i < 5; ++i)
        if (int const port = FreePort(); port != 0 && start(port))
            return port;
    return 0;
}

bool ServerProcess::Start(Program const &program, std::function<bool()> const &isReady) {
    m_process = Begin(program);
    m_ending = program.ending;
    for (int status = 0; m_process > 0 && waitpid(m_process, &status, WNOHANG) == 0; std::this_thread::yield())
        if (isReady())
            return true;
    m_process = -1;
    return false;
}

void ServerProcess::End() {
    if (m_process <= 0)
        return;
    kill(m_process, m_ending);
    waitpid(m_process, nullptr, 0);
    m_process = -1;
}

bool ServerProcess::Succeeds(Program const &program) {
    pid_t const process = Begin(program);
    int status = 0;
    return process > 0 && waitpid(process, &status, 0) == process && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace zelvar::test
