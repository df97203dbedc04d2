// simulated_line.h: the serial line of module time, in memory: the scenario is the peer at its
// other end, see host/scenario/world.h. There is one, and whichever port is chosen stands for it.

#pragma once

#include "host/platform/serial/serial_lines.h"

#include <cstdint>

namespace orvanel {

/// Whatever is written leaves at once, nothing waits for the line, and what is left for it is
/// served at once.
extern const SerialLines simulated_lines;

/// Bytes that wait to be read, or are still on their way. RTS, and the speed in bits a second:
/// false and 0 while it is closed.
int simulated_queued();
bool simulated_rts();
std::int32_t simulated_baud();

}  // namespace orvanel
