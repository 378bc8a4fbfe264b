#pragma once

#include "zelvar/base/Report.h"

#include <memory>
#include <mutex>
#include <vector>

#include <Messages_generated.h>

namespace zelvar::reader {

/// Keeps, while it lives, what `Report` traces on any thread, for the application's log: at most 100 lines of 2 kB each
/// between two takes; what comes then is lost.
class LogCollector {
public:
    static constexpr std::size_t kMostLines = 100;
    static constexpr std::size_t kLongestLine = 2048;

    LogCollector();
    ~LogCollector();
    LogCollector(LogCollector const &) = delete;
    LogCollector &operator=(LogCollector const &) = delete;

    [[nodiscard]] std::vector<std::unique_ptr<wire::LogLineT>> Take();

private:
    void Add(int level, DString const &text);

    std::mutex m_mutex;
    std::vector<std::unique_ptr<wire::LogLineT>> m_lines;
    Report::TraceHandler m_formerTrace;
    Report::UserHandler m_formerUser;
};

} // namespace zelvar::reader
