// How soon the first page of a large file is on the screen, as an application has it: with readers.
#include "FirstPage.h"
#include "Harness.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/data/reader/DriverModule.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include <unistd.h>

namespace zelvar::bench {
namespace {

constexpr int kRows = 1'000'000;
constexpr int kRuns = 5;

void Require(bool isSo) {
    if (!isSo)
        std::abort();
}

void Forget() {
    EndReaders();
    BDIDrvrMngr::Instance()->Reset();
    RDIDriverMngr::Instance()->Reset();
    UseReaderDrivers();
}

/// From the name of a file to its first page on the screen.
void ShowPage(std::string const &path) {
    CADIListCtrl list(OpenTable(path));
    ShowFirstPage(list);
    Require(list.OnGetItemText(5, 1) == "5" && !list.IsReadThrough());
}

Register const kFirstPage("attribute_table_page", [] {
    std::string folder = "/tmp/zelvar-bench-XXXXXX";
    Require(mkdtemp(folder.data()) != nullptr);
    std::string const path = folder + "/large.csv";
    {
        std::ofstream file(path);
        file << "id,name,value,text\n";
        for (int row = 0; row < kRows; ++row)
            file << row << ",name " << row << ',' << row * 0.37 << ",\"a, b\"\n";
    }
    Forget();
    Figure("attribute_table_page.cold",
           BestMs(kRuns,
                  [&] {
                      Forget();
                      ShowPage(path);
                  }),
           "ms", "CSV of 1,000,000 rows; two readers are started");
    Figure("attribute_table_page", BestMs(kRuns, [&] { ShowPage(path); }), "ms",
           "limit: 150 ms, the same, the readers are there");
    EndReaders();
    unlink(path.c_str());
    rmdir(folder.c_str());
});

} // namespace
} // namespace zelvar::bench
