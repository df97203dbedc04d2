// The seam of platform.h for the program without a window, in module time or in real time.

#include "seam/platform.h"

#include "base/quoting.h"
#include "host/platform/headless/fade.h"
#include "host/platform/headless/halt.h"
#include "host/platform/headless/module_time.h"
#include "host/platform/headless/real_session.h"
#include "host/platform/headless/session.h"
#include "host/platform/headless/simulated_line.h"
#include "host/platform/real_time/real_time.h"
#include "host/platform/serial/serial_line.h"
#include "host/requests/main_requests.h"
#include "host/scenario/report.h"
#include "host/scenario/waits.h"
#include "host/scenario/world.h"
#include "link/roof/com_port.h"

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
    firmware_sleeps();
    real_sleep_ms(ms);
    firmware_wakes();
}

void sleep_until_woken(int ms) {
    if (!real_time) {
        move_module_clock(ms * us_per_ms);
        return;
    }
    note_real_sleep();
    firmware_sleeps();
    real_sleep_until_woken(most_idle_ms);
    firmware_wakes();
}

void wake_firmware() {
    if (real_time) real_wake_firmware();
}

void spend_byte_time() {
    if (!real_time) {
        move_module_clock_by_byte();
        return;
    }
    note_real_byte();
    firmware_took_byte();
}

bool on_main_thread() { return !real_time || real_on_main_thread(); }

std::int64_t clock_ms() { return real_time ? real_clock_ms() : module_clock_us() / us_per_ms; }

int serial_open(int port, std::int32_t baud) {
    return real_time ? real_serial_open(port, baud) : simulated_open(baud);
}

void serial_close(int line) {
    if (real_time)
        real_serial_close(line);
    else
        simulated_close(line);
}

bool serial_set_baud(int line, std::int32_t baud) {
    if (real_time) return real_serial_set_baud(line, baud);
    simulated_set_baud(baud);
    return true;
}

void serial_set_rts(int line, bool on) {
    if (real_time)
        real_serial_set_rts(line, on);
    else
        simulated_set_rts(on);
}

int serial_cts(int line) { return real_time ? real_serial_cts(line) : simulated_cts(); }

int serial_queued_in(int line) {
    return real_time ? real_serial_queued_in(line) : simulated_queued_in();
}

int serial_queued_out(int line) { return real_time ? real_serial_queued_out(line) : 0; }

int serial_read(int line, std::span<std::uint8_t> into) {
    return real_time ? real_serial_read(line, into) : simulated_read(into);
}

int serial_write(int line, std::span<const std::uint8_t> data) {
    return real_time ? real_serial_write(line, data) : simulated_write(data);
}

void wait_for_line(int line, LineEvent event, int ms) {
    if (real_time) real_wait_for_line(line, event, ms);
}

void wake_link() {
    // In module time whatever is asked of the line happens at once.
    if (real_time)
        real_wake_link();
    else
        serve_line_words();
}

void wake_main() {
    if (real_time) wake_real_session();
}

// Nobody looks. A scenario's pictures are made when it asks for them.
void paint_window(PixelRect) {}

void set_fade_timer(bool runs) { next_fade_us = runs ? clock_us() + fade_step_us : never; }

void open_message_box(MessageOf whose, std::string_view caption, std::string_view text) {
    print_line("message " + text_piece(caption) + " " + text_piece(text));
    if (whose == MessageOf::module) message_closed();
}

void sound_beep() { print_line("beep"); }

}  // namespace orvanel
