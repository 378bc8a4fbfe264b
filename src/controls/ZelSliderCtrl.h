#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/controls/core/SliderScale.h"

#include <QtWidgets/QWidget>

#include <cstdint>

class QBoxLayout;
class QLabel;

namespace zelvar {

class CFloatEdit;
class SliderTrack;

/// Slider over numbers, from left to right, or upright from the bottom to the top. It adds to the platform's slider a
/// range of doubles with exact ends, which may run downwards; steps or none; a linear or a logarithmic scale; lines,
/// pages and ticks in the range's own numbers; and the value as a text or an edit field behind it. Keys move the thumb
/// the way they point to, `Home` and `End` to its ends; in the edit field Up is always the greater value.
class ZELVAR_API ZelSliderCtrl : public QWidget {
    Q_OBJECT

public:
    enum class ValueField : std::uint8_t { None, Text, Edit };

    /// From 0 to 100 in steps of 1.
    explicit ZelSliderCtrl(QWidget *parent = nullptr);

    /// Upright the ticks stand beside the groove and the value below it.
    void SetOrientation(Qt::Orientation orientation);
    [[nodiscard]] Qt::Orientation GetOrientation() const;

    /// `first` stands at the start and may be the greater one. False for what is not finite, and nothing changed. The
    /// value goes to the nearest end if it lies outside.
    bool SetRange(double first, double last);
    [[nodiscard]] double GetFirst() const { return m_scale.First(); }
    [[nodiscard]] double GetLast() const { return m_scale.Last(); }
    /// Only values that many steps from the first one, and the last; 0 for any.
    void SetStep(double step);
    /// False, and linear, as long as 0 lies in the range.
    bool SetLogarithmic(bool logarithmic = true);
    // What arrow keys and Page keys move by; 0 is a hundredth and a tenth of the range. A logarithmic scale always has
    // a hundred lines and ten pages.
    void SetLineSize(double size) { m_line = size; }
    void SetPageSize(double size) { m_page = size; }
    /// Ticks at both ends and so far apart, at the powers of ten on a logarithmic scale; 0 for both ends alone.
    void SetTicFreq(double distance);
    void ClearTics();
    void SetValueField(ValueField field);
    /// For the value field; below 0 as many as it takes.
    void SetDecimals(int decimals);
    void SetUnit(DString const &unit); ///< behind the value's text, such as " µm"

    /// False for NaN and the infinities, and nothing changed. Goes to the nearest end or step.
    bool SetPos(double value);
    [[nodiscard]] double GetPos() const { return m_pos; }
    [[nodiscard]] DString GetPosText() const; ///< with the unit
    /// One line or page nearer to the last value, or to the first for a negative number.
    void MoveLines(int lines);
    void MovePages(int pages);
    /// The values with ticks, none without.
    [[nodiscard]] std::vector<double> Ticks() const;
    [[nodiscard]] SliderScale const &Scale() const { return m_scale; }

Q_SIGNALS:
    /// At each change, also during a drag and by the application.
    void PosChanged(double value);
    /// The user has let go of the thumb, or moved it in one go.
    void EndTrack(double value);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void OnAction(int action);
    void OnSlid(int position);
    void OnTyped(double value);
    void Rescale(double first, double last, double step, bool logarithmic);
    void Take(double value);
    void ShowValue();
    void FitField();
    [[nodiscard]] DString TextOf(double value) const;
    [[nodiscard]] double Line() const;

    SliderScale m_scale;
    double m_pos = 0;
    double m_step = 1;
    double m_line = 0;
    double m_page = 0;
    double m_tickDistance = 0;
    bool m_logarithmic = false; ///< wanted
    bool m_ticks = false;
    bool m_typing = false;
    int m_decimals = -1;
    DString m_unit;
    ValueField m_field = ValueField::None;
    QBoxLayout *m_layout;
    SliderTrack *m_track;
    QLabel *m_text;
    CFloatEdit *m_edit;
    QLabel *m_unitText;
};

} // namespace zelvar
