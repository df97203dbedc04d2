#include "host/window_input.h"

#include "firmware/core/draw_area.h"
#include "firmware/touch/tracking.h"
#include "host/painting.h"
#include "host/platform/platform.h"

namespace orvanel {

bool glass_hit(int px, int py) {
    return px >= 0 && py >= 0 && px < window_width() && py < window_height();
}

ModuleDot glass_to_module(int px, int py) {
    return {px * screen_width / window_width(), py * screen_height / window_height()};
}

void press_glass(ModuleDot dot) {
    put_finger(dot.x, dot.y);
    wake_firmware();
}

void release_glass() {
    lift_finger();
    wake_firmware();
}

void mouse_down(int px, int py) {
    if (glass_hit(px, py)) press_glass(glass_to_module(px, py));
}

void mouse_move(int px, int py, bool left_down) {
    if (!left_down) return;
    if (glass_hit(px, py))
        press_glass(glass_to_module(px, py));
    else
        release_glass();
}

void mouse_up(int px, int py) {
    if (glass_hit(px, py)) release_glass();
}

}  // namespace orvanel
