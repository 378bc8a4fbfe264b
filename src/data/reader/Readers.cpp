#include "zelvar/data/reader/Readers.h"

#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/reader/AnswerReading.h"
#include "zelvar/data/reader/Places.h"

#include <algorithm>
#include <utility>

#include <unistd.h>

namespace zelvar {

namespace {

using std::chrono::milliseconds;
using Clock = wire::MessageChannel::Clock;
using Result = wire::MessageChannel::Result;

constexpr milliseconds kLook{10};            // between two looks at the stop signal
constexpr milliseconds kGrace{50};           // for an answer behind the word to stop
constexpr milliseconds kHastyGrace{10};      // the same, where a window waits
constexpr milliseconds kHaste{200};          // who gives no more time than this is in haste
constexpr milliseconds kSending{1000};       // a reader always listens
constexpr milliseconds kStarting{15'000};    // what a new reader may need on a machine under load
constexpr milliseconds kGoneAfterKill{20};   // what a process needs to end
constexpr milliseconds kUnstamped{60'000};   // how long a verdict on what is no file on disk holds
constexpr milliseconds kLateListing{10'000}; // the same for a listing that came late: several lists ask for it
constexpr int kLooksPerMemoryLook = 5;
constexpr int kSlowest = 20;                  // times on the clock what a reader may have
constexpr milliseconds kLongestWait{120'000}; // for a processor, in all
constexpr int kSlowestGrace = 4;
constexpr std::uint64_t kOwnMemory = std::uint64_t{512} << 20U; // of a reader at rest, caches included

bool IsStopSet(StopSignal const *stop) { return stop != nullptr && stop->load(std::memory_order_relaxed); }

/// What a reader has had since it was first looked at: its own time and its waits for data, not those for a processor.
/// The moments before that look are a gift, so that a request that is soon answered costs no look at all.
class TimeHad {
public:
    explicit TimeHad(ReaderProcess const &reader) : m_reader(reader) {}
    [[nodiscard]] milliseconds Look() {
        ReaderProcess::ProcessorTimes const times = m_reader.ProcessorTimesNow();
        Clock::time_point const now = Clock::now();
        if (std::exchange(m_hasBegun, true)) {
            std::chrono::nanoseconds had = now - m_last - (times.waited - m_times.waited);
            // It may be in line now, which the kernel does not count yet. Some kernels count nothing.
            if (times.isRunnable && times.used.count() != 0)
                had = std::min(had, times.used - m_times.used);
            m_had += std::max(had, std::chrono::nanoseconds(0));
        }
        m_last = now;
        m_times = times;
        return std::chrono::duration_cast<milliseconds>(m_had);
    }

private:
    ReaderProcess const &m_reader;
    bool m_hasBegun = false;
    Clock::time_point m_last;
    ReaderProcess::ProcessorTimes m_times;
    std::chrono::nanoseconds m_had{0};
};

DError Because(char const *text, DError::Cause cause = DError::Cause::Unknown, std::int64_t detail = -1) {
    DError error;
    error.Set(text, cause, detail);
    return error;
}

/// What kept a reader from its server is known here better than there: it takes the place of what the reader says, and
/// of a list that it believes to be empty.
void TellOfConnection(ReaderProcess const &reader, wire::AnswerT &answer) {
    wire::ChildrenT const *const children = answer.body.AsChildren();
    bool const isFailure = answer.body.AsFailed() != nullptr || (children != nullptr && children->nodes.empty());
    DError reason = reader.Broker() == nullptr || !isFailure ? DError() : reader.Broker()->Failure();
    wire::FailedT const *const told = answer.body.AsFailed();
    // Libraries know of no other host than the one that they were sent to.
    if (told != nullptr && told->cause == static_cast<std::uint32_t>(DError::Cause::Untrusted))
        if (std::optional<HostAndPort> const place = reader.Broker() ? reader.Broker()->Elsewhere() : std::nullopt)
            reason.Set(UntrustedElsewhereText(*place), DError::Cause::Untrusted);
    if (!reason.IsSet())
        return;
    wire::FailedT failed;
    failed.reason = reason.Text();
    failed.cause = static_cast<std::uint32_t>(reason.Why());
    failed.detail = reason.Detail();
    answer.body.Set(std::move(failed));
}

double MillisecondsSince(Clock::time_point begin) {
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

} // namespace

Readers &Readers::Instance() {
    static auto &readers = *new Readers; // never destroyed: workers may still ask while the process ends
    return readers;
}

void Readers::BeforeFork() {
    m_pool.BeforeFork();
    m_verdicts.BeforeFork();
    m_probed.BeforeFork();
}

void Readers::AfterFork(Side side) {
    m_probed.AfterFork();
    m_verdicts.AfterFork();
    m_pool.AfterFork(side == Side::Child);
}

Readers::Terms Readers::TermsOf(Call const &call) const {
    RequestScope *const scope = RequestScope::Current();
    bool const ofScope = scope != nullptr && (call.kind != RequestKind::Probe || scope->Kind() == RequestKind::Probe);
    RequestKind const kind = ofScope ? scope->Kind() : call.kind;
    RequestBudget const budget = m_pool.BudgetOf(kind);
    Terms terms{
        .kind = kind,
        .time = budget.time,
        .memory = budget.memory,
        .begin = Clock::now(),
        .limit = {},
        .isStopped = [&call, scope] { return IsStopSet(call.stop) || (scope != nullptr && scope->IsStopped()); }};
    bool const isProbe = kind == RequestKind::Probe;
    if (RequestScope const *const listing = scope != nullptr && isProbe ? scope->Listing() : nullptr)
        terms.time = m_pool.TimeInListing(listing->wasted);
    // A listing may go on for as long as it finds something: its budget is that of each step.
    if (ofScope && scope->HasOwnTime())
        terms.time = *scope->OwnTimeLeft();
    else if (ofScope && kind != RequestKind::List && !isProbe)
        terms.time -= std::chrono::duration_cast<milliseconds>(terms.begin - scope->Begin());
    milliseconds longest = std::min(terms.time * kSlowest, terms.time + kLongestWait);
    for (auto const &limit : {call.limit, ofScope ? scope->OuterTimeLeft() : std::nullopt})
        if (limit)
            longest = std::min(longest, *limit);
    terms.time = std::min(terms.time, longest);
    terms.limit = terms.begin + longest;
    return terms;
}

bool Readers::IsRefused(Call const &call, Terms const &terms, DError &error) {
    if (call.subject.empty())
        return false;
    std::optional<FileVerdicts::Verdict> const verdict = m_verdicts.Find(call.subject, terms.time);
    if (verdict) {
        bool same = true;
        if (verdict->stamp.size >= 0) {
            wire::StampFileT body;
            body.path = call.subject;
            Answer const now = Ask({.kind = RequestKind::Probe, .what = "stamp"}, std::move(body));
            wire::StampT const *const stamp = now.message == nullptr ? nullptr : now.message->body.AsStamp();
            same = stamp == nullptr || verdict->stamp == FileVerdicts::Stamp{stamp->modified, stamp->size};
        }
        if (same) {
            error = verdict->error;
            return true;
        }
        m_verdicts.Forget(call.subject);
    }
    if (m_pool.HasHeld() && m_pool.IsBlocked(PlaceOfMoniker(call.subject))) {
        error.Set("its place does not answer", DError::Cause::NoAnswer);
        return true;
    }
    return false;
}

Readers::Answer Readers::Exchange(Call const &call, MakeRequest const &make) {
    Terms const terms = TermsOf(call);
    Answer answer;
    RequestScope *const scope = RequestScope::Current();
    auto const giveUp = [&](DError error) -> Answer && {
        answer.error = std::move(error);
        if (scope != nullptr)
            scope->SetUnanswered();
        return std::move(answer);
    };
    if (terms.isStopped() || terms.time <= milliseconds(0))
        return giveUp(Because("stopped"));
    if (DError error; IsRefused(call, terms, error))
        return giveUp(std::move(error));

    ReaderPool::TermsPtr connection = ConnectionOf(call.subject.empty() ? call.address : call.subject);
    if (connection != nullptr && !connection->missing.empty())
        return giveUp(Because(connection->missing.c_str(), DError::Cause::NoConnection));
    ReaderPool::Loan loan = Borrow(call, terms, std::move(connection));
    if (!loan)
        return giveUp(Because("no reader is free", DError::Cause::NoAnswer));
    std::uint64_t const number = ++m_lastNumber;
    bool isNew = false;
    wire::SharedMemory *const pixels = call.pixelBytes == 0 ? nullptr : loan->Pixels(call.pixelBytes, &isNew);
    if (call.pixelBytes != 0 && pixels == nullptr)
        return giveUp(
            Because("no memory for the pixels", DError::Cause::TooLarge, static_cast<std::int64_t>(call.pixelBytes)));
    answer.pixels = pixels;
    answer.reader = loan->Number();

    Outcome outcome;
    if (loan->Broker() != nullptr)
        loan->Broker()->Begin();
    if (Send(loan, make(number, terms.memory), isNew ? pixels->File() : -1))
        outcome = Wait(loan, terms, number, answer);
    Report::TraceMessage(Report::kTraceDriver, "reader %d (process %d): %s of \"%s\": %.1f ms%s", loan->Number(),
                         static_cast<int>(loan->Pid()), call.what, call.subject.c_str(), MillisecondsSince(terms.begin),
                         outcome.ending == Ending::Answered ? "" : ", no answer");
    if (outcome.ending != Ending::Answered)
        return giveUp(Conclude(loan, call, terms, number, outcome));
    TellOfConnection(*loan, *answer.message);
    answer.loan = std::move(loan);
    for (auto const &line : answer.message->log)
        if (line != nullptr)
            Report::TraceMessage(line->level, "%s", line->text.c_str());
    return answer;
}

ReaderPool::TermsPtr Readers::ConnectionOf(DString const &moniker) {
    if (moniker.empty() || !BDIMoniker(moniker, nullptr).IsUrl())
        return nullptr;
    static auto const &fileServers =
        *new ReaderPool::TermsPtr(std::make_shared<ConnectionTerms const>(ConnectionTerms{.id = kFileServers}));
    if (StartsWithNoCase(moniker, "smb://") || moniker.find("/vsismb/") != DString::npos)
        return fileServers;
    ConnectionTerms terms = zelvar::TermsOf(moniker);
    return terms.id.empty() ? nullptr : std::make_shared<ConnectionTerms const>(std::move(terms));
}

ReaderPool::Loan Readers::Borrow(Call const &call, Terms const &terms, ReaderPool::TermsPtr connection) {
    ReaderPool::Wanted const wanted{.listing = terms.kind == RequestKind::Probe || terms.kind == RequestKind::List,
                                    .terms = std::move(connection),
                                    .preferred = call.preferred,
                                    .background = RequestScope::Current() != nullptr &&
                                                  RequestScope::Current()->IsInBackground()};
    while (true) {
        ReaderPool::Loan loan = m_pool.Borrow(wanted, terms.begin + terms.time, terms.isStopped);
        if (!loan || IsInStep(loan))
            return loan;
        bool const gone = loan->Kill(kGoneAfterKill);
        m_pool.Retire(loan, false, gone ? DString() : PlaceOfMoniker(call.subject));
    }
}

/// Whether a reader is free for a new request: not while it works on one that was given up when it had just started.
bool Readers::IsInStep(ReaderPool::Loan const &loan) {
    if (loan->owed == 0)
        return true;
    Answer late;
    if (Receive(loan, Clock::now() + kHastyGrace, loan->owed, late) == Result::Done) {
        loan->owed = 0;
        return true;
    }
    return !loan->HasBegun();
}

bool Readers::Send(ReaderPool::Loan const &loan, std::span<std::uint8_t const> message, int file) {
    return loan->Channel().Send(message, file, Clock::now() + kSending) == Result::Done;
}

Result Readers::Receive(ReaderPool::Loan const &loan, Clock::time_point deadline, std::uint64_t number,
                        Answer &answer) {
    while (true) {
        wire::MessageChannel::Bytes bytes;
        int file = -1;
        Result const result = loan->Channel().Receive(bytes, file, deadline);
        if (file >= 0)
            close(file); // none is ever sent this way
        if (result != Result::Done)
            return result;
        std::unique_ptr<wire::AnswerT> message = wire::Unpack<wire::Answer>(bytes);
        if (message == nullptr || message->number > number)
            return Result::Damaged;
        loan->hasAnswered = true;
        if (message->number < number)
            continue; // to a request that was given up
        answer.message = std::move(message);
        return Result::Done;
    }
}

Readers::Outcome Readers::Wait(ReaderPool::Loan const &loan, Terms const &terms, std::uint64_t number, Answer &answer) {
    TimeHad time(*loan);
    milliseconds const step = std::clamp(terms.time, milliseconds(1), kLook);
    for (int looks = 1;; ++looks) {
        Result const result = Receive(loan, std::min(terms.limit, Clock::now() + step), number, answer);
        if (result == Result::Done)
            return {Ending::Answered, true};
        if (result != Result::Late)
            return {Ending::Crashed, false};
        if (int const progress = loan->ProgressOf(number); progress >= 0)
            RequestScope::NoteProgress(progress, RequestScope::kWhole);
        bool const isStopped = terms.isStopped();
        if (!loan->IsOwn()) // the question was answered on the other side of a fork: it is the parent's request
            return {.ending = Ending::Stopped};
        if (isStopped)
            return GiveUp(loan, terms, number, answer, {.ending = Ending::Stopped});
        bool const isOver = Clock::now() >= terms.limit;
        if (milliseconds const had = time.Look(); isOver || had >= terms.time)
            return GiveUp(loan, terms, number, answer, {.ending = Ending::Late, .had = had});
        if (looks % kLooksPerMemoryLook == 0 && terms.memory != 0 && loan->ResidentBytes() > terms.memory + kOwnMemory)
            return {Ending::TooLarge, false};
    }
}

Readers::Outcome Readers::GiveUp(ReaderPool::Loan const &loan, Terms const &terms, std::uint64_t number, Answer &answer,
                                 Outcome why) {
    bool const hasty = terms.kind == RequestKind::Probe || terms.time < kHaste;
    milliseconds const grace = hasty ? kHastyGrace : kGrace;
    wire::StopT stop;
    stop.number = number;
    if (loan->Broker() != nullptr)
        loan->Broker()->Stop(); // first: what loses its connection by the word must not make another
    Send(loan, wire::PackRequest(0, 0, stop), -1);
    // Who waits for a processor cannot hear the word either; a user who has said it is not kept much longer for that.
    TimeHad time(*loan);
    Clock::time_point const last = Clock::now() + grace * kSlowestGrace;
    Result result = Result::Late;
    for (milliseconds had = time.Look(); result == Result::Late && had < grace && Clock::now() < last;
         had = time.Look())
        result = Receive(loan, std::min(last, Clock::now() + grace - had), number, answer);
    if (result != Result::Done) {
        why.ending = result == Result::Late ? why.ending : Ending::Crashed;
        return why;
    }
    why.inStep = true;
    // An answer that was on its way counts; that it was stopped does not.
    if (answer.message->body.AsFailed() == nullptr)
        why.ending = Ending::Answered;
    else
        answer.message.reset();
    return why;
}

void Readers::SayNotOpened(DString const &moniker, Answer const &answer, DError *error) {
    DError reason = FailureOf(answer.message.get(), answer.error);
    if (answer.message == nullptr)
        reason.Set("\"" + moniker + "\": " + reason.Text(), reason.Why(), reason.Detail());
    else if (reason.Why() == DError::Cause::Refused)
        m_verdicts.SetFailure(moniker, reason);
    if (error != nullptr)
        *error = std::move(reason);
}

DError Readers::Conclude(ReaderPool::Loan const &loan, Call const &call, Terms const &terms, std::uint64_t number,
                         Outcome outcome) {
    bool const own = outcome.ending == Ending::Crashed || outcome.ending == Ending::TooLarge;
    std::optional<FileVerdicts::Stamp> const stamp = loan->StampOf(number);
    // One that has only begun is not to blame: it goes on, and its late answer is passed over.
    bool const starting = !own && !loan->HasBegun() && Clock::now() - loan->started < kStarting;
    if (starting)
        loan->owed = number;
    if (!outcome.inStep && !starting) {
        bool const gone = loan->Kill(kGoneAfterKill);
        m_pool.Retire(loan, outcome.ending == Ending::Crashed, gone ? DString() : PlaceOfMoniker(call.subject));
    }
    if (RequestScope *const scope = RequestScope::Current(); scope != nullptr && terms.kind == RequestKind::Probe)
        if (RequestScope *const listing = scope->Listing())
            listing->wasted += outcome.ending == Ending::Late
                                   ? outcome.had
                                   : std::chrono::ceil<milliseconds>(Clock::now() - terms.begin);
    if (outcome.ending == Ending::Stopped || loan->IsTerminated())
        return Because("stopped");
    if (starting)
        return Because("the reader starts slowly", DError::Cause::NoAnswer);

    DError reason;
    bool const hadItsTime = own || outcome.had >= terms.time;
    double const seconds = static_cast<double>(terms.time.count()) / 1000;
    std::uint64_t const memory = terms.memory + kOwnMemory;
    if (outcome.ending == Ending::TooLarge)
        reason.Set(Format("its reader took more than %d MB", static_cast<int>(memory >> 20U)), DError::Cause::TooLarge,
                   static_cast<std::int64_t>(memory));
    else if (outcome.ending != Ending::Late)
        reason.Set("its reader " + (loan->Ending().empty() ? DString("went away") : loan->Ending()),
                   DError::Cause::Crashed);
    else if (hadItsTime)
        reason.Set(Format("its reader took longer than %g s", seconds), DError::Cause::Late, terms.time.count());
    else
        reason.Set(Format("its reader got less than %g s to work in", seconds), DError::Cause::NoAnswer);
    Report::TraceMessage(Report::kTraceOpen, "reader %d (process %d), %s of \"%s\": %s", loan->Number(),
                         static_cast<int>(loan->Pid()), call.what, call.subject.c_str(), reason.Text().c_str());
    if (call.subject.empty() || !stamp)
        return reason;
    m_verdicts.SetFailure(call.subject, reason);
    FileVerdicts::Verdict verdict{.error = reason, .stamp = *stamp};
    if (!own)
        verdict.givenTime = terms.time;
    if (stamp->size < 0)
        verdict.until = Clock::now() + kUnstamped;
    else if (terms.kind == RequestKind::List && !own)
        verdict.until = Clock::now() + kLateListing;
    // Who selects a file again asks again for its picture: only what happens by itself is spared. A machine that is
    // busy says nothing about a file.
    if (hadItsTime && (own || terms.kind == RequestKind::Probe || terms.kind == RequestKind::List))
        m_verdicts.Set(call.subject, std::move(verdict));
    return reason;
}

} // namespace zelvar
