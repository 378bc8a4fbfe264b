#include "zelvar/platform/ui/HintColor.h"

#include "zelvar/platform/ui/PaletteColors.h"

#include <QtCore/QEvent>
#include <QtWidgets/QWidget>

namespace zelvar::platform {

namespace {

class HintColor final : public QObject {
public:
    explicit HintColor(QWidget &widget) : QObject(&widget), m_widget(widget) {
        widget.installEventFilter(this);
        Apply();
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override {
        if (watched == &m_widget && event->type() == QEvent::PaletteChange)
            Apply();
        return false;
    }

private:
    void Apply() {
        constexpr double kStrength = 0.6;
        QPalette const &shown = m_widget.palette();
        QColor const hint = Mixed(shown.color(QPalette::Active, QPalette::Base),
                                  shown.color(QPalette::Active, QPalette::Text), kStrength);
        if (shown.color(QPalette::Active, QPalette::PlaceholderText) == hint)
            return;
        QPalette own; // of that colour alone
        own.setColor(QPalette::PlaceholderText, hint);
        m_widget.setPalette(own);
    }

    QWidget &m_widget;
};

} // namespace

void KeepHintsReadable(QWidget &widget) { new HintColor(widget); }

} // namespace zelvar::platform
