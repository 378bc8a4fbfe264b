// A large file in the list of a table's rows, as an application has it: with readers. How soon the first page is on the
// screen, how long a sort takes beside one plain read of the file, and what both processes hold in memory.
#include "FirstPage.h"
#include "Harness.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/data/reader/DriverModule.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>

#include <unistd.h>

namespace zelvar::bench {
namespace {

using Clock = std::chrono::steady_clock;
constexpr int kFew = 100'000; // rows
constexpr int kMost = 10'000'000;

void Require(bool isSo) {
    if (!isSo)
        Fail("a large table is not what it should be");
}

double MsSince(Clock::time_point begin) {
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

void WriteTable(std::string const &path, int rows) {
    std::mt19937 random(1);
    std::ofstream file(path);
    file << "id,name,value,text\n";
    for (int row = 0; row < rows; ++row)
        file << row << ",name " << random() % static_cast<unsigned>(rows) << ',' << random() % 10'000'000 << '.'
             << random() % 100 << ",\"a, b\"\n";
}

void ReadPlainly(std::string const &path) {
    std::ifstream file(path, std::ios::binary);
    std::vector<char> block(std::size_t{1} << 20U);
    while (file.read(block.data(), static_cast<std::streamsize>(block.size()))) {
    }
}

/// The most that a process had in memory, bytes; 0 if it is not this one nor a child of it.
std::size_t PeakOf(std::filesystem::path const &process) {
    std::map<std::string, long> facts;
    std::ifstream status(process / "status");
    for (std::string line; std::getline(status, line);)
        if (std::size_t const colon = line.find(':'); colon != std::string::npos)
            facts[line.substr(0, colon)] = std::atol(line.c_str() + colon + 1);
    bool const isOurs = facts["Pid"] == getpid() || facts["PPid"] == getpid();
    return isOurs ? static_cast<std::size_t>(facts["VmHWM"]) * 1024 : 0;
}

std::size_t PeakOfReaders() {
    std::size_t most = 0;
    for (auto const &process : std::filesystem::directory_iterator("/proc"))
        if (long const id = std::atol(process.path().filename().c_str()); id > 0 && id != getpid())
            most = std::max(most, PeakOf(process.path()));
    return most;
}

/// The longest time for which the event loop got no turn.
class Pauses : public QObject {
public:
    Pauses() { Note(); }
    [[nodiscard]] double LongestMs() const { return m_longest; }

private:
    void Note() {
        m_longest = std::max(m_longest, MsSince(m_last));
        m_last = Clock::now();
        QMetaObject::invokeMethod(
            this, [this] { Note(); }, Qt::QueuedConnection);
    }
    Clock::time_point m_last = Clock::now();
    double m_longest = 0;
};

struct Times {
    double page = 0;
    double sorted = 0;
};

Times Measure(std::string const &folder, int rows) {
    std::string const path = folder + "/large.csv";
    std::string const name = "large_table." + std::to_string(rows);
    WriteTable(path, rows);
    EndReaders();
    BDIDrvrMngr::Instance()->Reset();
    RDIDriverMngr::Instance()->Reset();
    UseReaderDrivers();
    { // the readers start
        ADIFile const table(DFile(path), "", tdFormatAccess_Read, nullptr, nullptr);
        Require(table.IsOpen());
    }
    std::ofstream("/proc/self/clear_refs") << "5"; // the peak begins anew
    std::size_t const before = ResidentBytes();
    double const plain = BestMs(3, [&] { ReadPlainly(path); });
    Times times;
    {
        auto begin = Clock::now();
        CADIListCtrl list(OpenTable(path));
        ShowFirstPage(list);
        times.page = MsSince(begin);
        Figure(name + ".first_page", times.page, "ms", "from the file's name to the screen");
        for (auto const &[col, what] : {std::pair{3, "numbers"}, {2, "texts"}}) {
            Pauses const pauses;
            begin = Clock::now();
            list.Sort(col, true);
            double const ms = MsSince(begin);
            Require(list.IsSorted() && list.GetNumRow() == rows);
            times.sorted = std::max(times.sorted, ms);
            Beside beside{.alternatives = {{"one plain read of the file", plain}},
                          .note = col == 3 ? "of a list whose rows have not been read yet" : "behind that sort"};
            if (rows == kMost)
                beside.limit = 3000;
            Figure(name + ".sort_" + what, ms, "ms", beside);
            Figure(name + ".sort_" + what + ".pause", pauses.LongestMs(), "ms",
                   "without a turn of the event loop; the first 300 ms are left alone");
        }
        double const grown = static_cast<double>(PeakOf("/proc/self")) - static_cast<double>(before);
        constexpr double megabyte = 1 << 20;
        Figure(name + ".window", grown / megabyte, "MB",
               Beside{.limit = 200, .note = "the most that the process of the list had in memory, above what it had"});
        Figure(name + ".window.row", grown / rows, "bytes", Beside{.limit = 400, .note = "of it, a row"});
        Figure(name + ".reader", static_cast<double>(PeakOfReaders()) / megabyte, "MB",
               Beside{.limit = 200, .note = "the most that a reader had in memory"});
    }
    std::filesystem::remove(path);
    return times;
}

Register const kLargeTable("large_table", [] {
    std::string folder = "/tmp/zelvar-bench-XXXXXX";
    Require(mkdtemp(folder.data()) != nullptr);
    Times const few = Measure(folder, kFew);
    std::ignore = Measure(folder, kFew * 10);
    Times const many = Measure(folder, kMost);
    double const decades = std::log10(kMost / kFew);
    Figure("large_table.growth", std::log10(many.sorted / few.sorted) / decades, "",
           Beside{.limit = 1, .note = "the power of the rows that a sort takes"});
    Figure("large_table.growth.first_page", std::log10(many.page / few.page) / decades, "",
           Beside{.limit = 1, .note = "the same of the first page"});
    EndReaders();
    std::filesystem::remove_all(folder);
});

} // namespace
} // namespace zelvar::bench
