#include "zelvar/reader/Server.h"

#include "zelvar/data/DriverProvider.h"
#include "zelvar/data/ReaderDuty.h"
#include "zelvar/data/wire/Messages.h"
#include "zelvar/data/wire/ReaderStatus.h"
#include "zelvar/reader/BrokerClient.h"
#include "zelvar/reader/FileStamp.h"
#include "zelvar/reader/MemoryLimit.h"
#include "zelvar/reader/RequestHandler.h"

#include <exception>
#include <new>
#include <utility>

namespace zelvar::reader {

using wire::MessageChannel;

namespace {

using MaybeAnswer = std::optional<wire::AnswerBodyUnion>;

/// What a driver throws is an answer too.
MaybeAnswer Guarded(RequestHandler &handler, RequestQueue::Entry &entry) {
    if (entry.isStopped)
        return Failure("stopped");
    try {
        MemoryLimit const limit(entry.request->memory);
        return handler.Handle(entry.request->body, std::move(entry.file));
    } catch (std::bad_alloc const &) {
        return Failure("out of memory", DError::Cause::TooLarge);
    } catch (std::exception const &failure) {
        return Failure(failure.what());
    } catch (...) {
        return Failure("a driver failed");
    }
}

/// Whether connections are made anew for each question, or can be: libraries that wait for an answer hear no stop. A
/// database's carry what else is open in it.
bool AreConnectionsWithoutState() {
    ReaderDuty const *const duty = OwnDuty();
    return duty != nullptr && duty->connection && duty->connection->kind != ConnectionKind::PostgreSql &&
           duty->connection->kind != ConnectionKind::Odbc;
}

} // namespace

Server::Server(int socket, std::unique_ptr<wire::SharedMemory> status, LogCollector &log,
               std::chrono::milliseconds idle)
    : m_channel(socket), m_status(std::move(status)), m_log(&log), m_idle(idle), m_worker([this] { Work(); }) {}

Server::~Server() {
    m_queue.Close();
    m_worker.join();
}

MessageChannel::Result Server::Receive() {
    while (true) {
        MessageChannel::Bytes message;
        int number = -1;
        auto const deadline = m_idle.count() == 0 ? MessageChannel::Forever() : MessageChannel::Clock::now() + m_idle;
        MessageChannel::Result const received = m_channel.Receive(message, number, deadline);
        auto file = number < 0 ? nullptr : std::make_unique<FileDescriptor>(number);
        if (received == MessageChannel::Result::Late && !m_queue.IsIdle())
            continue;
        if (received != MessageChannel::Result::Done)
            return received;
        auto request = wire::Unpack<wire::Request>(message);
        if (request == nullptr)
            return MessageChannel::Result::Damaged;
        if (wire::StopT const *const stop = request->body.AsStop(); stop != nullptr) {
            m_queue.Stop(stop->number, [] {
                if (AreConnectionsWithoutState())
                    BrokerClient::CutOff();
            });
        } else {
            m_queue.Add(std::move(request), std::move(file));
        }
    }
}

void Server::Work() {
    EnsureDrivers();
    RequestHandler handler(m_queue.Signal(), &static_cast<wire::ReaderStatus *>(m_status->Data())->progress);
    for (RequestQueue::Entry entry; m_queue.Take(entry);)
        Do(handler, entry);
}

void Server::Do(RequestHandler &handler, RequestQueue::Entry &entry) {
    std::uint64_t const number = entry.request->number;
    WriteStatus(*entry.request);
    MaybeAnswer answer = Guarded(handler, entry);
    if (!answer)
        return;
    if (m_queue.Signal() && AreConnectionsWithoutState())
        answer = Failure("stopped"); // what was cut off may look like all that there is
    // Whoever found that it takes too much does not know what it might have taken.
    if (wire::FailedT *const failed = answer->AsFailed();
        failed != nullptr && failed->cause == static_cast<std::uint32_t>(DError::Cause::TooLarge) &&
        failed->detail < 0 && entry.request->memory != 0)
        failed->detail = static_cast<std::int64_t>(entry.request->memory);
    Send(number, std::move(*answer));
}

void Server::WriteStatus(wire::RequestT const &request) {
    DString const *const file = RequestHandler::FileOf(request.body);
    if (file == nullptr)
        return;
    FileStamp const stamp = StampOf(*file);
    auto &status = *static_cast<wire::ReaderStatus *>(m_status->Data());
    status.modified = stamp.modified;
    status.size = stamp.size;
    status.progress = -1;
    status.number = request.number;
}

void Server::Send(std::uint64_t number, wire::AnswerBodyUnion body) {
    wire::AnswerT answer;
    answer.number = number;
    answer.log = m_log->Take();
    answer.body = std::move(body);
    constexpr int noFile = -1;
    if (m_channel.Send(wire::Pack(answer), noFile, MessageChannel::Forever()) != MessageChannel::Result::Damaged)
        return; // an application that has gone is noticed by the other thread
    answer.body = Failure("the answer is too long");
    static_cast<void>(m_channel.Send(wire::Pack(answer), noFile, MessageChannel::Forever()));
}

} // namespace zelvar::reader
