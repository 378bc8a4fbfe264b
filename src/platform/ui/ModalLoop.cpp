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

/// Ends a window that runs when its parent dies, and takes it away from it first: who runs it owns it, on the stack as
/// often as not, and deletes it.
class ParentWatch {
public:
    template <class End>
    ParentWatch(QWidget &window, End end) {
        // Told before a window deletes its children.
        if (QWidget const *const parent = window.parentWidget())
            m_connection = QObject::connect(parent, &QObject::destroyed, &window, [&window, end] {
                end(); // while it is visible: a hidden dialog does not leave its loop any more
                window.setParent(nullptr, window.windowFlags());
            });
    }
    ParentWatch(ParentWatch const &) = delete;
    ParentWatch &operator=(ParentWatch const &) = delete;
    ~ParentWatch() { QObject::disconnect(m_connection); }

private:
    QMetaObject::Connection m_connection;
};

} // namespace

int RunModal(QDialog &dialog) {
    FocusKeeper const focus;
    ParentWatch const parent(dialog, [&dialog] { dialog.done(QDialog::Rejected); });
    StandOverMainWindow(dialog);
    WakeDispatcher();
    return dialog.exec();
}

QAction *RunMenu(QMenu &menu, QPoint const &screenPoint) {
    FocusKeeper const focus;
    ParentWatch const parent(menu, [&menu] { menu.close(); });
    WakeDispatcher();
    return menu.exec(screenPoint);
}

int RunLoop(QEventLoop &loop) {
    WakeDispatcher();
    return loop.exec();
}

} // namespace zelvar::platform
