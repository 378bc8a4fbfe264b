#pragma once

#include "support/TestFiles.h"
#include "zelvar/base/DString.h"
#include "zelvar/platform/os/TcpProbe.h"

#include <csignal>
#include <thread>

#include <fcntl.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zelvar::test {

/// A file server of our own on the loopback interface; it ends with the object.
class LoopbackSamba : Pinned {
public:
    LoopbackSamba() = default;
    /// False if the program is not installed or may not be run.
    bool Start() {
        if (geteuid() != 0 || access(kServer, X_OK) != 0)
            return false;
        // One port serves all: tests that run at the same time wait for each other.
        m_lock = open("/tmp/zelvar-test-samba.lock", O_CREAT | O_RDWR | O_CLOEXEC, 0600);
        if (m_lock < 0 || flock(m_lock, LOCK_EX) != 0)
            return false;
        for (char const *place : {"share", "lock", "private", "state", "cache", "pid", "ncalrpc", "log"})
            m_folder.Folder(place);
        DString settings = "[global]\n interfaces = lo\n bind interfaces only = yes\n hosts allow = 127.0.0.0/8\n"
                           " smb ports = 445\n map to guest = Bad User\n disable netbios = yes\n load printers = no\n"
                           " disable spoolss = yes\n log file = " +
                           (m_folder / "log/smbd") + "\n ncalrpc dir = " + (m_folder / "ncalrpc") + "\n";
        for (char const *place : {"lock", "private", "state", "cache", "pid"})
            settings += DString(" ") + (DString(place) == "private" ? "private dir" : place + DString(" directory")) +
                        " = " + (m_folder / place) + "\n";
        settings += "[pub]\n path = " + (m_folder / "share") +
                    "\n guest ok = yes\n force user = root\n"
                    "[secret$]\n path = " +
                    (m_folder / "share") + "\n guest ok = yes\n";
        DString const file = m_folder.Write("smb.conf", settings);
        // The server starts services in sessions of their own: the first process of a process namespace takes all of
        // them with it when it ends, and it ends with this one.
        m_process = static_cast<pid_t>(syscall(SYS_clone, CLONE_NEWPID | SIGCHLD, 0, 0, 0, 0));
        if (m_process == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            pid_t const server = fork();
            if (server == 0) {
                execl(kServer, kServer, "-F", "--no-process-group", "-s", file.c_str(), static_cast<char *>(nullptr));
                _exit(127);
            }
            while (wait(nullptr) != server) {
            }
            _exit(0);
        }
        return m_process > 0;
    }
    ~LoopbackSamba() {
        if (m_process > 0) {
            kill(m_process, SIGKILL);
            waitpid(m_process, nullptr, 0);
        }
        if (m_lock >= 0)
            close(m_lock);
    }
    /// Waits until it takes connections; false if it ends first.
    [[nodiscard]] bool IsReady() const {
        for (int status = 0; waitpid(m_process, &status, WNOHANG) == 0; std::this_thread::yield())
            if (!platform::TryToConnect("127.0.0.1", 100))
                return true;
        return false;
    }
    [[nodiscard]] TempFolder const &Folder() const { return m_folder; }

private:
    static constexpr char const *kServer = "/usr/sbin/smbd";
    TempFolder m_folder;
    pid_t m_process = -1;
    int m_lock = -1;
};

} // namespace zelvar::test
