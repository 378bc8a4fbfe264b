#pragma once

#include "zelvar/data/PreviewValues.h"

#include <QtCore/QString>
#include <QtWidgets/QWidget>

#include <vector>

namespace zelvar {

/// A value as a reader of the scale takes it in: whole ones with all digits, others with six.
[[nodiscard]] QString ValueText(double value);

/// Scale of the values that a picture shows: which of them is how bright, the least and the largest, and between them
/// the one under the pointer. Of colours a strip each. User-interface thread.
class ValueScale : public QWidget {
public:
    explicit ValueScale(QWidget *parent = nullptr);

    /// Without planes it is empty, and keeps its room.
    void Show(PreviewValues values);
    /// A point of the picture, from 0 to 1 on each side; any other place is beside it.
    void PointAt(double x, double y);
    /// What stands under the pointer: a value, three for colours, or words where there is none; empty beside the
    /// picture.
    [[nodiscard]] QString PointedText() const { return m_pointedText; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    [[nodiscard]] int StripHeight() const;
    void PaintStrip(QPainter &painter, QRect const &strip, std::size_t plane) const;
    void PaintTexts(QPainter &painter, QRect const &line) const;
    void Describe();

    PreviewValues m_values;
    std::optional<ValuePlane::Range> m_range;     ///< of all planes
    std::vector<std::optional<double>> m_pointed; ///< by plane; empty beside the picture
    QString m_pointedText;
};

} // namespace zelvar
