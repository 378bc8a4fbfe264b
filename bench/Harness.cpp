#include "Harness.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <utility>

#include <unistd.h>

// A program that needs a toolkit defines its own start by overriding this weak function.
__attribute__((weak)) void PrepareBenches(int &, char **);
__attribute__((weak)) void PrepareBenches(int &, char **) {}

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

/// How figures are printed: lines for people, or one array whose elements are a line each.
struct Output {
    bool isJson = false;
    bool isEmpty = true;
};
Output &TheOutput() {
    static Output output;
    return output;
}

/// With that many significant digits.
std::string Number(double value, int digits) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*g", digits, value);
    return text;
}

std::string Fixed(double value) {
    char text[400]; // the largest number is that long
    std::snprintf(text, sizeof text, "%.3f", value);
    return text;
}

// --- lines ---

std::string TextOf(Beside const &beside) {
    std::string text;
    auto const add = [&](std::string const &part) { text += (text.empty() ? "" : "; ") + part; };
    if (beside.limit)
        add("limit " + Number(*beside.limit, 10));
    for (Alternative const &other : beside.alternatives)
        add(other.name + (other.value ? " " + Fixed(*other.value) : " is not installed"));
    if (!beside.note.empty())
        add(beside.note);
    return text;
}

void PrintLine(std::string const &name, double value, std::string const &unit, Beside const &beside) {
    std::string const text = TextOf(beside);
    std::printf("%-44s %12.3f %-8s%s\n", name.c_str(), value, unit.c_str(),
                text.empty() ? "" : (" (" + text + ")").c_str());
}

// --- JSON ---

std::string Quoted(std::string const &text) {
    std::string quoted = "\"";
    for (char const c : text) {
        auto const byte = static_cast<unsigned char>(c);
        if (byte < 0x20) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", byte);
            quoted += escaped;
            continue;
        }
        if (c == '"' || c == '\\')
            quoted += '\\';
        quoted += c;
    }
    return quoted + '"';
}

std::string JsonOf(std::optional<double> const &value) {
    return value && std::isfinite(*value) ? Number(*value, 17) : "null"; // JSON knows no other numbers
}

void PrintObject(std::string const &name, double value, std::string const &unit, Beside const &beside) {
    std::string alternatives;
    for (Alternative const &other : beside.alternatives)
        alternatives += (alternatives.empty() ? "" : ", ") + (R"({"name": )" + Quoted(other.name)) + R"(, "value": )" +
                        JsonOf(other.value) + "}";
    std::printf(R"(%s{"name": %s, "value": %s, "unit": %s, "limit": %s, "alternatives": [%s], "note": %s})",
                TheOutput().isEmpty ? "\n" : ",\n", Quoted(name).c_str(), JsonOf(value).c_str(), Quoted(unit).c_str(),
                JsonOf(beside.limit).c_str(), alternatives.c_str(), Quoted(beside.note).c_str());
    TheOutput().isEmpty = false;
}

} // namespace

void Figure(std::string const &name, double value, std::string const &unit, Beside const &beside) {
    (TheOutput().isJson ? PrintObject : PrintLine)(name, value, unit, beside);
    std::fflush(stdout);
}

void Figure(std::string const &name, double value, std::string const &unit, std::string const &note) {
    Figure(name, value, unit, Beside{.note = note});
}

double Ms(std::function<void()> const &body) {
    Clock::time_point const start = Clock::now();
    body();
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double Median(std::vector<double> values) {
    auto const middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
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

void Fail(std::string const &why) {
    std::fprintf(stderr, "bench: %s\n", why.c_str());
    std::exit(EXIT_FAILURE);
}

Register::Register(std::string name, std::function<void()> body) {
    Entries().push_back({std::move(name), std::move(body)});
}

namespace {

/// Those whose name begins with one of the words, or all without any.
std::vector<Entry> Wanted(std::vector<std::string> const &words) {
    std::vector<Entry> wanted;
    std::ranges::copy_if(Entries(), std::back_inserter(wanted), [&](Entry const &entry) {
        return words.empty() ||
               std::ranges::any_of(words, [&](std::string const &word) { return entry.name.starts_with(word); });
    });
    return wanted;
}

/// The exit code.
int Main(int argc, char **argv) {
    constexpr int usage = 2;
    std::vector<std::string> words(argv + 1, argv + argc);
    bool const isJson = std::erase(words, "--json") > 0;
    bool const listsOnly = std::erase(words, "--list") > 0;
    for (std::string const &word : words)
        if (word.starts_with('-')) {
            std::fprintf(stderr, "usage: [--json|--list] [NAME...]: the benches whose names begin so, or all\n");
            return usage;
        }
    std::vector<Entry> const wanted = Wanted(words);
    if (listsOnly) {
        for (Entry const &entry : wanted)
            std::printf("%s\n", entry.name.c_str());
        return 0;
    }
    if (!wanted.empty())
        PrepareBenches(argc, argv);
    TheOutput().isJson = isJson;
    if (isJson)
        std::fputs("[", stdout);
    for (Entry const &entry : wanted)
        entry.body();
    if (isJson)
        std::fputs("\n]\n", stdout);
    return 0;
}

} // namespace

} // namespace zelvar::bench

int main(int argc, char **argv) { return zelvar::bench::Main(argc, argv); }
