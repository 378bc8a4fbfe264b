#pragma once

#include <QtWidgets/QAccessibleWidget>

namespace zelvar {

class ChartCtrl;

/// A chart as screen readers see it: a chart with a name, what is selected as its value, and what is selected and what
/// it shows, in words, as its description.
class ChartAccessible final : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit ChartAccessible(ChartCtrl &chart);
    /// Lets the toolkit know of it; any number of calls.
    static void Install();

    [[nodiscard]] QString text(QAccessible::Text kind) const override;
    void *interface_cast(QAccessible::InterfaceType type) override;

    [[nodiscard]] QVariant currentValue() const override;
    void setCurrentValue(QVariant const &) override {} ///< what is measured cannot be set
    [[nodiscard]] QVariant maximumValue() const override;
    [[nodiscard]] QVariant minimumValue() const override;
    [[nodiscard]] QVariant minimumStepSize() const override { return 0.0; }

private:
    [[nodiscard]] ChartCtrl const &Chart() const;
};

} // namespace zelvar
