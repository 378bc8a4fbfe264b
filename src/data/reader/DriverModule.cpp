#include "zelvar/data/reader/DriverModule.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/base/Report.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/DIOPluginMngr.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/data/FormatPlugin.h"
#include "zelvar/data/PlaceCheck.h"
#include "zelvar/data/ProbeAhead.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/data/reader/OpenModule.h"
#include "zelvar/data/reader/Places.h"
#include "zelvar/data/reader/Readers.h"
#include "zelvar/data/reader/RemoteCertificate.h"
#include "zelvar/data/reader/RemoteOptions.h"
#include "zelvar/data/reader/RemoteRasterDriver.h"
#include "zelvar/data/reader/RemoteTableDriver.h"
#include "zelvar/data/reader/RemoteTreeDriver.h"
#include "zelvar/data/reader/TreeProbes.h"
#include "zelvar/data/stack/SeriesDriver.h"
#include "zelvar/data/tables/ADIDriverMngr.h"

#include <atomic>

#include <dlfcn.h>

namespace zelvar {

namespace {

constexpr char kEntry[] = "zelvar_register_drivers";
constexpr std::chrono::milliseconds kFirstAnswer{15'000}; // with all that has to be loaded from a cold disk

std::atomic<bool> g_readersAreUsed{false};

void LoadModule() {
    // Never closed: GDAL registers things that outlive any use of it.
    void *const module = OpenModule(InstalledFile(kGdalModule));
    void *const entry = module == nullptr ? nullptr : dlsym(module, kEntry);
    if (entry == nullptr) {
        Report::TraceMessage(Report::kTraceOpen, "no drivers: %s", dlerror());
        return;
    }
    reinterpret_cast<void (*)()>(entry)();
    RegisterSeriesDriver();
}

/// The readers' drivers stand for themselves here.
void AddRemoteDrivers() {
    RequestScope const scope(RequestKind::List, {}, kFirstAnswer, RequestScope::Nesting::Alone);
    Readers::Call const call{.kind = RequestKind::List, .what = "drivers"};
    Readers::Answer const answer = Readers::Instance().Ask(call, wire::ListDriversT());
    wire::DriversT *const drivers = answer.message == nullptr ? nullptr : answer.message->body.AsDrivers();
    if (drivers == nullptr) {
        Report::TraceMessage(Report::kTraceOpen, "no drivers: %s", answer.error.Text().c_str());
        return;
    }
    for (auto const &facts : drivers->trees)
        if (facts != nullptr)
            BDIDrvrMngr::Instance()->Add(std::make_unique<RemoteTreeDriver>(std::move(*facts)));
    for (auto const &facts : drivers->rasters)
        if (facts != nullptr)
            RDIDriverMngr::Instance()->Add(std::make_unique<RemoteRasterDriver>(std::move(*facts)));
    for (auto const &facts : drivers->tables)
        if (facts != nullptr)
            ADIDriverMngr::Instance()->Add(std::make_unique<RemoteTableDriver>(std::move(*facts)));
    for (auto const &facts : drivers->formats)
        if (facts != nullptr)
            DIOPluginMngr::Instance()->Add(
                std::make_unique<FormatPlugin>(FormatFacts{.id = std::move(facts->id),
                                                           .name = std::move(facts->name),
                                                           .extensions = std::move(facts->extensions),
                                                           .reads = facts->reads,
                                                           .writes = facts->writes}));
}

} // namespace

void UseReaderDrivers(ReaderSettings const &settings) {
    Readers::Instance().Pool().Configure(settings);
    g_readersAreUsed = true;
    SetDriverProvider(AddRemoteDrivers, true);
    static constexpr ProbeAhead::Handlers kInReaders{.ask = &TreeProbes::AskAhead,
                                                     .timeForLooks = &TreeProbes::TimeForLooks};
    ProbeAhead::SetHandlers(&kInReaders);
    SetPlaceCheck(&AsksPlaceInReader);
    SetOptionQuestions(&kOptionsInReaders);
    SetCertificateQuestion(&CertificateByReader);
}

void UseOwnProcessDrivers() {
    g_readersAreUsed = false;
    SetDriverProvider(LoadModule);
    ProbeAhead::SetHandlers(nullptr);
    SetPlaceCheck(nullptr);
    SetOptionQuestions(nullptr);
    SetCertificateQuestion(nullptr);
}

void WarmReaders() {
    if (!g_readersAreUsed)
        return;
    Readers::Instance().Pool().Warm(true);
    Readers::Instance().Pool().Warm(false);
}

DString ReaderFailureOf(DString const &moniker) { return Readers::Instance().Verdicts().FailureOf(moniker).Text(); }

ReaderCounts CountReaders() { return Readers::Instance().Pool().Counts(); }

void EndReadersOf(DString const &id) { Readers::Instance().Pool().EndOf(id); }

void EndReaders() {
    Readers::Instance().Pool().EndAll();
    Readers::Instance().Verdicts().Clear();
    Readers::Instance().Probed().Clear();
}

} // namespace zelvar
