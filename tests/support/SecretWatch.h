#pragma once

#include "support/Test.h"
#include "zelvar/base/Report.h"

#include <mutex>

namespace zelvar::test {

/// Listens to the log; at its end none of the secrets may have stood in it.
class SecretWatch : Pinned {
public:
    explicit SecretWatch(std::vector<DString> secrets) : m_secrets(std::move(secrets)) {
        m_former = Report::SetTraceHandler([this](int, DString const &line) {
            std::lock_guard const lock(m_mutex);
            m_log += line + "\n";
        });
    }
    ~SecretWatch() {
        Report::SetTraceHandler(m_former);
        for (DString const &secret : m_secrets)
            EXPECT_EQ(m_log.find(secret), DString::npos) << m_log;
    }
    [[nodiscard]] DString Log() {
        std::lock_guard const lock(m_mutex);
        return m_log;
    }

private:
    std::vector<DString> m_secrets;
    std::mutex m_mutex;
    DString m_log;
    Report::TraceHandler m_former;
};

} // namespace zelvar::test
