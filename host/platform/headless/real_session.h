// real_session.h: a scenario in real time. The firmware has a thread of its own; the calling
// thread is the main one: it runs the timer and the scenario.

#pragma once

#include <cstdint>
#include <string>

namespace orvanel {

/// Its steps of a start (host/platform/life/start.h). The first runs the scenario's leading lines
/// and opens the port; its result is empty on success, else what is missing.
[[nodiscard]] std::string open_real_port(const std::string& serial);
void start_real_timers();

/// Takes messages of the companion, and runs firmware and scenario until the scenario has ended.
void run_in_real_time();

/// The same in steps. Each turn waits until something is to be done, a few ms at most, and does it.
void turn_real_session();
void close_real_session();

/// Microseconds since start_real_timers.
std::int64_t real_clock_us();

/// What the firmware's thread tells of its moves: it sleeps, or it has taken a byte.
void note_real_sleep();
void note_real_byte();
std::uint64_t real_bytes_delivered();

/// The runs of the 100 ms timer so far.
int window_timers_run();

/// Has turn_real_session serve the painter. From any thread.
void wake_real_session();

}  // namespace orvanel
