#include "host/platform/headless/halt.h"
#include "host/platform/headless/real_session.h"
#include "host/platform/headless/time_mode.h"
#include "host/platform/real_time/real_time.h"
#include "host/platform/serial/serial_line.h"
#include "link/ground/port.h"

namespace orvanel {

namespace {

void sleep_in_real_time(int ms) {
    note_real_sleep();
    firmware_sleeps();
    real_sleep_ms(ms);
    firmware_wakes();
}

void idle_in_real_time(int /*ms*/) {
    note_real_sleep();
    firmware_sleeps();
    real_sleep_until_woken(max_idle_ms);
    firmware_wakes();
}

void take_real_byte() {
    note_real_byte();
    firmware_took_byte();
}

bool real_rts() { return com_port.load() > 0 && rts_wanted.load(); }

std::int32_t real_speed() { return com_port.load() > 0 ? line_baud.load() : 0; }

}  // namespace

constinit const TimeMode real_time{
    .sleep_ms = sleep_in_real_time,
    .sleep_until_woken = idle_in_real_time,
    .wake_firmware = real_wake_firmware,
    .spend_byte_time = take_real_byte,
    .on_main_thread = real_on_main_thread,
    .clock_ms = real_clock_ms,
    .wake_main = wake_real_session,
    .lines = real_lines,
    .clock_us = real_clock_us,
    .bytes_delivered = real_bytes_delivered,
    // The main loop watches the input, and the timers go on meanwhile.
    .wait_for_scenario_input = [](int) { return false; },
    .halt_module = halt_firmware,
    .resume_module = resume_firmware,
    .line_is_simulated = false,
    .line_queued = [] { return 0; },
    .line_rts = real_rts,
    .line_speed = real_speed,
    .open_port = open_real_port,
    .start_timers = start_real_timers,
    .start_threads = start_module,
    .run = run_in_real_time,
};

}  // namespace orvanel
