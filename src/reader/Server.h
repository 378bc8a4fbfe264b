#pragma once

#include "zelvar/data/wire/MessageChannel.h"
#include "zelvar/data/wire/SharedMemory.h"
#include "zelvar/reader/LogCollector.h"
#include "zelvar/reader/RequestQueue.h"

#include <chrono>
#include <thread>

namespace zelvar::reader {

class RequestHandler;

/// The reader's end of the talk with its application. The thread that calls `Receive` takes the requests in; a worker
/// does them one after the other, in the order they came, and answers. So a reader is ended, and its request stopped,
/// whatever a driver does.
class Server {
public:
    /// Takes `socket` over. `status` holds a `ReaderStatus`. `log` outlives this. The worker asks for the drivers at
    /// once: they are ready when the first request comes. `idle`: how long it waits for a request; 0 for ever.
    Server(int socket, std::unique_ptr<wire::SharedMemory> status, LogCollector &log,
           std::chrono::milliseconds idle = {});
    /// Stops the request under way and waits for it.
    ~Server();
    Server(Server const &) = delete;
    Server &operator=(Server const &) = delete;

    /// Takes requests in until the talk ends: `Gone`, or `Damaged`; `Late` if nobody wanted anything for too long.
    wire::MessageChannel::Result Receive();

private:
    void Work();
    void Do(RequestHandler &handler, RequestQueue::Entry &entry);
    void WriteStatus(wire::RequestT const &request);
    void Send(std::uint64_t number, wire::AnswerBodyUnion body);

    wire::MessageChannel m_channel;
    std::unique_ptr<wire::SharedMemory> m_status;
    LogCollector *m_log;
    std::chrono::milliseconds m_idle;
    RequestQueue m_queue;
    std::thread m_worker;
};

} // namespace zelvar::reader
