#include "zelvar/tool/ChartWindow.h"

#include "zelvar/platform/ui/Text.h"

#include <QtCore/QFile>
#include <QtCore/QTimer>
#include <QtGui/QKeyEvent>
#include <QtGui/QMouseEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QVBoxLayout>

#include <charconv>

namespace zelvar::tool {

ChartWindow::ChartWindow(ChartCtrl &chart, DString const &title, std::function<void()> picked)
    : m_chart(chart), m_picked(std::move(picked)) {
    m_messages.On(WM_CHART_SELECTED, this, &ChartWindow::OnSelected);
    setWindowTitle(platform::ToQString(title));
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(&chart);
    chart.setMinimumSize(200, 150);
    chart.setFocus();
}

bool ChartWindow::SetClicks(std::vector<DString> const &clicks) {
    for (DString const &click : clicks) {
        Point point;
        char const *const end = click.data() + click.size();
        auto const x = std::from_chars(click.data(), end, point.x);
        if (x.ec != std::errc{} || x.ptr == end || *x.ptr != ',')
            return false;
        if (auto const y = std::from_chars(x.ptr + 1, end, point.y); y.ec != std::errc{} || y.ptr != end)
            return false;
        m_clicks.push_back(point);
    }
    return true;
}

void ChartWindow::Click() {
    for (Point const &point : m_clicks) {
        QPointF const at(point.x, point.y);
        for (QEvent::Type const type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
            bool const isPress = type == QEvent::MouseButtonPress;
            QMouseEvent event(type, at, m_chart.mapToGlobal(at), Qt::LeftButton,
                              isPress ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
            QApplication::sendEvent(&m_chart, &event);
        }
        QApplication::sendPostedEvents(this);
    }
}

bool ChartWindow::Run(bool attended, DString const &shot) {
    m_shot = shot;
    show();
    QTimer::singleShot(0, this, [this, attended] {
        Click();
        if (!attended)
            close();
    });
    QApplication::exec();
    return m_isShotWritten;
}

bool ChartWindow::event(QEvent *event) { return m_messages.Dispatch(*event) || QWidget::event(event); }

void ChartWindow::closeEvent(QCloseEvent *event) {
    if (!m_shot.empty())
        m_isShotWritten = grab().save(QFile::decodeName(m_shot.c_str()), "PNG");
    QWidget::closeEvent(event);
}

void ChartWindow::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Escape)
        close();
    else
        QWidget::keyPressEvent(event);
}

} // namespace zelvar::tool
