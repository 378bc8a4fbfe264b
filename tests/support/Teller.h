#pragma once

#include <string>
#include <utility>

namespace zelvar::test {

/// Writes down what somebody is told: "row 1=3, click 1".
class Teller {
public:
    void Tell(std::string const &what) { m_told += (m_told.empty() ? "" : ", ") + what; }
    std::string Take() { return std::exchange(m_told, {}); }

private:
    std::string m_told;
};

} // namespace zelvar::test
