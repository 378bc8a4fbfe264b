#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/data/RequestScope.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <vector>

namespace zelvar {

/// What one request may cost.
struct RequestBudget {
    std::chrono::milliseconds time;
    std::uint64_t memory; ///< bytes above what the reader holds already
};

/// How data is read in processes of their own. The defaults serve a person who browses.
struct ReaderSettings {
    static constexpr std::uint64_t kMebibyte = std::uint64_t{1} << 20U;

    /// By `RequestKind`.
    std::array<RequestBudget, kRequestKinds> budgets{{
        {std::chrono::milliseconds(50), 256 * kMebibyte},      // probe, a guess at one of many: a window waits for it
        {std::chrono::milliseconds(30'000), 1024 * kMebibyte}, // list
        {std::chrono::milliseconds(30'000), 1024 * kMebibyte}, // properties
        {std::chrono::milliseconds(60'000), 2048 * kMebibyte}, // preview
        {std::chrono::milliseconds(10'000),
         2048 * kMebibyte}, // thumbnail: what it may take stands for the preview, too
    }};
    /// A probe inside a listing, and as much for all looks into files whose names say nothing; and what the late ones
    /// of one listing may waste together. A script that has no window to think of gives more.
    std::chrono::milliseconds probeInListing{250};
    std::chrono::milliseconds patience{500};
    /// Readers for probes and listings, and readers for properties and pixels, at least one each. Those for file
    /// servers are counted apart.
    int listingReaders = 2;
    int imageReaders = 3;
    /// Further ones for thumbnails, of low priority.
    int thumbnailReaders = 2;
    /// A connection has one of each; of all connections together there are so many, and one that has had no request for
    /// so long ends.
    int connectionReaders = 8;
    std::chrono::milliseconds connectionIdle{std::chrono::minutes(5)};
    /// The program; empty for the installed one.
    DString program;
    /// Whether it loads the installed drivers, those over GDAL.
    bool withInstalledDrivers = true;
    /// Paths of further modules of drivers, each with the entry `extern "C" void zelvar_register_drivers()`, which adds
    /// its drivers to `BDIDrvrMngr` and `RDIDriverMngr`.
    std::vector<DString> modules;

    [[nodiscard]] RequestBudget const &BudgetOf(RequestKind kind) const {
        return budgets[static_cast<std::size_t>(kind)];
    }
};

} // namespace zelvar
