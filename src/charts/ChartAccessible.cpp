#include "zelvar/charts/ChartAccessible.h"

#include "zelvar/charts/ChartCtrl.h"
#include "zelvar/platform/ui/Text.h"

namespace zelvar {

namespace {

QAccessibleInterface *MakeInterface(QString const &, QObject *object) {
    auto *const chart = qobject_cast<ChartCtrl *>(object);
    return chart == nullptr ? nullptr : new ChartAccessible(*chart);
}

} // namespace

ChartAccessible::ChartAccessible(ChartCtrl &chart) : QAccessibleWidget(&chart, QAccessible::Chart) {}

void ChartAccessible::Install() {
    static bool const done = (QAccessible::installFactory(MakeInterface), true);
    static_cast<void>(done);
}

ChartCtrl const &ChartAccessible::Chart() const { return static_cast<ChartCtrl const &>(*widget()); }

QString ChartAccessible::text(QAccessible::Text kind) const {
    if (kind == QAccessible::Value)
        return platform::ToQString(Chart().SelectionText());
    QString given = QAccessibleWidget::text(kind);
    if (kind != QAccessible::Description)
        return given;
    // Over the bus a value is a bare number: the words for it go first, where readers hear that they are others.
    QStringList words{platform::ToQString(Chart().SelectionText()),
                      given.isEmpty() ? platform::ToQString(Chart().DescriptionText()) : given};
    words.removeAll(QString());
    return words.join(QStringLiteral("; "));
}

void *ChartAccessible::interface_cast(QAccessible::InterfaceType type) {
    return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface *>(this)
                                               : QAccessibleWidget::interface_cast(type);
}

QVariant ChartAccessible::currentValue() const { return Chart().SelectionValue().value; }
QVariant ChartAccessible::maximumValue() const { return Chart().SelectionValue().most; }
QVariant ChartAccessible::minimumValue() const { return Chart().SelectionValue().least; }

} // namespace zelvar
