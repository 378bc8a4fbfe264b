#pragma once

#include "support/TestFiles.h"

#include <array>
#include <stdexcept>
#include <string>
#include <tuple>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

namespace zelvar::test {

/// A place of the loopback interface; port 0 stands for any that is free.
inline sockaddr_in Loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

/// A port of the loopback interface that takes connections, as many as `queue` says before one is accepted. It is free
/// again, and refuses them, once the object has gone. Throws std::runtime_error where there is none.
class LoopbackPort : Pinned {
public:
    explicit LoopbackPort(int queue = 8) {
        socklen_t size = sizeof m_address;
        if (bind(m_socket, Address(), size) != 0 || listen(m_socket, queue) != 0 ||
            getsockname(m_socket, Address(), &size) != 0)
            throw std::runtime_error("no port of the loopback interface");
    }
    ~LoopbackPort() { close(m_socket); }
    [[nodiscard]] int Socket() const { return m_socket; }
    [[nodiscard]] int Number() const { return ntohs(m_address.sin_port); }
    [[nodiscard]] std::string Port() const { return std::to_string(Number()); }
    [[nodiscard]] std::string Place() const { return "127.0.0.1:" + Port(); }
    [[nodiscard]] sockaddr *Address() { return reinterpret_cast<sockaddr *>(&m_address); }

private:
    int m_socket = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in m_address = Loopback(0);
};

/// A port of the loopback interface that lets no connection through: what has been asked for before waits at its door,
/// and once its queue is full, the system answers nobody.
class SilentPort : public LoopbackPort {
public:
    SilentPort() : LoopbackPort(0) {
        for (int &waiting : m_waiting) {
            waiting = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
            std::ignore = connect(waiting, Address(), sizeof(sockaddr_in)); // does not wait for an answer
        }
    }
    ~SilentPort() {
        for (int const waiting : m_waiting)
            close(waiting);
    }

private:
    std::array<int, 4> m_waiting{};
};

} // namespace zelvar::test
