#include "zelvar/data/reader/TreeProbes.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/reader/Readers.h"
#include "zelvar/data/reader/RemoteTreeDriver.h"

#include <algorithm>
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
    std::vector<DString> asked;
    std::vector<DString> reading;
    bool isLeft = false; ///< nobody had time for it
};

/// The answers that a thread has at hand.
struct Known {
    RequestScope::Clock::time_point scope; ///< of the last single probe
    DString path;
    Probe last;
    std::unordered_map<DString, Probe> ahead;
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
    probe.asked = scope != nullptr && scope->HasOwnTime() ? AllFor(path) : CandidatesFor(path);
    if (!Holds(probe.asked, id))
        probe.asked.insert(probe.asked.begin(), id);
    wire::ProbeTreesT body;
    body.path = path;
    body.drivers = probe.asked;
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

/// Files with the drivers to ask, each list of drivers told once.
class Batch {
public:
    void Add(DString const &path, std::vector<DString> ids) {
        auto const [at, isNew] = m_sets.try_emplace(std::move(ids), static_cast<std::uint32_t>(m_sets.size()));
        m_files.push_back({&path, &*at});
    }
    [[nodiscard]] std::size_t Size() const { return m_files.size(); }
    [[nodiscard]] DString const &PathAt(std::size_t file) const { return *m_files[file].path; }
    [[nodiscard]] std::vector<DString> const &DriversAt(std::size_t file) const { return m_files[file].set->first; }
    /// The request for those from `first` on.
    [[nodiscard]] wire::ProbeFilesT From(std::size_t first) const {
        wire::ProbeFilesT body;
        body.sets.resize(m_sets.size());
        for (auto const &[ids, number] : m_sets) {
            body.sets[number] = std::make_unique<wire::DriverSetT>();
            body.sets[number]->drivers = ids;
        }
        for (std::size_t i = first; i < m_files.size(); ++i) {
            body.files.push_back(std::make_unique<wire::ProbedFileT>());
            body.files.back()->path = *m_files[i].path;
            body.files.back()->set = m_files[i].set->second;
        }
        return body;
    }

    /// Asks about all of them, and notes the answers, until a request is not answered or, where there is a limit, the
    /// listing has spent that much on such files. The number of those that were answered, which are the first ones.
    std::size_t Ask(Known &known, RequestScope *listing, std::optional<milliseconds> limit) const {
        RequestScope const *const around = RequestScope::Current();
        std::size_t first = 0;
        while (first < m_files.size() && (!limit || listing->looked < *limit)) {
            milliseconds time = kBatchTime;
            if (limit)
                time = std::min(time, std::chrono::ceil<milliseconds>(*limit - listing->looked));
            auto const begin = RequestScope::Clock::now();
            std::size_t const before = first;
            // That a batch is late is no answer about its files, and wastes nobody's patience.
            RequestScope const scope(
                RequestKind::Probe, [around] { return around != nullptr && around->IsStopped(); }, time,
                RequestScope::Nesting::Alone);
            Readers::Call const call{.kind = RequestKind::Probe,
                                     .what = "probes",
                                     .network = IsOnServer(PathAt(first)),
                                     .limit = around == nullptr ? std::nullopt : around->TimeLeft()};
            Readers::Answer const answer = Readers::Instance().Ask(call, From(first));
            if (limit)
                listing->looked += std::chrono::ceil<std::chrono::microseconds>(RequestScope::Clock::now() - begin);
            auto *const probed = answer.message == nullptr ? nullptr : answer.message->body.AsFilesProbed();
            for (std::size_t i = 0; probed != nullptr && i < probed->files.size() && first < m_files.size(); ++i) {
                if (probed->files[i] == nullptr)
                    return first;
                known.ahead[PathAt(first)] = {.asked = DriversAt(first),
                                              .reading = std::move(probed->files[i]->drivers)};
                ++first;
            }
            if (first == before)
                break;
        }
        return first;
    }

private:
    using Sets = std::map<std::vector<DString>, std::uint32_t>;
    struct File {
        DString const *path;
        Sets::value_type const *set;
    };
    Sets m_sets;
    std::vector<File> m_files;
};

} // namespace

bool TreeProbes::Reads(DString const &driverId, DString const &path) {
    Known &known = KnownOfThread();
    RequestScope *const scope = RequestScope::Current();
    if (auto const at = known.ahead.find(path); at != known.ahead.end() && Holds(at->second.asked, driverId)) {
        if (at->second.isLeft && scope != nullptr)
            scope->SetUnanswered();
        return Holds(at->second.reading, driverId);
    }
    auto const moment = scope == nullptr ? RequestScope::Clock::time_point() : scope->Begin();
    bool const isKnown =
        scope != nullptr && known.scope == moment && known.path == path && Holds(known.last.asked, driverId);
    if (!isKnown) {
        known.scope = moment;
        known.path = path;
        known.last = AskAlone(path, driverId);
    }
    return Holds(known.last.reading, driverId);
}

void TreeProbes::AskAhead(std::vector<DString> const &paths, std::vector<DString> const &nameless) {
    Known &known = KnownOfThread();
    known.ahead.clear();
    Batch batch;
    Batch looks;
    for (DString const &path : paths)
        if (!Readers::Instance().Verdicts().Has(path))
            batch.Add(path, CandidatesFor(path));
    for (DString const &path : nameless)
        if (!Readers::Instance().Verdicts().Has(path))
            looks.Add(path, AllFor(path));
    // Who asks lists one folder: all of its files lie on a server, or none.
    bool const onServer = batch.Size() > 0 && IsOnServer(batch.PathAt(0));
    RequestScope *const listing = ListingOfThread();
    std::optional<milliseconds> const serverTime =
        onServer && listing != nullptr ? std::optional(Readers::Instance().Pool().TimeForServerFiles()) : std::nullopt;
    std::size_t const answered = batch.Ask(known, listing, serverTime);
    for (std::size_t file = answered; serverTime && listing->looked >= *serverTime && file < batch.Size(); ++file)
        known.ahead[batch.PathAt(file)] = {.asked = batch.DriversAt(file), .reading = {}, .isLeft = true};
    std::ignore = looks.Ask(known, listing, TimeForLooks());
}

bool TreeProbes::IsFound(DString const &path) {
    auto const &ahead = KnownOfThread().ahead;
    auto const at = ahead.find(path);
    return at != ahead.end() && !at->second.reading.empty();
}

milliseconds TreeProbes::TimeForLooks() { return Readers::Instance().Pool().TimeForLooks(); }

void TreeProbes::ForgetAhead() { KnownOfThread().ahead.clear(); }

} // namespace zelvar
