#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/charts/ChartCtrl.h"

#include <QtWidgets/QWidget>

#include <functional>
#include <vector>

namespace zelvar::tool {

/// The window of one chart. It hears what the user picks, and takes its picture when it closes.
class ChartWindow : public QWidget {
public:
    /// The chart becomes the window's; `picked` is called for each selection.
    ChartWindow(ChartCtrl &chart, DString const &title, std::function<void()> picked);

    /// Points of the chart that are clicked once it is shown, "X,Y" each in pixels. False if one is written otherwise.
    bool SetClicks(std::vector<DString> const &clicks);
    /// Shows the window until it is closed, or, where nobody could close it, until it has been painted. A picture goes
    /// to `shot` unless it is empty; false if it cannot be written.
    bool Run(bool attended, DString const &shot);

protected:
    bool event(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override; ///< Escape closes

private:
    void Click();

    ChartCtrl &m_chart;
    std::function<void()> m_picked;
    std::vector<Point> m_clicks{};
    platform::MessageMap m_messages;
    DString m_shot;
    bool m_isShotWritten = true;

    void OnSelected() { m_picked(); }
};

} // namespace zelvar::tool
