#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/data/reader/ReaderProcess.h"

#include <chrono>
#include <mutex>
#include <optional>
#include <unordered_map>

namespace zelvar {

/// Files that ended their readers, by moniker: not asked about again while they are as they were. Any thread.
class FileVerdicts {
public:
    using Stamp = ReaderProcess::Stamp;
    struct Verdict {
        DError error;
        Stamp stamp;
        /// Of a probe that came late: the time it was given; a longer one may try again. 0 for a reader that crashed or
        /// outgrew its memory: nobody tries again.
        std::chrono::milliseconds givenTime{0};
        /// When it ends by itself, whatever the file is like.
        std::chrono::steady_clock::time_point until = std::chrono::steady_clock::time_point::max();
    };

    void Set(DString const &moniker, Verdict verdict);
    /// What stands against asking with so much time. Whether the file has changed meanwhile is the caller's to find
    /// out.
    [[nodiscard]] std::optional<Verdict> Find(DString const &moniker, std::chrono::milliseconds time) const;
    /// Whether anything stands against it.
    [[nodiscard]] bool Has(DString const &moniker) const;
    void Forget(DString const &moniker);
    void Clear();
    /// Around a fork: holds it still, so that the child finds it whole.
    void BeforeFork() { m_mutex.lock(); }
    void AfterFork() { m_mutex.unlock(); }

    /// What a reader said last of a moniker whose request it did not survive, also where that is no verdict: a request
    /// that was late may be asked again.
    void SetFailure(DString const &moniker, DError error);
    [[nodiscard]] DError FailureOf(DString const &moniker) const;

private:
    static constexpr std::size_t kMost = 10'000; // then all of it goes

    mutable std::mutex m_mutex;
    std::unordered_map<DString, Verdict> m_verdicts;
    std::unordered_map<DString, DError> m_failures;
};

} // namespace zelvar
