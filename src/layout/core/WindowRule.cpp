#include "zelvar/layout/core/WindowRule.h"

#include <utility>

namespace zelvar {

namespace {
constexpr int kScreenMargin = 5; // pixels
}

TrackSizes ComputeTrackSizes(Size minClient, Size maxClient, Size border, bool freeWidth, bool freeHeight) {
    TrackSizes sizes{.min = {minClient.cx + border.cx, minClient.cy + border.cy}};
    if (!freeWidth)
        sizes.max.cx = sizes.min.cx;
    else if (maxClient.cx > 0)
        sizes.max.cx = maxClient.cx + border.cx;
    if (!freeHeight)
        sizes.max.cy = sizes.min.cy;
    else if (maxClient.cy > 0)
        sizes.max.cy = maxClient.cy + border.cy;
    return sizes;
}

Rect StretchedRect(Rect const &window, Size growth) {
    return {window.left - growth.cx / 2, window.top - growth.cy / 2, window.right + (growth.cx + 1) / 2,
            window.bottom + (growth.cy + 1) / 2};
}

Rect NormalizedRect(Rect const &rect) {
    Rect normal = rect;
    if (normal.left > normal.right)
        std::swap(normal.left, normal.right);
    if (normal.top > normal.bottom)
        std::swap(normal.top, normal.bottom);
    return normal;
}

bool IsReachable(Rect const &window, Rect const &virtualScreen) {
    Rect screen = virtualScreen;
    if (screen.Width() > 0 && screen.Height() > 0)
        screen = {screen.left + kScreenMargin, screen.top + kScreenMargin, screen.right - kScreenMargin,
                  screen.bottom - kScreenMargin};
    return !window.Intersected(screen).IsEmpty();
}

} // namespace zelvar
