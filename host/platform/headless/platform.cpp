// The seam of platform.h for the program without a window: module time, or real time with a frame
// in memory.

#include "host/platform/platform.h"

#include "host/main_requests.h"
#include "host/platform/headless/module_time.h"
#include "host/platform/headless/real_session.h"
#include "host/platform/headless/session.h"
#include "host/platform/shared/real_time.h"
#include "host/scenario/line.h"
#include "host/scenario/report.h"
#include "host/scenario/waits.h"
#include "host/scenario/world.h"

namespace orvanel {

namespace {

constexpr std::int64_t us_per_ms = 1000;

}  // namespace

void sleep_ms(int ms) {
    if (!real_time) {
        move_module_clock(ms * us_per_ms);
        return;
    }
    note_real_sleep();
    real_sleep_ms(ms);
}

void sleep_until_input(int ms) {
    if (!real_time) {
        move_module_clock(ms * us_per_ms);
        return;
    }
    note_real_sleep();
    real_sleep_until_input(ms);
}

void wake_firmware() {
    if (real_time) real_wake_firmware();
}

void spend_byte_time() {
    if (real_time)
        note_real_byte();
    else
        move_module_clock_by_byte();
}

bool on_main_thread() { return !real_time || real_on_main_thread(); }

void wake_main() {
    if (real_time) wake_real_session();
}

void paint_window(PixelRect rect) {
    if (real_time) paint_frame(rect);
}

void set_fade_timer(bool runs) { next_fade_us = runs ? clock_us() + fade_step_us : never; }

void open_message_box(std::string_view caption, std::string_view text) {
    print_line("message " + text_piece(caption) + " " + text_piece(text));
    message_closed();
}

void sound_beep() { print_line("beep"); }

}  // namespace orvanel
