#include "host/window/roof/window_timer.h"

#include "firmware/store/ground/macro.h"
#include "firmware/store/roof/timers.h"
#include "host/window/ground/input.h"
#include "link/feeds/feeds.h"

namespace orvanel {

void window_timer() {
    cursor_look_again();
    if (feed_left() > 0) {
        auto_macro_mode.store(0);
        drain_feed();
    }
    firmware_tick();
}

}  // namespace orvanel
