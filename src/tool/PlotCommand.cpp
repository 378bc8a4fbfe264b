#include "zelvar/charts/CPlotCtrl.h"
#include "zelvar/charts/core/NiceTicks.h"
#include "zelvar/data/ADIFile.h"
#include "zelvar/data/HistogramReader.h"
#include "zelvar/library/ZelvarInit.h"
#include "zelvar/tool/ChartWindow.h"
#include "zelvar/tool/CommandTable.h"
#include "zelvar/tool/Commands.h"
#include "zelvar/tool/Screen.h"
#include "zelvar/tool/TableColumns.h"

#include <QtWidgets/QApplication>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>

namespace zelvar::tool {

namespace {

CommandSpec const &kSpec = SpecOf("plot");

/// Adds the rows that hold a number in both columns, and chooses axes that hold them.
void Fill(CPlotCtrl &plot, IAttrData &table, int xColumn, int yColumn) {
    constexpr int ticks = 8;
    double least[2] = {HUGE_VAL, HUGE_VAL};
    double most[2] = {-HUGE_VAL, -HUGE_VAL};
    for (int row = 0; table.SetRow(row); ++row) {
        std::optional<double> const x = NumberOf(table.GetText(xColumn));
        std::optional<double> const y = NumberOf(table.GetText(yColumn));
        if (!x || !y)
            continue;
        least[0] = std::min(least[0], *x);
        least[1] = std::min(least[1], *y);
        most[0] = std::max(most[0], *x);
        most[1] = std::max(most[1], *y);
        plot.AddData(*x, *y, nullptr, std::to_string(row + 1).c_str());
    }
    NiceAxis const x = NiceAxisOver(least[0], most[0], ticks);
    NiceAxis const y = NiceAxisOver(least[1], most[1], ticks);
    plot.SetDataMinX(x.minimum);
    plot.SetDataMaxX(x.maximum);
    plot.SetTickX(x.step);
    plot.SetDataMinY(y.minimum);
    plot.SetDataMaxY(y.maximum);
    plot.SetTickY(y.step);
    plot.SetCaptionX(table.GetColName(xColumn));
    plot.SetCaptionY(table.GetColName(yColumn));
}

} // namespace

int RunPlot(std::vector<DString> const &words, int &argc, char **argv) {
    DString error;
    std::optional<Arguments> const arguments = ParseArguments(kSpec, words, error);
    if (!arguments)
        return UsageError(kSpec, error);
    std::optional<WindowSize> const size = ParseSize(arguments->Value("--size", "800x600"));
    if (!size)
        return UsageError(kSpec, "a size is written as 640x480");
    if (!arguments->values.contains("--x") || !arguments->values.contains("--y"))
        return UsageError(kSpec, "a plot needs --x and --y");

    bool const attended = ChoosePlatform();
    QApplication const application(argc, argv);
    AvoidTypewriter();
    ZelvarInit();
    DString const file = PlaceOf(arguments->words.front());
    ADIFile table(DFile(file), "", tdFormatAccess_Read, nullptr, nullptr);
    if (!table.IsOpen())
        return Failure("cannot read '" + file + "': " + table.GetError());
    int const xColumn = FindColumn(table, arguments->Value("--x"));
    int const yColumn = FindColumn(table, arguments->Value("--y"));
    if (xColumn < 0 || yColumn < 0)
        return Failure("there is no column '" + arguments->Value(xColumn < 0 ? "--x" : "--y") + "' in '" + file + "'");

    auto owned = std::make_unique<CPlotCtrl>(); // of the window, below
    CPlotCtrl &plot = *owned;
    Fill(plot, table, xColumn, yColumn);
    if (table.HasFailed())
        return Failure("cannot read '" + file + "' to its end: " + ReadingFailureOf(file));
    plot.DrawLine(arguments->Has("--line"));
    plot.DrawTitle(true);
    plot.SetTitle(BDIMoniker(file, nullptr).GetDisplayName());
    bool const isEmpty = plot.GetNumData() == 0;
    ChartWindow window(*owned.release(), BDIMoniker(file, nullptr).GetDisplayName(), [&plot] {
        if (CPlotCtrl::DataPoint const *const point = plot.GetSlctData())
            std::printf("%s\t%.10g\t%.10g\n", point->info.c_str(), point->x, point->y);
        std::fflush(stdout);
    });
    if (!window.SetClicks(arguments->All("--click")))
        return UsageError(kSpec, "a click is written as 120,80");
    window.resize(size->width, size->height);
    bool const shown = window.Run(attended, arguments->Value("--shot"));
    ZelvarShutdown();
    if (!shown)
        return Failure("cannot write '" + arguments->Value("--shot") + "'");
    return isEmpty ? kNothing : kDone;
}

} // namespace zelvar::tool
