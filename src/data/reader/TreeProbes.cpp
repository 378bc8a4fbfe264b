#include "zelvar/data/reader/TreeProbes.h"

#include "zelvar/base/Aside.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/base/TypedSecrets.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/reader/Readers.h"
#include "zelvar/data/reader/RemoteTreeDriver.h"

#include <algorithm>
#include <atomic>
#include <future>
#include <map>
#include <optional>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace zelvar {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kBatchTime{100};

/// What was asked about one file and what came back.
struct Probe {
    std::shared_ptr<std::vector<DString> const> asked;
    std::vector<DString> reading;
    bool isLeft = false; ///< nobody had time for it
};

/// The answers that a thread has at hand.
struct Known {
    RequestScope::Clock::time_point scope; ///< of the last single probe
    DString path;
    Probe last;
    std::unordered_map<DString, Probe> const *ahead = nullptr; ///< of the question that was waited for last
};

Known &KnownOfThread() {
    thread_local Known known;
    return known;
}

bool Holds(std::vector<DString> const &ids, DString const &id) {
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

void AddRemote(std::vector<BDIDrvr *> const &drivers, std::vector<DString> &ids) {
    for (BDIDrvr *const driver : drivers)
        if (dynamic_cast<RemoteTreeDriver *>(driver) != nullptr && driver->GetAttrInt("BDI_Multiple_Images") == 1 &&
            !Holds(ids, driver->GetId()))
            ids.push_back(driver->GetId());
}

/// The drivers in readers that may claim a file of that name.
std::vector<DString> CandidatesFor(DString const &path) {
    std::vector<DString> ids;
    AddRemote(BDIDrvrMngr::Instance()->CandidatesFor(FileNameOf(path)), ids);
    return ids;
}

/// The same, and behind them all others.
std::vector<DString> AllFor(DString const &path) {
    std::vector<DString> ids = CandidatesFor(path);
    AddRemote(BDIDrvrMngr::Instance()->Drivers(), ids);
    return ids;
}

Probe AskAlone(DString const &path, DString const &id) {
    Probe probe;
    // A file that has time of its own was named, and may be called anything.
    RequestScope const *const scope = RequestScope::Current();
    std::vector<DString> asked = scope != nullptr && scope->HasOwnTime() ? AllFor(path) : CandidatesFor(path);
    if (!Holds(asked, id))
        asked.insert(asked.begin(), id);
    wire::ProbeTreesT body;
    body.path = WithSecrets(path);
    body.drivers = asked;
    probe.asked = std::make_shared<std::vector<DString>>(std::move(asked));
    Readers::Call const call{.kind = RequestKind::Probe, .what = "probe", .subject = path};
    Readers::Answer const answer = Readers::Instance().Ask(call, std::move(body));
    if (wire::ProbedT *const probed = answer.message == nullptr ? nullptr : answer.message->body.AsProbed())
        probe.reading = std::move(probed->drivers);
    return probe;
}

bool IsOnServer(DString const &path) { return BDIMoniker(path, nullptr).IsUrl(); }

/// The listing that this thread is at, or null.
RequestScope *ListingOfThread() {
    RequestScope *const scope = RequestScope::Current();
    return scope == nullptr || scope->Kind() == RequestKind::List ? scope : scope->Listing();
}

/// The drivers to ask about the files of one listing, looked up once for all files that the same ones may claim.
class DriverSets {
public:
    using Ids = std::shared_ptr<std::vector<DString> const>;
    Ids Candidates(DString const &path) {
        std::vector<BDIDrvr *> const &drivers = BDIDrvrMngr::Instance()->CandidatesFor(FileNameOf(path));
        Ids &ids = m_byDrivers[&drivers];
        if (ids == nullptr)
            ids = std::make_shared<std::vector<DString>>(CandidatesFor(path));
        return ids;
    }
    Ids All(DString const &path) {
        // Those that do not claim a nameless file stand in one order.
        Ids &ids = m_all;
        if (ids == nullptr)
            ids = std::make_shared<std::vector<DString>>(AllFor(path));
        return ids;
    }

private:
    std::unordered_map<void const *, Ids> m_byDrivers;
    Ids m_all;
};

/// Files with the drivers to ask, each list of drivers told once.
class Batch {
public:
    void Add(ProbeAhead::File const &file, DriverSets::Ids const &ids) {
        auto const [at, isNew] = m_sets.try_emplace(ids, static_cast<std::uint32_t>(m_sets.size()));
        m_files.push_back({file, &*at});
    }
    [[nodiscard]] std::size_t Size() const { return m_files.size(); }
    [[nodiscard]] DString const &PathAt(std::size_t file) const { return m_files[file].file.path; }
    [[nodiscard]] FileState const &StateAt(std::size_t file) const { return m_files[file].file.state; }
    [[nodiscard]] DriverSets::Ids const &DriversAt(std::size_t file) const { return m_files[file].set->first; }
    /// The request for those from `first` on.
    [[nodiscard]] wire::ProbeFilesT From(std::size_t first) const {
        wire::ProbeFilesT body;
        body.sets.resize(m_sets.size());
        for (auto const &[ids, number] : m_sets) {
            body.sets[number] = std::make_unique<wire::DriverSetT>();
            body.sets[number]->drivers = *ids;
        }
        for (std::size_t i = first; i < m_files.size(); ++i) {
            body.files.push_back(std::make_unique<wire::ProbedFileT>());
            body.files.back()->path = WithSecrets(m_files[i].file.path);
            body.files.back()->set = m_files[i].set->second;
        }
        return body;
    }

private:
    using Sets = std::map<DriverSets::Ids, std::uint32_t>;
    struct File {
        ProbeAhead::File file;
        Sets::value_type const *set;
    };
    Sets m_sets;
    std::vector<File> m_files;
};

/// Files that are asked about on a thread of their own, while the one that lists them goes on.
class FilesAsked final : public ProbeAhead::Question {
public:
    using Clock = RequestScope::Clock;

    FilesAsked(ProbeAhead::Files const &files, ProbeAhead::Files const &nameless) {
        DriverSets sets;
        for (ProbeAhead::File const &file : files)
            Add(m_claimed.files, file, sets.Candidates(file.path));
        for (ProbeAhead::File const &file : nameless)
            Add(m_looks.files, file, sets.All(file.path));
        if (m_claimed.files.Size() + m_looks.files.Size() == 0)
            return;
        RequestScope const *const around = RequestScope::Current();
        if (auto const left = around == nullptr ? std::nullopt : around->TimeLeft())
            m_end = Clock::now() + *left;
        RequestScope const *const listing = ListingOfThread();
        // Who asks lists one folder: all of its files lie on a server, or none.
        m_isOnServer = m_claimed.files.Size() > 0 && IsOnServer(m_claimed.files.PathAt(0));
        // What the others that are under way will spend is not known yet.
        int const share = ProbeAhead::kMostUnderWay;
        if (listing != nullptr && m_isOnServer)
            m_claimed.limit = (Readers::Instance().Pool().TimeForServerFiles() - listing->looked) / share;
        if (listing != nullptr)
            m_looks.limit = (TreeProbes::TimeForLooks() - listing->looked) / share;
        m_done = DoAside([this] { Ask(); });
    }
    ~FilesAsked() override {
        m_isStopped = true;
        if (m_done.valid())
            m_done.wait();
        Known &known = KnownOfThread();
        if (known.ahead == &m_answers)
            known.ahead = nullptr;
    }
    FilesAsked(FilesAsked const &) = delete;
    FilesAsked &operator=(FilesAsked const &) = delete;

    void Wait() override {
        RequestScope const *const around = RequestScope::Current();
        constexpr milliseconds kLook{5}; // between two looks at the stop signal
        while (m_done.valid() && m_done.wait_for(kLook) == std::future_status::timeout)
            m_isStopped = m_isStopped || (around != nullptr && around->IsStopped());
        if (m_done.valid())
            m_done.get();
        if (RequestScope *const listing = ListingOfThread())
            listing->looked += m_claimed.spent + m_looks.spent;
        KnownOfThread().ahead = &m_answers;
    }
    [[nodiscard]] bool IsFound(DString const &path) const override {
        auto const at = m_answers.find(path);
        return at != m_answers.end() && !at->second.reading.empty();
    }

private:
    struct Part {
        Batch files{};
        std::optional<std::chrono::microseconds> limit{}; ///< what the listing may still spend on them
        std::chrono::microseconds spent{0};               ///< of it
        [[nodiscard]] bool HasTime() const { return !limit || spent < *limit; }
    };

    void Add(Batch &batch, ProbeAhead::File const &file, DriverSets::Ids const &ids) {
        if (Readers::Instance().Verdicts().Has(file.path))
            return;
        if (ProbeMemory::Ids const reading = Readers::Instance().Probed().Find(file.state, ids))
            m_answers[file.path] = {.asked = ids, .reading = *reading};
        else
            batch.Add(file, ids);
    }

    void Ask() {
        std::size_t file = Ask(m_claimed);
        for (; m_isOnServer && !m_claimed.HasTime() && file < m_claimed.files.Size(); ++file)
            m_answers[m_claimed.files.PathAt(file)] = {
                .asked = m_claimed.files.DriversAt(file), .reading = {}, .isLeft = true};
        std::ignore = Ask(m_looks);
    }

    /// Asks about all of them, and notes the answers, until a request is not answered or there is no time left. The
    /// number of those that were answered, which are the first ones.
    std::size_t Ask(Part &part) {
        std::size_t first = 0;
        while (first < part.files.Size() && part.HasTime()) {
            milliseconds time = kBatchTime;
            if (part.limit)
                time = std::min(time, std::chrono::ceil<milliseconds>(*part.limit - part.spent));
            auto const begin = Clock::now();
            std::size_t const before = first;
            // That a batch is late is no answer about its files, and wastes nobody's patience.
            RequestScope const scope(
                RequestKind::Probe, [this] { return m_isStopped.load(); }, time);
            Readers::Call call{.kind = RequestKind::Probe, .what = "probes", .address = part.files.PathAt(first)};
            if (m_end)
                call.limit = std::chrono::duration_cast<milliseconds>(*m_end - begin);
            Readers::Answer const answer = Readers::Instance().Ask(call, part.files.From(first));
            if (part.limit)
                part.spent += std::chrono::ceil<std::chrono::microseconds>(Clock::now() - begin);
            auto *const probed = answer.message == nullptr ? nullptr : answer.message->body.AsFilesProbed();
            for (std::size_t i = 0; probed != nullptr && i < probed->files.size() && first < part.files.Size(); ++i) {
                if (probed->files[i] == nullptr)
                    return first;
                DriverSets::Ids const &asked = part.files.DriversAt(first);
                Readers::Instance().Probed().Keep(part.files.StateAt(first), asked, probed->files[i]->drivers);
                m_answers[part.files.PathAt(first)] = {.asked = asked, .reading = std::move(probed->files[i]->drivers)};
                ++first;
            }
            if (first == before)
                break;
        }
        return first;
    }

    Part m_claimed;
    Part m_looks;
    bool m_isOnServer = false;
    std::optional<Clock::time_point> m_end; ///< of the time that the listing has
    std::atomic<bool> m_isStopped = false;
    std::unordered_map<DString, Probe> m_answers;
    std::future<void> m_done;
};

} // namespace

bool TreeProbes::Reads(DString const &driverId, DString const &path) {
    Known &known = KnownOfThread();
    RequestScope *const scope = RequestScope::Current();
    if (known.ahead != nullptr)
        if (auto const at = known.ahead->find(path); at != known.ahead->end() && Holds(*at->second.asked, driverId)) {
            if (at->second.isLeft && scope != nullptr)
                scope->SetUnanswered();
            return Holds(at->second.reading, driverId);
        }
    auto const moment = scope == nullptr ? RequestScope::Clock::time_point() : scope->Begin();
    bool const isKnown =
        scope != nullptr && known.scope == moment && known.path == path && Holds(*known.last.asked, driverId);
    if (!isKnown) {
        known.scope = moment;
        known.path = path;
        known.last = AskAlone(path, driverId);
    }
    return Holds(known.last.reading, driverId);
}

std::unique_ptr<ProbeAhead::Question> TreeProbes::AskAhead(ProbeAhead::Files const &files,
                                                           ProbeAhead::Files const &nameless) {
    return std::make_unique<FilesAsked>(files, nameless);
}

milliseconds TreeProbes::TimeForLooks() { return Readers::Instance().Pool().TimeForLooks(); }

} // namespace zelvar
