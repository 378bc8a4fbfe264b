#include "zelvar/data/reader/ReaderPool.h"

#include "zelvar/base/Report.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace zelvar {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kLook{10};          // between two looks at the stop signal
constexpr milliseconds kGoneAfterKill{20}; // what a process needs to end
constexpr milliseconds kSending{1000};     // a reader always listens
constexpr int kMostFailedStarts = 3;
constexpr milliseconds kPauseAfterFailedStarts{5000};

} // namespace

void ReaderPool::Configure(ReaderSettings const &settings) {
    std::lock_guard const lock(m_mutex);
    m_settings = settings;
    m_failedStarts = 0;
}

RequestBudget ReaderPool::BudgetOf(RequestKind kind) const {
    std::lock_guard const lock(m_mutex);
    return m_settings.BudgetOf(kind);
}

milliseconds ReaderPool::TimeInListing(milliseconds wasted) const {
    std::lock_guard const lock(m_mutex);
    return std::min(m_settings.probeInListing, m_settings.patience - wasted);
}

milliseconds ReaderPool::TimeForLooks() const {
    std::lock_guard const lock(m_mutex);
    return m_settings.probeInListing;
}

milliseconds ReaderPool::TimeForServerFiles() const {
    std::lock_guard const lock(m_mutex);
    return 2 * m_settings.patience;
}

ReaderPool::Place *ReaderPool::FindFree(ReaderRole const &role, int preferred) {
    Place *found = nullptr;
    for (Place &place : m_places) {
        if (place.lent || !(place.role == role))
            continue;
        if (place.process->Number() == preferred)
            return &place;
        if (found == nullptr)
            found = &place;
    }
    return found;
}

int ReaderPool::Count(ReaderRole const &role) const {
    return static_cast<int>(
        std::count_if(m_places.begin(), m_places.end(), [&](Place const &place) { return place.role == role; }));
}

namespace {

/// Whether readers of that role are lent by the rule for connections.
bool IsOfConnection(ReaderRole const &role) { return !role.connection.empty() && role.connection != kFileServers; }

} // namespace

int ReaderPool::Most(ReaderRole const &role) const {
    if (IsOfConnection(role))
        return 1;
    if (role.background)
        return std::max(1, m_settings.thumbnailReaders);
    return std::max(1, role.listing ? m_settings.listingReaders : m_settings.imageReaders);
}

std::vector<ReaderPool::Place>::iterator ReaderPool::End(std::vector<Place>::iterator at) {
    at->process->Terminate();
    Hold(at->process, {});
    return m_places.erase(at);
}

void ReaderPool::EndUseless(TermsPtr const &wanted) {
    // One that ends by itself must not be asked any more: it is given up a little before.
    Clock::time_point const now = Clock::now();
    auto const longest = m_settings.connectionIdle * 9 / 10;
    for (auto at = m_places.begin(); at != m_places.end();) {
        bool const isOld = now - at->idleSince > longest;
        bool const isOther =
            wanted != nullptr && at->terms != nullptr && at->terms->id == wanted->id && !(*at->terms == *wanted);
        at = !at->lent && IsOfConnection(at->role) && (isOld || isOther) ? End(at) : std::next(at);
    }
}

bool ReaderPool::MakeRoom(ReaderRole const &role) {
    if (Count(role) >= Most(role))
        return false;
    if (!IsOfConnection(role))
        return true;
    auto const isOne = [](Place const &place) { return IsOfConnection(place.role); };
    if (std::ranges::count_if(m_places, isOne) < std::max(1, m_settings.connectionReaders))
        return true;
    auto longest = m_places.end();
    for (auto at = m_places.begin(); at != m_places.end(); ++at)
        if (isOne(*at) && !at->lent && (longest == m_places.end() || at->idleSince < longest->idleSince))
            longest = at;
    if (longest == m_places.end())
        return false;
    End(longest);
    return true;
}

bool ReaderPool::StartOne(ReaderRole const &role, TermsPtr const &terms) {
    // A program that does not start is not tried again at each request.
    if (m_failedStarts >= kMostFailedStarts && Clock::now() < m_nextStart)
        return false;
    std::shared_ptr<ReaderProcess> process = ReaderProcess::Start(m_settings, terms, role.background);
    if (process == nullptr) {
        ++m_failedStarts;
        m_nextStart = Clock::now() + kPauseAfterFailedStarts;
        return false;
    }
    ++m_counts.started;
    m_places.push_back({.process = std::move(process), .role = role, .terms = terms});
    return true;
}

ReaderPool::Loan ReaderPool::Borrow(Wanted const &wanted, Clock::time_point deadline,
                                    std::function<bool()> const &isStopped) {
    ReaderRole const role = wanted.Role();
    std::unique_lock lock(m_mutex);
    ForgetThoseOfParent();
    while (true) {
        EndUseless(wanted.terms);
        Place *free = FindFree(role, wanted.preferred);
        if (free == nullptr && MakeRoom(role)) {
            if (!StartOne(role, wanted.terms))
                return {};
            free = &m_places.back();
        }
        if (free != nullptr) {
            free->lent = true;
            return {this, free->process};
        }
        m_changed.wait_for(lock, kLook);
        if (Clock::now() >= deadline)
            return {};
        lock.unlock();
        bool const stopped = isStopped && isStopped();
        lock.lock();
        if (stopped)
            return {};
    }
}

void ReaderPool::Tell(int number, wire::MessageChannel::Bytes message) {
    Loan loan;
    std::lock_guard const lock(m_mutex);
    for (Place &place : m_places)
        if (place.process->Number() == number) {
            place.unsent.push_back(std::move(message));
            if (!std::exchange(place.lent, true))
                loan = {this, place.process}; // whose end sends it
            return;
        }
}

void ReaderPool::GiveBack(std::shared_ptr<ReaderProcess> const &process) {
    std::unique_lock lock(m_mutex);
    while (true) {
        auto const at = std::find_if(m_places.begin(), m_places.end(),
                                     [&](Place const &place) { return place.process == process; });
        if (at == m_places.end()) {
            Hold(process, {}); // ended while it was lent
            break;
        }
        if (at->unsent.empty()) {
            at->lent = false;
            at->idleSince = Clock::now();
            break;
        }
        auto const messages = std::exchange(at->unsent, {});
        lock.unlock();
        for (wire::MessageChannel::Bytes const &message : messages)
            std::ignore = process->Channel().Send(message, -1, Clock::now() + kSending); // the next request will notice
        lock.lock();
    }
    m_changed.notify_one();
}

void ReaderPool::Hold(std::shared_ptr<ReaderProcess> const &process, DString const &place) {
    bool const isHeld =
        std::any_of(m_held.begin(), m_held.end(), [&](Held const &held) { return held.process == process; });
    if (!isHeld && !process->HasEnded(milliseconds(0)))
        m_held.push_back({process, place});
}

void ReaderPool::Warm(bool listing) {
    std::lock_guard const lock(m_mutex);
    ForgetThoseOfParent();
    ReaderRole const role{.listing = listing};
    if (Count(role) == 0)
        StartOne(role, nullptr);
}

bool ReaderPool::HasHeld() const {
    std::lock_guard const lock(m_mutex);
    return !m_held.empty();
}

void ReaderPool::Retire(Loan const &loan, bool crashed, DString const &heldAt) {
    std::lock_guard const lock(m_mutex);
    if (!loan->IsTerminated())
        ++(crashed ? m_counts.crashed : m_counts.killed);
    if (!heldAt.empty())
        Hold(loan.Process(), heldAt);
    auto const at = std::find_if(m_places.begin(), m_places.end(),
                                 [&](Place const &entry) { return entry.process == loan.Process(); });
    if (at == m_places.end())
        return;
    ReaderRole const role = at->role;
    TermsPtr const terms = at->terms;
    m_places.erase(at);
    if (loan->HasBegun()) {
        m_failedStarts = 0;
        if (!IsOfConnection(role)) // one of those begins with its next request
            StartOne(role, terms); // the next request finds a warm reader again
    } else if (crashed) {
        ++m_failedStarts;
        m_nextStart = Clock::now() + kPauseAfterFailedStarts;
    }
    m_changed.notify_all();
}

void ReaderPool::ForgetEnded() {
    std::erase_if(m_held, [](Held const &held) { return held.process->HasEnded(milliseconds(0)); });
}

bool ReaderPool::IsBlocked(DString const &place) {
    std::lock_guard const lock(m_mutex);
    if (m_held.empty())
        return false;
    ForgetEnded();
    return std::any_of(m_held.begin(), m_held.end(),
                       [&](Held const &held) { return held.place == place && held.process->IsBlocked(); });
}

ReaderCounts ReaderPool::Counts() {
    std::lock_guard const lock(m_mutex);
    EndUseless(nullptr);
    ForgetEnded();
    ReaderCounts counts = m_counts;
    counts.alive = static_cast<int>(m_places.size());
    counts.leftBehind = static_cast<int>(m_held.size());
    return counts;
}

void ReaderPool::AfterFork(bool inChild) {
    if (inChild)
        ForgetThoseOfParent();
    m_mutex.unlock();
}

/// Also asked at each loan: not every way to make a process tells of it.
void ReaderPool::ForgetThoseOfParent() {
    if (m_process == getpid())
        return;
    m_process = getpid();
    m_places.clear();
    m_held.clear();
    m_counts = {};
    m_failedStarts = 0;
}

void ReaderPool::EndOf(DString const &connection) {
    std::vector<Place> places;
    {
        std::lock_guard const lock(m_mutex);
        auto const others = std::partition(m_places.begin(), m_places.end(), [&](Place const &place) {
            return connection.empty() || place.role.connection != connection;
        });
        places.assign(std::make_move_iterator(others), std::make_move_iterator(m_places.end()));
        m_places.erase(others, m_places.end());
        for (Place &place : places) {
            place.process->Terminate();
            if (!place.lent) // else whoever has it gives it back, and finds it gone from here
                Hold(place.process, {});
        }
    }
    m_changed.notify_all();
}

void ReaderPool::EndAll() {
    std::vector<Place> places;
    {
        std::lock_guard const lock(m_mutex);
        m_counts = {};
        // Those on loan fail the request of whoever has them, who then finds them gone from here.
        places.swap(m_places);
    }
    for (Place &place : places)
        place.process->Terminate();
    std::lock_guard const lock(m_mutex);
    for (Place &place : places)
        if (!place.lent && !place.process->HasEnded(kGoneAfterKill))
            m_held.push_back({place.process, {}});
    m_changed.notify_all();
}

} // namespace zelvar
