#include "zelvar/reader/BrokerClient.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <set>

#include <sys/socket.h>
#include <unistd.h>

namespace zelvar::reader {

namespace {

std::atomic<int> g_socket{-1};

/// The answer, and what came with it; an answer of ECONNABORTED if the application has gone.
wire::ConnectAnswer Ask(wire::ConnectQuestion const &question, int &file, int along = -1) {
    static auto &mutex = *new std::mutex; // threads that libraries leave behind may ask at the end
    std::lock_guard const lock(mutex);
    wire::ConnectAnswer answer;
    file = -1;
    if (!wire::SendRecord(g_socket, question, along) || !wire::ReceiveRecord(g_socket, answer, file))
        return {.error = ECONNABORTED};
    return answer;
}

/// Descriptors that are, or have been, connections.
struct Connections {
    std::mutex mutex;
    std::set<int> files; ///< guarded
};
Connections &TheConnections() {
    static auto &connections = *new Connections; // as above
    return connections;
}

/// False if the name has no room.
bool PutName(char const *name, wire::ConnectQuestion &question) {
    std::size_t const length = std::strlen(name);
    if (length >= question.name.size())
        return false;
    std::memcpy(question.name.data(), name, length);
    return true;
}

} // namespace

void BrokerClient::Use(int socket) { g_socket = socket; }

bool BrokerClient::IsUsed() { return g_socket >= 0; }

int BrokerClient::Connect(wire::HostNumber const &number, std::uint16_t port) {
    int file = -1;
    wire::ConnectAnswer const answer =
        Ask({.kind = wire::ConnectQuestion::Connect, .port = port, .number = number}, file);
    if (file < 0)
        errno = answer.error != 0 ? answer.error : ECONNABORTED;
    return file;
}

void BrokerClient::Note(int file) {
    Connections &connections = TheConnections();
    std::lock_guard const lock(connections.mutex);
    connections.files.insert(file);
}

void BrokerClient::CutOff() {
    Connections &connections = TheConnections();
    std::lock_guard const lock(connections.mutex);
    for (int const file : connections.files)
        shutdown(file, SHUT_RDWR); // fails for one that is closed, or is something else by now
    connections.files.clear();
}

std::vector<wire::HostNumber> BrokerClient::Resolve(char const *name, std::uint16_t port) {
    wire::ConnectQuestion question{.kind = wire::ConnectQuestion::Resolve, .port = port};
    if (!PutName(name, question))
        return {};
    int file = -1;
    wire::ConnectAnswer const answer = Ask(question, file);
    if (file >= 0)
        close(file);
    auto const count = std::min<std::size_t>(answer.error == 0 ? answer.count : 0, answer.numbers.size());
    return {answer.numbers.begin(), answer.numbers.begin() + static_cast<std::ptrdiff_t>(count)};
}

void BrokerClient::KeepNote(char const *name, int file) {
    wire::ConnectQuestion question{.kind = wire::ConnectQuestion::KeepNote};
    int none = -1;
    if (PutName(name, question))
        Ask(question, none, file);
    if (none >= 0)
        close(none);
}

FileDescriptor BrokerClient::FindNote(char const *name, std::chrono::seconds &age) {
    wire::ConnectQuestion question{.kind = wire::ConnectQuestion::FindNote};
    int file = -1;
    if (PutName(name, question))
        age = std::chrono::seconds(Ask(question, file).age);
    return FileDescriptor(file);
}

} // namespace zelvar::reader
