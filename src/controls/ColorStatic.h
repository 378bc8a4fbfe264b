#pragma once

#include "zelvar/base/Color.h"
#include "zelvar/base/DString.h"

#include <QtWidgets/QLabel>

namespace zelvar {

/// Static text in colours. It adds to the platform's label a text and a background colour and a border, each of them
/// the desktop's own until it is set; text is plain, whatever it looks like. While disabled both colours come nearer to
/// each other. Whether they can be told apart is the application's affair.
class ZELVAR_API ColorStatic : public QLabel {
    Q_OBJECT

public:
    explicit ColorStatic(QWidget *parent = nullptr);

    [[nodiscard]] DString GetWindowText() const;
    void SetWindowText(DString const &text);
    void SetTextColor(ColorRef color);
    void SetBkColor(ColorRef color);
    [[nodiscard]] ColorRef GetTextColor() const;
    [[nodiscard]] ColorRef GetBkColor() const;
    /// `width` in pixels; 0 takes it away.
    void SetBorder(ColorRef color, int width = 1);
    /// Both colours back to the desktop's, and no border.
    void ResetColors();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void SetColor(QPalette::ColorRole role, ColorRef color);

    QColor m_border;
    int m_borderWidth = 0;
};

} // namespace zelvar
