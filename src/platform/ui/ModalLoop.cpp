#include "zelvar/platform/ui/ModalLoop.h"

#include "zelvar/platform/ui/MainWindow.h"

#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QEventLoop>
#include <QtCore/QPointer>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDialog>
#include <QtWidgets/QMenu>

namespace zelvar::platform {

namespace {

void WakeDispatcher() {
    if (QAbstractEventDispatcher *const dispatcher = QCoreApplication::eventDispatcher())
        dispatcher->wakeUp();
}

/// Gives the focus back to where it was at construction, if that still can take it.
class FocusKeeper {
public:
    FocusKeeper() : m_window(QApplication::activeWindow()), m_widget(QApplication::focusWidget()) {}
    FocusKeeper(FocusKeeper const &) = delete;
    FocusKeeper &operator=(FocusKeeper const &) = delete;
    ~FocusKeeper() {
        // A window behind another modal dialog stays behind it.
        QWidget const *const modal = QApplication::activeModalWidget();
        if (!m_window.isNull() && m_window->isVisible() && (modal == nullptr || modal == m_window))
            m_window->activateWindow();
        if (!m_widget.isNull() && m_widget->isVisible() && m_widget->isEnabled())
            m_widget->setFocus(Qt::OtherFocusReason);
    }

private:
    QPointer<QWidget> m_window;
    QPointer<QWidget> m_widget;
};

} // namespace

int RunModal(QDialog &dialog) {
    FocusKeeper const focus;
    StandOverMainWindow(dialog);
    WakeDispatcher();
    return dialog.exec();
}

QAction *RunMenu(QMenu &menu, QPoint const &screenPoint) {
    FocusKeeper const focus;
    WakeDispatcher();
    return menu.exec(screenPoint);
}

int RunLoop(QEventLoop &loop) {
    WakeDispatcher();
    return loop.exec();
}

} // namespace zelvar::platform
