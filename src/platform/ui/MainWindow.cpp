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
#include <future>
#include <memory>
#include <mutex>

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
        bool const hasPlace = dialog.testAttribute(Qt::WA_Moved) || dialog.parentWidget() != nullptr;
        QWidget const *const below = m_below.isNull() ? MainWindow() : m_below.data();
        bool const isOver = below != nullptr && below->isVisible() && below->window() != &dialog;
        if (isOver && dialog.parentWidget() == nullptr && dialog.windowHandle() != nullptr)
            dialog.windowHandle()->setTransientParent(below->window()->windowHandle());
        QRect const available = (isOver ? below : &dialog)->screen()->availableGeometry();
        // Its own frame is not known yet.
        QSize frame = dialog.frameGeometry().size() - dialog.size();
        if (isOver)
            frame = frame.expandedTo(below->window()->frameGeometry().size() - below->window()->size());
        QRect place(dialog.frameGeometry().topLeft(), dialog.size() + frame);
        bool const isTooLarge = place.width() > available.width() || place.height() > available.height();
        if (hasPlace ? !isTooLarge : !isOver)
            return;
        if (isTooLarge)
            dialog.resize(dialog.size() - (place.size() - place.size().boundedTo(available.size())));
        place.setSize(dialog.size() + frame);
        if (!hasPlace)
            place.moveCenter(below->window()->frameGeometry().center());
        dialog.move(OnScreen(place.left(), place.width(), available.left(), available.width()),
                    OnScreen(place.top(), place.height(), available.top(), available.height()));
    }

    /// Where an edge goes so that all can be seen, or, of what is too large even so, its end: there are the buttons.
    static int OnScreen(int begin, int length, int screenBegin, int screenLength) {
        int const last = screenBegin + screenLength - length;
        return length > screenLength ? last : std::clamp(begin, screenBegin, last);
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

bool CallOnWindowThread(std::function<void()> call) {
    if (qApp == nullptr)
        return false;
    // What one thread has written the other sees by the lock, and by the answer.
    std::mutex handOver;
    auto answer = std::make_shared<std::promise<void>>();
    std::future<void> made = answer->get_future();
    {
        std::lock_guard const written(handOver);
        QMetaObject::invokeMethod(
            qApp,
            [&handOver, call = std::move(call), answer = std::move(answer)] {
                { std::lock_guard const read(handOver); } // gone before the answer: with it the other thread goes on
                call();
                answer->set_value();
            },
            Qt::QueuedConnection);
    }
    try {
        made.get();
        return true;
    } catch (std::future_error const &) {
        return false; // the application has ended first
    }
}

void StandOverMainWindow(QDialog &dialog) {
    dialog.installEventFilter(new Placement(dialog, QApplication::activeModalWidget()));
}

} // namespace zelvar::platform
