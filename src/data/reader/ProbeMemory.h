#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/FileState.h"

#include <cstddef>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace zelvar {

/// What drivers in readers have said of plain files, by the state of the files: while one stays as it was, nobody is
/// asked about it a second time. Any thread.
class ProbeMemory {
public:
    using Ids = std::shared_ptr<std::vector<DString> const>;

    /// Which of those that were asked read the file; null if these very ones were not asked about it in that state.
    [[nodiscard]] Ids Find(FileState const &file, Ids const &asked) const;
    /// Leaves out a file that the system does not number, and one that has just changed: the next change might show the
    /// same time.
    void Keep(FileState const &file, Ids const &asked, std::vector<DString> const &reading);
    void Clear();
    /// Around a fork: holds it still, so that the child finds it whole.
    void BeforeFork() { m_mutex.lock(); }
    void AfterFork() { m_mutex.unlock(); }

private:
    static constexpr std::size_t kMost = 200'000; // files, some 16 MB; then all of it goes
    struct Hash {
        std::size_t operator()(FileState const &file) const;
    };
    struct Answer {
        std::size_t asked = 0; ///< in `m_lists`, as the next one
        std::size_t reading = 0;
    };
    [[nodiscard]] std::size_t NumberOf(std::vector<DString> const &ids) const;
    [[nodiscard]] std::size_t PlaceOf(std::vector<DString> const &ids);

    mutable std::mutex m_mutex;
    std::unordered_map<FileState, Answer, Hash> m_answers;
    std::vector<Ids> m_lists; ///< each list of drivers once; there are few
};

} // namespace zelvar
