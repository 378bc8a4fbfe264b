#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/base/Geometry.h"

#include <QtWidgets/QSizeGrip>

class QPainter;

namespace zelvar {

/// Size icon: the resize grip in the bottom right corner of a window.
///
/// Dragging it resizes the window's frame; a double click does nothing.
class ZELVAR_API cdxCSizeIconCtrl : public QSizeGrip {
    Q_OBJECT
public:
    /// With `hideIfZoomed` the grip is neither drawn nor has it a cursor while the window is maximised.
    explicit cdxCSizeIconCtrl(bool hideIfZoomed);

    /// Makes it a child of `parent` in the corner of its client area, not yet visible. False without a parent.
    virtual bool Create(QWidget *parent, int id);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void moveEvent(QMoveEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    /// The grip's picture, one of our own, since systems here keep none.
    class AutoOEMImageList {
    public:
        [[nodiscard]] Size GetSize() const { return m_size; }
        /// `corner`: where the picture's bottom right corner lies.
        void Draw(QPainter &painter, Point corner) const;

    private:
        Size m_size{16, 16};
    };
    static AutoOEMImageList const M_ilImage;
    static Qt::CursorShape const M_hcSize;

    [[nodiscard]] bool IsShown() const;
    void UpdateCursor();

    bool m_bCaptured = false; // no reader in this library
    bool m_bHideIfZoomed;
};

} // namespace zelvar
