// The command as scripts run it, whole processes, beside other programs that do the same.
#include "Folders.h"
#include "Processes.h"
#include "images/Pictures.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace zelvar::bench {
namespace {

constexpr unsigned kFiles = 100'000;
constexpr int kRows = 1'000'000;
constexpr int kSide = 5790;

Program Ours(std::vector<std::string> words) {
    std::string name = "zelvar " + words.front();
    words.insert(words.begin(), ZELVAR_COMMAND);
    return {.name = std::move(name), .words = std::move(words)};
}

Register const kEmpty("start.ls", [] {
    Folder const folder;
    Program ls = Ours({"ls", folder.Path()});
    ls.exitCode = 1; // nothing found
    FigureOfProcesses("start.ls_empty_folder", 30, "an empty folder", 15, ls,
                      {{"find -printf", {"find", folder.Path(), "-printf", "%f\n"}}});
});

// Nobody presses anything off screen, so the dialog ends cancelled.
Register const kDialog("start.dialog", [] {
    Folder const folder;
    std::filesystem::create_directory(folder / "empty");
    std::string const told = folder / "told";
    Program open = Ours({"open", folder / "empty"});
    open.exitCode = 1;
    setenv("ZELVAR_TRACE_FIRST_PAINT", "1", 1);
    std::vector<double> paints;
    for (int run = 0; run < 9; ++run) {
        TimeProcess(open, told);
        double ms = 0;
        std::string word;
        std::ifstream lines(told);
        while (lines >> word && word != "paint")
            continue;
        if (!(lines >> ms))
            Fail("the open dialog was not painted");
        paints.push_back(ms);
    }
    unsetenv("ZELVAR_TRACE_FIRST_PAINT");
    Figure("start.dialog_first_paint", Median(paints), "ms", {.limit = 350, .note = "after the process began"});
});

Register const kListing("process.ls", [] {
    Folder const folder;
    Fill(folder.Path(), kFiles);
    std::string const line = "%y %s %TY-%Tm-%TdT%TT %f %p\n";
    FigureOfProcesses("process.ls", {}, "100,000 files, by name", 9, Ours({"ls", folder.Path()}),
                      {{"find -printf, as they come", {"find", folder.Path(), "-printf", line}}});
    Folder const top;
    for (unsigned i = 0; i < 200; ++i) {
        std::string const below = top.Path() + "/folder " + std::to_string(i);
        std::filesystem::create_directory(below);
        Fill(below, kFiles / 200);
    }
    FigureOfProcesses("process.ls_recursive", {}, "200 folders of 500 files", 9,
                      Ours({"ls", top.Path(), "--recursive"}),
                      {{"find -printf, as they come", {"find", top.Path(), "-printf", line}}});
});

Register const kImages("process.image", [] {
    GDALAllRegister();
    Folder const folder;
    std::string const image = folder / "image.tif";
    std::string const to = folder / "out";
    WriteTiff(image, kSide, GDT_Byte, {"TILED=YES"});
    WritePyramid(image);
    FigureOfProcesses("process.image_preview", 100, "to PNG, with a pyramid", 7,
                      Ours({"info", image, "--preview", to + ".png"}),
                      {{"vipsthumbnail to PNG", {"vipsthumbnail", image, "-s", "1024", "-o", to + "-other.png"}},
                       {"vipsthumbnail to JPEG", {"vipsthumbnail", image, "-s", "1024", "-o", to + ".jpg"}},
                       {"gdal_translate -outsize to PNG",
                        {"gdal_translate", "-q", "-of", "PNG", "-outsize", "1024", "0", image, to + "-third.png"}}});
    FigureOfProcesses("process.image_histogram", 100, "one channel at full size", 7,
                      Ours({"histogram", "--print", image}),
                      {{"gdalinfo -hist, all channels, of a level of the pyramid",
                        {"gdalinfo", "-hist", "--config", "GDAL_PAM_ENABLED", "NO", image}},
                       {"vips hist_find, all channels", {"vips", "hist_find", image, to + ".v"}}});
});

Register const kTables("process.table", [] {
    Folder const folder;
    std::string const table = folder / "table.csv";
    {
        std::ofstream file(table);
        file << "id,name,value,text\n";
        for (int row = 0; row < kRows; ++row)
            file << row << ",name " << row << ',' << row * 0.37 << ",\"a, b\"\n";
    }
    FigureOfProcesses("process.table_print", {}, "CSV of 1,000,000 rows of 4 columns", 5,
                      Ours({"table", table, "--print"}),
                      {{"ogr2ogr -f CSV", {"ogr2ogr", "-f", "CSV", "/vsistdout/", table}}});
});

} // namespace
} // namespace zelvar::bench
