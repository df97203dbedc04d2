// The seam of platform.h for the program without a window, in module time or in real time.

#include "seam/platform.h"

#include "base/quoting.h"
#include "host/platform/headless/time_mode.h"
#include "host/platform/life/schedule.h"
#include "host/requests/main_requests.h"
#include "host/scenario/report.h"
#include "host/scenario/world.h"

namespace orvanel {

void sleep_ms(int ms) { time_mode->sleep_ms(ms); }

void sleep_until_woken(int ms) { time_mode->sleep_until_woken(ms); }

void wake_firmware() { time_mode->wake_firmware(); }

void spend_byte_time() { time_mode->spend_byte_time(); }

bool on_main_thread() { return time_mode->on_main_thread(); }

std::int64_t clock_ms() { return time_mode->clock_ms(); }

void wake_main() { time_mode->wake_main(); }

// Nobody looks. A scenario's pictures are made when it asks for them.
void paint_window(PixelRect) {}

void set_fade_timer(bool runs) { schedule_fade(runs, clock_us()); }

void open_message_box(MessageOf whose, std::string_view caption, std::string_view text) {
    print_event("message " + text_piece(caption) + " " + text_piece(text));
    if (whose == MessageOf::module) message_closed();
}

void sound_beep() { print_event("beep"); }

}  // namespace orvanel
