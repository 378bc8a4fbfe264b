#include "zelvar/charts/CPlotCtrl.h"
#include "zelvar/charts/core/NiceTicks.h"
#include "zelvar/data/HistogramReader.h"
#include "zelvar/data/tables/ADIFile.h"
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

/// A row that holds a number in both columns.
struct Row {
    int number = 0; ///< from 1
    double x = 0;
    double y = 0;
};

std::vector<Row> ReadRows(IAttrData &table, int xColumn, int yColumn) {
    std::vector<Row> rows;
    for (int row = 0; table.SetRow(row); ++row) {
        std::optional<double> const x = NumberOf(table.GetText(xColumn));
        std::optional<double> const y = NumberOf(table.GetText(yColumn));
        if (x && y)
            rows.push_back({row + 1, *x, *y});
    }
    return rows;
}

/// Adds the rows, each with its index, and chooses axes that hold them.
void Fill(CPlotCtrl &plot, std::vector<Row> const &rows, DString const &xName, DString const &yName) {
    constexpr int ticks = 8;
    double least[2] = {HUGE_VAL, HUGE_VAL};
    double most[2] = {-HUGE_VAL, -HUGE_VAL};
    for (Row const &row : rows) {
        least[0] = std::min(least[0], row.x);
        least[1] = std::min(least[1], row.y);
        most[0] = std::max(most[0], row.x);
        most[1] = std::max(most[1], row.y);
    }
    NiceAxis x = NiceAxisOver(least[0], most[0], ticks);
    NiceAxis y = NiceAxisOver(least[1], most[1], ticks);
    AxisScale const xScale = ScaleFor(x, PlotGeometry::XLabel);
    AxisScale const yScale = ScaleFor(y, PlotGeometry::YLabel);
    x = xScale.Of(x);
    y = yScale.Of(y);
    for (std::size_t i = 0; i < rows.size(); ++i)
        plot.AddData(xScale.Of(rows[i].x), yScale.Of(rows[i].y), nullptr, std::to_string(i).c_str());
    plot.SetDataMinX(x.minimum);
    plot.SetDataMaxX(x.maximum);
    plot.SetTickX(x.step);
    plot.SetDataMinY(y.minimum);
    plot.SetDataMaxY(y.maximum);
    plot.SetTickY(y.step);
    plot.SetCaptionX(xScale.Caption(xName));
    plot.SetCaptionY(yScale.Caption(yName));
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
    PrepareWindows(*arguments);
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
    std::vector<Row> const rows = ReadRows(table, xColumn, yColumn);
    if (table.HasFailed())
        return Failure("cannot read '" + file + "' to its end: " + ReadingFailureOf(file));
    Fill(plot, rows, table.GetColName(xColumn), table.GetColName(yColumn));
    plot.DrawLine(arguments->Has("--line"));
    plot.DrawTitle(true);
    plot.SetTitle(BDIMoniker(file, nullptr).GetDisplayName());
    bool const isEmpty = plot.GetNumData() == 0;
    ChartWindow window(*owned.release(), BDIMoniker(file, nullptr).GetDisplayName(), [&plot, &rows] {
        if (CPlotCtrl::DataPoint const *const point = plot.GetSlctData()) {
            Row const &row = rows[std::stoul(point->info)]; // as it was read; the plot may show it scaled
            std::printf("%d\t%.10g\t%.10g\n", row.number, row.x, row.y);
        }
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
