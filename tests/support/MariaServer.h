#pragma once

#include "support/ServerProcess.h"

namespace zelvar::test {

/// A MariaDB server of our own on the loopback interface. It ends with the object.
class MariaServer : Pinned {
public:
    static constexpr char const *kUser = "zelvar"; ///< who may do nothing but what `Start` grants
    static constexpr char const *kPassword = "marker7;{s=ecret}";
    /// Makes the server's own tables and waits until it takes connections. It begins with these statements, a line
    /// each, as the superuser. Else what keeps it from doing so.
    [[nodiscard]] std::string Start(std::string const &statements);
    [[nodiscard]] int Port() const { return m_port; }

private:
    TempFolder m_folder;
    int m_port = 0;
    ServerProcess m_process;
};

} // namespace zelvar::test
