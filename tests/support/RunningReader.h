#pragma once

#include "support/Processes.h"
#include "support/ReaderTalk.h"
#include "zelvar/data/wire/ReaderStatus.h"
#include "zelvar/data/wire/SharedMemory.h"

#include <csignal>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

namespace zelvar::test {

/// How a process came to its end.
struct End {
    int status = 0;
    [[nodiscard]] bool IsExit(int code) const { return WIFEXITED(status) && WEXITSTATUS(status) == code; }
    /// Not of its own will: by a signal, or by a sanitizer that noticed.
    [[nodiscard]] bool IsCrash() const {
        return WIFSIGNALED(status) || (WIFEXITED(status) && WEXITSTATUS(status) != 0);
    }
};

inline End WaitFor(pid_t process) {
    End end;
    EXPECT_EQ(waitpid(process, &end.status, 0), process);
    return end;
}

/// The real reader with the drivers that misbehave, and this end of the talk with it.
class RunningReader : Pinned {
public:
    explicit RunningReader(std::string reach = "local", int heirloom = -1, std::string module = ZELVAR_HOSTILE)
        : m_status(wire::SharedMemory::Create(sizeof(wire::ReaderStatus))) {
        SocketPair pair;
        talk.emplace(pair.ends[0]);
        // Far from those that this process uses, so that none is overwritten before it is copied.
        std::vector<std::pair<int, int>> inherited{{pair.ends[1], 100}, {m_status->File(), 101}};
        if (heirloom >= 0)
            inherited.insert(inherited.end(), {{heirloom, 99}, {heirloom, 102}});
        m_process = Spawn({ZELVAR_READER, "100", "101", std::move(reach), std::move(module)}, inherited);
        close(pair.ends[1]);
    }
    ~RunningReader() {
        Close();
        if (m_process > 0) {
            EXPECT_TRUE(Wait().IsExit(0));
        }
    }

    void Close() { talk.reset(); }
    End Wait() { return WaitFor(std::exchange(m_process, -1)); }
    [[nodiscard]] wire::ReaderStatus const &Status() const {
        return *static_cast<wire::ReaderStatus const *>(m_status->Data());
    }
    /// Waits until the reader has begun with a request that names a file.
    void AwaitBegin(std::uint64_t number) const {
        while (Status().number != number)
            std::this_thread::yield();
    }

    std::optional<ReaderTalk> talk;

private:
    std::unique_ptr<wire::SharedMemory> m_status;
    pid_t m_process = -1;
};

} // namespace zelvar::test
