#pragma once

#include "zelvar/base/FileDescriptor.h"
#include "zelvar/base/ProcessMoments.h"
#include "zelvar/data/Connection.h"

#include <list>
#include <memory>
#include <mutex>

namespace zelvar {

/// What readers have been told by their servers and leave here for the other reader of the same connection, so that a
/// server is asked once: sealed memory, which is not looked at. Some of it, for five minutes. For the process; any
/// thread.
class ConnectionNotes final : ProcessMoments {
public:
    static ConnectionNotes &Instance();

    struct Note {
        std::shared_ptr<FileDescriptor const> file{}; ///< null for none
        std::chrono::seconds age{0};
    };
    using TermsPtr = std::shared_ptr<ConnectionTerms const>;
    /// In place of one of that name. False, and nothing kept, for what is no sealed memory or too long.
    bool Keep(TermsPtr const &of, DString const &name, FileDescriptor file);
    /// What a reader of a connection of the same terms has left.
    [[nodiscard]] Note Find(ConnectionTerms const &of, DString const &name);
    /// Lets go of what is too old.
    void Tidy();

private:
    using Clock = std::chrono::steady_clock;
    struct Kept {
        TermsPtr of;
        DString name;
        std::shared_ptr<FileDescriptor const> file;
        std::size_t bytes = 0;
        Clock::time_point since;
    };
    ConnectionNotes() = default;
    void BeforeFork() override { m_mutex.lock(); }
    void AfterFork(Side) override { m_mutex.unlock(); }
    void DropOld();

    std::mutex m_mutex;
    std::list<Kept> m_kept; ///< the newest first
    Known m_known{*this, Locks::Inner};
};

} // namespace zelvar
