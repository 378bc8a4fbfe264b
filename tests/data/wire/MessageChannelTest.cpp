#include "zelvar/data/wire/MessageChannel.h"

#include "support/Processes.h"
#include "zelvar/base/FileDescriptor.h"

#include <thread>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>

namespace zelvar::wire {
namespace {

using Bytes = MessageChannel::Bytes;
using Result = MessageChannel::Result;

/// Two ends; `raw` is the socket of the one that misbehaves.
struct Talk {
    Talk() : Talk(Pair()) {}
    MessageChannel near;
    MessageChannel far;
    int raw;

    /// What the near end receives from what has been sent so far.
    Result Receive() { return near.Receive(message, file, MessageChannel::Clock::now()); }
    void SendRaw(Bytes const &bytes) const {
        ASSERT_EQ(send(raw, bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
    }
    Bytes message;
    int file = -1;

private:
    explicit Talk(std::array<int, 2> ends) : near(ends[0]), far(ends[1]), raw(ends[1]) {}
    static std::array<int, 2> Pair() {
        std::array<int, 2> ends{};
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
        return ends;
    }
};

Bytes Head(std::uint32_t mark, std::uint32_t length) {
    Bytes head(8);
    std::memcpy(head.data(), &mark, sizeof mark);
    std::memcpy(head.data() + sizeof mark, &length, sizeof length);
    return head;
}
constexpr std::uint32_t kMark = 0x5A4C5652; // as it goes over the wire

bool IsOpen(int file) { return fcntl(file, F_GETFD) >= 0; }

TEST(MessageChannel, MessagesArriveWholeAndInOrder) {
    Talk talk;
    int const on = 1; // the far end is told who sends
    ASSERT_EQ(setsockopt(talk.raw, SOL_SOCKET, SO_PASSCRED, &on, sizeof on), 0);
    ASSERT_EQ(talk.near.Send(Bytes{1}, -1, MessageChannel::Forever()), Result::Done);
    ASSERT_EQ(talk.far.Receive(talk.message, talk.file, MessageChannel::Clock::now()), Result::Done);
    EXPECT_EQ(talk.file, -1);
    for (Bytes const &sent : {Bytes{1, 2, 3}, Bytes{}, Bytes{4}})
        ASSERT_EQ(talk.far.Send(sent, -1, MessageChannel::Forever()), Result::Done);
    for (Bytes const &expected : {Bytes{1, 2, 3}, Bytes{}, Bytes{4}}) {
        ASSERT_EQ(talk.Receive(), Result::Done);
        EXPECT_EQ(talk.message, expected);
        EXPECT_EQ(talk.file, -1);
    }
    EXPECT_EQ(talk.Receive(), Result::Late);
}

TEST(MessageChannel, AMessageLongerThanTheSocketHoldsPassesWhileTheOtherEndReads) {
    Talk talk;
    Bytes sent(9'000'001);
    for (std::size_t i = 0; i < sent.size(); ++i)
        sent[i] = static_cast<std::uint8_t>(i * 7 + i / 1000);
    std::thread sender([&] { EXPECT_EQ(talk.far.Send(sent, -1, MessageChannel::Forever()), Result::Done); });
    EXPECT_EQ(talk.near.Receive(talk.message, talk.file, MessageChannel::Forever()), Result::Done);
    sender.join();
    EXPECT_TRUE(talk.message == sent);
}

TEST(MessageChannel, WhoDoesNotReadMakesTheSenderLate) {
    Talk talk;
    Bytes const sent(9'000'000);
    EXPECT_EQ(talk.far.Send(sent, -1, MessageChannel::Clock::now() + std::chrono::milliseconds(20)), Result::Late);
}

TEST(MessageChannel, ATornMessageIsWaitedForAndCompleted) {
    Talk talk;
    Bytes whole = Head(kMark, 5);
    whole.insert(whole.end(), {1, 2, 3, 4, 5});
    for (std::size_t i = 0; i + 1 < whole.size(); ++i) {
        talk.SendRaw({whole[i]});
        ASSERT_EQ(talk.Receive(), Result::Late) << "byte " << i;
    }
    talk.SendRaw({whole.back()});
    ASSERT_EQ(talk.Receive(), Result::Done);
    EXPECT_EQ(talk.message, (Bytes{1, 2, 3, 4, 5}));
}

TEST(MessageChannel, WhatIsNoMessageEndsTheTalk) {
    struct {
        char const *what;
        Bytes sent;
        Result expected;
    } const cases[] = {{"a stranger's mark", Head(kMark + 1, 0), Result::Damaged},
                       {"too long by one", Head(kMark, MessageChannel::kLongest + 1), Result::Damaged},
                       {"as long as allowed, but not there", Head(kMark, MessageChannel::kLongest), Result::Late},
                       {"half a head", {0x52, 0x56}, Result::Late}};
    for (auto const &[what, sent, expected] : cases) {
        Talk talk;
        talk.SendRaw(sent);
        EXPECT_EQ(talk.Receive(), expected) << what;
        shutdown(talk.raw, SHUT_RDWR);
        EXPECT_EQ(talk.Receive(), expected == Result::Late ? Result::Gone : expected) << what;
    }
}

TEST(MessageChannel, AClosedEndIsNoticedBySenderAndReceiver) {
    Talk talk;
    shutdown(talk.raw, SHUT_RDWR);
    EXPECT_EQ(talk.Receive(), Result::Gone);
    EXPECT_EQ(talk.near.Send(Bytes{1}, -1, MessageChannel::Forever()), Result::Gone);
}

TEST(MessageChannel, AFileComesWithItsMessage) {
    Talk talk;
    FileDescriptor const sent(open("/dev/null", O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(talk.far.Send(Bytes{1}, -1, MessageChannel::Forever()), Result::Done);
    ASSERT_EQ(talk.far.Send(Bytes{2}, sent.Get(), MessageChannel::Forever()), Result::Done);
    ASSERT_EQ(talk.Receive(), Result::Done);
    EXPECT_EQ(talk.file, -1);
    ASSERT_EQ(talk.Receive(), Result::Done);
    FileDescriptor const received(talk.file);
    struct stat a {
    }, b{};
    ASSERT_EQ(fstat(sent.Get(), &a), 0);
    ASSERT_EQ(fstat(received.Get(), &b), 0);
    EXPECT_EQ(a.st_rdev, b.st_rdev);
    EXPECT_NE(fcntl(received.Get(), F_GETFD) & FD_CLOEXEC, 0);
}

/// Sends bytes with that many descriptors beside them.
void SendWithFiles(int socket, Bytes bytes, std::vector<int> const &files) {
    iovec part{bytes.data(), bytes.size()};
    std::vector<char> note(CMSG_SPACE(files.size() * sizeof(int)));
    msghdr out{};
    out.msg_iov = &part;
    out.msg_iovlen = 1;
    out.msg_control = note.data();
    out.msg_controllen = note.size();
    cmsghdr *const rights = CMSG_FIRSTHDR(&out);
    rights->cmsg_level = SOL_SOCKET;
    rights->cmsg_type = SCM_RIGHTS;
    rights->cmsg_len = CMSG_LEN(files.size() * sizeof(int));
    std::memcpy(CMSG_DATA(rights), files.data(), files.size() * sizeof(int));
    ASSERT_GT(sendmsg(socket, &out, MSG_NOSIGNAL), 0);
}

TEST(MessageChannel, FilesThatNobodyAskedForAreNotKept) {
    FileDescriptor const null(open("/dev/null", O_RDONLY | O_CLOEXEC));
    std::size_t const before = test::CountIn("/proc/self/fd");
    {
        Talk talk; // several beside one head: at most one is kept
        SendWithFiles(talk.raw, Head(kMark, 0), {null.Get(), null.Get(), null.Get()});
        ASSERT_EQ(talk.Receive(), Result::Done);
        FileDescriptor const received(talk.file);
        EXPECT_TRUE(IsOpen(talk.file));
        EXPECT_EQ(test::CountIn("/proc/self/fd"), before + 3);
    }
    {
        Talk talk; // one beside each half of a head
        Bytes const head = Head(kMark, 0);
        SendWithFiles(talk.raw, {head.begin(), head.begin() + 4}, {null.Get()});
        EXPECT_EQ(talk.Receive(), Result::Late);
        SendWithFiles(talk.raw, {head.begin() + 4, head.end()}, {null.Get()});
        EXPECT_EQ(talk.Receive(), Result::Damaged);
    }
    {
        Talk talk; // beside a body, where none belongs
        talk.SendRaw(Head(kMark, 1));
        EXPECT_EQ(talk.Receive(), Result::Late);
        SendWithFiles(talk.raw, {1}, {null.Get()});
        EXPECT_EQ(talk.Receive(), Result::Done);
        EXPECT_EQ(talk.file, -1);
        EXPECT_EQ(test::CountIn("/proc/self/fd"), before + 2);
    }
    EXPECT_EQ(test::CountIn("/proc/self/fd"), before);
}

} // namespace
} // namespace zelvar::wire
