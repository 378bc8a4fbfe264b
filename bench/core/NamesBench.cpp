#include "Harness.h"
#include "zelvar/base/NaturalOrder.h"
#include "zelvar/base/SystemTime.h"

#include <algorithm>
#include <random>

namespace {

using namespace zelvar;

bench::Register const names("names", [] {
    std::mt19937 random(3); // NOLINT(cert-msc51-cpp): the same names in every run
    std::vector<DString> all;
    all.reserve(100'000);
    for (int i = 0; i < 100'000; ++i)
        all.push_back("Scan_" + std::to_string(random() % 1000) + " pos " + std::to_string(random() % 100'000) +
                      ".tif");
    double const keysMs = bench::BestMs(7, [&] {
        std::vector<DString> keys;
        keys.reserve(all.size());
        for (DString const &name : all)
            keys.push_back(MakeFileNameKey(name));
    });
    bench::Figure("names.100000_keys", keysMs, "ms", "made of names");
    auto const [ratio, byKey, byCompare] = bench::Compare(
        3,
        [&] {
            std::vector<DString> keys;
            keys.reserve(all.size());
            for (DString const &name : all)
                keys.push_back(MakeFileNameKey(name));
            std::sort(keys.begin(), keys.end());
        },
        [&] {
            std::vector<DString> sorted = all;
            std::sort(sorted.begin(), sorted.end(),
                      [](DString const &a, DString const &b) { return CompareFileNames(a, b) < 0; });
        });
    bench::Figure("names.sort_100000_by_keys", byKey, "ms", {.alternatives = {{"by comparison", byCompare}}});

    std::vector<std::int64_t> moments;
    moments.reserve(100'000);
    for (int i = 0; i < 100'000; ++i)
        moments.push_back(static_cast<std::int64_t>(random() % 315'000'000 + 1'400'000'000) * 1'000'000'000);
    int years = 0;
    double const timesMs = bench::BestMs(5, [&] {
        for (std::int64_t const moment : moments)
            years += ToLocalTime(moment).wYear;
    });
    bench::Figure("times.100000_of_ten_years", timesMs, "ms", years > 0 ? "as users read them" : "");
});

} // namespace
