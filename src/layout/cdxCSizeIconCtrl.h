#pragma once

#include "zelvar/base/Export.h"

#include <QtWidgets/QSizeGrip>

namespace zelvar {

/// Size icon: the resize grip in the bottom right corner of a window. Dragging it resizes the window; a double click
/// does nothing.
class ZELVAR_API cdxCSizeIconCtrl : public QSizeGrip {
    Q_OBJECT

public:
    /// With `hideIfZoomed` it neither paints nor changes the cursor while the window is maximised.
    explicit cdxCSizeIconCtrl(bool hideIfZoomed);

    /// Puts the grip into the corner of `parent`, not yet visible. False without a parent.
    virtual bool Create(QWidget *parent, unsigned id);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void showEvent(QShowEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    [[nodiscard]] bool IsActive() const;
    void ShowCursor();

    bool m_bHideIfZoomed;
};

} // namespace zelvar
