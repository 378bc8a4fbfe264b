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

QString ChartAccessible::text(QAccessible::Text kind) const {
    auto const &chart = static_cast<ChartCtrl const &>(*widget());
    if (kind == QAccessible::Value)
        return platform::ToQString(chart.SelectionText());
    QString given = QAccessibleWidget::text(kind);
    if (given.isEmpty() && kind == QAccessible::Description)
        return platform::ToQString(chart.DescriptionText());
    return given;
}

} // namespace zelvar
