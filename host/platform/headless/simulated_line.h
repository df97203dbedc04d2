// simulated_line.h: the serial line of module time, in memory: the scenario is the peer at its
// other end, see host/scenario/world.h. There is one, and whichever port is chosen stands for it.

#pragma once

#include <cstdint>
#include <span>

namespace orvanel {

// What platform.h asks of a line. Whatever is written leaves at once.
int simulated_open(std::int32_t baud);
void simulated_close(int line);
void simulated_set_baud(std::int32_t baud);
void simulated_set_rts(bool on);
int simulated_cts();
int simulated_queued_in();
int simulated_read(std::span<std::uint8_t> into);
int simulated_write(std::span<const std::uint8_t> data);

bool simulated_rts();
std::int32_t simulated_baud();

}  // namespace orvanel
