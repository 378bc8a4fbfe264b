#include "zelvar/layout/core/ScrollRule.h"

#include <algorithm>

namespace zelvar {

ScrollNeed ComputeScrollNeed(Size window, Size content, int thickness) {
    ScrollNeed need{.horizontal = window.cx < content.cx, .vertical = window.cy < content.cy};
    need.horizontal = need.horizontal || (need.vertical && window.cx - thickness < content.cx);
    need.vertical = need.vertical || (need.horizontal && window.cy - thickness < content.cy);
    need.client = {std::max(0, window.cx - (need.vertical ? thickness : 0)),
                   std::max(0, window.cy - (need.horizontal ? thickness : 0))};
    return need;
}

int ScrollIntoView(int near, int far, int room) {
    if (near < 0)
        return near;
    return far > room ? std::min(far - room, near) : 0;
}

} // namespace zelvar
