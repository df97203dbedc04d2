#include "seam/host_calls.h"

#include "base/bytes.h"
#include "firmware/core/roof/device.h"
#include "host/requests/main_requests.h"
#include "host/skin/lcd_colours.h"
#include "host/window/ground/ports_panel.h"
#include "seam/platform.h"
#include "seam/window_system.h"

namespace orvanel {

namespace {

constinit bool fade_timer_runs = false;  // main thread

}  // namespace

void colours_changed() {
    model_apply();
    window_repaint();
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

void show_ports() {
    if (on_main_thread())
        ports_show(low8(ports_shown.load()));
    else
        request_ports();
}

}  // namespace orvanel
