#include "zelvar/base/DHstg.h"
#include "zelvar/charts/CHstgCtrl.h"
#include "zelvar/charts/CPlotCtrl.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/tool/Gallery.h"

#include <QtWidgets/QCheckBox>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QVBoxLayout>

#include <cmath>
#include <initializer_list>

namespace zelvar::tool {

namespace {

/// A chart with switches above it, and below it what is selected.
class ChartPage : public QWidget {
public:
    explicit ChartPage(ChartCtrl &chart) : m_chart(chart), m_selection(new QLabel) {
        m_messages.On(WM_CHART_SELECTED, this, &ChartPage::OnSelected);
        m_switches->addStretch();
        auto *const layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addLayout(m_switches);
        layout->addWidget(&chart, 1);
        layout->addWidget(m_selection);
        ShowSelection();
    }
    void AddSwitch(char const *text, bool on, std::function<void(bool)> act) {
        auto *const box = new QCheckBox(QString::fromUtf8(text));
        box->setChecked(on);
        m_switches->insertWidget(m_switches->count() - 1, box);
        connect(box, &QCheckBox::toggled, this, std::move(act));
    }

protected:
    bool event(QEvent *event) override { return m_messages.Dispatch(*event) || QWidget::event(event); }

private:
    void OnSelected(platform::MessageParam, platform::MessageParam) { ShowSelection(); }
    void ShowSelection() {
        DString const text = m_chart.SelectionText();
        m_selection->setText(text.empty() ? QStringLiteral("Nothing is selected")
                                          : QStringLiteral("Selected: ") + platform::ToQString(text));
    }

    ChartCtrl &m_chart;
    QHBoxLayout *m_switches = new QHBoxLayout;
    QLabel *m_selection;
    platform::MessageMap m_messages;
};

/// A chart that keeps its data.
class OwningHistogram : public CHstgCtrl {
public:
    explicit OwningHistogram(DHstg histogram) : m_data(std::move(histogram)) { SetHstg(&m_data); }

private:
    DHstg m_data;
};

} // namespace

QWidget *MakePlotPage() {
    auto *const plot = new CPlotCtrl;
    constexpr int days = 40;
    for (int day = 0; day <= days; ++day) {
        DString const label = day % 5 == 0 ? Format("day %d", day) : DString();
        plot->AddData(day, 50 - 45 * std::cos(day * 0.3) * std::exp(-day * 0.04), label.c_str(), "");
    }
    plot->SetDataMaxY(100);
    plot->SetTickX(5);
    plot->SetTickY(20);
    plot->DrawLine(true);
    plot->DrawTitle(true);
    plot->SetTitle("Growth of a culture");
    plot->SetCaptionX("time [days]");
    plot->SetCaptionY("area [%]");
    auto *const page = new ChartPage(*plot);
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
    auto *const page = new ChartPage(*chart);
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

} // namespace zelvar::tool
