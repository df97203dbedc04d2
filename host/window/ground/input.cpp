#include "host/window/ground/input.h"

#include "firmware/core/ground/draw_area.h"
#include "firmware/touch/areas.h"
#include "firmware/touch/finger.h"
#include "host/program/settings.h"
#include "host/skin/view.h"
#include "seam/window_system.h"

#include <optional>

namespace orvanel {

namespace {

/// The skin dot under a pixel of the window. Left of the window and above it the pixel's number
/// wraps, and so lies far outside.
struct SkinDot {
    int x, y;
};

SkinDot skin_dot(int px, int py) {
    return {(px & 0xFFFF) / dot_pixels(), (py & 0xFFFF) / dot_pixels()};
}

void touch_glass(int px, int py) {
    const auto [x, y] = glass_to_module(px, py);
    put_finger(x, y);
}

}  // namespace

bool glass_hit(int px, int py) {
    const auto [x, y] = skin_dot(px, py);
    const SkinRect& glass = view_lcd->area;
    return x >= glass.left && x <= glass.right && y >= glass.top && y <= glass.bottom;
}

ModuleDot glass_to_module(int px, int py) {
    const auto [x, y] = skin_dot(px, py);
    const SkinRect& glass = view_lcd->area;
    if (view_rotated) return {y - glass.top, last_y - (x - glass.left)};
    return {x - glass.left, y - glass.top};
}

void mouse_down(int px, int py) {
    if (glass_hit(px, py))
        touch_glass(px, py);
    else
        drag_window();
}

void mouse_move(int px, int py, bool left_down) {
    cursor_update(px, py);
    if (!left_down) return;
    if (glass_hit(px, py))
        touch_glass(px, py);
    else
        lift_finger();
}

void mouse_up(int px, int py) {
    if (glass_hit(px, py)) lift_finger();
}

void right_mouse_down(int px, int py) { open_popup_menu({px, py}); }

void cursor_update(int px, int py) {
    if (!glass_hit(px, py)) return set_pointer(Pointer::move);
    const auto [x, y] = glass_to_module(px, py);
    set_pointer(touch_area_at(x, y) ? Pointer::hand : Pointer::arrow);
}

void cursor_look_again() {
    if (!cursor_dirty.exchange(false)) return;
    if (const std::optional<PixelPoint> at = pointer_position()) cursor_update(at->x, at->y);
}

}  // namespace orvanel
