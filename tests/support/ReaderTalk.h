#pragma once

#include "support/Test.h"
#include "zelvar/data/wire/Messages.h"

#include <sys/socket.h>

namespace zelvar::test {

/// Both ends of a stream of messages.
struct SocketPair {
    SocketPair() { EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0); }
    std::array<int, 2> ends{-1, -1};
};

/// A test's end of the talk with a reader: asks, and waits for the answer. Whoever waits longer than the longest answer
/// can take gets none.
class ReaderTalk {
public:
    using Result = wire::MessageChannel::Result;
    using Answer = std::unique_ptr<wire::AnswerT>;

    explicit ReaderTalk(int socket) : m_channel(socket) {}

    /// Bytes that each further request may take; 0 for no limit.
    std::uint64_t memory = 0;

    template <class Body>
    std::uint64_t Send(Body body, int file = -1) {
        SendBytes(wire::PackRequest(++m_number, memory, std::move(body)), file);
        return m_number;
    }
    void SendBytes(wire::MessageChannel::Bytes const &bytes, int file = -1) {
        EXPECT_EQ(m_channel.Send(bytes, file, wire::MessageChannel::Forever()), Result::Done);
    }
    void Stop(std::uint64_t number) {
        wire::StopT stop;
        stop.number = number;
        Send(stop);
    }
    /// The next answer; null if the reader has gone.
    Answer Receive() {
        constexpr auto longest = std::chrono::seconds(30);
        wire::MessageChannel::Bytes message;
        int file = -1;
        result = m_channel.Receive(message, file, wire::MessageChannel::Clock::now() + longest);
        return result == Result::Done ? wire::Unpack<wire::Answer>(message) : nullptr;
    }
    template <class Body>
    Answer Ask(Body body, int file = -1) {
        std::uint64_t const number = Send(std::move(body), file);
        Answer answer = Receive();
        EXPECT_TRUE(answer == nullptr || answer->number == number);
        return answer;
    }
    [[nodiscard]] int Socket() const { return m_channel.Socket(); }

    Result result = Result::Done; ///< of the last `Receive`

private:
    wire::MessageChannel m_channel;
    std::uint64_t m_number = 0;
};

/// Why a request failed; "no answer", or "not failed".
inline std::string FailureIn(ReaderTalk::Answer const &answer) {
    if (answer == nullptr)
        return "no answer";
    return answer->body.AsFailed() == nullptr ? "not failed" : answer->body.AsFailed()->reason;
}

/// What names trees and images, and requests, as tests write them down.
inline std::unique_ptr<wire::TreeSpecT> TreeSpec(std::uint64_t id, std::string driver, std::string url,
                                                 bool family = false, std::string filter = {}) {
    auto spec = std::make_unique<wire::TreeSpecT>();
    spec->id = id;
    spec->driver = std::move(driver);
    spec->family = family;
    spec->url = std::move(url);
    spec->filter = std::move(filter);
    return spec;
}
inline std::unique_ptr<wire::ImageSpecT> ImageSpec(std::uint64_t id, std::string driver, std::string moniker,
                                                   bool family = false) {
    auto spec = std::make_unique<wire::ImageSpecT>();
    spec->id = id;
    spec->driver = std::move(driver);
    spec->family = family;
    spec->moniker = std::move(moniker);
    return spec;
}
inline wire::OpenTreeT OpenTree(std::unique_ptr<wire::TreeSpecT> spec) {
    wire::OpenTreeT request;
    request.tree = std::move(spec);
    return request;
}
inline wire::ListChildrenT ListChildren(std::unique_ptr<wire::TreeSpecT> spec, std::string parent, int mask = 0xFF) {
    wire::ListChildrenT request;
    request.tree = std::move(spec);
    request.parent = std::make_unique<wire::NodeT>();
    request.parent->path = std::move(parent);
    request.mask = mask;
    return request;
}
inline wire::OpenImageT OpenImage(std::unique_ptr<wire::ImageSpecT> spec) {
    wire::OpenImageT request;
    request.image = std::move(spec);
    return request;
}
/// A 4 x 4 window at the origin, as it is.
inline wire::ReadPixelsT ReadPixels(std::unique_ptr<wire::ImageSpecT> spec, std::uint64_t bytes) {
    wire::ReadPixelsT request;
    request.image = std::move(spec);
    request.width = request.height = 4;
    request.outWidth = request.outHeight = 4;
    request.bytes = bytes;
    return request;
}

} // namespace zelvar::test
