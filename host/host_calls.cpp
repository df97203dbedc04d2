#include "host/host_calls.h"

#include "host/platform/platform.h"
#include "host/platform/window_system.h"
#include "host/skin/lcd_colours.h"

namespace orvanel {

namespace {

constinit bool fade_timer_runs = false;  // main thread

}  // namespace

void colours_changed() {
    model_apply();
    repaint_window();
}

void start_fade_timer() {
    if (fade_timer_runs) return;
    fade_timer_runs = true;
    set_fade_timer(true);
}

void stop_fade_timer() {
    fade_timer_runs = false;
    set_fade_timer(false);
}

// The ports are looked at where they are asked for; there is no panel that would show them.
void show_ports() {}

}  // namespace orvanel
