#include "zelvar/charts/CHstgCtrl.h"
#include "zelvar/data/HistogramReader.h"
#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/data/tables/ADIFile.h"
#include "zelvar/library/ZelvarInit.h"
#include "zelvar/tool/ChartWindow.h"
#include "zelvar/tool/CommandTable.h"
#include "zelvar/tool/Commands.h"
#include "zelvar/tool/Screen.h"
#include "zelvar/tool/TableColumns.h"

#include <QtWidgets/QApplication>

#include <cstdio>

namespace zelvar::tool {

namespace {

CommandSpec const &kSpec = SpecOf("histogram");

constexpr int kMostSlots = 1'000'000;
constexpr int kFewSlots = 16; // that have room for texts

bool ReadData(Arguments const &arguments, int band, int slots, DHstg &histogram, DString &reason) {
    DString const file = PlaceOf(arguments.words.front());
    if (!arguments.values.contains("--column")) {
        DError error;
        bool const isRead = ReadHistogram({file, nullptr}, "", band - 1, slots, nullptr, histogram, &error);
        reason = error.Text();
        return isRead;
    }
    ADIFile table(DFile(file), "", tdFormatAccess_Read, nullptr, nullptr);
    reason = table.GetError();
    if (!table.IsOpen())
        return false;
    int const column = FindColumn(table, arguments.Value("--column"));
    reason = column < 0 ? "there is no column '" + arguments.Value("--column") + "'" : DString();
    if (column >= 0 && ReadHistogram(table, column, slots, nullptr, histogram))
        return true;
    if (column >= 0)
        reason = ReadingFailureOf(file);
    return false;
}

void PrintSlot(DHstg const &histogram, int slot) {
    std::printf("%.10g\t%.10g\t%d\n", histogram.GetSlotClss(slot), histogram.GetSlotClss(slot + 1),
                histogram.GetSlotVal(slot));
}

} // namespace

int RunHistogram(std::vector<DString> const &words, int &argc, char **argv) {
    DString error;
    std::optional<Arguments> const arguments = ParseArguments(kSpec, words, error);
    if (!arguments)
        return UsageError(kSpec, error);
    std::optional<int> const slots = CountIn(arguments->Value("--slots", "32"), kMostSlots);
    std::optional<int> const band = CountIn(arguments->Value("--band", "1"), kMostSlots);
    std::optional<WindowSize> const size = ParseSize(arguments->Value("--size", "800x600"));
    if (!slots || !band)
        return UsageError(kSpec, "slots and bands are counted from 1");
    if (!size)
        return UsageError(kSpec, "a size is written as 640x480");
    if (arguments->values.contains("--band") && arguments->values.contains("--column"))
        return UsageError(kSpec, "a file has bands or columns");

    bool const printsOnly = arguments->Has("--print");
    bool const attended = printsOnly || ChoosePlatform();
    std::optional<QApplication> application;
    if (!printsOnly) {
        application.emplace(argc, argv);
        PrepareWindows(*arguments);
    }
    ZelvarInit();
    WarmReaders(); // the one that lists formats and the one that reads start at the same time
    DHstg histogram;
    DString reason;
    DString const &file = arguments->words.front();
    if (!ReadData(*arguments, *band, *slots, histogram, reason))
        return Failure("cannot read '" + file + "'" + (reason.empty() ? "" : ": " + reason));
    if (printsOnly) {
        for (int slot = 0; slot < histogram.m_numSlot; ++slot)
            PrintSlot(histogram, slot);
        return histogram.m_numSlot == 0 ? kNothing : kDone;
    }
    auto &chart = *new CHstgCtrl;
    chart.SetAutoScale(true);
    chart.DrawTextA(histogram.m_numSlot <= kFewSlots);
    chart.DrawFreq(histogram.m_numSlot <= kFewSlots);
    chart.SetHstg(&histogram);
    ChartWindow window(chart, BDIMoniker(file, nullptr).GetDisplayName(), [&] {
        if (int const slot = chart.GetSlctSlot(); slot >= 0 && slot < histogram.m_numSlot)
            PrintSlot(histogram, slot);
        else
            std::puts("none");
        std::fflush(stdout);
    });
    if (!window.SetClicks(arguments->All("--click")))
        return UsageError(kSpec, "a click is written as 120,80");
    window.resize(size->width, size->height);
    bool const shown = window.Run(attended, arguments->Value("--shot"));
    ZelvarShutdown();
    return shown ? kDone : Failure("cannot write '" + arguments->Value("--shot") + "'");
}

} // namespace zelvar::tool
