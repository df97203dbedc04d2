// time_mode.h: what differs between module time and real time: the clock, the line, and what a
// scenario asks of them.

#pragma once

#include "host/platform/serial/serial_lines.h"

#include <cstdint>
#include <string>

namespace orvanel {

struct TimeMode {
    // Those of platform.h.
    void (*sleep_ms)(int ms);
    void (*sleep_until_woken)(int ms);
    void (*wake_firmware)();
    void (*spend_byte_time)();
    bool (*on_main_thread)();
    std::int64_t (*clock_ms)();
    void (*wake_main)();
    const SerialLines& lines;

    // Those of host/scenario/world.h.
    std::int64_t (*clock_us)();
    std::uint64_t (*bytes_delivered)();
    bool (*wait_for_scenario_input)(int fd);
    void (*halt_module)();
    void (*resume_module)();
    bool line_is_simulated;
    int (*line_queued)();
    bool (*line_rts)();
    std::int32_t (*line_speed)();

    // Those of a start (host/platform/life/start.h).
    std::string (*open_port)(const std::string& serial);
    void (*start_timers)();
    void (*start_threads)();

    /// Runs firmware and scenario until the scenario has ended.
    void (*run)();
};

extern const TimeMode module_time;
extern const TimeMode real_time;

/// What the program runs in, module_time at the start. Chosen before run_session (session.h), then
/// left alone.
extern const TimeMode* time_mode;
void choose_time_mode(const TimeMode& mode);

}  // namespace orvanel
