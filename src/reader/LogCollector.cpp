#include "zelvar/reader/LogCollector.h"

#include <utility>

namespace zelvar::reader {

LogCollector::LogCollector()
    : m_formerTrace(Report::SetTraceHandler([this](int level, DString const &text) { Add(level, text); })),
      m_formerUser(
          Report::SetUserHandler([this](Report::Severity, DString const &text) { Add(Report::kTraceOpen, text); })) {}

LogCollector::~LogCollector() {
    Report::SetTraceHandler(std::move(m_formerTrace));
    Report::SetUserHandler(std::move(m_formerUser));
}

void LogCollector::Add(int level, DString const &text) {
    std::lock_guard const lock(m_mutex);
    if (m_lines.size() == kMostLines)
        return;
    auto line = std::make_unique<wire::LogLineT>();
    line->level = level;
    line->text = text.substr(0, kLongestLine);
    m_lines.push_back(std::move(line));
}

std::vector<std::unique_ptr<wire::LogLineT>> LogCollector::Take() {
    std::lock_guard const lock(m_mutex);
    return std::exchange(m_lines, {});
}

} // namespace zelvar::reader
