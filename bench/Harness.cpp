#include "Harness.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <utility>

#include <unistd.h>

namespace zelvar::bench {

namespace {

using Clock = std::chrono::steady_clock;

struct Entry {
    std::string name;
    std::function<void()> body;
};

std::vector<Entry> &Entries() {
    static std::vector<Entry> entries;
    return entries;
}

double Ms(std::function<void()> const &body) {
    Clock::time_point const start = Clock::now();
    body();
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace

void Figure(std::string const &name, double value, std::string const &unit, std::string const &limit) {
    std::printf("%-44s %12.3f %-8s (%s)\n", name.c_str(), value, unit.c_str(), limit.c_str());
    std::fflush(stdout);
}

double BestMs(int runs, std::function<void()> const &body) {
    double best = Ms(body);
    for (int run = 1; run < runs; ++run)
        best = std::min(best, Ms(body));
    return best;
}

Pair Compare(int runs, std::function<void()> const &first, std::function<void()> const &second) {
    first(), second(); // warm
    std::vector<double> ratios;
    std::vector<double> firsts;
    std::vector<double> seconds;
    for (int run = 0; run < runs; ++run) {
        firsts.push_back(Ms(first));
        seconds.push_back(Ms(second));
        ratios.push_back(firsts.back() / seconds.back());
    }
    return {Median(ratios), Median(firsts), Median(seconds)};
}

std::size_t ResidentBytes() {
    std::size_t total = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

Register::Register(std::string name, std::function<void()> body) {
    Entries().push_back({std::move(name), std::move(body)});
}

} // namespace zelvar::bench

// A program that needs a toolkit defines its own start by overriding this weak function.
__attribute__((weak)) void PrepareBenches(int &, char **);
__attribute__((weak)) void PrepareBenches(int &, char **) {}

int main(int argc, char **argv) {
    PrepareBenches(argc, argv);
    for (auto const &entry : zelvar::bench::Entries()) {
        bool wanted = argc < 2;
        for (int i = 1; i < argc; ++i)
            wanted = wanted || entry.name.starts_with(argv[i]);
        if (wanted)
            entry.body();
    }
    return 0;
}
