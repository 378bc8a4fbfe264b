#include "zelvar/data/reader/TreeProbes.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/reader/Readers.h"
#include "zelvar/data/reader/RemoteTreeDriver.h"

#include <algorithm>
#include <map>
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

/// The drivers in readers that may claim a file of that name.
std::vector<DString> CandidatesFor(DString const &path) {
    std::vector<DString> ids;
    for (BDIDrvr *const candidate : BDIDrvrMngr::Instance()->CandidatesFor(FileNameOf(path)))
        if (dynamic_cast<RemoteTreeDriver *>(candidate) != nullptr)
            ids.push_back(candidate->GetId());
    return ids;
}

Probe AskAlone(DString const &path, DString const &id) {
    Probe probe;
    probe.asked = CandidatesFor(path);
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

/// Files with the drivers to ask, each list of drivers told once.
class Batch {
public:
    void Add(DString const &path) {
        std::vector<DString> ids = CandidatesFor(path);
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
    if (auto const at = known.ahead.find(path); at != known.ahead.end() && Holds(at->second.asked, driverId))
        return Holds(at->second.reading, driverId);
    RequestScope const *const scope = RequestScope::Current();
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

void TreeProbes::AskAhead(std::vector<DString> const &paths) {
    Known &known = KnownOfThread();
    known.ahead.clear();
    Batch batch;
    for (DString const &path : paths)
        if (!Readers::Instance().Verdicts().Has(path) && !BDIMoniker(path, nullptr).IsUrl())
            batch.Add(path);
    RequestScope const *const around = RequestScope::Current();
    for (std::size_t first = 0; first < batch.Size();) {
        milliseconds const time =
            std::min(kBatchTime, around == nullptr ? kBatchTime : around->TimeLeft().value_or(kBatchTime));
        // That a batch is late is no answer about its files, and wastes nobody's patience.
        RequestScope const scope(RequestKind::Probe, {}, time, RequestScope::Nesting::Alone);
        Readers::Answer const answer =
            Readers::Instance().Ask({.kind = RequestKind::Probe, .what = "probes"}, batch.From(first));
        wire::FilesProbedT *const probed = answer.message == nullptr ? nullptr : answer.message->body.AsFilesProbed();
        if (probed == nullptr || probed->files.empty())
            return;
        for (auto &file : probed->files) {
            if (first >= batch.Size() || file == nullptr)
                return;
            known.ahead[batch.PathAt(first)] = {batch.DriversAt(first), std::move(file->drivers)};
            ++first;
        }
    }
}

void TreeProbes::ForgetAhead() { KnownOfThread().ahead.clear(); }

} // namespace zelvar
