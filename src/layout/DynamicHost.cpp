#include "zelvar/layout/DynamicHost.h"

#include <QtGui/QResizeEvent>
#include <QtWidgets/QWidget>

namespace zelvar {

namespace {

constexpr int kBottomRightEdge = 8;
constexpr int kTopLeftEdge = 4;

cdxCDynamicWnd::SizeType SizeTypeOf(QWidget const &window) {
    if (window.isMinimized())
        return cdxCDynamicWnd::SizeMinimized;
    return window.isMaximized() ? cdxCDynamicWnd::SizeMaximized : cdxCDynamicWnd::SizeRestored;
}

} // namespace

void ForwardToEngine(cdxCDynamicWnd &engine, QWidget &window, QEvent &event) {
    switch (event.type()) {
    case QEvent::Resize: {
        // The window system does not say which edge is dragged; a window whose corner stays grows at the other one.
        QPoint const moved = window.pos() - window.property("zelvarLastPos").toPoint();
        window.setProperty("zelvarLastPos", window.pos());
        if (window.isVisible())
            engine.DoOnSizing(moved.isNull() ? kBottomRightEdge : kTopLeftEdge);
        engine.DoOnSize(SizeTypeOf(window));
        break;
    }
    case QEvent::ChildRemoved: {
        auto const &removal = static_cast<QChildEvent const &>(event);
        // The child may be half destroyed: its address alone is used.
        engine.DoOnParentNotify(cdxCDynamicWnd::kChildDestroyed, static_cast<QWidget *>(removal.child()));
        break;
    }
    default:
        break;
    }
}

void ApplyTrackSizes(cdxCDynamicWnd const &engine, QWidget &window) {
    cdxCDynamicWnd::MinMaxInfo info;
    engine.DoOnGetMinMaxInfo(info);
    Size const border = engine.GetBorderSize();
    window.setMinimumSize(info.minTrack.cx - border.cx, info.minTrack.cy - border.cy);
    if (info.maxTrack.cx > 0)
        window.setMaximumWidth(info.maxTrack.cx - border.cx);
    if (info.maxTrack.cy > 0)
        window.setMaximumHeight(info.maxTrack.cy - border.cy);
}

} // namespace zelvar
