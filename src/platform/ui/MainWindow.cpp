#include "zelvar/platform/ui/MainWindow.h"

#include <QtCore/QEvent>
#include <QtCore/QPointer>
#include <QtCore/QThread>
#include <QtGui/QScreen>
#include <QtGui/QWindow>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDialog>
#include <QtWidgets/QMainWindow>

#include <algorithm>

namespace zelvar::platform {

namespace {

/// Never destroyed: it may be asked until the very end.
QPointer<QWidget> &NamedWindow() {
    static auto &window = *new QPointer<QWidget>;
    return window;
}

/// Sees the dialog's first showing, when its size is known and so is whether it has a place of its own.
class Placement : public QObject {
public:
    Placement(QDialog &dialog, QWidget *below) : QObject(&dialog), m_below(below) {}

    bool eventFilter(QObject *watched, QEvent *event) override {
        auto *const dialog = qobject_cast<QDialog *>(watched);
        if (event->type() == QEvent::Show && dialog != nullptr && !event->spontaneous()) {
            dialog->removeEventFilter(this);
            Place(*dialog);
            deleteLater();
        }
        return false;
    }

private:
    void Place(QDialog &dialog) const {
        QWidget const *const below = m_below.isNull() ? MainWindow() : m_below.data();
        if (below == nullptr || !below->isVisible() || below->window() == &dialog)
            return;
        if (dialog.windowHandle() != nullptr)
            dialog.windowHandle()->setTransientParent(below->window()->windowHandle());
        if (dialog.testAttribute(Qt::WA_Moved))
            return;
        QRect place(QPoint(), dialog.frameGeometry().size());
        place.moveCenter(below->window()->frameGeometry().center());
        QRect const available = below->screen()->availableGeometry();
        dialog.move(std::max(available.left(), std::min(place.left(), available.right() + 1 - place.width())),
                    std::max(available.top(), std::min(place.top(), available.bottom() + 1 - place.height())));
    }

    QPointer<QWidget> m_below; ///< null for the main window
};

} // namespace

void SetMainWindow(QWidget *window) { NamedWindow() = window; }

QWidget *MainWindow() {
    if (!NamedWindow().isNull())
        return NamedWindow();
    if (auto *const active = qobject_cast<QMainWindow *>(QApplication::activeWindow()))
        return active;
    QWidget *first = nullptr;
    for (QWidget *const window : QApplication::topLevelWidgets()) {
        if (qobject_cast<QMainWindow *>(window) == nullptr)
            continue;
        if (window->isVisible())
            return window;
        first = first == nullptr ? window : first;
    }
    return first;
}

bool HasFrame(QWidget const *window) {
    while (window != nullptr && qobject_cast<QMainWindow const *>(window) == nullptr)
        window = window->parentWidget();
    return window != nullptr;
}

bool IsWindowThread() { return qApp != nullptr && qApp->thread() == QThread::currentThread(); }

void StandOverMainWindow(QDialog &dialog) {
    if (dialog.parentWidget() == nullptr)
        dialog.installEventFilter(new Placement(dialog, QApplication::activeModalWidget()));
}

} // namespace zelvar::platform
