// module_time.h: the virtual clock. One thread runs the firmware; whatever the world does to it
// happens inside the moves of this clock, in the order of time, so that every run is the same.

#pragma once

#include <cstdint>

namespace orvanel {

/// What falls due again and again does so from here on.
void start_module_timers();

/// Runs firmware and scenario on this thread until the scenario has ended. The scenario is open.
void run_in_module_time();

/// Microseconds since the first reset cycle.
std::int64_t module_clock_us();

/// Moves the clock and serves what falls due. After the end of the scenario nothing moves any more.
void move_module_clock(std::int64_t us);

/// The move of one delivered byte; see bytes_delivered (host/scenario/world.h).
void move_module_clock_by_byte();
std::uint64_t module_bytes_delivered();

}  // namespace orvanel
