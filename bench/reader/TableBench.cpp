// Tables through readers: how soon a page is there, and how fast all of it.
#include "Harness.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/DIOPluginMngr.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/data/tables/ADIFile.h"

#include <cstdlib>
#include <fstream>

#include <unistd.h>

namespace zelvar::bench {
namespace {

constexpr int kRows = 1'000'000;
constexpr int kPage = 50;

void WriteLargeTable(std::string const &path) {
    std::ofstream file(path);
    file << "id,name,value,text\n";
    for (int row = 0; row < kRows; ++row)
        file << row << ",name " << row << ',' << row * 0.37 << ",\"a, b\"\n";
}

void Forget() {
    BDIDrvrMngr::Instance()->Reset();
    RDIDriverMngr::Instance()->Reset();
    UseReaderDrivers();
}

void ReadPage(std::string const &path) {
    ADIFile table(DFile(path), "", tdFormatAccess_Read, nullptr, "");
    for (int row = 0; row < kPage; ++row)
        if (!table.SetRow(row) || table.GetText(0).empty())
            std::abort();
}

int ReadAll(std::string const &path) {
    ADIFile table(DFile(path), "", tdFormatAccess_Read, nullptr, "");
    int rows = 0;
    std::size_t bytes = 0;
    while (table.SetRow(rows)) {
        for (int col = 0; col < table.GetNumCols(); ++col)
            bytes += table.GetText(col).size();
        ++rows;
    }
    return bytes == 0 ? 0 : rows;
}

void WriteAll(std::string const &path, char const *format) {
    ADIFile table(DFile(path), format, tdFormatAccess_Write, nullptr, "");
    table.AddCol("id", ADICol_Int);
    table.AddCol("name", ADICol_String);
    table.AddCol("value", ADICol_Double);
    for (int row = 0; row < kRows; ++row) {
        table.AddRow();
        table.WriteInt(row);
        table.WriteString("a, b");
        table.WriteDouble(row * 0.37);
    }
    if (!table.Finish())
        std::abort();
}

Register const kTables("tables", [] {
    std::string folder = "/tmp/zelvar-bench-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr)
        std::abort();
    std::string const path = folder + "/large.csv";
    WriteLargeTable(path);
    Forget();
    Figure("tables.first_page.cold",
           BestMs(3,
                  [&] {
                      EndReaders();
                      Forget();
                      ReadPage(path);
                  }),
           "ms", "CSV of 1,000,000 rows; two readers are started");
    Figure("tables.first_page", BestMs(9, [&] { ReadPage(path); }), "ms",
           "limit: 150 ms, the same, the readers are there");
    double const all = BestMs(3, [&] {
        if (ReadAll(path) != kRows)
            std::abort();
    });
    Figure("tables.read", kRows / all, "rows/ms", "all cells of 4 columns of the CSV, through a reader");
    Figure("tables.formats",
           BestMs(9,
                  [] {
                      DList<DFileFrmt *> formats;
                      DIOPluginMngr::Instance()->BuildFrmtList(0, ~0U, nullptr, formats);
                      for (DFileFrmt *format : formats)
                          delete format;
                  }),
           "ms", "limit: 10 ms, the list of all formats that can be read");
    for (char const *format : {"CSV", "DBF"})
        Figure(std::string("tables.write_") + format,
               kRows / BestMs(3, [&] { WriteAll(folder + "/out." + format, format); }), "rows/ms",
               "3 columns, flushed to disk");
    for (char const *name : {"/large.csv", "/out.CSV", "/out.DBF", "/out.cpg"})
        unlink((folder + name).c_str());
    rmdir(folder.c_str());
});

} // namespace
} // namespace zelvar::bench
