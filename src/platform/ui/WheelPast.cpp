#include "zelvar/platform/ui/WheelPast.h"

#include <QtCore/QEvent>
#include <QtWidgets/QWidget>

namespace zelvar::platform {

namespace {

class WheelPast : public QObject {
public:
    explicit WheelPast(QWidget &control) : QObject(&control), m_control(control) {}

protected:
    bool eventFilter(QObject *watched, QEvent *event) override {
        if (event->type() != QEvent::Wheel || m_control.hasFocus())
            return QObject::eventFilter(watched, event);
        event->ignore();
        return true;
    }

private:
    QWidget &m_control;
};

} // namespace

void LetWheelPast(QWidget &control) {
    control.setFocusPolicy(Qt::StrongFocus); // the wheel gives none
    control.installEventFilter(new WheelPast(control));
}

} // namespace zelvar::platform
