#include "zelvar/controls/CFloatEdit.h"

#include "zelvar/controls/core/NumberText.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QScopedValueRollback>
#include <QtGui/QHelpEvent>
#include <QtGui/QKeyEvent>
#include <QtGui/QPainter>
#include <QtGui/QValidator>
#include <QtWidgets/QToolTip>

#include <algorithm>
#include <cmath>
#include <limits>

namespace zelvar {

namespace {

constexpr double kGreatest = std::numeric_limits<double>::max();
constexpr int kPageSteps = 10;

NumberReading Read(QString const &text) { return ReadNumber(platform::ToDString(text)); }

} // namespace

/// Refuses what can never become a number, and mends the rest when the field is left.
class CFloatEdit::Validator final : public QValidator {
public:
    explicit Validator(CFloatEdit &edit) : QValidator(&edit), m_edit(edit) {}
    State validate(QString &text, int &) const override {
        NumberReading const reading = Read(text);
        switch (reading.state) {
        case NumberReading::State::Refused:
            return Invalid;
        case NumberReading::State::Empty:
            return m_edit.m_allowEmpty ? Acceptable : Intermediate;
        case NumberReading::State::Number:
            return m_edit.Within(reading.value) == reading.value ? Acceptable : Intermediate;
        default:
            return Intermediate;
        }
    }
    void fixup(QString &text) const override { text = m_edit.MendedText(text); }

private:
    CFloatEdit &m_edit;
};

CFloatEdit::CFloatEdit(QWidget *parent) : QLineEdit(parent), m_minimum(-kGreatest), m_maximum(kGreatest) {
    setInputMethodHints(Qt::ImhFormattedNumbersOnly);
    setValidator(new Validator(*this));
    Show();
    connect(this, &QLineEdit::textChanged, this, &CFloatEdit::OnTextChanged);
    connect(this, &QLineEdit::editingFinished, this, [this] {
        if (text() != ValueText())
            Show();
    });
}

bool CFloatEdit::SetRange(double minimum, double maximum) {
    if (std::isnan(minimum) || std::isnan(maximum))
        return false;
    std::tie(m_minimum, m_maximum) = std::minmax(std::clamp(minimum, -kGreatest, kGreatest), //
                                                 std::clamp(maximum, -kGreatest, kGreatest));
    if (Within(m_value) != m_value) {
        Take(Within(m_value), m_empty);
        Show();
    }
    update();
    return true;
}

void CFloatEdit::SetDecimals(int decimals) {
    m_decimals = std::max(decimals, kShortest);
    Show();
}

void CFloatEdit::SetStep(double step) {
    if (step > 0 && std::isfinite(step))
        m_step = step;
}

void CFloatEdit::SetAllowEmpty(bool allow) {
    m_allowEmpty = allow;
    if (!allow && m_empty) {
        Take(m_value, false);
        Show();
    }
    update();
}

bool CFloatEdit::SetValue(double value) {
    if (!std::isfinite(value))
        return false;
    Take(Within(value), false);
    Show();
    return true;
}

bool CFloatEdit::SetEmpty() {
    if (!m_allowEmpty)
        return false;
    Take(m_value, true);
    Show();
    return true;
}

bool CFloatEdit::IsValid() const {
    NumberReading const reading = Read(text());
    return text() == ValueText() || (reading.state == NumberReading::State::Empty && m_allowEmpty) ||
           (reading.state == NumberReading::State::Number && Within(reading.value) == reading.value);
}

void CFloatEdit::OnTextChanged() {
    if (m_showing)
        return;
    NumberReading const reading = Read(text());
    if (reading.state == NumberReading::State::Empty && m_allowEmpty)
        Take(m_value, true);
    else if (text() == ValueText()) // what is shown may be rounded; the value behind it stays
        Take(m_value, false);
    else if (reading.state == NumberReading::State::Number && Within(reading.value) == reading.value)
        Take(Within(RoundNumber(reading.value, m_decimals)), false);
    setAccessibleDescription(IsValid() ? QString() : RangeText());
    update();
}

void CFloatEdit::Take(double value, bool empty) {
    bool const same = std::equal_to<>()(value, m_value) && std::signbit(value) == std::signbit(m_value);
    if (same && empty == m_empty)
        return;
    m_value = value;
    m_empty = empty;
    Q_EMIT ValueChanged(value, empty);
}

void CFloatEdit::Show() {
    QScopedValueRollback const own(m_showing, true);
    setText(m_empty ? QString() : ValueText());
    setAccessibleDescription(QString());
    update();
}

double CFloatEdit::Within(double value) const { return std::clamp(value, m_minimum, m_maximum); }

QString CFloatEdit::ValueText() const {
    return m_empty ? QString() : platform::ToQString(WriteNumber(m_value, m_decimals));
}

QString CFloatEdit::MendedText(QString const &text) const {
    NumberReading const reading = Read(text);
    bool const number =
        reading.state == NumberReading::State::Number || reading.state == NumberReading::State::TooLarge;
    return number ? platform::ToQString(WriteNumber(Within(reading.value))) : ValueText();
}

QString CFloatEdit::RangeText() const {
    bool const below = m_maximum < kGreatest;
    bool const above = m_minimum > -kGreatest;
    QString const minimum = platform::ToQString(WriteNumber(m_minimum));
    QString const maximum = platform::ToQString(WriteNumber(m_maximum));
    if (above && below)
        return platform::Shown("A number from %1 to %2").arg(minimum, maximum);
    if (above)
        return platform::Shown("A number not below %1").arg(minimum);
    return below ? platform::Shown("A number not above %1").arg(maximum) : platform::Shown("A number");
}

void CFloatEdit::Step(int count) {
    double const from = m_empty ? Within(0) : Read(MendedText(text())).value;
    double const start = text() == ValueText() && !m_empty ? m_value : from;
    Take(Within(RoundNumber(StepNumber(start, m_step, count), m_decimals)), false);
    Show();
    selectAll();
}

bool CFloatEdit::event(QEvent *event) {
    if (event->type() == QEvent::ToolTip && !IsValid()) {
        QToolTip::showText(static_cast<QHelpEvent const *>(event)->globalPos(), RangeText(), this);
        return true;
    }
    return QLineEdit::event(event);
}

void CFloatEdit::keyPressEvent(QKeyEvent *event) {
    bool const plain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier && !isReadOnly();
    if (plain && event->key() == Qt::Key_Up)
        Step(1);
    else if (plain && event->key() == Qt::Key_Down)
        Step(-1);
    else if (plain && event->key() == Qt::Key_PageUp)
        Step(kPageSteps);
    else if (plain && event->key() == Qt::Key_PageDown)
        Step(-kPageSteps);
    else
        QLineEdit::keyPressEvent(event);
}

void CFloatEdit::paintEvent(QPaintEvent *event) {
    QLineEdit::paintEvent(event);
    if (IsValid())
        return;
    QPainter painter(this);
    painter.setPen(QPen(QColor(200, 30, 30), 2));
    painter.drawRect(rect().adjusted(1, 1, -1, -1));
}

} // namespace zelvar
