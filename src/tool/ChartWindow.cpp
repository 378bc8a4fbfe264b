#include "zelvar/tool/ChartWindow.h"

#include "zelvar/platform/ui/Text.h"

#include <QtCore/QFile>
#include <QtCore/QTimer>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QVBoxLayout>

namespace zelvar::tool {

ChartWindow::ChartWindow(ChartCtrl &chart, DString const &title, std::function<void()> picked)
    : m_picked(std::move(picked)) {
    m_messages.On(WM_CHART_SELECTED, this, &ChartWindow::OnSelected);
    setWindowTitle(platform::ToQString(title));
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(&chart);
    chart.setMinimumSize(200, 150);
    chart.setFocus();
}

bool ChartWindow::Run(bool attended, DString const &shot) {
    m_shot = shot;
    show();
    if (!attended)
        QTimer::singleShot(0, this, &QWidget::close);
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
