#pragma once

#include "zelvar/base/ProcessMoments.h"
#include "zelvar/base/Report.h"
#include "zelvar/data/RDIDriver.h"
#include "zelvar/data/reader/FileVerdicts.h"
#include "zelvar/data/reader/ProbeMemory.h"
#include "zelvar/data/reader/ReaderPool.h"
#include "zelvar/data/wire/Messages.h"

#include <atomic>
#include <memory>
#include <span>

namespace zelvar {

/// The application's end of the talk with its readers: asks, waits within the budget, and deals with what does not
/// answer.
///
/// - A request that is stopped, or late, gets the word to stop; a reader that does not answer within 50 ms then is
///   killed and another started.
/// - A reader that waits for a processor is not late: its time is what it had, with its waits for data, and the clock
///   ends it only far above.
/// - A reader that crashes, or takes more memory than the request may, fails that request alone. The moniker is not
///   tried again before the file behind it has changed.
/// - A reader that the kernel holds, as on a mount that does not answer, is left behind; its place gets no more work
///   until it is gone.
/// - A child made by fork starts readers of its own; what it has opened goes on with them.
///
/// Any thread.
class Readers final : ProcessMoments {
public:
    static Readers &Instance();

    struct Call {
        RequestKind kind = RequestKind::Properties;       ///< where no scope says otherwise
        char const *what = "";                            ///< for the log
        DString subject{};                                ///< the moniker; empty for none
        StopSignal const *stop = nullptr;                 ///< may be null
        int preferred = 0;                                ///< number of the reader that has the tree or image open
        DString address{};                                ///< whose connection is meant where there is no subject
        std::optional<std::chrono::milliseconds> limit{}; ///< on the clock; far above its time if there is none
        std::size_t pixelBytes = 0;                       ///< of shared memory
    };
    struct Answer {
        std::unique_ptr<wire::AnswerT> message; ///< null if there is none
        DError error;                           ///< why not
        int reader = 0;                         ///< its number
        ReaderPool::Loan loan{};                ///< keeps the shared memory as it is
        wire::SharedMemory *pixels = nullptr;   ///< the memory
    };
    /// The terms of the connection that a moniker belongs to; null for files on disk.
    [[nodiscard]] static ReaderPool::TermsPtr ConnectionOf(DString const &moniker);
    /// Asks and waits. A request that the reader itself declines has a message: `wire::FailedT`.
    template <class Body>
    [[nodiscard]] Answer Ask(Call const &call, Body body) {
        return Exchange(call, [&](std::uint64_t number, std::uint64_t memory) {
            return wire::PackRequest(number, memory, std::move(body));
        });
    }
    /// Why a tree, an image or a table was not opened, into `*error`, which may be null. A refusal is told of the
    /// moniker as well, where "no driver reads it" is passed over in silence.
    void SayNotOpened(DString const &moniker, Answer const &answer, DError *error);
    /// Says something that is not answered, if that reader is there; it need not be free.
    template <class Body>
    void Tell(int reader, Body body) {
        m_pool.Tell(reader, wire::PackRequest(0, 0, std::move(body)));
    }

    /// A number for a tree or an image, never given before.
    [[nodiscard]] std::uint64_t NextId() { return ++m_lastId; }
    [[nodiscard]] ReaderPool &Pool() { return m_pool; }
    [[nodiscard]] FileVerdicts &Verdicts() { return m_verdicts; }
    [[nodiscard]] ProbeMemory &Probed() { return m_probed; }

private:
    enum class Ending { Answered, Stopped, Late, Crashed, TooLarge };
    using MakeRequest = std::function<wire::MessageChannel::Bytes(std::uint64_t number, std::uint64_t memory)>;
    struct Terms {
        RequestKind kind;
        std::chrono::milliseconds time; ///< of the reader, given from now on
        std::uint64_t memory;
        wire::MessageChannel::Clock::time_point begin;
        wire::MessageChannel::Clock::time_point limit; ///< on the clock, whatever the reader had
        std::function<bool()> isStopped;
    };

    Readers() = default;
    void BeforeFork() override;
    void AfterFork(Side side) override;
    Answer Exchange(Call const &call, MakeRequest const &make);
    [[nodiscard]] Terms TermsOf(Call const &call) const;
    [[nodiscard]] bool IsRefused(Call const &call, Terms const &terms, DError &error);
    struct Outcome {
        Ending ending = Ending::Crashed;
        bool inStep = false;              ///< the reader has no request under way any more
        std::chrono::milliseconds had{0}; ///< by a reader that came late
    };
    [[nodiscard]] ReaderPool::Loan Borrow(Call const &call, Terms const &terms, ReaderPool::TermsPtr connection);
    [[nodiscard]] static bool IsInStep(ReaderPool::Loan const &loan);
    static Outcome Wait(ReaderPool::Loan const &loan, Terms const &terms, std::uint64_t number, Answer &answer);
    static Outcome GiveUp(ReaderPool::Loan const &loan, Terms const &terms, std::uint64_t number, Answer &answer,
                          Outcome why);
    static wire::MessageChannel::Result Receive(ReaderPool::Loan const &loan,
                                                wire::MessageChannel::Clock::time_point deadline, std::uint64_t number,
                                                Answer &answer);
    /// Ends a reader that is not in step, and remembers what is to be remembered. The reason.
    DError Conclude(ReaderPool::Loan const &loan, Call const &call, Terms const &terms, std::uint64_t number,
                    Outcome outcome);
    static bool Send(ReaderPool::Loan const &loan, std::span<std::uint8_t const> message, int file);

    ReaderPool m_pool;
    FileVerdicts m_verdicts;
    ProbeMemory m_probed;
    std::atomic<std::uint64_t> m_lastId{0};
    std::atomic<std::uint64_t> m_lastNumber{0};
    Known m_known{*this};
};

} // namespace zelvar
