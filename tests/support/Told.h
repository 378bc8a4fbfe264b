#pragma once

#include "support/TestFiles.h"
#include "zelvar/base/Report.h"

#include <vector>

namespace zelvar::test {

/// What the user is told meanwhile.
class Told : Pinned {
public:
    Told()
        : m_former(Report::SetUserHandler([this](Report::Severity, DString const &text) { m_texts.push_back(text); })) {
    }
    ~Told() { Report::SetUserHandler(m_former); }
    [[nodiscard]] std::vector<std::string> Take() { return std::exchange(m_texts, {}); }

private:
    std::vector<std::string> m_texts;
    Report::UserHandler m_former;
};

/// What is traced meanwhile, by this thread alone.
class Traced : Pinned {
public:
    Traced() : m_former(Report::SetTraceHandler([this](int, DString const &line) { m_last = line; })) {}
    ~Traced() { Report::SetTraceHandler(m_former); }
    [[nodiscard]] DString const &Last() const { return m_last; }

private:
    DString m_last;
    Report::TraceHandler m_former;
};

} // namespace zelvar::test
