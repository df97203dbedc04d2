// real_session.h: a scenario in real time. The firmware has a thread of its own; the calling
// thread is the main one: it runs the timer and the scenario.

#pragma once

#include <cstdint>
#include <string>

namespace orvanel {

/// Runs firmware and scenario until the scenario has ended. The scenario is open.
void run_in_real_time();

/// The same in steps. open_real_session opens the port and starts the firmware; its result is empty
/// on success, else what is missing. Each turn waits until something is to be done, a few ms at
/// most, and does it.
[[nodiscard]] std::string open_real_session();
void turn_real_session();
void close_real_session();

/// Microseconds since open_real_session.
std::int64_t real_clock_us();

/// What the firmware's thread tells of its moves: it sleeps, or it has taken a byte.
void note_real_sleep();
void note_real_byte();
std::uint64_t real_bytes_delivered();

/// The runs of the 100 ms timer since open_real_session.
int window_timers_run();

/// Has turn_real_session serve the painter. From any thread.
void wake_real_session();

}  // namespace orvanel
