// The seam of platform.h and host_calls.h for a module on trial: time is what the trial makes of
// it, and nobody looks, listens or talks.

#include "kit/trial.h"
#include "seam/host_calls.h"
#include "seam/platform.h"

namespace orvanel {

void sleep_ms(int ms) { trial_time_passes(ms); }

void sleep_until_woken(int ms) {
    trial_time_passes(ms);
    trial_idles();
}

void spend_byte_time() { trial_byte_taken(); }

void wake_firmware() {}
void wake_link() {}

void repaint_rect(int, int, int, int) {}
void colours_changed() {}
void start_fade_timer() {}
void stop_fade_timer() {}
void show_message(std::string_view, std::string_view) {}
void beep() {}
void show_ports() {}

}  // namespace orvanel
