#include "zelvar/base/Translation.h"
#include "zelvar/charts/CHstgCtrl.h"
#include "zelvar/charts/CPlotCtrl.h"
#include "zelvar/gallery/Gallery.h"
#include "zelvar/gallery/PageForm.h"
#include "zelvar/pixels/DHstg.h"

#include <cmath>

namespace zelvar::gallery {

namespace {

/// A chart with switches, and below it what is selected.
class ChartPage : public PageForm {
public:
    ChartPage(char const *name, ChartCtrl &chart) : m_chart(chart) {
        m_messages.On(WM_CHART_SELECTED, this, &ChartPage::OnSelected);
        AddWide(name, &chart, true);
        ShowSelection();
    }

protected:
    bool event(QEvent *event) override { return m_messages.Dispatch(*event) || PageForm::event(event); }

private:
    void OnSelected() { ShowSelection(); }
    void ShowSelection() {
        DString const text = m_chart.SelectionText();
        Say(text.empty() ? Translated("Nothing is selected") : Format(Translated("Selected: %s"), text.c_str()));
    }

    ChartCtrl &m_chart;
    platform::MessageMap m_messages;
};

/// A chart that keeps its data.
class OwningHistogram : public CHstgCtrl {
public:
    explicit OwningHistogram(DHstg histogram) : m_data(std::move(histogram)) { SetHstg(&m_data); }

private:
    DHstg m_data;
};

QWidget *MakePlotPage() {
    auto *const plot = new CPlotCtrl;
    constexpr int days = 40;
    for (int day = 0; day <= days; ++day) {
        DString const label = day % 5 == 0 ? Format(Translated("day %d"), day) : DString();
        plot->AddData(day, 50 - 45 * std::cos(day * 0.3) * std::exp(-day * 0.04), label.c_str(), "");
    }
    plot->SetDataMaxY(100);
    plot->SetTickX(5);
    plot->SetTickY(20);
    plot->DrawLine(true);
    plot->DrawTitle(true);
    plot->SetTitle(Translated("Growth of a culture"));
    plot->SetCaptionX(Translated("time [days]"));
    plot->SetCaptionY(Translated("area [%]"));
    auto *const page = new ChartPage(Mark("Growth of a culture"), *plot);
    page->AddSwitch("Lines", true, [plot](bool on) { plot->DrawLine(on); });
    page->AddSwitch("Grid", true, [plot](bool on) { plot->DrawGrid(on); });
    page->AddSwitch("A tick at every point", false, [plot](bool on) { plot->DrawEveryXTick(on); });
    return page;
}

QWidget *MakeHistogramPage() {
    constexpr int slots = 16;
    DHstg data(slots, 0, 256);
    for (int i = 0; i < 4000; ++i)
        data.AddValue(128 + 100 * std::sin(i * 0.01) * std::cos(i * 0.37));
    auto *const chart = new OwningHistogram(std::move(data));
    chart->SetAutoScale(true);
    auto *const page = new ChartPage(Mark("Brightness"), *chart);
    page->AddSwitch("Automatic scale", true, [chart](bool on) {
        chart->SetAutoScale(on);
        if (!on)
            chart->SetMaxPerc(1.0);
        chart->Refresh();
    });
    page->AddSwitch("Counts", true, [chart](bool on) {
        chart->DrawFreq(on);
        chart->Refresh();
    });
    page->AddSwitch("All labels", true, [chart](bool on) {
        chart->DrawTextA(on);
        chart->Refresh();
    });
    return page;
}

} // namespace

std::vector<Page> ChartPages() {
    return {
        {"plot", Mark("X/Y plot"), "CPlotCtrl", MakePlotPage},
        {"histogram", Mark("Histogram"), "CHstgCtrl", MakeHistogramPage},
    };
}

} // namespace zelvar::gallery
