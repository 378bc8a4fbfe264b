// A connection that the application makes for a reader, beside one that a program makes for itself.
#include "Harness.h"
#include "zelvar/base/FileDescriptor.h"
#include "zelvar/data/reader/ConnectionBroker.h"
#include "zelvar/data/wire/ConnectRecords.h"

#include <arpa/inet.h>
#include <sys/socket.h>

namespace zelvar::bench {
namespace {

/// Takes connections on 127.0.0.1 and does nothing with them.
class Listener {
public:
    Listener() {
        m_address.sin_family = AF_INET;
        m_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof m_address;
        auto *const general = reinterpret_cast<sockaddr *>(&m_address);
        constexpr int mostWaiting = 16;
        if (bind(m_socket.Get(), general, size) != 0 || listen(m_socket.Get(), mostWaiting) != 0 ||
            getsockname(m_socket.Get(), general, &size) != 0)
            Fail("no port to listen at");
    }
    [[nodiscard]] std::uint16_t Port() const { return ntohs(m_address.sin_port); }
    void Connect() {
        FileDescriptor const made(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        if (connect(made.Get(), reinterpret_cast<sockaddr const *>(&m_address), sizeof m_address) != 0)
            Fail("no connection");
        Accept();
    }
    void Accept() const { FileDescriptor const taken(accept(m_socket.Get(), nullptr, nullptr)); }

private:
    FileDescriptor m_socket{socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    sockaddr_in m_address{};
};

Register const kConnection("reader.connection", [] {
    Listener listener;
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0)
        Fail("no sockets");
    FileDescriptor const reader(ends[0]);
    ConnectionTerms terms;
    terms.hosts = {{"127.0.0.1", listener.Port()}};
    auto const broker = ConnectionBroker::Serve(std::make_shared<ConnectionTerms const>(terms), ends[1]);
    wire::ConnectQuestion question{.kind = wire::ConnectQuestion::Connect, .port = listener.Port()};
    question.number.bytes = {127, 0, 0, 1};
    constexpr int together = 20;
    Pair const pair = Compare(
        51,
        [&] {
            for (int i = 0; i < together; ++i) {
                wire::ConnectAnswer answer;
                int file = -1;
                if (!wire::SendRecord(reader.Get(), question) || !wire::ReceiveRecord(reader.Get(), answer, file))
                    Fail("the broker has gone");
                FileDescriptor const made(file);
                if (!made.IsOpen())
                    Fail("the broker does not connect");
                listener.Accept();
            }
        },
        [&] {
            for (int i = 0; i < together; ++i)
                listener.Connect();
        });
    Figure("reader.connection", (pair.firstMs - pair.secondMs) / together, "ms",
           {.limit = 1, .note = "more for a connection than one that is made without a broker"});
    Figure("reader.connection.whole", pair.firstMs / together, "ms",
           {.alternatives = {{"connect", pair.secondMs / together}}});
});

} // namespace
} // namespace zelvar::bench
