#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/data/Connection.h"
#include "zelvar/data/ProxySettings.h"
#include "zelvar/platform/os/Dialing.h"

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <thread>

namespace zelvar {

/// Connects for a reader that may not: a thread that resolves names and connects as the reader asks, as far as the
/// terms of its connection allow, and hands the connections over. Nothing that the reader says is trusted, and no
/// connection stays open here.
///
/// One thread makes and ends it; the rest is for any thread.
class ConnectionBroker {
public:
    /// Takes `socket` over, whose other end the reader has. Null if there is no thread or descriptor to be had.
    static std::unique_ptr<ConnectionBroker> Serve(std::shared_ptr<ConnectionTerms const> const &terms, int socket);
    ~ConnectionBroker();
    ConnectionBroker(ConnectionBroker const &) = delete;
    ConnectionBroker &operator=(ConnectionBroker const &) = delete;

    /// A request begins: what failed before is forgotten, and connections are made again.
    void Begin();
    /// Ends the connecting that is under way at once; nothing is connected before the next request.
    void Stop();
    /// Why the last connection that was asked for since then was not made; not set if it was.
    [[nodiscard]] DError Failure() const;
    /// The host that was connected to last since then, if it is none of those that stand for the connection's server.
    [[nodiscard]] std::optional<HostAndPort> Elsewhere() const;

private:
    using Number = wire::HostNumber;
    using Patience = platform::Patience;
    ConnectionBroker(std::shared_ptr<ConnectionTerms const> const &terms, int socket, int wake);
    void Run();
    wire::ConnectAnswer Resolve(DString const &host, std::uint16_t port, Patience const &patience);
    FileDescriptor Connect(Number const &number, std::uint16_t port, Patience const &patience, int &error);
    FileDescriptor ConnectByProxy(HostAndPort const &to, Proxy const &proxy, Patience const &patience, int &error);
    /// The host that is meant by a number, if it may be reached there; else one that may not.
    [[nodiscard]] DString HostBehind(Number const &number, std::uint16_t port) const;
    /// A number that stands for a host which the proxy alone can find.
    Number StandIn(DString const &host);
    void Note(HostAndPort const &place, int error);
    void NoteFailure(DString const &host, DError failure);

    std::shared_ptr<ConnectionTerms const> m_terms;
    FileDescriptor m_socket;
    FileDescriptor m_wake; ///< readable while stopped or ending
    std::atomic<bool> m_isStopped{false};
    std::atomic<bool> m_isEnding{false};
    mutable std::mutex m_mutex; ///< guards the three below, and together the flags and `m_wake`
    DError m_failure;
    DString m_failedHost;
    std::optional<HostAndPort> m_reached;
    // Of the thread alone:
    std::map<Number, std::set<DString>> m_hosts; ///< names that have been resolved to a number
    std::map<DString, Number> m_standIns;
    ProxySettings m_proxies;
    std::thread m_thread;
};

} // namespace zelvar
