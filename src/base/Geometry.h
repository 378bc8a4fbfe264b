#pragma once

namespace zelvar {

/// Width and height, in pixels unless a member says otherwise.
struct Size {
    int cx = 0;
    int cy = 0;

    friend bool operator==(Size const &, Size const &) = default;
};

struct Point {
    int x = 0;
    int y = 0;

    friend bool operator==(Point const &, Point const &) = default;
};

/// Half-open: `right` and `bottom` lie one pixel behind the area.
struct Rect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    [[nodiscard]] constexpr int Width() const { return right - left; }
    [[nodiscard]] constexpr int Height() const { return bottom - top; }
    [[nodiscard]] constexpr bool IsEmpty() const { return right <= left || bottom <= top; }
    [[nodiscard]] constexpr bool Contains(Point point) const {
        return point.x >= left && point.x < right && point.y >= top && point.y < bottom;
    }
    /// The area common to both, or an empty rectangle.
    [[nodiscard]] constexpr Rect Intersected(Rect const &other) const {
        Rect const common{left > other.left ? left : other.left, top > other.top ? top : other.top,
                          right < other.right ? right : other.right, bottom < other.bottom ? bottom : other.bottom};
        return common.IsEmpty() ? Rect{} : common;
    }
    friend bool operator==(Rect const &, Rect const &) = default;
};

} // namespace zelvar
