#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/pixels/DCanvas.h"

#include <QtCore/QPointer>
#include <QtGui/QPixmap>
#include <QtWidgets/QWidget>

namespace zelvar {

/// Image preview: shows a canvas fitted into its area, or one line of text while there is none.
///
/// A click lifts the picture over the whole dialog; another one, or any change of focus or application, puts it back.
/// The picture as drawn is kept, so painting is one copy. User-interface thread.
class ZELVAR_API ImagePreviewWnd : public QWidget {
    Q_OBJECT

public:
    enum Mode {
        ModeCanvas = 0,  ///< shows the canvas
        ModeWaiting = 1, ///< "Please wait..."
        ModeNothing = 2, ///< "Preview is not available"
    };

    explicit ImagePreviewWnd(QWidget *parent = nullptr);

    /// The picture; call `ShowCanvas` after a change.
    [[nodiscard]] DCanvas &GetCanvas() { return m_canvas; }
    void ShowCanvas();
    /// Shows the line of text of `mode` instead of the canvas, which stays in memory.
    void Clear(Mode mode);

    [[nodiscard]] Mode GetMode() const { return m_mode; }
    /// True while the picture lies over the dialog.
    [[nodiscard]] bool IsLifted() const { return !m_floatParent.isNull(); }
    /// Where the picture stands now, in this window's coordinates; empty without one.
    [[nodiscard]] QRect PictureRect() const;
    /// Words that stand on the lifted picture, in a corner; what lies below it is not seen then.
    void SetNote(QString const &note);

Q_SIGNALS:
    /// The pointer is over a place of the picture, from 0 to 1 on each side, or beside the picture, below 0. Only with
    /// mouse tracking.
    void Pointed(double x, double y);

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void CreateDefaultDC();
    void CreateMemoryDC();
    void ShowPreview();
    void HidePreview();
    void Redraw();
    void PaintNote(QPainter &painter) const;

    DCanvas m_canvas;
    QPixmap m_memBitmap; ///< the picture, or the text, as drawn
    bool m_memValid = false;
    int m_memWidth = 0; ///< device-independent pixels, as all sizes here
    int m_memHeight = 0;
    QString m_note;
    Mode m_mode = ModeNothing;
    QPointer<QWidget> m_floatParent; ///< the window to return to; null while in place
    QRect m_homeRect;                ///< the place, in the parent's coordinates
    bool m_moving = false;           ///< a change of parent is under way: its focus events mean nothing
};

} // namespace zelvar
