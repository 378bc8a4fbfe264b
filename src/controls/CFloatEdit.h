#pragma once

#include "zelvar/base/DString.h"

#include <QtWidgets/QLineEdit>

namespace zelvar {

/// Edit for a floating point number. It adds to the platform's edit field a range, a number of decimals, steps by arrow
/// keys (Page keys take ten), and the exact value behind the text: what `SetValue` was given `GetValue` gives back, to
/// the last bit, as long as nobody types. Point and comma are both taken, thousands may be parted, and letters are
/// refused with all that was pasted with them. While the text is no number in the range the field is marked and the
/// last good value stays; on leaving the field or Return a number outside goes to the nearest end, anything else back
/// to the last good value.
class ZELVAR_API CFloatEdit : public QLineEdit {
    Q_OBJECT

public:
    /// All finite numbers, as many decimals as they have, steps of 1; shows 0.
    explicit CFloatEdit(QWidget *parent = nullptr);

    /// Ends given the wrong way round are exchanged; infinite ones stand for none. False for NaN, and nothing changed.
    /// A value outside goes to the nearest end.
    bool SetRange(double minimum, double maximum);
    [[nodiscard]] double GetMinimum() const { return m_minimum; }
    [[nodiscard]] double GetMaximum() const { return m_maximum; }
    /// What is typed is rounded to that many; below 0 as many as it takes.
    void SetDecimals(int decimals);
    void SetStep(double step);
    /// Whether the field may be left without a number.
    void SetAllowEmpty(bool allow = true);

    /// False for NaN and the infinities, and nothing changed. A value outside the range goes to the nearest end.
    bool SetValue(double value);
    /// The last good value, also while the field is empty.
    [[nodiscard]] double GetValue() const { return m_value; }
    /// False where the field may not be empty.
    bool SetEmpty();
    [[nodiscard]] bool IsEmpty() const { return m_empty; }
    /// Whether what the field shows is its value now: if not, it is marked.
    [[nodiscard]] bool IsValid() const;

Q_SIGNALS:
    /// At each change, also while typing and by the application.
    void ValueChanged(double value, bool empty);

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    class Validator;
    void OnTextChanged();
    void Take(double value, bool empty);
    void Show(); ///< the value's own text
    void Step(int count);
    [[nodiscard]] double Within(double value) const;
    [[nodiscard]] QString ValueText() const;
    /// What the text becomes when the field is left.
    [[nodiscard]] QString MendedText(QString const &text) const;
    [[nodiscard]] QString RangeText() const;

    double m_value = 0;
    double m_minimum;
    double m_maximum;
    double m_step = 1;
    int m_decimals = -1;
    bool m_empty = false;
    bool m_allowEmpty = false;
    bool m_showing = false; ///< the text changes by our own hand
};

} // namespace zelvar
