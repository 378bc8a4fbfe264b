#include "zelvar/data/reader/Places.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/base/Report.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/data/reader/Readers.h"
#include "zelvar/platform/os/MountTable.h"

#include <chrono>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

namespace zelvar {

namespace {

DString ServerOf(DString const &url) {
    std::size_t const begin = url.find("://");
    return begin == DString::npos ? url : url.substr(0, url.find('/', begin + 3));
}

struct Mount {
    DString point = "/";
    bool mayBlock = false;
};

Mount MountOf(std::string_view path) {
    auto const entry = platform::FindMount(path);
    return entry ? Mount{entry->mountPoint, platform::MayBlock(*entry)} : Mount{};
}

using Clock = std::chrono::steady_clock;

/// What mount points have said lately.
class Answers {
public:
    std::optional<bool> Lately(DString const &point) {
        std::lock_guard const lock(m_mutex);
        auto const at = m_points.find(point);
        return at != m_points.end() && Clock::now() < at->second.holds ? std::optional(at->second.yes) : std::nullopt;
    }
    void Note(DString const &point, bool yes) {
        std::lock_guard const lock(m_mutex);
        m_points[point] = {yes, Clock::now() + kHold};
    }
    static Answers &Instance() {
        static auto &answers = *new Answers;
        return answers;
    }

private:
    struct Answer {
        bool yes = false;
        Clock::time_point holds{};
    };
    static constexpr std::chrono::seconds kHold{2};
    std::mutex m_mutex;
    std::map<DString, Answer> m_points;
};

constexpr std::chrono::milliseconds kAnswerTime{500};

} // namespace

DString PlaceOfMoniker(DString const &moniker) {
    if (BDIMoniker(moniker, nullptr).IsUrl())
        return ServerOf(moniker);
    std::size_t const slash = moniker.find('/'); // behind what a driver puts before a path
    return slash == DString::npos ? moniker : MountOf(std::string_view(moniker).substr(slash)).point;
}

bool AsksPlaceInReader(DString const &path) {
    if (!path.starts_with('/'))
        return true;
    Mount const mount = MountOf(path);
    if (!mount.mayBlock)
        return true;
    if (auto const answer = Answers::Instance().Lately(mount.point))
        return *answer;
    // The drivers come first: they have time of their own.
    EnsureDrivers();
    RequestScope const scope(RequestKind::Probe, {}, kAnswerTime);
    wire::StampFileT body;
    body.path = path;
    Readers::Call const call{.kind = RequestKind::Probe, .what = "place", .subject = path};
    auto const begin = Clock::now();
    if (Readers::Instance().Ask(call, std::move(body)).message == nullptr) {
        // Who has less patience, or stops, has not heard that it is silent.
        if (Clock::now() - begin >= kAnswerTime)
            Answers::Instance().Note(mount.point, false);
        Report::TraceMessage(Report::kTraceOpen, "\"%s\" does not answer", mount.point.c_str());
        return false;
    }
    Answers::Instance().Note(mount.point, true);
    return true;
}

} // namespace zelvar
