#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/base/Geometry.h"

#include <QtCore/QPointer>
#include <QtGui/QPixmap>
#include <QtWidgets/QWidget>

namespace zelvar {

/// The picture that follows the pointer while something is dragged inside a window: an overlay over that window, which
/// takes no mouse messages.
class ZELVAR_API DragImage {
public:
    explicit DragImage(QPixmap picture) : m_picture(std::move(picture)) {}
    ~DragImage() { EndDrag(); }
    DragImage(DragImage const &) = delete;
    DragImage &operator=(DragImage const &) = delete;

    /// `hotSpot`: the point of the picture that stays under the pointer.
    void BeginDrag(Point hotSpot) { m_hotSpot = hotSpot; }
    /// Shows it in `window`, the pointer being at `point` of that.
    void DragEnter(QWidget &window, Point point);
    void DragMove(Point point);
    void DragLeave(); ///< hides it, so that the window may be painted
    void EndDrag();

    [[nodiscard]] QPixmap const &Picture() const { return m_picture; }
    [[nodiscard]] QWidget *Overlay() const { return m_overlay; } ///< null before the first `DragEnter`

private:
    QPixmap m_picture;
    Point m_hotSpot;
    QPointer<QWidget> m_overlay; ///< a child of the window, deleted by whoever comes first
};

} // namespace zelvar
