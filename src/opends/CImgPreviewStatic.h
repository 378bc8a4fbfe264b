#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/drawing/OffscreenSurface.h"

#include <QtWidgets/QLabel>

namespace zelvar {

/// Image preview for a dialog: a label that shows an image file, as large as it fits, on the colour of dialogs. The
/// file is read when it is first painted, and again when its size on the screen or the desktop's colours change.
class ZELVAR_API CImgPreviewStatic : public QLabel {
    Q_OBJECT

public:
    explicit CImgPreviewStatic(QWidget *parent = nullptr);

    /// Null counts as empty: nothing is shown. What no driver opens shows nothing either.
    void SetImgFile(char const *file);
    [[nodiscard]] DString const &GetImgFile() const { return m_imgFile; }
    [[nodiscard]] QSize sizeHint() const override;

protected:
    /// Draws all of the control.
    virtual void DrawItem(QPainter &painter);
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    OffscreenSurface m_surface;
    DString m_imgFile;
    bool m_isDrawn = false; ///< the surface shows the file
};

} // namespace zelvar
