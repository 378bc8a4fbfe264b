#include "zelvar/data/reader/ConnectionBroker.h"

#include "zelvar/data/reader/ConnectionNotes.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

namespace zelvar {

using platform::DialHost;
using platform::NumberOf;
using platform::ResolveHost;
using platform::TextOf;

namespace {

using Cause = DError::Cause;
using std::chrono::milliseconds;

constexpr std::size_t kMostNames = 1000;
/// Where machines of clouds find their own keys: libraries of stores that are given none ask there by the way.
constexpr char const *kCloud = "169.254.169.254";
constexpr char const *kOwnMachine = "localhost";

bool IsOwnMachine(wire::HostNumber const &number) {
    DString const text = TextOf(number);
    return text == "127.0.0.1" || text == "::1";
}

DError Because(DString const &text, Cause cause) {
    DError error;
    error.Set(text, cause);
    return error;
}

/// What is told of a connection that was not made. The errors are the system's; EACCES is this broker's own.
DError ReasonOf(HostAndPort const &place, int error, milliseconds time) {
    DString const name = TextOf(place);
    switch (error) {
    case ENOENT:
        return Because("no server named " + place.host + " is known", Cause::NoAnswer);
    case ECONNREFUSED:
        return Because(name + " refuses connections", Cause::NoAnswer);
    case ETIMEDOUT:
        return Because(name + Format(" does not answer (%g s)", static_cast<double>(time.count()) / 1000),
                       Cause::NoAnswer);
    case EHOSTUNREACH:
    case ENETUNREACH:
        return Because(name + " cannot be reached", Cause::NoAnswer);
    case EACCES:
        return Because(SendsOnText(place), Cause::Refused);
    default:
        return Because(name + ": " + std::strerror(error), Cause::NoAnswer);
    }
}

/// The text up to the first zero; empty if there is none.
DString TextIn(std::array<char, 256> const &bytes) {
    auto const *const end = std::ranges::find(bytes, '\0');
    return end == bytes.end() ? DString() : DString(bytes.begin(), end);
}

DString OwnHostName() {
    std::array<char, 256> name{};
    return gethostname(name.data(), name.size() - 1) == 0 ? DString(name.data()) : DString();
}

/// Numbers as the system writes them, so that one is known in any other form.
std::shared_ptr<ConnectionTerms const> WithPlainNumbers(ConnectionTerms terms) {
    for (HostAndPort &place : terms.hosts)
        if (auto const number = NumberOf(place.host))
            place.host = TextOf(*number);
    return std::make_shared<ConnectionTerms const>(std::move(terms));
}

} // namespace

std::unique_ptr<ConnectionBroker> ConnectionBroker::Serve(std::shared_ptr<ConnectionTerms const> const &terms,
                                                          int socket) {
    FileDescriptor owner(socket);
    FileDescriptor wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!wake.IsOpen())
        return nullptr;
    std::unique_ptr<ConnectionBroker> broker(new ConnectionBroker(terms, owner.Release(), wake.Release()));
    try {
        broker->m_thread = std::thread([self = broker.get()] { self->Run(); });
    } catch (std::system_error const &) {
        return nullptr;
    }
    return broker;
}

ConnectionBroker::ConnectionBroker(std::shared_ptr<ConnectionTerms const> const &terms, int socket, int wake)
    : m_terms(WithPlainNumbers(*terms)), m_socket(socket), m_wake(wake) {}

ConnectionBroker::~ConnectionBroker() {
    {
        std::lock_guard const lock(m_mutex);
        m_isEnding = true;
        eventfd_write(m_wake.Get(), 1);
    }
    shutdown(m_socket.Get(), SHUT_RDWR);
    if (m_thread.joinable())
        m_thread.join();
}

void ConnectionBroker::Begin() {
    std::lock_guard const lock(m_mutex);
    m_failure.Clear();
    m_failedHost.clear();
    m_reached.reset();
    eventfd_t count = 0;
    if (m_isStopped.exchange(false) && !m_isEnding)
        eventfd_read(m_wake.Get(), &count);
}

void ConnectionBroker::Stop() {
    std::lock_guard const lock(m_mutex);
    if (!m_isStopped.exchange(true))
        eventfd_write(m_wake.Get(), 1);
}

DError ConnectionBroker::Failure() const {
    std::lock_guard const lock(m_mutex);
    return m_failure;
}

std::optional<HostAndPort> ConnectionBroker::Elsewhere() const {
    bool const isOfOne = m_terms->kind == ConnectionKind::MapService || m_terms->kind == ConnectionKind::WebFolder ||
                         m_terms->kind == ConnectionKind::Address;
    std::lock_guard const lock(m_mutex);
    if (!isOfOne || !m_reached || m_terms->hosts.empty())
        return std::nullopt;
    HostAndPort const &own = m_terms->hosts.front();
    bool const isOwn = EqualNoCase(m_reached->host, own.host) && (own.port == 0 || m_reached->port == own.port);
    return isOwn ? std::nullopt : m_reached;
}

void ConnectionBroker::Run() {
    while (true) {
        wire::ConnectQuestion question;
        int file = -1;
        bool const isQuestion = wire::ReceiveRecord(m_socket.Get(), question, file);
        FileDescriptor brought(file);
        if (!isQuestion || m_isEnding)
            break;
        Patience const patience(m_terms->connectTime, m_wake.Get(), m_socket.Get(),
                                [this] { return m_isStopped || m_isEnding; });
        wire::ConnectAnswer answer;
        FileDescriptor made(-1);
        ConnectionNotes::Note note;
        auto const port = static_cast<std::uint16_t>(question.port);
        switch (question.kind) {
        case wire::ConnectQuestion::Resolve:
            answer = Resolve(TextIn(question.name), port, patience);
            break;
        case wire::ConnectQuestion::KeepNote:
            if (!ConnectionNotes::Instance().Keep(m_terms, TextIn(question.name), std::move(brought)))
                answer.error = EINVAL;
            break;
        case wire::ConnectQuestion::FindNote:
            note = ConnectionNotes::Instance().Find(*m_terms, TextIn(question.name));
            answer.age = static_cast<std::uint32_t>(note.age.count());
            break;
        default:
            made = Connect(question.number, port, patience, answer.error);
        }
        if (!wire::SendRecord(m_socket.Get(), answer, note.file != nullptr ? note.file->Get() : made.Get()))
            break;
    }
    ConnectionNotes::Instance().Tidy(); // readers that nobody needs end after a while
}

wire::ConnectAnswer ConnectionBroker::Resolve(DString const &host, std::uint16_t port, Patience const &patience) {
    wire::ConnectAnswer answer;
    std::vector<Number> numbers;
    if (!MayReach(*m_terms, host, port))
        answer.error = EACCES;
    else if (m_proxies.Find(*m_terms, host, patience))
        numbers = {StandIn(host)};
    else
        numbers = ResolveHost(host, patience, answer.error);
    // Libraries ask for the name of this machine by the way.
    if (answer.error != 0 && (answer.error != EACCES || host != OwnHostName()))
        Note({host, port}, answer.error);
    if (m_hosts.size() > kMostNames)
        m_hosts.clear();
    for (Number const &number : numbers) {
        if (answer.count == answer.numbers.size())
            break;
        answer.numbers[answer.count++] = number;
        m_hosts[number].insert(host);
    }
    return answer;
}

DString ConnectionBroker::HostBehind(Number const &number, std::uint16_t port) const {
    DString text = TextOf(number);
    if (MayReach(*m_terms, text, port))
        return text;
    // Libraries know the numbers of this machine's own name, and ask nobody for them.
    if (IsOwnMachine(number) && MayReach(*m_terms, kOwnMachine, port))
        return kOwnMachine;
    auto const known = m_hosts.find(number);
    if (known == m_hosts.end())
        return text;
    auto const allowed =
        std::ranges::find_if(known->second, [&](DString const &host) { return MayReach(*m_terms, host, port); });
    return allowed != known->second.end() ? *allowed : *known->second.begin();
}

FileDescriptor ConnectionBroker::Connect(Number const &number, std::uint16_t port, Patience const &patience,
                                         int &error) {
    HostAndPort const place{HostBehind(number, port), port};
    if (!MayReach(*m_terms, place.host, port) || port == 0) {
        error = EACCES;
        if (m_terms->kind != ConnectionKind::ObjectStore || place.host != kCloud)
            Note(place, error);
        return FileDescriptor(-1);
    }
    if (auto const proxy = m_proxies.Find(*m_terms, place.host, patience))
        return ConnectByProxy(place, *proxy, patience, error);
    FileDescriptor made = DialHost(number, port, patience, error);
    Note(place, error);
    return made;
}

FileDescriptor ConnectionBroker::ConnectByProxy(HostAndPort const &to, Proxy const &proxy, Patience const &patience,
                                                int &error) {
    DString const name = "the proxy " + TextOf(proxy.place);
    auto const fail = [&](DString const &text, int why) {
        error = why;
        NoteFailure(to.host, Because(text, Cause::NoAnswer));
        return FileDescriptor(-1);
    };
    if (!proxy.refusal.empty())
        return fail("the proxy that is set is of no kind that is spoken (" + proxy.refusal + ")", EHOSTUNREACH);
    FileDescriptor made(-1);
    std::vector<Number> const numbers = ResolveHost(proxy.place.host, patience, error);
    for (Number const &number : numbers) {
        made = DialHost(number, proxy.place.port, patience, error);
        if (made.IsOpen() || error == ECANCELED)
            break;
    }
    if (!made.IsOpen())
        return fail(ReasonOf(proxy.place, error, m_terms->connectTime).Text() + " (a proxy)", error);
    DString const request = TunnelRequest(to, proxy);
    ssize_t const sent = send(made.Get(), request.data(), request.size(), MSG_NOSIGNAL);
    DString answer;
    constexpr std::size_t longest = 16384;
    // Byte by byte: what comes behind the head is the server's, and the reader's to read.
    while (sent == static_cast<ssize_t>(request.size()) && !answer.ends_with("\r\n\r\n") && answer.size() < longest) {
        error = patience.WaitFor(made.Get(), POLLIN);
        char byte = 0;
        if (error != 0 || recv(made.Get(), &byte, 1, MSG_DONTWAIT) <= 0)
            break;
        answer += byte;
    }
    int const status = answer.ends_with("\r\n\r\n") ? StatusOfTunnel(answer) : 0;
    constexpr int ok = 200;
    if (status == ok) {
        Note(to, 0);
        return made;
    }
    if (status == 0)
        return fail(name + " does not answer", error != 0 ? error : ECONNREFUSED);
    return fail(name + " does not lead to " + TextOf(to) + Format(" (%d)", status), ECONNREFUSED);
}

ConnectionBroker::Number ConnectionBroker::StandIn(DString const &host) {
    // Of the range that is set aside for measurements between networks: no host has such a number.
    auto const next = static_cast<std::uint16_t>(m_standIns.size() + 1);
    Number const fresh{.bytes = {198, 18, static_cast<std::uint8_t>(next >> 8U), static_cast<std::uint8_t>(next)}};
    if (m_standIns.size() > kMostNames)
        m_standIns.clear();
    return m_standIns.try_emplace(host, fresh).first->second;
}

void ConnectionBroker::Note(HostAndPort const &place, int error) {
    if (error == 0) {
        std::lock_guard const lock(m_mutex);
        m_reached = place;
    }
    NoteFailure(place.host, error == 0 ? DError() : ReasonOf(place, error, m_terms->connectTime));
}

void ConnectionBroker::NoteFailure(DString const &host, DError failure) {
    if (failure.IsSet())
        Report::TraceMessage(Report::kTraceDriver, "connection %s: %s", m_terms->id.c_str(), failure.Text().c_str());
    std::lock_guard const lock(m_mutex);
    // A host that was reached by another of its numbers is no failure; that others were reached before is no success.
    if (!failure.IsSet() && m_failedHost != host)
        return;
    m_failure = std::move(failure);
    m_failedHost = m_failure.IsSet() ? host : DString();
}

} // namespace zelvar
