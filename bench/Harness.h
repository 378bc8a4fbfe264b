#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zelvar::bench {

/// What stands beside a figure, in its unit.
struct Alternative {
    std::string name;
    std::optional<double> value; ///< of the same rounds; nothing where it is not installed
};
struct Beside {
    std::optional<double> limit{}; ///< at most, or for a rate at least
    std::vector<Alternative> alternatives{};
    std::string note{};
};

/// Prints a figure: a line `name value unit (limit, alternatives, note)`, or with `--json` an object. A unit with a "/"
/// is a rate: more is better. Of all others less is.
void Figure(std::string const &name, double value, std::string const &unit, Beside const &beside);
void Figure(std::string const &name, double value, std::string const &unit, std::string const &note);

/// Milliseconds of the fastest of `runs` calls.
double BestMs(int runs, std::function<void()> const &body);
/// Milliseconds of one call.
double Ms(std::function<void()> const &body);
/// The upper one of an even number; of at least one.
double Median(std::vector<double> values);
/// The two in turn, `runs` times; the median of the ratios first / second, which holds when the machine's speed drifts.
struct Pair {
    double ratio = 0;
    double firstMs = 0;  ///< median
    double secondMs = 0; ///< median
};
Pair Compare(int runs, std::function<void()> const &first, std::function<void()> const &second);

/// Resident memory of this process now, bytes.
std::size_t ResidentBytes();

/// Ends the program as failed: what it would go on to measure is not what it should be.
[[noreturn]] void Fail(std::string const &why);

/// A bench at namespace scope: `static Register const reg("listing", [] { ... });`. All are run, or those whose name
/// begins with a word of the command line; with `--list` their names are printed instead.
struct Register {
    Register(std::string name, std::function<void()> body);
};

} // namespace zelvar::bench
