#include "host/platform/headless/time_mode.h"

#include "host/platform/headless/end_signals.h"
#include "host/platform/headless/first_port.h"
#include "host/platform/headless/module_time.h"
#include "host/platform/headless/simulated_line.h"
#include "host/scenario/runner.h"
#include "host/scenario/world.h"

namespace orvanel {

constinit const SerialLines* serial_lines = &simulated_lines;
constinit const TimeMode* time_mode = &module_time;

namespace {

constexpr std::int64_t us_per_ms = 1000;

void move_module_clock_ms(int ms) { move_module_clock(ms * us_per_ms); }

std::int64_t module_clock_ms() { return module_clock_us() / us_per_ms; }

/// The scenario's next line has yet to come: nothing moves until it is there.
bool stand_still_for_input(int fd) {
    if (wait_for_input(fd)) return true;
    stop_scenario();
    return false;
}

}  // namespace

constinit const TimeMode module_time{
    .sleep_ms = move_module_clock_ms,
    .sleep_until_woken = move_module_clock_ms,
    .wake_firmware = [] {},
    .spend_byte_time = move_module_clock_by_byte,
    .on_main_thread = [] { return true; },
    .clock_ms = module_clock_ms,
    .wake_main = [] {},
    .lines = simulated_lines,
    .clock_us = module_clock_us,
    .bytes_delivered = module_bytes_delivered,
    .wait_for_scenario_input = stand_still_for_input,
    .halt_module = [] {},
    .resume_module = [] {},
    .line_is_simulated = true,
    .line_queued = simulated_queued,
    .line_rts = simulated_rts,
    .line_speed = simulated_baud,
    .open_port = open_first_port,
    .start_timers = start_module_timers,
    .start_threads = [] {},
    .run = run_in_module_time,
};

void choose_time_mode(const TimeMode& mode) {
    time_mode = &mode;
    serial_lines = &mode.lines;
}

std::int64_t clock_us() { return time_mode->clock_us(); }

std::uint64_t bytes_delivered() { return time_mode->bytes_delivered(); }

bool wait_for_scenario_input(int fd) { return time_mode->wait_for_scenario_input(fd); }

bool is_to_end() { return told_to_end(); }

bool scenario_input_is_there(int fd) { return input_is_there(fd); }

void halt_module() { time_mode->halt_module(); }

void resume_module() { time_mode->resume_module(); }

bool line_is_simulated() { return time_mode->line_is_simulated; }

int line_queued() { return time_mode->line_queued(); }

bool line_rts() { return time_mode->line_rts(); }

std::int32_t line_speed() { return time_mode->line_speed(); }

}  // namespace orvanel
