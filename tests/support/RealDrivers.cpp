#include "support/RealDrivers.h"

#include "support/Test.h"
#include "zelvar/data/DriverProvider.h"
#include "zelvar/data/gdal/GdalDrivers.h"
#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/data/stack/SeriesDriver.h"

#include <thread>

#include <sys/resource.h>

namespace zelvar::test {

namespace {

using std::chrono::seconds;

/// Ends all readers and waits until they are gone.
void EndAndReap() {
    EndReaders();
    auto const deadline = std::chrono::steady_clock::now() + seconds(30);
    while (CountReaders().leftBehind > 0 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    EXPECT_EQ(CountReaders().leftBehind, 0);
}

/// A driver that crashes in this process ends the test; in a reader it must not pass unnoticed.
class ReaderWatch : public testing::EmptyTestEventListener {
    void OnTestEnd(testing::TestInfo const &) override {
        EXPECT_EQ(CountReaders().crashed, 0);
        EndAndReap();
    }
};

bool UsesReaders() {
    static bool const uses = std::getenv("ZELVAR_TEST_READER") != nullptr;
    return uses;
}

/// The test that has set readers, for those behind it in the same process as well until they are put back.
testing::TestInfo const *g_setsReaders = nullptr;

} // namespace

ReaderSettings PatientReaders() {
    ReaderSettings settings;
    for (RequestBudget &budget : settings.budgets)
        budget.time = seconds(60);
    settings.probeInListing = seconds(60);
    settings.patience = seconds(60);
    settings.program = ZELVAR_READER;
    settings.withInstalledDrivers = false;
    settings.modules = {ZELVAR_GDAL_MODULE};
    return settings;
}

void UseReaders(ReaderSettings const &settings) {
    static bool watched = false;
    if (!std::exchange(watched, true))
        testing::UnitTest::GetInstance()->listeners().Append(new ReaderWatch);
    g_setsReaders = testing::UnitTest::GetInstance()->current_test_info();
    UseReaderDrivers(settings);
}

void UseRealDrivers() {
    if (UsesReaders())
        return UseReaders(PatientReaders());
    if (g_setsReaders != nullptr && g_setsReaders == testing::UnitTest::GetInstance()->current_test_info())
        return; // it wants its own
    UseOwnProcessDrivers();
    if (std::exchange(g_setsReaders, nullptr) != nullptr)
        ForgetDrivers(); // theirs
    SetDriverProvider([] {
        RegisterGdalDrivers();
        RegisterSeriesDriver();
    });
}

std::size_t PeakBytesOfDrivers() {
    if (UsesReaders())
        EndAndReap(); // whose end makes the figure known
    rusage usage{};
    getrusage(UsesReaders() ? RUSAGE_CHILDREN : RUSAGE_SELF, &usage);
    return static_cast<std::size_t>(usage.ru_maxrss) * 1024;
}

} // namespace zelvar::test
