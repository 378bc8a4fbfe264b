#pragma once

#include <functional>
#include <string>
#include <vector>

namespace zelvar::bench {

/// Prints the line `name value unit  (limit: ...)`.
void Figure(std::string const &name, double value, std::string const &unit, std::string const &limit);

/// Milliseconds of the fastest of `runs` calls.
double BestMs(int runs, std::function<void()> const &body);
/// The two in turn, `runs` times; the median of the ratios first / second, which holds when the machine's speed drifts.
struct Pair {
    double ratio = 0;
    double firstMs = 0;  ///< median
    double secondMs = 0; ///< median
};
Pair Compare(int runs, std::function<void()> const &first, std::function<void()> const &second);

/// Resident memory of this process now, bytes.
std::size_t ResidentBytes();

/// A bench at namespace scope: `static Register const reg("listing", [] { ... });`. Run all, or those whose name
/// begins with an argument of the program.
struct Register {
    Register(std::string name, std::function<void()> body);
};

} // namespace zelvar::bench
