// tone.h: the module's buzzer.

#pragma once

#include <atomic>
#include <cstdint>

namespace orvanel {

/// Ticks of 100 ms of the running tone, 0 for none. firmware_tick counts it down.
extern std::atomic<std::uint8_t> beep_timer;

/// A tone of n ticks, if n is not 0.
void start_beep(std::uint8_t n);

}  // namespace orvanel
