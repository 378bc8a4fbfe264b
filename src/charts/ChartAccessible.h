#pragma once

#include <QtWidgets/QAccessibleWidget>

namespace zelvar {

class ChartCtrl;

/// A chart as screen readers see it: a chart with a name, what it shows as its description, and what is selected as its
/// value.
class ChartAccessible final : public QAccessibleWidget {
public:
    explicit ChartAccessible(ChartCtrl &chart);
    /// Lets the toolkit know of it; any number of calls.
    static void Install();

    [[nodiscard]] QString text(QAccessible::Text kind) const override;
};

} // namespace zelvar
