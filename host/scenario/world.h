// world.h: what a scenario asks of the program that runs it. The clock is module time or the real
// one; each program implements these once, beside platform.h.

#pragma once

#include <cstdint>

namespace orvanel {

/// Microseconds since the firmware began its first reset cycle.
std::int64_t clock_us();

/// Bytes that the read layer has taken from a macro or from rx_pipe so far.
std::uint64_t bytes_delivered();

/// The scenario's next line has yet to come in on `fd`. True once there is something to read; false
/// if the program doesn't stand still for it, or is told to end.
bool wait_for_scenario_input(int fd);

}  // namespace orvanel
