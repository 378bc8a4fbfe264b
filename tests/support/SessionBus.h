#pragma once

#include "support/TestFiles.h"
#include "zelvar/base/DString.h"

#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zelvar::test {

/// A session bus of our own, and a desktop's keyring on it, for this process and what it starts. Both end with the
/// object, and with this process however that goes.
class SessionBus : Pinned {
public:
    SessionBus() {
        // The rules of the accessibility bus do for the session's as well: no other service of the desktop is started.
        m_bus = Start({"dbus-daemon", "--config-file=/usr/share/defaults/at-spi2/accessibility.conf", "--nofork",
                       "--print-address=1", "--address=unix:dir=" + m_folder.Path()},
                      "", &m_address);
        setenv("DBUS_SESSION_BUS_ADDRESS", m_address.c_str(), 1);
        setenv("XDG_RUNTIME_DIR", m_folder.Path().c_str(), 1);
        setenv("XDG_DATA_HOME", m_folder.Path().c_str(), 1);
    }
    ~SessionBus() {
        End(m_keyring);
        End(m_bus);
        unsetenv("DBUS_SESSION_BUS_ADDRESS");
    }
    /// Whether both programs are installed.
    [[nodiscard]] bool IsThere() const {
        return !m_address.empty() && access("/usr/bin/gnome-keyring-daemon", X_OK) == 0;
    }
    [[nodiscard]] std::string const &Address() const { return m_address; }
    /// Begins to serve secrets a moment later, unlocked.
    void StartKeyring() {
        m_keyring = Start({"gnome-keyring-daemon", "--foreground", "--components=secrets", "--unlock"}, "unlock");
    }
    /// Locks it again. Nobody is there who could ask the user to unlock it: that is as if he had declined.
    void LockKeyring() const {
        constexpr char const *service = "/org/freedesktop/secrets";
        std::string told; // the answer, which is waited for
        End(Start({"gdbus", "call", "--session", "--dest", "org.freedesktop.secrets", "--object-path", service,
                   "--method", "org.freedesktop.Secret.Service.Lock",
                   "['" + std::string(service) + "/collection/login']"},
                  "", &told));
    }
    /// From now on it takes questions and never answers.
    void SilenceKeyring() const { kill(m_keyring, SIGSTOP); }
    [[nodiscard]] TempFolder const &Folder() const { return m_folder; }

private:
    /// Starts a program with that input; with `line` waits for the first one that it prints.
    static pid_t Start(std::vector<std::string> const &words, std::string const &input, std::string *line = nullptr) {
        std::vector<char *> arguments;
        for (std::string const &word : words)
            arguments.push_back(const_cast<char *>(word.c_str())); // NOLINT(cppcoreguidelines-pro-type-const-cast)
        arguments.push_back(nullptr);
        int in[2]{};
        int out[2]{};
        if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0)
            return -1;
        pid_t const process = fork();
        if (process == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            dup2(in[0], 0);
            dup2(out[1], 1);
            dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), 2);
            close_range(3, ~0U, 0); // pipes of others end when they close them
            execvp(arguments[0], arguments.data());
            _exit(127);
        }
        close(in[0]);
        close(out[1]);
        [[maybe_unused]] ssize_t const written = write(in[1], input.data(), input.size());
        close(in[1]);
        for (char c = 0; line != nullptr && read(out[0], &c, 1) == 1 && c != '\n';)
            *line += c;
        close(out[0]);
        return process;
    }
    static void End(pid_t process) {
        if (process > 0) {
            kill(process, SIGKILL);
            waitpid(process, nullptr, 0);
        }
    }

    TempFolder m_folder;
    std::string m_address;
    pid_t m_bus = -1;
    pid_t m_keyring = -1;
};

} // namespace zelvar::test
