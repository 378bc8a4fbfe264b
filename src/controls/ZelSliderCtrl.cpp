#include "zelvar/controls/ZelSliderCtrl.h"

#include "zelvar/controls/CFloatEdit.h"
#include "zelvar/controls/SliderTrack.h"
#include "zelvar/controls/core/NumberText.h"
#include "zelvar/platform/ui/Text.h"

#include <QtCore/QScopedValueRollback>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>

#include <algorithm>
#include <cmath>

namespace zelvar {

namespace {

constexpr int kPagesOfLog = 10; // lines a page
constexpr int kLongestText = 9; // characters of a value shown without a fixed number of decimals

} // namespace

ZelSliderCtrl::ZelSliderCtrl(QWidget *parent)
    : QWidget(parent), m_layout(new QBoxLayout(QBoxLayout::LeftToRight, this)), m_track(new SliderTrack(*this)),
      m_text(new QLabel), m_edit(new CFloatEdit), m_unitText(new QLabel) {
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->addWidget(m_track, 1);
    m_layout->addWidget(m_text);
    m_layout->addWidget(m_edit);
    m_layout->addWidget(m_unitText);
    m_text->setTextFormat(Qt::PlainText);
    m_text->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_unitText->setTextFormat(Qt::PlainText);
    setFocusProxy(m_track);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(m_track, &QSlider::actionTriggered, this, &ZelSliderCtrl::OnAction);
    connect(m_track, &QSlider::valueChanged, this, &ZelSliderCtrl::OnSlid);
    connect(m_track, &QSlider::sliderReleased, this, [this] { Q_EMIT EndTrack(m_pos); });
    connect(m_edit, &CFloatEdit::ValueChanged, this, &ZelSliderCtrl::OnTyped);
    connect(m_edit, &QLineEdit::editingFinished, this, [this] { m_edit->SetValue(m_pos); });
    m_edit->installEventFilter(this);
    SetValueField(ValueField::None);
    Rescale(0, 100, 1, false);
}

void ZelSliderCtrl::SetOrientation(Qt::Orientation orientation) {
    bool const upright = orientation == Qt::Vertical;
    m_track->setOrientation(orientation);
    m_layout->setDirection(upright ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
    for (QWidget *const part : {static_cast<QWidget *>(m_track), static_cast<QWidget *>(m_text),
                                static_cast<QWidget *>(m_edit), static_cast<QWidget *>(m_unitText)})
        m_layout->setAlignment(part, upright ? Qt::AlignHCenter : Qt::Alignment());
    m_text->setAlignment((upright ? Qt::AlignHCenter : Qt::AlignRight) | Qt::AlignVCenter);
    setSizePolicy(upright ? QSizePolicy::Fixed : QSizePolicy::Expanding,
                  upright ? QSizePolicy::Expanding : QSizePolicy::Fixed);
}

Qt::Orientation ZelSliderCtrl::GetOrientation() const { return m_track->orientation(); }

bool ZelSliderCtrl::SetRange(double first, double last) {
    if (!std::isfinite(first) || !std::isfinite(last))
        return false;
    Rescale(first, last, m_step, m_logarithmic);
    return true;
}

void ZelSliderCtrl::SetStep(double step) { Rescale(GetFirst(), GetLast(), step, m_logarithmic); }

bool ZelSliderCtrl::SetLogarithmic(bool logarithmic) {
    Rescale(GetFirst(), GetLast(), m_step, logarithmic);
    return m_scale.IsLogarithmic() == logarithmic;
}

void ZelSliderCtrl::Rescale(double first, double last, double step, bool logarithmic) {
    m_step = step;
    m_logarithmic = logarithmic;
    m_scale = SliderScale(first, last, step, logarithmic);
    {
        QSignalBlocker const quiet(m_track);
        m_track->setRange(0, m_scale.Positions());
        m_track->setSingleStep(std::max(1, m_scale.Positions() / 100)); // of the wheel
        m_track->setPageStep(std::max(1, m_scale.Positions() / 10));
    }
    {
        QScopedValueRollback const own(m_typing, true);
        m_edit->SetRange(first, last);
    }
    FitField();
    Take(m_scale.Snapped(m_pos));
    m_track->update();
}

void ZelSliderCtrl::SetTicFreq(double distance) {
    m_tickDistance = distance;
    m_ticks = true;
    m_track->updateGeometry();
    m_track->update();
}

void ZelSliderCtrl::ClearTics() {
    m_ticks = false;
    m_track->updateGeometry();
    m_track->update();
}

std::vector<double> ZelSliderCtrl::Ticks() const {
    return m_ticks ? m_scale.Ticks(m_tickDistance) : std::vector<double>();
}

void ZelSliderCtrl::SetValueField(ValueField field) {
    m_field = field;
    m_text->setVisible(field == ValueField::Text);
    m_edit->setVisible(field == ValueField::Edit);
    m_unitText->setVisible(field == ValueField::Edit && !m_unit.empty());
    FitField();
}

void ZelSliderCtrl::SetDecimals(int decimals) {
    m_decimals = decimals;
    QScopedValueRollback const own(m_typing, true);
    m_edit->SetDecimals(decimals);
    FitField();
    ShowValue();
}

void ZelSliderCtrl::SetUnit(DString const &unit) {
    m_unit = unit;
    m_unitText->setText(platform::ToQString(unit));
    m_unitText->setVisible(m_field == ValueField::Edit && !unit.empty());
    FitField();
    ShowValue();
}

bool ZelSliderCtrl::SetPos(double value) {
    if (!std::isfinite(value))
        return false;
    Take(m_scale.Snapped(value));
    return true;
}

void ZelSliderCtrl::Take(double value) {
    bool const changed = value < m_pos || value > m_pos;
    m_pos = value;
    // The thumb stands at the nearest position; the value is not rounded to it.
    m_track->setSliderPosition(m_scale.PositionOf(m_pos));
    ShowValue();
    if (changed)
        Q_EMIT PosChanged(m_pos);
}

void ZelSliderCtrl::ShowValue() {
    m_text->setText(platform::ToQString(GetPosText()));
    if (m_typing)
        return;
    QScopedValueRollback const own(m_typing, true);
    m_edit->SetValue(m_pos);
}

void ZelSliderCtrl::OnAction(int action) {
    switch (action) {
    case QAbstractSlider::SliderSingleStepAdd:
        MoveLines(1);
        break;
    case QAbstractSlider::SliderSingleStepSub:
        MoveLines(-1);
        break;
    case QAbstractSlider::SliderPageStepAdd:
        MovePages(1);
        break;
    case QAbstractSlider::SliderPageStepSub:
        MovePages(-1);
        break;
    case QAbstractSlider::SliderToMinimum:
        Take(GetFirst());
        break;
    case QAbstractSlider::SliderToMaximum:
        Take(GetLast());
        break;
    default:
        return;
    }
    Q_EMIT EndTrack(m_pos);
}

void ZelSliderCtrl::OnSlid(int position) {
    if (position == m_scale.PositionOf(m_pos))
        return;
    Take(m_scale.ValueAt(position));
    if (!m_track->isSliderDown())
        Q_EMIT EndTrack(m_pos);
}

void ZelSliderCtrl::OnTyped(double value) {
    if (m_typing)
        return;
    QScopedValueRollback const own(m_typing, true);
    SetPos(value);
    Q_EMIT EndTrack(m_pos);
}

double ZelSliderCtrl::Line() const {
    double const line = m_line > 0 ? m_line : std::abs(GetLast() / 100 - GetFirst() / 100);
    return m_step > 0 ? std::max(m_step, line) : line;
}

void ZelSliderCtrl::MoveLines(int lines) { Take(m_scale.Moved(m_pos, Line(), lines)); }

void ZelSliderCtrl::MovePages(int pages) {
    double const page = m_page > 0 ? m_page : std::abs(GetLast() / 10 - GetFirst() / 10);
    bool const logarithmic = m_scale.IsLogarithmic();
    Take(m_scale.Moved(m_pos, std::max(page, m_step), logarithmic ? pages * kPagesOfLog : pages));
}

DString ZelSliderCtrl::TextOf(double value) const {
    DString text = WriteNumber(value, m_decimals);
    if (m_decimals < 0 && text.size() > kLongestText)
        text = platform::ToDString(QString::number(value, 'g', 6));
    return text;
}

DString ZelSliderCtrl::GetPosText() const { return TextOf(m_pos) + m_unit; }

void ZelSliderCtrl::FitField() {
    auto const width = [this](DString const &text) {
        return fontMetrics().horizontalAdvance(platform::ToQString(text)) + fontMetrics().averageCharWidth();
    };
    int needed = std::max(width(TextOf(GetFirst()) + m_unit), width(TextOf(GetLast()) + m_unit));
    needed = std::max(needed, width(TextOf(m_scale.ValueAt(m_scale.Positions() / 3)) + m_unit));
    m_text->setFixedWidth(needed);
    m_edit->setFixedWidth(std::max(needed, width("00000000")) + 2 * fontMetrics().averageCharWidth());
}

bool ZelSliderCtrl::eventFilter(QObject *watched, QEvent *event) {
    if (watched != m_edit || event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    int const up = GetLast() < GetFirst() ? -1 : 1;
    switch (static_cast<QKeyEvent const *>(event)->key()) {
    case Qt::Key_Up:
        MoveLines(up);
        break;
    case Qt::Key_Down:
        MoveLines(-up);
        break;
    case Qt::Key_PageUp:
        MovePages(up);
        break;
    case Qt::Key_PageDown:
        MovePages(-up);
        break;
    default:
        return QWidget::eventFilter(watched, event);
    }
    Q_EMIT EndTrack(m_pos);
    m_edit->selectAll();
    return true;
}

void ZelSliderCtrl::showEvent(QShowEvent *event) {
    QWidget::showEvent(event);
    m_track->setAccessibleName(accessibleName());
    m_edit->setAccessibleName(accessibleName());
}

void ZelSliderCtrl::changeEvent(QEvent *event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        FitField();
}

} // namespace zelvar
