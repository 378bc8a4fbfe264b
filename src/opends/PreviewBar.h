#pragma once

#include "zelvar/data/PreviewChoice.h"
#include "zelvar/data/PreviewValues.h"
#include "zelvar/model/ItemProperties.h"

#include <QtWidgets/QWidget>

class QComboBox;
class QSpinBox;

namespace zelvar {

class ValueScale;

/// Preview bar: stands below the picture of an image, says which values it shows and lets the user choose among the
/// image's channels, slices and frames, and how bright. What has one of them alone has nothing to choose.
/// User-interface thread.
class PreviewBar : public QWidget {
    Q_OBJECT

public:
    explicit PreviewBar(QWidget *parent = nullptr);

    /// Another item is about to be read: nothing is chosen, nor can be until `ShowExtent`. The bar keeps its room, so
    /// that nothing jumps while files are looked through.
    void Reset();
    /// What there is to choose; without an image the bar goes.
    void ShowExtent(ImageExtent const &extent);
    /// What `Choice` shows; empty until it is known.
    void ShowValues(PreviewValues values);
    /// See `ValueScale`.
    void PointAt(double x, double y);

    [[nodiscard]] PreviewChoice const &Choice() const { return m_choice; }
    [[nodiscard]] ValueScale *Scale() const { return m_scale; }

Q_SIGNALS:
    /// The user has chosen something else.
    void Chosen();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    [[nodiscard]] QSpinBox *AddNumber(char const *caption, char const *tip);
    void AddToLine(QWidget *control, char const *caption, char const *tip);
    void SetNumbers(QSpinBox &number, int first, int count);
    void TakeChoice();
    void ShowDefaults(ImageExtent const &extent);

    QWidget *m_choosers; ///< children
    QSpinBox *m_channel;
    QSpinBox *m_slice;
    QSpinBox *m_frame;
    QComboBox *m_stretch;
    ValueScale *m_scale;
    PreviewChoice m_choice;
    ImageExtent m_extent;
    bool m_isKnown = false; ///< of the item that is shown now
};

} // namespace zelvar
