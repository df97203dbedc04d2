// skin_rect.h: rectangles in dots of the skin.

#pragma once

namespace orvanel {

/// Right and bottom inclusive; empty if they lie before left or top.
struct SkinRect {
    int left, top, right, bottom;
};

constexpr bool is_empty(SkinRect r) { return r.right < r.left || r.bottom < r.top; }

/// What lies in both.
constexpr SkinRect common_part(SkinRect a, SkinRect b) {
    return {a.left > b.left ? a.left : b.left, a.top > b.top ? a.top : b.top,
            a.right < b.right ? a.right : b.right, a.bottom < b.bottom ? a.bottom : b.bottom};
}

}  // namespace orvanel
